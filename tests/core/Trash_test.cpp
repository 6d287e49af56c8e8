#include "OrdovanCore/platform/Trash.h"

#include "OrdovanCore/testing/TreeBuilder.h"
#include "tests/support/SecondVolume.h"
#include "tests/support/TempFolder.h"
#include "tests/support/Unprivileged.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <string>

namespace {

using ordovan::moveToTrash;
using ordovan::test::BindMount;
using ordovan::test::errorUnprivileged;
using ordovan::test::giveToUnprivileged;
using ordovan::test::SecondVolume;
using ordovan::test::TempFolder;
using ordovan::testing::buildOnDisk;
using ordovan::testing::describeTree;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;

using Tree = std::map<std::string, std::string>;

template <class T>
int errorOf(const OrdovanResult<T>& result) {
    return result ? 0 : result.error().code;
}

/// The tree's paths alone.
std::vector<std::string> namesIn(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& [name, description] : describeTree(folder)) names.push_back(name);
    return names;
}

unsigned modeOf(const std::string& path) {
    struct ::stat facts{};
    return ::lstat(path.c_str(), &facts) == 0 ? facts.st_mode & 07777U : ~0U;
}

/// Makes every renameat2(2) of this process answer so, without doing anything, from now on: with an errno, or with
/// success for 0.
void answerRenamesWith(int errnoValue) {
    ::sock_filter program[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(::seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_renameat2, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | static_cast<unsigned>(errnoValue)),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const ::sock_fprog filter{std::size(program), program};
    if (::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 || ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) != 0) {
        ::_exit(4);
    }
}

/// Home Trash and items on one volume.
class Trash : public testing::Test {
protected:
    Trash() { ::setenv("XDG_DATA_HOME", folder_.path("data").c_str(), 1); }
    ~Trash() override { ::unsetenv("XDG_DATA_HOME"); }

    [[nodiscard]] std::string info(std::string_view name) const {
        return folder_.read("data/Trash/info/" + std::string(name) + ".trashinfo");
    }
    [[nodiscard]] std::vector<std::string> trashed() const { return namesIn(folder_.path("data/Trash/files")); }
    [[nodiscard]] std::vector<std::string> infos() const { return namesIn(folder_.path("data/Trash/info")); }

    TempFolder folder_;
};

TEST_F(Trash, TheHomeTrashIsMadeForTheUserAlone) {
    folder_.write("a/report.pdf", "hello");
    const Url there = moveToTrash(folder_.url("a/report.pdf")).value();
    EXPECT_EQ(there.path(), folder_.path("data/Trash/files/report.pdf"));
    EXPECT_FALSE(folder_.has("a/report.pdf"));
    EXPECT_EQ(folder_.read("data/Trash/files/report.pdf"), "hello");
    for (const char* name : {"data", "data/Trash", "data/Trash/files", "data/Trash/info"}) {
        EXPECT_EQ(modeOf(folder_.path(name)), 0700U) << name;
    }
    EXPECT_EQ(modeOf(folder_.path("data/Trash/info/report.pdf.trashinfo")), 0600U);
}

TEST_F(Trash, TheInfoFileTellsTheAbsolutePathAndTheTime) {
    folder_.write("a b/report.pdf", "hello");
    ASSERT_TRUE(moveToTrash(folder_.url("a b/report.pdf")));
    EXPECT_THAT(info("report.pdf"),
                MatchesRegex("\\[Trash Info\\]\nPath=" + folder_.path("a%20b/report.pdf") +
                             "\nDeletionDate=[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}\n"));
}

TEST_F(Trash, AnEmptyOrRelativeDataFolderMeansTheOneInTheHomeFolder) {
    const std::string home = std::getenv("HOME") != nullptr ? std::getenv("HOME") : "";
    ::setenv("HOME", folder_.path().c_str(), 1);
    for (const char* ignored : {"", "relative/data"}) {
        ::setenv("XDG_DATA_HOME", ignored, 1);
        const Url there = moveToTrash(folder_.write("file", "a")).value();
        EXPECT_EQ(there.deletingLastPathComponent().path(), folder_.path(".local/share/Trash/files"));
    }
    ::setenv("HOME", home.c_str(), 1);
}

TEST_F(Trash, ADataFolderWithSlashesTooManyGivesAPlainPath) {
    ::setenv("XDG_DATA_HOME", (folder_.path() + "//data/./").c_str(), 1);
    EXPECT_EQ(moveToTrash(folder_.write("file", "a")).value().path(), folder_.path("data/Trash/files/file"));
}

