// Trashing and putting back on the real disk, on the home volume and on others.

#include "OrdovanCore/DuplicateTrasher.h"
#include "OrdovanCore/FileTrasher.h"
#include "OrdovanCore/platform/SystemFileSystem.h"
#include "OrdovanCore/testing/TreeBuilder.h"
#include "tests/support/SecondVolume.h"
#include "tests/support/TempFolder.h"
#include "tests/support/Unprivileged.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <cstdlib>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

using ordovan::test::BindMount;
using ordovan::test::giveToUnprivileged;
using ordovan::test::SecondVolume;
using ordovan::test::TempFolder;
using ordovan::testing::buildOnDisk;
using ordovan::testing::describeTree;
using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;
using ::testing::StartsWith;

namespace {

using Tree = std::map<std::string, std::string>;

/// The chosen folder is "tree" of a temporary folder that holds the user's data as well.
class TrashRoundTrip : public ::testing::Test {
protected:
    TrashRoundTrip() {
        home_.makeFolder("tree");
        ::setenv("XDG_DATA_HOME", home_.path("data").c_str(), 1);
    }
    ~TrashRoundTrip() override { ::unsetenv("XDG_DATA_HOME"); }

    /// Goes on on another volume.
    void choose(const std::string& folder) { root_ = folder; }
    [[nodiscard]] std::string at(std::string_view name) const { return root_ + "/" + std::string(name); }
    void tree(std::initializer_list<std::string_view> items) { buildOnDisk(root_, items); }
    [[nodiscard]] Tree tree() const { return describeTree(root_); }

    /// Trashes files by their names, with the sizes they have.
    OrdovanTrashReport trash(std::initializer_list<std::string_view> names) {
        std::vector<OrdovanFileTrasher::Item> items;
        for (const std::string_view name : names) {
            const Url url = Url::file(at(name));
            items.push_back({url, fs_.fileSize(url).value_or(0)});
        }
        return OrdovanFileTrasher::trash(items, Url::file(root_), fs_);
    }
    OrdovanTrashReport restore(const OrdovanTrashRecord& record) {
        return OrdovanDuplicateTrasher::restore(record, Url::file(root_), fs_);
    }
    /// Trashes one file; the message.
    std::string fate(std::string_view name) { return trash({name}).outcomes.at(0).message; }
    /// The same in a process without privileges.
    std::string fateUnprivileged(std::string_view name) {
        giveToUnprivileged(home_.path());
        return ordovan::test::unprivileged([&] { return fate(name); });
    }
    [[nodiscard]] static bool isEmptyTrash(const std::string& trash) {
        return describeTree(trash + "/files").empty() && describeTree(trash + "/info").empty();
    }

