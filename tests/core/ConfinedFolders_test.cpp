#include "OrdovanCore/platform/ConfinedFolders.h"

#include "tests/support/RefusedCall.h"
#include "tests/support/TempFolder.h"
#include "tests/support/Unprivileged.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/syscall.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <string_view>

using ordovan::ConfinedFolders;
using ordovan::test::TempFolder;
using Entering = ConfinedFolders::Entering;

namespace {

::ino_t inode(const std::string& path) {
    struct ::stat facts{};
    return ::lstat(path.c_str(), &facts) == 0 ? facts.st_ino : 0;
}

/// Folders below "root"; "outside" is beside it.
class ConfinedFoldersTest : public testing::TestWithParam<Entering> {
protected:
    ConfinedFoldersTest() {
        t.makeFolder("root/a/b");
        t.makeFolder("outside/b");
    }

    int openError(std::string_view name) {
        const auto opened = folders.open(t.path(name));
        return opened ? 0 : opened.error();
    }
    /// The inode of the folder that is opened; 0 when none is.
    ::ino_t opened(std::string_view name) {
        const auto folder = folders.open(t.path(name));
        return folder ? (*folder)->facts.st_ino : 0;
    }
    int make(std::string_view name) { return folders.make(t.path(name), 0777); }
    void rename(std::string_view from, std::string_view to) const {
        ASSERT_EQ(::rename(t.path(from).c_str(), t.path(to).c_str()), 0);
    }

