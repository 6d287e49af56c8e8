// What every implementation of the file-system port has to do, run against the real disk and against the one in
// memory, so that the fake can not drift from the truth.

#include "tests/support/FileSystemContract.h"

#include <gmock/gmock.h>

namespace {

using ordovan::test::FileSystemContract;

using testing::MatchesRegex;
using testing::Not;

// exists

TEST_P(FileSystemContract, FilesFoldersAndLinksToThemExist) {
    build({"file = a", "folder/", "toFile -> file", "toFolder -> folder", "fifo|"});
    for (const char* name : {"file", "folder", "toFile", "toFolder", "fifo"}) EXPECT_TRUE(fs_.exists(at(name))) << name;
}

TEST_P(FileSystemContract, WhatLeadsNowhereDoesNotExist) {
    build({"file = a", "dangling -> nowhere", "a -> b", "b -> a"});
    for (const char* name : {"missing", "missing/below", "file/below", "dangling", "a", "a/below"}) {
        EXPECT_FALSE(fs_.exists(at(name))) << name;
    }
}

TEST_P(FileSystemContract, NothingExistsForAUserBelowAClosedFolder) {
    build({"closed/file = a"});
    world_->setMode("closed", 0600);
    EXPECT_EQ(world_->asUser([&] { return fs_.exists(at("closed/file")); }), 0);
    EXPECT_EQ(world_->asUser([&] { return fs_.isRegularFile(at("closed/file")); }), 0);
    EXPECT_EQ(world_->asUser([&] { return fs_.exists(at("closed")); }), 1);
}

// isRegularFile, isSymlink

TEST_P(FileSystemContract, OnlyARegularFileItselfIsOne) {
    build({"file = a", "folder/", "link -> file", "fifo|", "dangling -> nowhere"});
    EXPECT_TRUE(fs_.isRegularFile(at("file")));
    for (const char* name : {"folder", "link", "fifo", "dangling", "missing", "file/below"}) {
        EXPECT_FALSE(fs_.isRegularFile(at(name))) << name;
    }
}

TEST_P(FileSystemContract, AnEmptyFileAndAHardLinkAreRegularFiles) {
    build({"empty", "other == empty"});
    EXPECT_TRUE(fs_.isRegularFile(at("empty")));
    EXPECT_TRUE(fs_.isRegularFile(at("other")));
}

TEST_P(FileSystemContract, OnlyALinkItselfIsOneDanglingOrNot) {
    build({"file = a", "folder/inside = b", "toFile -> file", "toFolder -> folder", "dangling -> nowhere",
           "loop -> loop"});
    for (const char* name : {"toFile", "toFolder", "dangling", "loop"}) EXPECT_TRUE(fs_.isSymlink(at(name))) << name;
    for (const char* name : {"file", "folder", "missing", "toFolder/inside", "loop/below"}) {
        EXPECT_FALSE(fs_.isSymlink(at(name))) << name;
    }
}

TEST_P(FileSystemContract, LinksAmongTheParentFoldersAreFollowed) {
    build({"real/file = hello", "linked -> real", "up -> real/../real"});
    for (const char* name : {"linked/file", "up/file"}) {
        EXPECT_TRUE(fs_.isRegularFile(at(name))) << name;
        EXPECT_EQ(fs_.fileSize(at(name)), 5) << name;
        const auto hash = fs_.contentHash(at(name)), real = fs_.contentHash(at("real/file"));
        EXPECT_EQ(errorOf(hash), behindLink(0)) << name;
        EXPECT_EQ(hash.value_or(*real), *real) << name;
    }
}

TEST_P(FileSystemContract, WhatIsNotAnAbsoluteFileUrlIsRefused) {
    build({"file = a"});
    for (const Url& url : {Url::parse("https://host/etc"), Url::file("relative"), Url(),
                           Url::file(world_->path("file") + std::string("\0x", 2))}) {
        EXPECT_FALSE(fs_.exists(url)) << url;
        EXPECT_FALSE(fs_.isRegularFile(url)) << url;
        EXPECT_FALSE(fs_.isSymlink(url)) << url;
        EXPECT_FALSE(fs_.sameVolume(url, url)) << url;
        EXPECT_EQ(errorOf(fs_.createDirectory(url)), EINVAL) << url;
        EXPECT_EQ(errorOf(fs_.move(at("file"), url)), EINVAL) << url;
        EXPECT_EQ(errorOf(fs_.move(url, at("free"))), EINVAL) << url;
        EXPECT_EQ(errorOf(fs_.copy(at("file"), url)), EINVAL) << url;
        EXPECT_EQ(errorOf(fs_.remove(url)), EINVAL) << url;
        EXPECT_TRUE(notExamined(fs_.fileSize(url))) << url;
        EXPECT_EQ(errorOf(fs_.contentHash(url)), EINVAL) << url;
        EXPECT_TRUE(notExamined(fs_.fileIdentity(url))) << url;
        EXPECT_EQ(errorOf(fs_.trash(url)), EINVAL) << url;
    }
}

// sameVolume

TEST_P(FileSystemContract, WhatIsMissingIsJudgedByItsNearestExistingAncestor) {
    build({"file = a", "folder/"});
    EXPECT_TRUE(fs_.sameVolume(at("file"), at("folder/some/deep/place")));
    EXPECT_TRUE(fs_.sameVolume(at("missing/one"), at("missing/two")));
    SKIP_WITHOUT_MOUNTS();
    const Url volume = Url::file(world_->addVolume(1 << 20));
    EXPECT_FALSE(fs_.sameVolume(at("file"), volume.appending("some").appending("deep").appending("place")));
    EXPECT_TRUE(fs_.sameVolume(volume, volume.appending("missing")));
}

TEST_P(FileSystemContract, AVolumeIsThatOfALinksTargetAndOfADanglingLinksFolder) {
    SKIP_WITHOUT_MOUNTS();
    const std::string volume = world_->addVolume(1 << 20);
    build({"file = a", "out -> " + volume, "dangling -> " + volume + "/missing"});
    EXPECT_FALSE(fs_.sameVolume(at("file"), at("out")));
    EXPECT_TRUE(fs_.sameVolume(at("file"), at("dangling")));
}

// createDirectory

TEST_P(FileSystemContract, MakesAFolderWithEveryMissingOneAboveIt) {
    EXPECT_EQ(errorOf(fs_.createDirectory(at("a/b/c"))), 0);
    EXPECT_EQ(world_->snapshot(), (std::map<std::string, std::string>{
                                      {"a", "folder 0755"}, {"a/b", "folder 0755"}, {"a/b/c", "folder 0755"}}));
}

TEST_P(FileSystemContract, AnExistingFolderIsNoErrorAndKeepsWhatItHolds) {
    build({"folder/file = a", "link -> folder"});
    world_->setMode("folder", 0700);
    const auto before = world_->snapshot();
    EXPECT_EQ(errorOf(fs_.createDirectory(at("folder"))), 0);
    EXPECT_EQ(errorOf(fs_.createDirectory(at("link"))), behindLink(0));
    EXPECT_EQ(world_->snapshot(), before);
}

TEST_P(FileSystemContract, MakesNoFolderWhereSomethingElseIsInTheWay) {
    build({"file = a", "dangling -> nowhere", "loop -> loop"});
    const auto before = world_->snapshot();
    EXPECT_EQ(errorOf(fs_.createDirectory(at("file"))), EEXIST);
    EXPECT_EQ(errorOf(fs_.createDirectory(at("file/below"))), ENOTDIR);
    EXPECT_EQ(errorOf(fs_.createDirectory(at("file/far/below"))), ENOTDIR);
    EXPECT_EQ(errorOf(fs_.createDirectory(at("dangling"))), behindLink(EEXIST));
    EXPECT_EQ(errorOf(fs_.createDirectory(at("dangling/below"))), behindLink(ENOENT));
    EXPECT_EQ(errorOf(fs_.createDirectory(at("loop/below"))), ELOOP);
    EXPECT_EQ(world_->snapshot(), before);
}

TEST_P(FileSystemContract, FolderNamesMayHave255BytesAndNoMore) {
    EXPECT_EQ(errorOf(fs_.createDirectory(at(longestName_))), 0);
    EXPECT_EQ(errorOf(fs_.createDirectory(at(tooLongName_))), ENAMETOOLONG);
}

TEST_P(FileSystemContract, MakesNoFolderInAFolderThatMayNotBeWritten) {
    build({"locked/"});
    world_->setMode("locked", 0500);
    EXPECT_EQ(world_->errorAsUser([&] { return fs_.createDirectory(at("locked/new/deep")); }), EACCES);
    EXPECT_EQ(world_->errorAsUser([&] { return fs_.createDirectory(at("locked")); }), 0);
}

// remove

TEST_P(FileSystemContract, RemovesTheOneFileItNames) {
    build({"a = 1", "b = 2", "fifo|"});
    EXPECT_EQ(errorOf(fs_.remove(at("a"))), 0);
    EXPECT_EQ(errorOf(fs_.remove(at("fifo"))), 0);
    EXPECT_EQ(world_->snapshot().size(), 1U);
    EXPECT_TRUE(fs_.exists(at("b")));
}

TEST_P(FileSystemContract, RemovesALinkAndNotItsTarget) {
    build({"file = a", "folder/inside = b", "toFile -> file", "toFolder -> folder", "dangling -> nowhere"});
    for (const char* name : {"toFile", "toFolder", "dangling"}) EXPECT_EQ(errorOf(fs_.remove(at(name))), 0) << name;
    EXPECT_EQ(world_->snapshot().size(), 3U);
    EXPECT_TRUE(fs_.exists(at("file")));
    EXPECT_TRUE(fs_.exists(at("folder/inside")));
}

TEST_P(FileSystemContract, RemovesOneNameOfAFileThatHasTwo) {
    build({"a = text", "b == a"});
    EXPECT_EQ(errorOf(fs_.remove(at("a"))), 0);
    EXPECT_FALSE(fs_.exists(at("a")));
    EXPECT_EQ(fs_.fileSize(at("b")), 4);
}

TEST_P(FileSystemContract, RemovesNoFolderEmptyOrFull) {
    build({"empty/", "full/file = a"});
    const auto before = world_->snapshot();
    EXPECT_EQ(errorOf(fs_.remove(at("empty"))), EISDIR);
    EXPECT_EQ(errorOf(fs_.remove(at("full"))), EISDIR);
    EXPECT_EQ(errorOf(fs_.remove(at("missing"))), ENOENT);
    EXPECT_EQ(errorOf(fs_.remove(at("full/file/below"))), ENOTDIR);
    EXPECT_EQ(world_->snapshot(), before);
}

TEST_P(FileSystemContract, RemovesNothingFromAFolderThatMayNotBeWritten) {
    build({"locked/file = a"});
    world_->setMode("locked", 0500);
    EXPECT_EQ(world_->errorAsUser([&] { return fs_.remove(at("locked/file")); }), EACCES);
    EXPECT_TRUE(fs_.exists(at("locked/file")));
}

// fileSize

TEST_P(FileSystemContract, TellsTheSizeOfAFileAndOfALinkItself) {
    build({"empty", "file = hello", "link -> file", "dangling -> nowhere at all"});
    world_->setMode("file", 0);
    EXPECT_EQ(fs_.fileSize(at("empty")), 0);
    EXPECT_EQ(fs_.fileSize(at("file")), 5);
    EXPECT_EQ(fs_.fileSize(at("link")), 4);
    EXPECT_EQ(fs_.fileSize(at("dangling")), 14);
}

TEST_P(FileSystemContract, ASizeThatCanNotBeToldIsNoSuchFile) {
    build({"file = a", "loop -> loop"});
    for (const char* name : {"missing", "missing/below", "file/below", "loop/below"}) {
        EXPECT_TRUE(notExamined(fs_.fileSize(at(name)))) << name;
    }
    EXPECT_TRUE(notExamined(fs_.fileSize(at(tooLongName_))));
}

// contentHash

TEST_P(FileSystemContract, HashesWithSha256InLowerCase) {
    build({"empty", "abc = abc"});
    EXPECT_EQ(fs_.contentHash(at("empty")), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(fs_.contentHash(at("abc")), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
}

TEST_P(FileSystemContract, HashesFilesOfOneWholePieceAndOfOneByteMore) {
    const std::string piece(1 << 20, 'a');
    build({"whole = " + piece, "more = " + piece + "a"});
    EXPECT_EQ(fs_.contentHash(at("whole")), "9bc1b2a288b26af7257a36277ae3816a7d4f16e89c1e7e77d0a5c48bad62b360");
    EXPECT_EQ(fs_.contentHash(at("more")), "4a3f0c0c213adea174f9a3d4c13177315b588bdb2e9c1012d3d0bf0453ca0f6a");
}

TEST_P(FileSystemContract, HashesNothingButRegularFiles) {
    build({"file = a", "link -> file", "folder/", "fifo|", "dangling -> nowhere"});
    EXPECT_EQ(errorOf(fs_.contentHash(at("link"))), ELOOP);
    EXPECT_EQ(errorOf(fs_.contentHash(at("dangling"))), ELOOP);
    EXPECT_EQ(errorOf(fs_.contentHash(at("folder"))), EISDIR);
    EXPECT_EQ(errorOf(fs_.contentHash(at("fifo"))), EINVAL);
    EXPECT_EQ(errorOf(fs_.contentHash(at("missing"))), ENOENT);
    EXPECT_EQ(errorOf(fs_.contentHash(at("file/below"))), ENOTDIR);
}

TEST_P(FileSystemContract, HashesNoFileThatMayNotBeRead) {
    build({"secret = a"});
    world_->setMode("secret", 0200);
    EXPECT_EQ(world_->errorAsUser([&] { return fs_.contentHash(at("secret")); }), EACCES);
}

// fileIdentity

TEST_P(FileSystemContract, AnIdentityIsDeviceColonInodeInDecimal) {
    build({"file = a"});
    EXPECT_THAT(fs_.fileIdentity(at("file")).value(), MatchesRegex("-?[0-9]+:[0-9]+"));
    EXPECT_THAT(fs_.fileIdentity(at("file")).value(), Not(MatchesRegex("(-?0[0-9]+:.*)|(.*:0[0-9]*)")));
}

TEST_P(FileSystemContract, ALinkHasItsTargetsIdentityAndHardLinksShareOne) {
    build({"file = a", "link -> file", "name == file", "twin = a", "folder/", "toFolder -> folder"});
    const std::string identity = fs_.fileIdentity(at("file")).value();
    EXPECT_EQ(fs_.fileIdentity(at("link")), identity);
    EXPECT_EQ(fs_.fileIdentity(at("name")), identity);
    EXPECT_NE(fs_.fileIdentity(at("twin")), identity);
    EXPECT_EQ(fs_.fileIdentity(at("folder")), fs_.fileIdentity(at("toFolder")));
}

TEST_P(FileSystemContract, AFileInPlaceOfAnotherHasAnotherIdentity) {
    build({"file = a"});
    const std::string identity = fs_.fileIdentity(at("file")).value();
    world_->replaceFile("file", "a");
    EXPECT_NE(fs_.fileIdentity(at("file")).value(), identity);
}

TEST_P(FileSystemContract, AnIdentityThatCanNotBeToldIsNoSuchFile) {
    build({"dangling -> nowhere", "loop -> loop"});
    for (const char* name : {"missing", "missing/below", "dangling", "loop"}) {
        EXPECT_TRUE(notExamined(fs_.fileIdentity(at(name)))) << name;
    }
}

ORDOVAN_INSTANTIATE_CONTRACT(FileSystemContract);

}  // namespace