TEST_F(Trash, AnItemReachedThroughALinkIsRecordedByItsRealPath) {
    folder_.write("real/file", "a");
    folder_.makeLink("linked", "real");
    ASSERT_TRUE(moveToTrash(folder_.url("linked/file")));
    EXPECT_THAT(info("file"), HasSubstr("\nPath=" + folder_.path("real/file") + "\n"));
}

TEST_F(Trash, ItemsOfOneNameAreNumbered) {
    for (const char* folder : {"a", "b", "c"}) {
        ASSERT_TRUE(moveToTrash(folder_.write(std::string(folder) + "/file.txt", folder)));
    }
    EXPECT_EQ(trashed(), (std::vector<std::string>{"file 2.txt", "file 3.txt", "file.txt"}));
    EXPECT_THAT(info("file 3.txt"), HasSubstr("\nPath=" + folder_.path("c/file.txt") + "\n"));
    EXPECT_EQ(folder_.read("data/Trash/files/file 2.txt"), "b");
}

TEST_F(Trash, AnItemWithoutInfoFileIsNeverReplaced) {
    buildOnDisk(folder_.path("data/Trash"), {"files/file.txt = orphan", "info/"});
    EXPECT_EQ(moveToTrash(folder_.write("file.txt", "new")).value().lastPathComponent(), "file 2.txt");
    EXPECT_EQ(folder_.read("data/Trash/files/file.txt"), "orphan");
    EXPECT_EQ(infos(), (std::vector<std::string>{"file 2.txt.trashinfo"}));
}

TEST_F(Trash, AnInfoFileWithoutItemIsNeverReplaced) {
    buildOnDisk(folder_.path("data/Trash"), {"files/", "info/file.txt.trashinfo -> nowhere"});
    EXPECT_EQ(moveToTrash(folder_.write("file.txt", "new")).value().lastPathComponent(), "file 2.txt");
    EXPECT_EQ(infos(), (std::vector<std::string>{"file 2.txt.trashinfo", "file.txt.trashinfo"}));
}

TEST_F(Trash, MoreThanAThousandItemsOfOneNameLeaveRoomForAnother) {
    folder_.makeFolder("data/Trash/files");
    for (int i = 1; i <= 1200; ++i) {
        folder_.makeLink("data/Trash/files/x" + (i > 1 ? " " + std::to_string(i) : ""), "nowhere");
    }
    EXPECT_EQ(moveToTrash(folder_.write("x", "new")).value().lastPathComponent(), "x 1201");
    EXPECT_EQ(folder_.read("data/Trash/files/x 1201"), "new");
    EXPECT_EQ(infos(), (std::vector<std::string>{"x 1201.trashinfo"}));
}

TEST_F(Trash, TakenNumbersAreLeftOutWhereverTheyStand) {
    buildOnDisk(folder_.path("data/Trash"),
                {"files/x", "files/x 2", "files/x 8", "info/x 3.trashinfo", "info/x 4.trashinfo"});
    EXPECT_EQ(moveToTrash(folder_.write("x", "new")).value().lastPathComponent(), "x 9");
    EXPECT_EQ(folder_.read("data/Trash/files/x 9"), "new");
}

TEST_F(Trash, AVolumeThatSaysOfEveryNameThatItIsTakenIsGivenUp) {
    folder_.write("file", "a");
    giveToUnprivileged(folder_.path());
    const int error = errorUnprivileged([&] {
        answerRenamesWith(EEXIST);
        return moveToTrash(folder_.url("file"));
    });
    EXPECT_EQ(error, EEXIST);
    EXPECT_TRUE(folder_.has("file"));
    EXPECT_THAT(infos(), IsEmpty());
}

TEST_F(Trash, NamesOfAnyBytesAreKept) {
    for (const std::string name : {"new\nline", "\xff\xfe", "-rf", "100% + more", "...", " "}) {
        const Url there = moveToTrash(folder_.write("in/" + name, name)).value();
        EXPECT_EQ(there.lastPathComponent(), name);
        EXPECT_EQ(folder_.read("data/Trash/files/" + name), name);
    }
    EXPECT_THAT(info("new\nline"), HasSubstr("\nPath=" + folder_.path("in/new%0Aline") + "\n"));
    EXPECT_THAT(info("\xff\xfe"), HasSubstr("\nPath=" + folder_.path("in/%FF%FE") + "\n"));
}

