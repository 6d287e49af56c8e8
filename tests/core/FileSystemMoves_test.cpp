// What every implementation of the file-system port has to do when it moves, copies and trashes.

#include "tests/support/FileSystemContract.h"

#include <gmock/gmock.h>

#include <array>

namespace {

using ordovan::test::FileSystemContract;
using testing::StartsWith;

class FileSystemMoves : public FileSystemContract {};

/// Every kind of thing that a name may stand for.
constexpr std::array<std::string_view, 10> takenNames = {"empty",    "file",     "folder", "full", "link",
                                                         "toFolder", "dangling", "loop",   "fifo", "name"};

class TakenNames : public FileSystemContract {
protected:
    void SetUp() override {
        build({"source = new", "empty", "file = old", "folder/", "full/inside = x", "link -> file", "toFolder -> full",
               "dangling -> nowhere", "loop -> loop", "fifo|", "name == source"});
    }
};

TEST_P(TakenNames, MovingNeverReplacesWhatHasTheName) {
    const auto before = world_->snapshot();
    for (const std::string_view name : takenNames) {
        EXPECT_EQ(errorOf(fs_.move(at("source"), at(name))), EEXIST) << name;
        EXPECT_EQ(world_->snapshot(), before) << name;
    }
}

TEST_P(TakenNames, CopyingNeverReplacesWhatHasTheName) {
    const auto before = world_->snapshot();
    for (const std::string_view name : takenNames) {
        EXPECT_EQ(errorOf(fs_.copy(at("source"), at(name))), EEXIST) << name;
        EXPECT_EQ(world_->snapshot(), before) << name;
    }
}

TEST_P(TakenNames, NothingIsMovedOrCopiedOntoItself) {
    const auto before = world_->snapshot();
    EXPECT_EQ(errorOf(fs_.move(at("source"), at("source"))), EEXIST);
    EXPECT_EQ(errorOf(fs_.copy(at("source"), at("source"))), EEXIST);
    EXPECT_EQ(world_->snapshot(), before);
}

// move

TEST_P(FileSystemMoves, MovingKeepsContentTimeModeAndIdentity) {
    build({"a/file = hello", "b/"});
    world_->setModified("a/file", 1'234'567'890'123'456'789);
    world_->setMode("a/file", 0640);
    const auto described = world_->snapshot().at("a/file");
    const std::string identity = fs_.fileIdentity(at("a/file")).value();
    EXPECT_EQ(errorOf(fs_.move(at("a/file"), at("b/new"))), 0);
    EXPECT_EQ(world_->snapshot(),
              (std::map<std::string, std::string>{{"a", "folder 0755"}, {"b", "folder 0755"}, {"b/new", described}}));
    EXPECT_EQ(fs_.fileIdentity(at("b/new")), identity);
}

TEST_P(FileSystemMoves, MovesItemsOfEveryKind) {
    build({"folder/inside = x", "link -> folder", "dangling -> nowhere", "fifo|", "one = two names", "other == one",
           "to/"});
    for (const char* name : {"folder", "link", "dangling", "fifo", "one"}) {
        const auto before = world_->snapshot();
        EXPECT_EQ(errorOf(fs_.move(at(name), at(std::string("to/") + name))), 0) << name;
        EXPECT_EQ(world_->snapshot().at(std::string("to/") + name), before.at(name)) << name;
        EXPECT_FALSE(world_->snapshot().contains(name)) << name;
    }
    EXPECT_TRUE(fs_.isRegularFile(at("to/folder/inside")));
}

TEST_P(FileSystemMoves, NamesAreBytes) {
    const std::string odd = "new\nline \xff \"quoted\" -rf *";
    build({"file = a"});
    EXPECT_EQ(errorOf(fs_.move(at("file"), at(odd))), 0);
    EXPECT_TRUE(fs_.isRegularFile(at(odd)));
    EXPECT_EQ(errorOf(fs_.move(at(odd), at(longestName_))), 0);
    EXPECT_EQ(errorOf(fs_.move(at(longestName_), at(tooLongName_))), ENAMETOOLONG);
    EXPECT_TRUE(fs_.isRegularFile(at(longestName_)));
}

TEST_P(FileSystemMoves, MovingThroughLinkedFoldersWorksOnTheRealOnes) {
    build({"real/file = a", "linked -> real", "other/", "out -> other"});
    const bool follows = world_->followsLinks();
    EXPECT_EQ(errorOf(fs_.move(at("linked/file"), at("out/file"))), behindLink(0));
    EXPECT_EQ(fs_.exists(at("real/file")), !follows);
    EXPECT_EQ(fs_.isRegularFile(at("other/file")), follows);
}

TEST_P(FileSystemMoves, MovesNothingThatIsMissingOrToAMissingFolder) {
    build({"file = a", "dangling -> nowhere"});
    const auto before = world_->snapshot();
    EXPECT_EQ(errorOf(fs_.move(at("missing"), at("free"))), ENOENT);
    EXPECT_EQ(errorOf(fs_.move(at("file"), at("missing/free"))), ENOENT);
    EXPECT_EQ(errorOf(fs_.move(at("file"), at("dangling/free"))), behindLink(ENOENT));
    EXPECT_EQ(errorOf(fs_.move(at("file"), at("file/free"))), ENOTDIR);
    EXPECT_EQ(world_->snapshot(), before);
}

TEST_P(FileSystemMoves, MovesNoFolderIntoItself) {
    build({"folder/below/file = a"});
    const auto before = world_->snapshot();
    EXPECT_EQ(errorOf(fs_.move(at("folder"), at("folder/new"))), EINVAL);
    EXPECT_EQ(errorOf(fs_.move(at("folder"), at("folder/below/new"))), EINVAL);
    EXPECT_EQ(world_->snapshot(), before);
}

TEST_P(FileSystemMoves, MovesNothingOutOfOrIntoAFolderThatMayNotBeWritten) {
    build({"locked/file = a", "open/file = b"});
    world_->setMode("locked", 0500);
    const auto before = world_->snapshot();
    EXPECT_EQ(world_->errorAsUser([&] { return fs_.move(at("locked/file"), at("open/new")); }), EACCES);
    EXPECT_EQ(world_->errorAsUser([&] { return fs_.move(at("open/file"), at("locked/new")); }), EACCES);
    EXPECT_EQ(world_->snapshot(), before);
}

TEST_P(FileSystemMoves, MovesAFileThatMayBeNeitherReadNorWritten) {
    build({"file = a"});
    world_->setMode("file", 0);
    EXPECT_EQ(world_->errorAsUser([&] { return fs_.move(at("file"), at("new")); }), 0);
    EXPECT_TRUE(fs_.isRegularFile(at("new")));
}

TEST_P(FileSystemMoves, MovesAPartialCopyIntoPlace) {
    const Url partial = OrdovanPartialName::beside(at("file.pdf"));
    build({std::string(partial.lastPathComponent()) + " = a"});
    EXPECT_EQ(errorOf(fs_.move(partial, at("file.pdf"))), 0);
    EXPECT_EQ(world_->snapshot().size(), 1U);
    EXPECT_EQ(fs_.fileSize(at("file.pdf")), 1);
}

TEST_P(FileSystemMoves, AnotherDeviceIsRefused) {
    SKIP_WITHOUT_MOUNTS();
    build({"file = a"});
    const Url target = Url::file(world_->addVolume(1 << 20)).appending("file");
    EXPECT_FALSE(fs_.sameVolume(at("file"), target));
    EXPECT_EQ(errorOf(fs_.move(at("file"), target)), EXDEV);
    EXPECT_TRUE(fs_.isRegularFile(at("file")));
    EXPECT_FALSE(fs_.exists(target));
}

TEST_P(FileSystemMoves, ASecondMountOfOneDeviceIsTheSameVolumeAndYetRefused) {
    SKIP_WITHOUT_MOUNTS();
    build({"file = a"});
    const Url target = Url::file(world_->addMountOfSameDevice()).appending("file");
    EXPECT_TRUE(fs_.sameVolume(at("file"), target));
    EXPECT_EQ(errorOf(fs_.move(at("file"), target)), EXDEV);
    EXPECT_EQ(errorOf(fs_.copy(at("file"), target)), 0);
    EXPECT_TRUE(fs_.isRegularFile(at("file")));
}

TEST_P(FileSystemMoves, AReadOnlyVolumeRefusesEveryChange) {
    SKIP_WITHOUT_MOUNTS();
    build({"file = a"});
    const std::string volume = world_->addVolume(1 << 20);
    world_->buildOnVolume({"file = a", "folder/"});
    world_->makeVolumeReadOnly();
    const Url there = Url::file(volume);
    const auto before = world_->snapshot(volume);
    EXPECT_EQ(errorOf(fs_.move(there.appending("file"), there.appending("new"))), EROFS);
    EXPECT_EQ(errorOf(fs_.copy(at("file"), there.appending("new"))), EROFS);
    EXPECT_EQ(errorOf(fs_.remove(there.appending("file"))), EROFS);
    EXPECT_EQ(errorOf(fs_.createDirectory(there.appending("new"))), EROFS);
    EXPECT_EQ(errorOf(fs_.createDirectory(there.appending("folder"))), 0);
    EXPECT_EQ(errorOf(fs_.trash(there.appending("file"))), EROFS);
    EXPECT_EQ(world_->snapshot(volume), before);
}

// copy

TEST_P(FileSystemMoves, CopyingKeepsContentTimeAndModeUnderANewIdentity) {
    build({"file = hello", "empty", "to/"});
    world_->setModified("file", 1'234'567'890'123'456'789);
    world_->setMode("file", 0640);
    EXPECT_EQ(errorOf(fs_.copy(at("file"), at("to/copy"))), 0);
    EXPECT_EQ(errorOf(fs_.copy(at("empty"), at("to/empty"))), 0);
    const auto after = world_->snapshot();
    EXPECT_EQ(after.at("to/copy"), "file 0640 1234567890.123456789 x1 = hello");
    EXPECT_EQ(after.at("file"), after.at("to/copy"));
    EXPECT_EQ(after.at("empty"), after.at("to/empty"));
    EXPECT_NE(fs_.fileIdentity(at("file")).value(), fs_.fileIdentity(at("to/copy")).value());
}

TEST_P(FileSystemMoves, ACopyOfAHardLinkIsAFileOfItsOwn) {
    build({"file = hello", "name == file"});
    EXPECT_EQ(errorOf(fs_.copy(at("name"), at("copy"))), 0);
    EXPECT_TRUE(world_->snapshot().at("copy").contains(" x1 = hello"));
    EXPECT_TRUE(world_->snapshot().at("file").contains(" x2 = hello"));
}

TEST_P(FileSystemMoves, CopiesNothingButRegularFiles) {
    build({"file = a", "link -> file", "dangling -> nowhere", "folder/", "fifo|"});
    const auto before = world_->snapshot();
    EXPECT_EQ(errorOf(fs_.copy(at("link"), at("new"))), ELOOP);
    EXPECT_EQ(errorOf(fs_.copy(at("dangling"), at("new"))), ELOOP);
    EXPECT_EQ(errorOf(fs_.copy(at("folder"), at("new"))), EINVAL);
    EXPECT_EQ(errorOf(fs_.copy(at("fifo"), at("new"))), EINVAL);
    EXPECT_EQ(errorOf(fs_.copy(at("missing"), at("new"))), ENOENT);
    EXPECT_EQ(world_->snapshot(), before);
}

TEST_P(FileSystemMoves, CopiesToNoPlaceThatIsNotThere) {
    build({"file = a"});
    const auto before = world_->snapshot();
    EXPECT_EQ(errorOf(fs_.copy(at("file"), at("missing/new"))), ENOENT);
    EXPECT_EQ(errorOf(fs_.copy(at("file"), at("file/new"))), ENOTDIR);
    EXPECT_EQ(errorOf(fs_.copy(at("file"), at(tooLongName_))), ENAMETOOLONG);
    EXPECT_EQ(world_->snapshot(), before);
}

TEST_P(FileSystemMoves, CopiesNothingWithoutPermission) {
    build({"secret = a", "file = b", "locked/", "readable = c"});
    world_->setMode("secret", 0200);
    world_->setMode("locked", 0500);
    world_->setMode("readable", 0400);
    EXPECT_EQ(world_->errorAsUser([&] { return fs_.copy(at("secret"), at("new")); }), EACCES);
    EXPECT_EQ(world_->errorAsUser([&] { return fs_.copy(at("file"), at("locked/new")); }), EACCES);
    EXPECT_FALSE(fs_.exists(at("new")));
    EXPECT_FALSE(fs_.exists(at("locked/new")));
    EXPECT_EQ(world_->errorAsUser([&] { return fs_.copy(at("readable"), at("new")); }), 0);
    EXPECT_TRUE(world_->snapshot().at("new").starts_with("file 0400"));
}

TEST_P(FileSystemMoves, ACopyThatDoesNotFitLeavesNothing) {
    SKIP_WITHOUT_MOUNTS();
    build({"large = " + std::string(300'000, 'x'), "small = a"});
    const std::string volume = world_->addVolume(128 * 1024);
    EXPECT_EQ(errorOf(fs_.copy(at("large"), Url::file(volume + "/new"))), ENOSPC);
    EXPECT_TRUE(world_->snapshot(volume).empty());
    EXPECT_EQ(fs_.fileSize(at("large")), 300'000);
    EXPECT_EQ(errorOf(fs_.copy(at("small"), Url::file(volume + "/new"))), 0);
}

TEST_P(FileSystemMoves, CopiesToAnotherVolumeAndBack) {
    SKIP_WITHOUT_MOUNTS();
    build({"file = hello"});
    world_->setModified("file", 1'234'567'890'123'456'789);
    const Url there = Url::file(world_->addVolume(1 << 20)).appending("file");
    EXPECT_EQ(errorOf(fs_.copy(at("file"), there)), 0);
    EXPECT_EQ(fs_.contentHash(there), fs_.contentHash(at("file")));
    EXPECT_EQ(errorOf(fs_.copy(there, at("back"))), 0);
    EXPECT_EQ(world_->snapshot().at("back"), world_->snapshot().at("file"));
}

// trash

TEST_P(FileSystemMoves, ATrashedFileLeavesItsPlaceAndIsWhereTheAnswerSays) {
    build({"file.pdf = hello"});
    const auto described = world_->snapshot().at("file.pdf");
    const std::string identity = fs_.fileIdentity(at("file.pdf")).value();
    const Url trashed = fs_.trash(at("file.pdf")).value();
    EXPECT_FALSE(fs_.exists(at("file.pdf")));
    EXPECT_EQ(trashed.lastPathComponent(), "file.pdf");
    EXPECT_TRUE(trashed.path().ends_with("/Trash/files/file.pdf")) << trashed;
    EXPECT_EQ(fs_.fileIdentity(trashed), identity);
    EXPECT_EQ(world_->snapshot(std::string(trashed.deletingLastPathComponent().path())),
              (std::map<std::string, std::string>{{"file.pdf", described}}));
}

TEST_P(FileSystemMoves, ATrashedFileHasAnInfoFileThatTellsWhereItWas) {
    build({"a file.pdf = hello"});
    const Url trash = fs_.trash(at("a file.pdf")).value().deletingLastPathComponent().deletingLastPathComponent();
    const auto infos = world_->snapshot(std::string(trash.appending("info").path()));
    ASSERT_EQ(infos.size(), 1U);
    EXPECT_EQ(infos.begin()->first, "a file.pdf.trashinfo");
    EXPECT_THAT(infos.begin()->second, StartsWith("file 0600 "));
    EXPECT_EQ(fs_.fileSize(trash.appending("info").appending("a file.pdf.trashinfo")),
              std::string_view("[Trash Info]\nPath=\nDeletionDate=2020-01-01T00:00:00\n").size() +
                  world_->path("a%20file.pdf").size());
}

TEST_P(FileSystemMoves, FilesOfOneNameStandSideBySideInTheTrash) {
    build({"a/file.tar.gz = 1", "b/file.tar.gz = 2", "c/file.tar.gz = 3"});
    const Url first = fs_.trash(at("a/file.tar.gz")).value();
    const Url second = fs_.trash(at("b/file.tar.gz")).value();
    const Url third = fs_.trash(at("c/file.tar.gz")).value();
    EXPECT_EQ(first.lastPathComponent(), "file.tar.gz");
    EXPECT_EQ(second.lastPathComponent(), "file.tar 2.gz");
    EXPECT_EQ(third.lastPathComponent(), "file.tar 3.gz");
    for (const Url& url : {first, second, third}) EXPECT_EQ(fs_.fileSize(url), 1) << url;
}

TEST_P(FileSystemMoves, TrashesALinkItself) {
    build({"file = hello", "link -> file", "dangling -> nowhere"});
    EXPECT_TRUE(fs_.isSymlink(fs_.trash(at("link")).value()));
    EXPECT_TRUE(fs_.isSymlink(fs_.trash(at("dangling")).value()));
    EXPECT_EQ(world_->snapshot().size(), 1U);
}

TEST_P(FileSystemMoves, TrashesNothingThatIsNotThere) {
    build({"file = a"});
    const auto before = world_->snapshot();
    EXPECT_EQ(errorOf(fs_.trash(at("missing"))), ENOENT);
    EXPECT_EQ(errorOf(fs_.trash(at("file/below"))), ENOTDIR);
    EXPECT_EQ(world_->snapshot(), before);
}

TEST_P(FileSystemMoves, TrashesNothingFromAFolderThatMayNotBeWritten) {
    build({"locked/file = a"});
    world_->setMode("locked", 0500);
    const auto before = world_->snapshot();
    EXPECT_EQ(world_->errorAsUser([&] { return fs_.trash(at("locked/file")); }), EACCES);
    EXPECT_EQ(world_->snapshot(), before);
}

TEST_P(FileSystemMoves, AFileOnAnotherVolumeGoesToThatVolumesTrash) {
    SKIP_WITHOUT_MOUNTS();
    const std::string volume = world_->addVolume(1 << 20);
    world_->buildOnVolume({"folder/file = a"});
    const Url trashed = fs_.trash(Url::file(volume + "/folder/file")).value();
    EXPECT_TRUE(trashed.path().starts_with(volume + "/.Trash-")) << trashed;
    EXPECT_TRUE(trashed.path().ends_with("/files/file")) << trashed;
    EXPECT_EQ(fs_.fileSize(trashed), 1);
    EXPECT_FALSE(fs_.exists(Url::file(volume + "/folder/file")));
}

ORDOVAN_INSTANTIATE_CONTRACT(TakenNames);
ORDOVAN_INSTANTIATE_CONTRACT(FileSystemMoves);

}  // namespace
