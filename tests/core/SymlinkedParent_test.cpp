#include "OrdovanCore/ExecutionScope.h"
#include "OrdovanCore/testing/TreeBuilder.h"

#include <gtest/gtest.h>

#include <string_view>

using ordovan::testing::build;
using ordovan::testing::MemoryFileSystem;

namespace {

class SymlinkedParent : public ::testing::Test {
protected:
    SymlinkedParent() {
        build(memory, "/r", {"plain/deep/x = 1", "link -> plain", "plain/loop -> .", "last -> plain/deep/x"});
    }
    bool isFound(std::string_view item, std::string_view root = "/r") {
        return OrdovanHasSymlinkedParent(Url::file(item), root, memory);
    }
    MemoryFileSystem memory;
};

}  // namespace

TEST_F(SymlinkedParent, IsFoundAnywhereOnTheWay) {
    EXPECT_TRUE(isFound("/r/link/deep/x"));
    EXPECT_TRUE(isFound("/r/plain/loop/x"));
    EXPECT_FALSE(isFound("/r/plain/deep/x"));
}

TEST_F(SymlinkedParent, IsNotTheItemItself) {
    EXPECT_FALSE(isFound("/r/last"));
    EXPECT_FALSE(isFound("/r/missing/x"));
}

TEST_F(SymlinkedParent, IsNeverTheRootOrAboveIt) {
    memory.link("/way", "/r");
    EXPECT_FALSE(isFound("/way/plain/deep/x", "/way"));
    EXPECT_FALSE(isFound("/way/plain/deep/x", "/way/plain"));
    EXPECT_TRUE(isFound("/way/plain/deep/x", "/"));
}

TEST_F(SymlinkedParent, IsLookedForUpToTheTopWhenTheRootIsNotOnTheWay) {
    memory.link("/way", "/r");
    EXPECT_TRUE(isFound("/way/plain/deep/x", "/r"));
    EXPECT_FALSE(isFound("/r/plain/deep/x", "/elsewhere"));
}

TEST_F(SymlinkedParent, IsNotLookedForOnARelativeWay) {
    EXPECT_FALSE(isFound("x"));
    EXPECT_FALSE(isFound(""));
}

TEST_F(SymlinkedParent, IsFoundInPathsThatAreNotNormal) {
    EXPECT_TRUE(isFound("/r//link/./deep//x"));
    EXPECT_FALSE(isFound("/r//plain/./deep//x"));
}

TEST_F(SymlinkedParent, EndsAtARootOfAnotherSpelling) {
    memory.makeDirectory("/disk/u\u0308");
    memory.link("/way", "/disk");
    EXPECT_FALSE(isFound("/way/u\u0308/x", "/way/\u00fc"));
    EXPECT_TRUE(isFound("/way/u\u0308/x", "/way/a"));
}

TEST_F(SymlinkedParent, IsAssumedWhereAPathStepsUp) {
    EXPECT_TRUE(isFound("/r/link/../x"));
    EXPECT_TRUE(isFound("/r/plain/../x"));
    EXPECT_FALSE(isFound("/r/plain/..x"));
}