TEST_F(Trash, ANameOf255BytesIsShortenedAndItsInfoTellsTheWholeOne) {
    const std::string name = std::string(251, 'n') + ".pdf";
    EXPECT_EQ(moveToTrash(folder_.write(name, "a")).value().lastPathComponent(), std::string(241, 'n') + ".pdf");
    EXPECT_EQ(moveToTrash(folder_.write(name, "b")).value().lastPathComponent(), std::string(239, 'n') + " 2.pdf");
    EXPECT_THAT(info(std::string(241, 'n') + ".pdf"), HasSubstr("\nPath=" + folder_.path(name) + "\n"));
}

TEST_F(Trash, ItemsOfEveryKindGoAsTheyAre) {
    buildOnDisk(folder_.path("in"), {"folder/inside = a", "file = b", "name == file", "link -> file", "fifo|"});
    const Tree before = describeTree(folder_.path("in"));
    for (const char* name : {"folder", "link", "name", "fifo"}) {
        ASSERT_TRUE(moveToTrash(folder_.url("in/" + std::string(name)))) << name;
    }
    Tree after = describeTree(folder_.path("data/Trash/files"));
    after.merge(describeTree(folder_.path("in")));
    EXPECT_EQ(after, before);
}

TEST_F(Trash, TheRootAndDotsAreNoItems) {
    folder_.makeFolder("in");
    EXPECT_EQ(errorOf(moveToTrash(Url::file("/"))), EBUSY);
    EXPECT_EQ(errorOf(moveToTrash(folder_.url("in/.."))), EBUSY);
    EXPECT_EQ(errorOf(moveToTrash(folder_.url("in/."))), EBUSY);
}

TEST_F(Trash, AFolderThatHoldsTheTrashStays) {
    EXPECT_EQ(errorOf(moveToTrash(folder_.url("data"))), ENOENT);
    folder_.makeFolder("data");
    EXPECT_EQ(errorOf(moveToTrash(folder_.url("data"))), EINVAL);
    EXPECT_THAT(infos(), IsEmpty());
}

TEST_F(Trash, AFileThatMayNotBeReadInAFolderThatMayNotBeListedGoes) {
    folder_.write("in/secret", "a");
    ::chmod(folder_.path("in/secret").c_str(), 0);
    ::chmod(folder_.path("in").c_str(), 0300);
    giveToUnprivileged(folder_.path());
    EXPECT_EQ(errorUnprivileged([&] { return moveToTrash(folder_.url("in/secret")); }), 0);
    EXPECT_EQ(trashed(), (std::vector<std::string>{"secret"}));
}

TEST_F(Trash, AnothersFileInAStickyFolderStaysAndLeavesNoInfo) {
    if (::geteuid() != 0) GTEST_SKIP() << "NOT TESTED: only root can make another's file";
    giveToUnprivileged(folder_.path());
    folder_.write("common/file", "a");
    ::chmod(folder_.path("common").c_str(), 01777);
    EXPECT_EQ(errorUnprivileged([&] { return moveToTrash(folder_.url("common/file")); }), EPERM);
    EXPECT_TRUE(folder_.has("common/file"));
    EXPECT_THAT(infos(), IsEmpty());
}

TEST_F(Trash, WithoutRenamesThatNeverReplaceItIsLinkedIntoPlace) {
    buildOnDisk(folder_.path(), {"data/Trash/files/file = orphan", "file = new"});
    giveToUnprivileged(folder_.path());
    const std::string there = ordovan::test::unprivileged([&] {
        answerRenamesWith(EINVAL);
        return std::string(moveToTrash(folder_.url("file")).value_or(Url()).path());
    });
    EXPECT_EQ(there, folder_.path("data/Trash/files/file 2"));
    EXPECT_EQ(folder_.read("data/Trash/files/file 2"), "new");
    EXPECT_EQ(folder_.read("data/Trash/files/file"), "orphan");
    EXPECT_EQ(infos(), (std::vector<std::string>{"file 2.trashinfo"}));
    EXPECT_FALSE(folder_.has("file"));
}

TEST_F(Trash, ASuccessThatTheDiskDoesNotShowIsAnError) {
    folder_.write("file", "a");
    giveToUnprivileged(folder_.path());
    const auto error = ordovan::test::unprivileged([&] {
        answerRenamesWith(0);
        return moveToTrash(folder_.url("file")).error();
    });
    EXPECT_EQ(error, OrdovanSystemError::cocoa(OrdovanSystemError::fileWriteUnknown));
    EXPECT_TRUE(folder_.has("file"));
    EXPECT_THAT(infos(), IsEmpty());
}

