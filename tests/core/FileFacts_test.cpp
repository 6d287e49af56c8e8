#include "OrdovanCore/platform/FileFacts.h"

#include "OrdovanCore/platform/StableIdentity.h"
#include "OrdovanCore/platform/SystemFileSystem.h"
#include "tests/support/Results.h"
#include "tests/support/SecondVolume.h"
#include "tests/support/TempFolder.h"
#include "tests/support/Unprivileged.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <vector>

using ordovan::factsOf;
using ordovan::keepsIdentities;
using ordovan::keepsInodes;
using ordovan::test::error;
using ordovan::test::SecondVolume;
using ordovan::test::TempFolder;

namespace {

TEST(FileFacts, TellAFileAsThePortDoes) {
    const TempFolder t;
    const Url file = t.write("a", "12345");
    const ::timespec times[2] = {{1, 0}, {1'600'000'000, 123'456'789}};
    ASSERT_EQ(::utimensat(AT_FDCWD, t.path("a").c_str(), times, 0), 0);
    ASSERT_EQ(::chmod(t.path("a").c_str(), 0640), 0);
    SystemFileSystem fs;
    const auto facts = factsOf(file);
    ASSERT_TRUE(facts);
    EXPECT_EQ(*facts, (ordovan::FileFacts{.isRegular = true,
                                          .byteSize = 5,
                                          .identity = fs.fileIdentity(file).value_or("?"),
                                          .modifiedNs = 1'600'000'000'123'456'789,
                                          .names = 1,
                                          .isPrivate = false}));
    ASSERT_EQ(::chmod(t.path("a").c_str(), 0600), 0);
    EXPECT_TRUE(factsOf(file)->isPrivate);
}

TEST(FileFacts, CountNamesAndKnowAnotherFile) {
    const TempFolder t;
    t.write("a", "1");
    t.write("b", "1");
    ASSERT_EQ(::link(t.path("a").c_str(), t.path("c").c_str()), 0);
    EXPECT_EQ(factsOf(t.url("a"))->names, 2U);
    EXPECT_EQ(factsOf(t.url("a"))->identity, factsOf(t.url("c"))->identity);
    EXPECT_NE(factsOf(t.url("a"))->identity, factsOf(t.url("b"))->identity);
}

TEST(FileFacts, AreOfTheLinkItselfAndNoRegularFiles) {
    const TempFolder t;
    t.write("a", "12345");
    EXPECT_FALSE(factsOf(t.makeLink("link", t.path("a")))->isRegular);
    EXPECT_NE(factsOf(t.url("link"))->identity, factsOf(t.url("a"))->identity);
    EXPECT_TRUE(factsOf(t.makeLink("dangling", "nowhere")));
    EXPECT_FALSE(factsOf(t.makeFolder("folder"))->isRegular);
}

TEST(FileFacts, SayWhatIsNotThereAndWhatCanNotBeSeen) {
    const TempFolder t;
    t.write("a", "1");
    EXPECT_EQ(error(factsOf(t.url("b"))), ENOENT);
    EXPECT_EQ(error(factsOf(t.url("a/b"))), ENOTDIR);
    EXPECT_EQ(error(factsOf(Url::file("relative"))), EINVAL);
    t.write("closed/a", "1");
    ASSERT_EQ(::chmod(t.path("closed").c_str(), 0), 0);
    ordovan::test::giveToUnprivileged(t.path());
    EXPECT_EQ(ordovan::test::unprivileged([&] { return error(factsOf(t.url("closed/a"))); }), EACCES);
}

TEST(FileFacts, PinTimesBeyondTheirRange) {
    const TempFolder t;
    t.write("a", "1");
    const ::timespec times[2] = {{0, 0}, {99'999'999'999, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, t.path("a").c_str(), times, 0), 0);
    EXPECT_GT(factsOf(t.url("a"))->modifiedNs, 1'600'000'000'000'000'000);
}

TEST(FileFacts, OfManyAreWhatEachOfThemTells) {
    const TempFolder t;
    t.write("a", "1");
    t.write("sub/b", "22");
    t.write("sub/c", "333");
    t.makeLink("sub/link", "b");
    t.makeLink("way", "sub");
    const auto look = ordovan::factsOfMany();
    for (const char* name : {"a", "sub/b", "sub/c", "sub/link", "sub/gone", "sub", "a/b", "gone/a", "way/b", "sub/",
                             ".", "sub/.", "sub/..", "sub//b", "a"}) {
        EXPECT_EQ(look(t.url(name)), factsOf(t.url(name))) << name;
    }
    for (const char* path : {"/", "", "relative", "/.", "//"}) {
        EXPECT_EQ(look(Url::file(path)), factsOf(Url::file(path))) << path;
    }
    EXPECT_EQ(look(Url::file(std::string_view("/a\0b", 4))), factsOf(Url::file(std::string_view("/a\0b", 4))));
    EXPECT_EQ(look(Url::parse("https://host/x")), factsOf(Url::parse("https://host/x")));
}

// Identities that last.

TEST(StableIdentity, IsOfTheOrdinaryVolumesAndOfWhatCanNotBeTold) {
    const TempFolder t;
    EXPECT_TRUE(keepsInodes(t.url()));
    EXPECT_TRUE(keepsIdentities(t.url("missing")));
    EXPECT_TRUE(keepsIdentities(Url::file("relative")));
}

TEST(StableIdentity, IsKeptByAnOverlayAsContainersHaveForTheirRoot) {
    if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
    const SecondVolume layers;
    for (const char* const name : {"lower", "upper", "work"}) layers.root().makeFolder(name);
    const std::string options =
        "lowerdir=" + layers.path("lower") + ",upperdir=" + layers.path("upper") + ",workdir=" + layers.path("work");
    const TempFolder t;
    const auto& space = ordovan::test::detail::MountNamespace::get();
    std::vector<::ino_t> numbers;
    for (int mounted = 0; mounted < 2; ++mounted) {
        if (!space.mount(t.path(), "overlay", options)) GTEST_SKIP() << "NOT TESTED: no overlay can be mounted here";
        if (mounted == 0) t.write("a", "content");
        struct ::stat facts{};
        EXPECT_EQ(::lstat(t.path("a").c_str(), &facts), 0);
        numbers.push_back(facts.st_ino);
        EXPECT_TRUE(keepsIdentities(t.url("a")));
        space.unmount(t.path());
    }
    EXPECT_EQ(numbers.front(), numbers.back());
}

}  // namespace