    TempFolder home_;
    SystemFileSystem fs_;
    std::string root_ = home_.path("tree");
    const std::string homeTrash_ = home_.path("data/Trash");
    const std::string user_ = std::to_string(::geteuid());
};

const std::string inPlace = "Couldn't move this file to the Trash; it was left in place. ";
const std::string noPermission =
    inPlace +
    "ordovan+ doesn't have permission to change this folder. Choose the folder again with Choose Folder…, or check its "
    "permissions in Finder.";

TEST_F(TrashRoundTrip, FilesOfOddNamesComeBackAsTheyWere) {
    const std::string longest = std::string(251, 'n') + ".pdf";
    tree({"a b/new\nline = 1", "-rf = 2", "e\u0301.txt = 3", "100% + more = 4", "empty", longest + " = 5",
          "sub/-rf = 6"});
    ::chmod(at("-rf").c_str(), 0640);
    const Tree before = tree();
    const OrdovanTrashReport gone =
        trash({"a b/new\nline", "-rf", "e\u0301.txt", "100% + more", "empty", longest, "sub/-rf"});
    ASSERT_EQ(gone.movedCount(), 7U);
    EXPECT_EQ(OrdovanTrashRecord::decoded(gone.record.encoded()), gone.record);
    const OrdovanTrashReport back = restore(gone.record);
    EXPECT_EQ(back.movedCount(), 7U);
    EXPECT_THAT(back.record.entries, IsEmpty());
    EXPECT_EQ(tree(), before);
    EXPECT_TRUE(isEmptyTrash(homeTrash_));
}

TEST_F(TrashRoundTrip, AFileWhoseNameIsNotUtf8Stays) {
    buildOnDisk(root_, std::vector<ordovan::testing::TreeItem>{{.path = "a\xFF", .content = "x"}});
    EXPECT_EQ(fate("a\xFF"), "Couldn't read the file to record it for Put Back; left untouched.");
    EXPECT_FALSE(home_.has("data"));
}

TEST_F(TrashRoundTrip, ExtrasOfOneNameComeBackToTheirFolders) {
    tree({"1/photo = same", "2/photo = same", "3/photo = same"});
    const Tree before = tree();
    const OrdovanDuplicateGroup group{fs_.contentHash(Url::file(at("1/photo"))).value(),
                                      4,
                                      {Url::file(at("1/photo")), Url::file(at("2/photo")), Url::file(at("3/photo"))}};
    const auto gone = OrdovanDuplicateTrasher::trashExtras(group, group.files[1], Url::file(root_), fs_);
    EXPECT_EQ(gone.movedCount(), 2U);
    EXPECT_EQ(tree().count("2/photo"), 1U);
    EXPECT_EQ(describeTree(homeTrash_ + "/files").size(), 2U);
    EXPECT_EQ(restore(gone.record).movedCount(), 2U);
    EXPECT_EQ(tree(), before);
    EXPECT_TRUE(isEmptyTrash(homeTrash_));
}

TEST_F(TrashRoundTrip, AKeptCopyThatIsLinkedFromTheTrashIsNone) {
    buildOnDisk(home_.path("data"), {"Trash/files/a = same", "Trash/info/"});
    tree({"b = same"});
    home_.makeLink("tree/bin", homeTrash_ + "/files");
    const OrdovanDuplicateGroup group{
        fs_.contentHash(Url::file(at("b"))).value(), 4, {Url::file(at("bin/a")), Url::file(at("b"))}};
    const auto report = OrdovanDuplicateTrasher::trashExtras(group, group.files[0], Url::file(root_), fs_);
    EXPECT_EQ(report.outcomes.at(0).message, "The copy you chose to keep changed or is missing; nothing was moved.");
    EXPECT_EQ(home_.read("tree/b"), "same");
}

TEST_F(TrashRoundTrip, WhatTheUserPutBackByOtherMeansIsGoneFromTheTrash) {
    tree({"a = 1", "b = 2"});
    const OrdovanTrashRecord record = trash({"a", "b"}).record;
    ASSERT_TRUE(fs_.move(Url::file(record.entries[0].trashed()), Url::file(at("a"))));
    const OrdovanTrashReport back = restore(record);
    EXPECT_EQ(back.outcomes[1].message, "No longer in the Trash (emptied or moved).");
    EXPECT_EQ(back.record.entries, std::vector{record.entries[0]});
}

TEST_F(TrashRoundTrip, AnotherItemThatTookTheNameInTheTrashIsNotPutBack) {
    tree({"a = mine!"});
    const OrdovanTrashRecord record = trash({"a"}).record;
    ASSERT_TRUE(fs_.remove(Url::file(record.entries[0].trashed())));
    ASSERT_TRUE(fs_.remove(Url::file(homeTrash_ + "/info/a.trashinfo")));
    tree({"other/a = other"});
    ASSERT_EQ(trash({"other/a"}).movedCount(), 1U);
    EXPECT_EQ(restore(record).outcomes[0].message, "The trashed file changed; restore skipped.");
    EXPECT_FALSE(isEmptyTrash(homeTrash_));
}

TEST_F(TrashRoundTrip, AFolderFromWhichNothingMayBeRemovedKeepsItsFiles) {
    tree({"locked/file = a"});
    ::chmod(at("locked").c_str(), 0555);
    EXPECT_EQ(fateUnprivileged("locked/file"), noPermission);
    EXPECT_TRUE(home_.has("tree/locked/file"));
    EXPECT_FALSE(home_.has("data/Trash/info/file.trashinfo"));
}

TEST_F(TrashRoundTrip, AnothersFileInAStickyFolderStays) {
    if (::geteuid() != 0) GTEST_SKIP() << "NOT TESTED: only root can make another's file";
    giveToUnprivileged(home_.path());
    tree({"common/file = a"});
    ::chmod(at("common").c_str(), 01777);
    EXPECT_EQ(ordovan::test::unprivileged([&] { return fate("common/file"); }), noPermission);
    EXPECT_TRUE(home_.has("tree/common/file"));
}

/// The chosen folder lies on a volume of its own.
class TrashRoundTripOnVolume : public TrashRoundTrip {
protected:
    void SetUp() override {
        if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
        volume_ = std::make_unique<SecondVolume>(512 * 1024);
        volume_->root().makeFolder("tree");
        choose(volume_->path("tree"));
    }
    /// Trashes a file and puts it back; the folder of the Trash it lay in.
    std::string roundTrip() {
        tree({"deep/film = a long film"});
        const Tree before = tree();
        const OrdovanTrashReport gone = trash({"deep/film"});
        EXPECT_EQ(gone.movedCount(), 1U) << gone.outcomes.at(0).message;
        EXPECT_EQ(restore(gone.record).movedCount(), gone.movedCount());
        EXPECT_EQ(tree(), before);
        const Url files = gone.outcomes.at(0).destination.deletingLastPathComponent();
        const std::string trash(files.deletingLastPathComponent().path());
        EXPECT_TRUE(isEmptyTrash(trash)) << trash;
        return trash;
    }