    TempFolder t;
    ConfinedFolders folders{t.path("root"), GetParam()};
};

INSTANTIATE_TEST_SUITE_P(BothWays, ConfinedFoldersTest, testing::Values(Entering::atOnce, Entering::stepByStep),
                         [](const auto& way) { return way.param == Entering::atOnce ? "AtOnce" : "StepByStep"; });

TEST_P(ConfinedFoldersTest, AreOpenedBelowTheRoot) {
    EXPECT_EQ(opened("root"), inode(t.path("root")));
    EXPECT_EQ(opened("root/a/b"), inode(t.path("root/a/b")));
    EXPECT_EQ(opened("root//a/./b"), inode(t.path("root/a/b")));
}

TEST_P(ConfinedFoldersTest, KnowByTheTextWhatLeadsBelow) {
    EXPECT_TRUE(folders.leadsBelow(t.path("root/a")));
    EXPECT_TRUE(folders.leadsBelow(t.path("root//a")));
    for (const char* name : {"root", "root/", "root//", "rooted/a", "roo", "outside/b"}) {
        EXPECT_FALSE(folders.leadsBelow(t.path(name))) << name;
    }
    EXPECT_TRUE(ConfinedFolders("/").leadsBelow("/etc"));
    EXPECT_FALSE(ConfinedFolders("/").leadsBelow("/"));
}

TEST_P(ConfinedFoldersTest, AreNotEnteredThroughLinks) {
    t.makeLink("root/out", t.path("outside"));
    t.makeLink("root/in", "a");
    t.makeLink("root/a/dangling", "nowhere");
    for (const char* name : {"root/out", "root/out/b", "root/in", "root/in/b", "root/a/dangling"}) {
        EXPECT_EQ(openError(name), ELOOP) << name;
    }
}

TEST_P(ConfinedFoldersTest, AreNotFilesOrMissing) {
    t.write("root/file", "");
    EXPECT_EQ(openError("root/file"), ENOTDIR);
    EXPECT_EQ(openError("root/file/below"), ENOTDIR);
    EXPECT_EQ(openError("root/a/missing"), ENOENT);
    EXPECT_EQ(openError("root/a/" + std::string(256, 'n')), ENAMETOOLONG);
}

TEST_P(ConfinedFoldersTest, DoNotLeadOutOfTheRoot) {
    EXPECT_EQ(openError("root/../outside"), EXDEV);
    EXPECT_EQ(openError("root/a/../../outside/b"), EXDEV);
}

TEST_P(ConfinedFoldersTest, MayBeReachedThroughALinkOnTheWayToTheRoot) {
    t.makeLink("way", "root");
    ConfinedFolders byLink(t.path("way"), GetParam());
    EXPECT_EQ((*byLink.open(t.path("way/a")))->facts.st_ino, inode(t.path("root/a")));
}

TEST_P(ConfinedFoldersTest, AreHeldForTheNextTime) {
    EXPECT_EQ(folders.held(t.path("root/a")), nullptr);
    const ConfinedFolders::Folder* const first = *folders.open(t.path("root/a"));
    const int descriptor = first->descriptor.get();
    EXPECT_EQ(*folders.open(t.path("root/a")), first);
    EXPECT_EQ(first->descriptor.get(), descriptor);
    EXPECT_EQ(folders.held(t.path("root/a")), first);
}

TEST_P(ConfinedFoldersTest, AreOpenedAnewWhenAnotherFolderTookTheName) {
    EXPECT_EQ(openError("root/a"), 0);
    rename("root/a", "root/old");
    t.makeFolder("root/a");
    EXPECT_EQ(opened("root/a"), inode(t.path("root/a")));
    EXPECT_EQ(opened("root/old"), inode(t.path("root/old")));
}

TEST_P(ConfinedFoldersTest, AreLetGoWhenALinkTookTheName) {
    EXPECT_EQ(openError("root/a/b"), 0);
    EXPECT_EQ(openError("root/a"), 0);
    rename("root/a", "root/old");
    t.makeLink("root/a", t.path("outside"));
    EXPECT_EQ(openError("root/a"), ELOOP);
    EXPECT_EQ(openError("root/a/b"), ELOOP);
    std::filesystem::remove(t.path("root/a"));
    EXPECT_EQ(openError("root/a"), ENOENT);
}

TEST_P(ConfinedFoldersTest, FollowARootThatWasExchanged) {
    EXPECT_EQ(openError("root/a/b"), 0);
    rename("root", "old");
    EXPECT_EQ(openError("root"), ENOENT);
    EXPECT_EQ(openError("root/a/b"), ENOENT);
    t.makeFolder("root/a/b");
    EXPECT_EQ(opened("root/a/b"), inode(t.path("root/a/b")));
    EXPECT_EQ(opened("root"), inode(t.path("root")));
}

TEST_P(ConfinedFoldersTest, AreOpenedHoweverManyThereAre) {
    const auto name = [](std::size_t i) { return "root/" + std::to_string(i); };
    constexpr std::size_t many = 3 * ConfinedFolders::capacity;
    for (std::size_t i = 0; i < many; ++i) t.makeFolder(name(i));
    for (std::size_t i = 0; i < many; ++i) EXPECT_EQ(opened(name(i)), inode(t.path(name(i)))) << i;
    EXPECT_EQ(folders.held(t.path(name(0))), nullptr);
    EXPECT_EQ(opened(name(0)), inode(t.path(name(0))));
    EXPECT_NE(folders.held(t.path(name(many - 1))), nullptr) << "one used lately";
}

TEST_P(ConfinedFoldersTest, AreEnteredAnewThroughNoLinkThoughTheOneHeldIsReachedSo) {
    EXPECT_EQ(openError("root/a/b"), 0);
    rename("root/a", "outside/a");
    t.makeLink("root/a", t.path("outside/a"));
    EXPECT_EQ(folders.openAnew(t.path("root/a/b")).error(), ELOOP);
    std::filesystem::remove(t.path("root/a"));
    t.makeFolder("root/a/b");
    EXPECT_EQ((*folders.openAnew(t.path("root/a/b")))->facts.st_ino, inode(t.path("root/a/b")));
    EXPECT_EQ(folders.held(t.path("root/a/b"))->facts.st_ino, inode(t.path("root/a/b")));
}

TEST_P(ConfinedFoldersTest, AreHeldUntilTheyAreForgotten) {
    EXPECT_EQ(openError("root/a"), 0);
    folders.forget(t.path("root/b"));
    EXPECT_NE(folders.held(t.path("root/a")), nullptr);
    folders.forget(t.path("root/a"));
    folders.forget(t.path("root"));
    EXPECT_EQ(folders.held(t.path("root/a")), nullptr);
    EXPECT_EQ(folders.held(t.path("root")), nullptr);
    EXPECT_EQ(openError("root/a"), 0);
}

TEST_P(ConfinedFoldersTest, HaveTheirFilesOpenedThroughNoLink) {
    t.write("root/a/file", "content");
    t.write("outside/file", "theirs");
    t.makeLink("root/a/link", "file");
    t.makeLink("root/out", t.path("outside"));
    const auto opened = [&](const char* name) {
        ordovan::RegularFile file;
        const int error = folders.openFile(t.path(name), file);
        EXPECT_EQ(file.facts.st_ino, error == 0 ? inode(t.path(name)) : 0) << name;
        return error;
    };
    EXPECT_EQ(opened("root/a/file"), 0);
    EXPECT_EQ(opened("root//a/file"), 0);
    EXPECT_EQ(opened("root/a/link"), EINVAL);
    EXPECT_EQ(opened("root/a"), EINVAL);
    EXPECT_EQ(opened("root/a/missing"), ENOENT);
    EXPECT_EQ(opened("root/out/file"), ELOOP);
    EXPECT_EQ(opened("root/../outside/file"), EXDEV);
}

TEST_P(ConfinedFoldersTest, AreMadeWithAllThatAreMissingAboveThem) {
    EXPECT_EQ(make("root/new/deep//er/"), 0);
    EXPECT_EQ(make("root/new/deep/er"), 0) << "again";
    EXPECT_EQ(opened("root/new/deep/er"), inode(t.path("root/new/deep/er")));
}

TEST_P(ConfinedFoldersTest, AreMadeWithTheirRoot) {
    std::filesystem::remove_all(t.path("root"));
    EXPECT_EQ(make("root/new/deep"), 0);
    EXPECT_TRUE(std::filesystem::is_directory(t.path("root/new/deep")));
}

TEST_P(ConfinedFoldersTest, AreNotMadeBehindALink) {
    t.makeLink("root/out", t.path("outside"));
    EXPECT_EQ(make("root/out"), ELOOP);
    EXPECT_EQ(make("root/out/new"), ELOOP);
    EXPECT_EQ(make("root/out/new/deep"), ELOOP);
    EXPECT_EQ(make("root/../outside/new"), EXDEV);
    EXPECT_EQ(t.count("outside"), 1u);
}

TEST_P(ConfinedFoldersTest, DoNotTakeThePlaceOfSomethingElse) {
    t.write("root/file", "content");
    EXPECT_EQ(make("root/file"), EEXIST);
    EXPECT_EQ(make("root/file/new"), ENOTDIR);
    EXPECT_EQ(make("root/file/new/deep"), ENOTDIR);
    EXPECT_EQ(t.read("root/file"), "content");
}

/// Where the kernel refuses openat2(2) as told.
class WithoutOpenat2 : public testing::Test {
protected:
    void SetUp() override {
        t.makeFolder("root/a/b");
        t.makeLink("root/link", "a");
        if (!ordovan::test::unprivileged([] { return ordovan::test::refuseCall(SYS_openat2, ENOSYS); })) {
            GTEST_SKIP() << "NOT TESTED: no filters of system calls here";
        }
    }
    struct Opened {
        int error;
        ::ino_t inode;
        friend bool operator==(const Opened&, const Opened&) = default;
    };
    [[nodiscard]] Opened opened(const std::string& name, int refusal) const {
        return ordovan::test::unprivileged([&]() -> Opened {
            ordovan::test::refuseCall(SYS_openat2, refusal);
            ConfinedFolders folders(t.path("root"));
            const auto folder = folders.open(t.path(name));
            return folder ? Opened{0, (*folder)->facts.st_ino} : Opened{folder.error(), 0};
        });
    }
    TempFolder t;
};

TEST_F(WithoutOpenat2, FoldersAreEnteredStepByStep) {
    for (const int refusal : {ENOSYS, EPERM, EAGAIN}) {
        EXPECT_EQ(opened("root/a/b", refusal), (Opened{0, inode(t.path("root/a/b"))})) << refusal;
        EXPECT_EQ(opened("root/link/b", refusal), (Opened{ELOOP, 0})) << refusal;
    }
}

TEST_F(WithoutOpenat2, FilesAreOpenedInTheirFolder) {
    t.write("root/a/file", "content");
    const auto error = [&](const std::string& name, int refusal) {
        return ordovan::test::unprivileged([&] {
            ordovan::test::refuseCall(SYS_openat2, refusal);
            ordovan::RegularFile file;
            return ConfinedFolders(t.path("root")).openFile(t.path(name), file);
        });
    };
    for (const int refusal : {ENOSYS, EPERM, EAGAIN}) {
        EXPECT_EQ(error("root/a/file", refusal), 0) << refusal;
        EXPECT_EQ(error("root/link/file", refusal), ELOOP) << refusal;
    }
    EXPECT_EQ(error("root/a/file", EMFILE), EMFILE);
}

TEST_F(WithoutOpenat2, FoldersAreNotEnteredForAnotherReason) {
    EXPECT_EQ(opened("root/a", EMFILE), (Opened{EMFILE, 0}));
}

}  // namespace