TEST_F(Trash, ARefusedRenameLeavesNoInfo) {
    folder_.write("file", "a");
    giveToUnprivileged(folder_.path());
    for (const int refusal : {EACCES, EPERM, ENOSPC, EDQUOT, EROFS, EIO}) {
        const int error = errorUnprivileged([&] {
            answerRenamesWith(refusal);
            return moveToTrash(folder_.url("file"));
        });
        EXPECT_EQ(error, refusal);
        EXPECT_TRUE(folder_.has("file"));
        EXPECT_THAT(infos(), IsEmpty());
    }
}

/// Items on a volume of their own.
class VolumeTrash : public Trash {
protected:
    void SetUp() override {
        if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
        volume_ = std::make_unique<SecondVolume>(256 * 1024);
        volume_->root().write("deep/folder/a file", "hello");
    }

    OrdovanResult<Url> trashIt() { return moveToTrash(volume_->url("deep/folder/a file")); }
    [[nodiscard]] bool isStillThere() const { return volume_->root().has("deep/folder/a file"); }
    [[nodiscard]] std::string at(std::string_view name) const { return volume_->path(name); }

    std::unique_ptr<SecondVolume> volume_;
    const std::string user_ = std::to_string(::geteuid());
    const std::string own_ = ".Trash-" + user_;
};

TEST_F(VolumeTrash, AnotherVolumesItemGoesToTheUsersTrashAtItsTop) {
    EXPECT_EQ(trashIt().value().path(), at(own_ + "/files/a file"));
    EXPECT_FALSE(isStillThere());
    EXPECT_EQ(modeOf(at(own_)), 0700U);
    EXPECT_THAT(volume_->root().read(own_ + "/info/a file.trashinfo"), HasSubstr("\nPath=deep/folder/a%20file\n"));
    EXPECT_FALSE(folder_.has("data"));
}

TEST_F(VolumeTrash, AnItemAtTheTopIsRecordedByItsNameAlone) {
    volume_->root().write("top", "a");
    ASSERT_TRUE(moveToTrash(volume_->url("top")));
    EXPECT_THAT(volume_->root().read(own_ + "/info/top.trashinfo"), HasSubstr("\nPath=top\n"));
}

TEST_F(VolumeTrash, AStickyCommonTrashIsUsed) {
    volume_->root().makeFolder(".Trash");
    ::chmod(at(".Trash").c_str(), 01777);
    EXPECT_EQ(trashIt().value().path(), at(".Trash/" + user_ + "/files/a file"));
    EXPECT_EQ(modeOf(at(".Trash/" + user_)), 0700U);
    EXPECT_THAT(volume_->root().read(".Trash/" + user_ + "/info/a file.trashinfo"),
                HasSubstr("\nPath=deep/folder/a%20file\n"));
    EXPECT_FALSE(volume_->root().has(own_));
}

TEST_F(VolumeTrash, ACommonTrashThatIsNotStickyIsNotUsed) {
    volume_->root().makeFolder(".Trash");
    ::chmod(at(".Trash").c_str(), 0777);
    EXPECT_EQ(trashIt().value().path(), at(own_ + "/files/a file"));
    EXPECT_THAT(namesIn(at(".Trash")), IsEmpty());
}

TEST_F(VolumeTrash, ACommonTrashThatIsALinkOrAFileIsNotUsed) {
    volume_->root().makeFolder("elsewhere");
    ::chmod(at("elsewhere").c_str(), 01777);
    volume_->root().makeLink(".Trash", "elsewhere");
    EXPECT_EQ(trashIt().value().path(), at(own_ + "/files/a file"));
    EXPECT_THAT(namesIn(at("elsewhere")), IsEmpty());
    ::unlink(at(".Trash").c_str());
    volume_->root().write(".Trash", "a file");
    EXPECT_EQ(moveToTrash(volume_->root().write("next", "a")).value().path(), at(own_ + "/files/next"));
}

TEST_F(VolumeTrash, AUsersTrashThatIsALinkIsNotUsedAndTheItemStays) {
    volume_->root().makeFolder("elsewhere");
    volume_->root().makeLink(own_, "elsewhere");
    EXPECT_EQ(errorOf(trashIt()), ENOTDIR);
    EXPECT_TRUE(isStillThere());
    EXPECT_THAT(namesIn(at("elsewhere")), IsEmpty());
}

