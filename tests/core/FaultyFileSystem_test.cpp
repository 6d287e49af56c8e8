#include "OrdovanCore/testing/FaultyFileSystem.h"

#include "OrdovanCore/testing/MemoryFileSystem.h"
#include "OrdovanCore/testing/TreeBuilder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <vector>

namespace {

using ordovan::testing::FaultyFileSystem;
using ordovan::testing::MemoryFileSystem;
using ordovan::testing::Operation;
using testing::ElementsAre;
using Lasting = FaultyFileSystem::Lasting;
using Moment = FaultyFileSystem::Moment;

class FaultyFileSystemTest : public testing::Test {
protected:
    void SetUp() override { ordovan::testing::build(memory_, "/", {"a = 1", "b = 2", "c = 3"}); }

    template <class T>
    static int errorOf(const OrdovanResult<T>& result) {
        return result ? 0 : result.error().code;
    }
    int move(std::string_view from, std::string_view to) {
        return errorOf(faulty_.move(Url::file(from), Url::file(to)));
    }
    int remove(std::string_view path) { return errorOf(faulty_.remove(Url::file(path))); }

    MemoryFileSystem memory_;
    FaultyFileSystem faulty_{memory_};
};

TEST_F(FaultyFileSystemTest, PassesEverythingOnWhenNothingIsToFail) {
    const Url a = Url::file("/a");
    const Url z = Url::file("/z");
    EXPECT_TRUE(faulty_.exists(a));
    EXPECT_TRUE(faulty_.isRegularFile(a));
    EXPECT_FALSE(faulty_.isSymlink(a));
    EXPECT_TRUE(faulty_.sameVolume(a, z));
    EXPECT_EQ(errorOf(faulty_.createDirectory(Url::file("/d"))), 0);
    EXPECT_EQ(errorOf(faulty_.copy(a, z)), 0);
    EXPECT_EQ(move("/z", "/y"), 0);
    EXPECT_EQ(remove("/y"), 0);
    EXPECT_EQ(faulty_.fileSize(a), 1);
    EXPECT_EQ(faulty_.contentHash(a), memory_.contentHash(a));
    EXPECT_EQ(faulty_.fileIdentity(a), memory_.fileIdentity(a));
    EXPECT_EQ(faulty_.trash(a).value().path(), "/home/user/.local/share/Trash/files/a");
    EXPECT_EQ(faulty_.callCount(), 8U);
    EXPECT_EQ(faulty_.callCount(Operation::exists), 1U);
    EXPECT_EQ(faulty_.faultsDone(), 0U);
}

TEST_F(FaultyFileSystemTest, FailsTheCallOfThatNumberAndNoOther) {
    faulty_.failCall(2, EIO);
    EXPECT_EQ(move("/a", "/x"), 0);
    EXPECT_TRUE(faulty_.exists(Url::file("/x")));
    EXPECT_EQ(remove("/b"), EIO);
    EXPECT_EQ(remove("/c"), 0);
    EXPECT_EQ(memory_.read("/b"), "2");
    EXPECT_EQ(faulty_.faultsDone(), 1U);
}

TEST_F(FaultyFileSystemTest, CountsTheCallsOfANamedOperationAlone) {
    faulty_.failCall(Operation::remove, 2, EACCES);
    EXPECT_EQ(remove("/a"), 0);
    EXPECT_EQ(move("/b", "/x"), 0);
    EXPECT_EQ(remove("/c"), EACCES);
    EXPECT_EQ(memory_.read("/c"), "3");
}

TEST_F(FaultyFileSystemTest, LosesTheReplyAfterTheEffect) {
    faulty_.failCall(1, EIO, Moment::afterEffect);
    EXPECT_EQ(move("/a", "/x"), EIO);
    EXPECT_EQ(memory_.read("/x"), "1");
    EXPECT_EQ(memory_.read("/a"), std::nullopt);
}

TEST_F(FaultyFileSystemTest, ClaimsASuccessThatDidNotHappen) {
    faulty_.failCall(1, 0, Moment::insteadOfEffect);
    EXPECT_EQ(move("/a", "/x"), 0);
    EXPECT_EQ(memory_.read("/a"), "1");
    EXPECT_EQ(faulty_.faultsDone(), 1U);
}

TEST_F(FaultyFileSystemTest, FailsForGoodWhenAskedTo) {
    faulty_.failCall(2, ENOSPC, Moment::beforeEffect, Lasting::forGood);
    EXPECT_EQ(remove("/a"), 0);
    EXPECT_EQ(remove("/b"), ENOSPC);
    EXPECT_EQ(remove("/c"), ENOSPC);
    faulty_.reset();
    EXPECT_EQ(remove("/c"), 0);
    EXPECT_EQ(faulty_.callCount(), 1U);
}

TEST_F(FaultyFileSystemTest, AnErrorMayBeOfAnyDomain) {
    const auto error = OrdovanSystemError::cocoa(OrdovanSystemError::fileWriteUnknown, EIO);
    faulty_.failCall(Operation::trash, 1, error, Moment::beforeEffect, Lasting::once);
    EXPECT_EQ(faulty_.trash(Url::file("/a")).error(), error);
}

TEST_F(FaultyFileSystemTest, AnOperationThatCanNotFailAnswersFalse) {
    faulty_.failCall(Operation::exists, 1, EIO);
    EXPECT_FALSE(faulty_.exists(Url::file("/a")));
    EXPECT_TRUE(faulty_.exists(Url::file("/a")));
}

TEST_F(FaultyFileSystemTest, LiesAboutOneHash) {
    faulty_.lieAboutHash(2);
    const Url a = Url::file("/a");
    EXPECT_EQ(faulty_.contentHash(a), memory_.contentHash(a));
    EXPECT_EQ(faulty_.contentHash(a), std::string(FaultyFileSystem::falseHash));
    EXPECT_EQ(faulty_.contentHash(a), memory_.contentHash(a));
}

TEST_F(FaultyFileSystemTest, HooksSeeEveryCallAndMayChangeTheTree) {
    std::vector<std::string> seen;
    faulty_.setBeforeCall([&](const FaultyFileSystem::Call& call) {
        seen.push_back("before " + std::to_string(call.number) + ' ' + std::string(call.url.path()));
        if (call.operation == Operation::move) memory_.write("/x", "meanwhile");
    });
    faulty_.setAfterCall([&](const FaultyFileSystem::Call& call) {
        seen.push_back("after " + std::to_string(call.number) + ' ' + std::string(call.second.path()));
    });
    EXPECT_FALSE(faulty_.exists(Url::file("/x")));
    EXPECT_EQ(move("/a", "/x"), EEXIST);
    EXPECT_EQ(memory_.read("/x"), "meanwhile");
    EXPECT_THAT(seen, ElementsAre("before 1 /x", "after 1 ", "before 2 /a", "after 2 /x"));
}

TEST_F(FaultyFileSystemTest, HooksMayCallItAgain) {
    faulty_.setAfterCall([&](const FaultyFileSystem::Call& call) {
        if (call.operation == Operation::move) remove("/b");
    });
    EXPECT_EQ(move("/a", "/x"), 0);
    EXPECT_EQ(memory_.read("/b"), std::nullopt);
}

}  // namespace