    std::unique_ptr<SecondVolume> volume_;
};

TEST_F(TrashRoundTripOnVolume, WithoutACommonTrashGoesThroughTheUsersOwn) {
    EXPECT_EQ(roundTrip(), volume_->path(".Trash-" + user_));
    EXPECT_FALSE(home_.has("data"));
}

TEST_F(TrashRoundTripOnVolume, WithAStickyCommonTrashGoesThroughIt) {
    volume_->root().makeFolder(".Trash");
    ::chmod(volume_->path(".Trash").c_str(), 01777);
    EXPECT_EQ(roundTrip(), volume_->path(".Trash/" + user_));
}

TEST_F(TrashRoundTripOnVolume, WithACommonTrashThatIsALinkOrNotStickyGoesThroughTheUsersOwn) {
    volume_->root().makeFolder(".Trash");
    ::chmod(volume_->path(".Trash").c_str(), 0777);
    EXPECT_EQ(roundTrip(), volume_->path(".Trash-" + user_));
    ASSERT_EQ(::rename(volume_->path(".Trash").c_str(), volume_->path("elsewhere").c_str()), 0);
    ::chmod(volume_->path("elsewhere").c_str(), 01777);
    volume_->root().makeLink(".Trash", "elsewhere");
    ASSERT_EQ(fs_.remove(Url::file(at("deep/film"))), OrdovanResult<void>());
    EXPECT_EQ(roundTrip(), volume_->path(".Trash-" + user_));
    EXPECT_EQ(volume_->root().count("elsewhere"), 0U);
}

TEST_F(TrashRoundTripOnVolume, AReadOnlyVolumeKeepsItsFilesAndItsTrash) {
    tree({"a = 1", "b = 2"});
    const OrdovanTrashRecord record = trash({"a"}).record;
    volume_->makeReadOnly();
    EXPECT_EQ(fate("b"), inPlace + "This disk is read-only.");
    EXPECT_EQ(restore(record).outcomes.at(0).message, "Couldn't put this file back; it is still in the Trash.");
    EXPECT_EQ(volume_->root().read("tree/b"), "2");
    EXPECT_EQ(volume_->root().read(".Trash-" + user_ + "/files/a"), "1");
}

TEST_F(TrashRoundTripOnVolume, AFullDiskKeepsItsFilesAndStillGivesBackWhatItHolds) {
    tree({"a = 1", "b = 2"});
    const OrdovanTrashRecord record = trash({"a"}).record;
    EXPECT_THROW(volume_->root().write("filler", std::string(1 << 20, 'x')), std::runtime_error);
    EXPECT_EQ(fate("b"), inPlace + "The disk is full. Free up some space and try again.");
    EXPECT_EQ(volume_->root().read("tree/b"), "2");
    EXPECT_EQ(restore(record).movedCount(), 1U);
}

TEST_F(TrashRoundTripOnVolume, WithoutAnyUsableTrashNothingIsCopiedElsewhere) {
    tree({"a = 1"});
    volume_->root().write(".Trash-" + user_, "in the way");
    EXPECT_THAT(fate("a"), StartsWith(inPlace));
    EXPECT_EQ(volume_->root().read("tree/a"), "1");
    EXPECT_FALSE(home_.has("data"));
}

TEST_F(TrashRoundTripOnVolume, AVolumeWhoseRootBelongsToAnotherKeepsItsFiles) {
    if (::geteuid() != 0) GTEST_SKIP() << "NOT TESTED: only root can make another's volume";
    tree({"a = 1"});
    giveToUnprivileged(at(""));
    EXPECT_EQ(fateUnprivileged("a"), noPermission);
    EXPECT_EQ(volume_->root().read("tree/a"), "1");
}

TEST_F(TrashRoundTripOnVolume, ASecondMountOfTheHomesDeviceHasItsOwnRoundTrip) {
    home_.write("shown/tree/keep", "");
    const BindMount mount(home_.path("shown"));
    choose(mount.root().path("tree"));
    EXPECT_EQ(roundTrip(), mount.root().path(".Trash-" + user_));
    EXPECT_TRUE(isEmptyTrash(homeTrash_));
}

TEST_F(TrashRoundTripOnVolume, AFileReachedByTwoPathsIsNoCopyOfItself) {
    tree({"real/film = same", "shown/"});
    const auto& mounts = ordovan::test::detail::MountNamespace::get();
    ASSERT_TRUE(mounts.bind(at("real"), at("shown")));
    const OrdovanDuplicateGroup group{fs_.contentHash(Url::file(at("real/film"))).value(),
                                      4,
                                      {Url::file(at("real/film")), Url::file(at("shown/film"))}};
    const auto report = OrdovanDuplicateTrasher::trashExtras(group, group.files[0], Url::file(root_), fs_);
    mounts.unmount(at("shown"));
    EXPECT_EQ(report.outcomes.at(0).message, "This is the same file as the one you're keeping; left untouched.");
    EXPECT_EQ(volume_->root().read("tree/real/film"), "same");
}

TEST_F(TrashRoundTripOnVolume, AnItemPutBackToAnotherVolumeIsCopiedProvedAndThenTakenOut) {
    tree({"film = a long film"});
    const OrdovanTrashEntry entry = trash({"film"}).record.entries.at(0);
    choose(home_.path("tree"));
    const OrdovanTrashEntry moved(at("new/film"), entry.trashed(), entry.byteSize(), entry.contentHash());
    volume_->root().write(".Trash-" + user_ + "/info/film.trashinfo", "[Trash Info]\nPath=" + at("new/film") + "\n");
    EXPECT_EQ(restore({1, {moved}}).movedCount(), 1U);
    EXPECT_EQ(home_.read("tree/new/film"), "a long film");
    EXPECT_TRUE(isEmptyTrash(volume_->path(".Trash-" + user_)));
}

}  // namespace