TEST_F(VolumeTrash, AFolderOfTheTrashThatIsALinkIsNotUsed) {
    for (const char* part : {"files", "info"}) {
        SecondVolume volume(64 * 1024);
        volume.root().makeFolder(own_);
        volume.root().makeFolder("elsewhere");
        volume.root().makeLink(own_ + "/" + part, "../elsewhere");
        EXPECT_EQ(errorOf(moveToTrash(volume.root().write("file", "a"))), ENOTDIR) << part;
        EXPECT_TRUE(volume.root().has("file")) << part;
        EXPECT_THAT(namesIn(volume.path("elsewhere")), IsEmpty()) << part;
    }
}

TEST_F(VolumeTrash, ATrashThatEverybodyMayChangeIsNotUsed) {
    volume_->root().makeFolder(own_);
    ::chmod(at(own_).c_str(), 0777);
    EXPECT_EQ(errorOf(trashIt()), EPERM);
    EXPECT_TRUE(isStillThere());
    EXPECT_TRUE(volume_->root().has(own_));
}

TEST_F(VolumeTrash, AnothersTrashIsNotUsed) {
    if (::geteuid() != 0) GTEST_SKIP() << "NOT TESTED: only root can make another's folder";
    volume_->root().makeFolder(own_);
    giveToUnprivileged(at(own_));
    EXPECT_EQ(errorOf(trashIt()), EPERM);
    EXPECT_TRUE(isStillThere());
}

TEST_F(VolumeTrash, AHomeTrashOnThisVolumeComesBeforeTheOnesAtItsTop) {
    ::setenv("XDG_DATA_HOME", at("home/data").c_str(), 1);
    EXPECT_EQ(trashIt().value().path(), at("home/data/Trash/files/a file"));
    EXPECT_THAT(volume_->root().read("home/data/Trash/info/a file.trashinfo"),
                HasSubstr("\nPath=" + at("deep/folder/a%20file") + "\n"));
}

TEST_F(VolumeTrash, AHomeTrashThatIsALinkGivesWayToTheOneAtTheTop) {
    ::setenv("XDG_DATA_HOME", at("home").c_str(), 1);
    volume_->root().makeFolder("home");
    volume_->root().makeFolder("elsewhere");
    volume_->root().makeLink("home/Trash", "../elsewhere");
    EXPECT_EQ(trashIt().value().path(), at(own_ + "/files/a file"));
    EXPECT_THAT(namesIn(at("elsewhere")), IsEmpty());
}

TEST_F(VolumeTrash, WithoutAnyUsableTrashTheItemStaysAndTheHomeTrashsErrorIsTold) {
    ::setenv("XDG_DATA_HOME", at("home").c_str(), 1);
    volume_->root().write("home", "in the way");
    volume_->root().write(own_, "in the way");
    EXPECT_EQ(errorOf(trashIt()), EEXIST);
    EXPECT_TRUE(isStillThere());
}

TEST_F(VolumeTrash, ASecondMountOfTheHomesDeviceHasATrashOfItsOwn) {
    folder_.write("shown/file", "a");
    const BindMount mount(folder_.path("shown"));
    EXPECT_EQ(moveToTrash(mount.root().url("file")).value().path(), mount.root().path(own_ + "/files/file"));
    EXPECT_THAT(mount.root().read(own_ + "/info/file.trashinfo"), HasSubstr("\nPath=file\n"));
    EXPECT_THAT(infos(), IsEmpty());
}

TEST_F(VolumeTrash, AFullDiskLeavesTheItemInPlaceAndNoInfo) {
    std::string bytes(512 * 1024, 'x');
    EXPECT_THROW(volume_->root().write("filler", bytes), std::runtime_error);
    EXPECT_EQ(errorOf(trashIt()), ENOSPC);
    EXPECT_TRUE(isStillThere());
    EXPECT_THAT(namesIn(at(own_ + "/info")), IsEmpty());
    EXPECT_THAT(namesIn(at(own_ + "/files")), IsEmpty());
}

TEST_F(VolumeTrash, AReadOnlyVolumeKeepsItsItem) {
    volume_->makeReadOnly();
    EXPECT_EQ(errorOf(trashIt()), EROFS);
    EXPECT_TRUE(isStillThere());
}

}  // namespace
