#include "OrdovanCore/platform/ExclusiveMove.h"

#include "tests/support/SecondVolume.h"
#include "tests/support/TempFolder.h"
#include "tests/support/Unprivileged.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <functional>
#include <string>
#include <string_view>
#include <utility>

using ordovan::MoveWays;
using ordovan::test::BindMount;
using ordovan::test::SecondVolume;
using ordovan::test::TempFolder;

namespace {

/// What another program does at the next but `skip` examination of a path.
std::function<void()> atExamination;
int skip = 0;

/// The errno with which a file system refuses every renameat2(2), and every linkat(2).
int renameRefusal = 0;
int linkRefusal = 0;

/// A path that can not be examined, and one that can not be removed, and why not; from when `atExamination` set it.
struct Refusal {
    std::string path;
    int error = 0;
};
Refusal examination;
Refusal removal;

/// What another program does right before the next rename, and whether the system does what it says it did not.
std::function<void()> atRename;
int renameReply = 0;
int linkReply = 0;

/// What can not be done to a hidden name of ours, and why not.
struct HiddenRefusals {
    int rename = 0;
    int examination = 0;
    int removal = 0;
};
HiddenRefusals hidden;

bool isHidden(const char* path) {
    return std::string_view(path).contains("/.a.ordovan-partial-");
}

bool fails(int error) {
    errno = error;
    return error != 0;
}

/// The errno with which looking at open files fails.
int openFileRefusal = 0;

bool refuses(const Refusal& refusal, const char* path) {
    if (refusal.error == 0 || refusal.path != path) return false;
    errno = refusal.error;
    return true;
}

}  // namespace

// Takes the place of the C library's, so that a test can act between two steps of a move.
extern "C" int fstatat(int folder, const char* path, struct stat* facts, int flags) noexcept {
    if (atExamination && skip-- == 0) std::exchange(atExamination, nullptr)();
    if (refuses(examination, path) || (isHidden(path) && fails(hidden.examination))) return -1;
    return static_cast<int>(::syscall(SYS_newfstatat, folder, path, facts, flags));
}
extern "C" int fstat(int file, struct stat* facts) noexcept {
    if (openFileRefusal == 0) return static_cast<int>(::syscall(SYS_fstat, file, facts));
    errno = openFileRefusal;
    return -1;
}
extern "C" int unlinkat(int folder, const char* path, int flags) noexcept {
    if (refuses(removal, path) || (isHidden(path) && fails(hidden.removal))) return -1;
    return static_cast<int>(::syscall(SYS_unlinkat, folder, path, flags));
}
extern "C" int linkat(int fromFolder, const char* from, int toFolder, const char* to, int flags) noexcept {
    if (fails(linkRefusal)) return -1;
    const int done = static_cast<int>(::syscall(SYS_linkat, fromFolder, from, toFolder, to, flags));
    return done != 0 || fails(std::exchange(linkReply, 0)) ? -1 : 0;
}
extern "C" int renameat(int fromFolder, const char* from, int toFolder, const char* to) noexcept {
    if (atRename) std::exchange(atRename, nullptr)();
    if (isHidden(to) && fails(hidden.rename)) return -1;
    const int done = static_cast<int>(::syscall(SYS_renameat2, fromFolder, from, toFolder, to, 0));
    return done != 0 || fails(std::exchange(renameReply, 0)) ? -1 : 0;
}
extern "C" int renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned flags) noexcept {
    if (renameRefusal == 0) return static_cast<int>(::syscall(SYS_renameat2, fromFolder, from, toFolder, to, flags));
    errno = renameRefusal;
    return -1;
}

namespace {

constexpr MoveWays byLink{.rename = false, .link = true, .placeholder = false};
constexpr MoveWays byLinkPlainly{.rename = false, .link = true, .placeholder = false, .hidesOldName = false};
constexpr MoveWays byPlaceholder{.rename = false, .link = false, .placeholder = true};
constexpr MoveWays byLinkOrPlaceholder{.rename = false, .link = true, .placeholder = true};

int move(const TempFolder& t, const char* from, const char* to, MoveWays ways) {
    return ordovan::moveExclusively(t.path(from).c_str(), t.path(to).c_str(), ways);
}

::ino_t inode(const std::string& path) {
    struct ::stat facts{};
    return ::lstat(path.c_str(), &facts) == 0 ? facts.st_ino : 0;
}

/// Every way alone.
class ExclusiveMove : public testing::TestWithParam<MoveWays> {};

std::string nameOf(const MoveWays& way) {
    if (way.rename) return "Rename";
    if (way.link) return way.hidesOldName ? "Link" : "LinkPlainly";
    return "Placeholder";
}

INSTANTIATE_TEST_SUITE_P(EveryWay, ExclusiveMove,
                         testing::Values(MoveWays{true, false, false}, byLink, byLinkPlainly, byPlaceholder),
                         [](const auto& way) { return nameOf(way.param); });

TEST_P(ExclusiveMove, KeepsContentAndIdentity) {
    const TempFolder t;
    t.write("a", "content");
    const ::ino_t before = inode(t.path("a"));
    EXPECT_EQ(move(t, "a", "b", GetParam()), 0);
    EXPECT_EQ(t.read("b"), "content");
    EXPECT_EQ(inode(t.path("b")), before);
    EXPECT_EQ(t.count(), 1u);
}

TEST_P(ExclusiveMove, NeverReplacesAFile) {
    const TempFolder t;
    t.write("a", "content");
    t.write("b", "");
    EXPECT_EQ(move(t, "a", "b", GetParam()), EEXIST);
    EXPECT_EQ(t.read("a"), "content");
    EXPECT_EQ(t.read("b"), "");
}

TEST_P(ExclusiveMove, NeverReplacesADanglingLink) {
    const TempFolder t;
    t.write("a", "content");
    t.makeLink("b", "nowhere");
    EXPECT_EQ(move(t, "a", "b", GetParam()), EEXIST);
    EXPECT_EQ(t.read("a"), "content");
    EXPECT_EQ(std::filesystem::read_symlink(t.path("b")), "nowhere");
    EXPECT_FALSE(t.has("nowhere"));
}

TEST_P(ExclusiveMove, NeverReplacesAnotherNameOfTheSameFile) {
    const TempFolder t;
    t.write("a", "content");
    std::filesystem::create_hard_link(t.path("a"), t.path("b"));
    EXPECT_EQ(move(t, "a", "b", GetParam()), EEXIST);
    EXPECT_EQ(t.count(), 2u);
}

TEST_P(ExclusiveMove, MovesALinkItself) {
    const TempFolder t;
    t.write("target", "content");
    t.makeLink("a", "target");
    EXPECT_EQ(move(t, "a", "b", GetParam()), 0);
    EXPECT_EQ(std::filesystem::read_symlink(t.path("b")), "target");
    EXPECT_EQ(t.read("target"), "content");
    EXPECT_FALSE(t.has("a"));
}

TEST_P(ExclusiveMove, LeavesNothingBehindWithoutASource) {
    const TempFolder t;
    EXPECT_EQ(move(t, "a", "b", GetParam()), ENOENT);
    EXPECT_EQ(t.count(), 0u);
}

TEST_P(ExclusiveMove, RefusesAMissingFolder) {
    const TempFolder t;
    t.write("a", "content");
    EXPECT_EQ(move(t, "a", "missing/b", GetParam()), ENOENT);
    EXPECT_EQ(t.read("a"), "content");
}

TEST_P(ExclusiveMove, RefusesAnotherVolumeAndLeavesNothingThere) {
    if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
    const TempFolder t;
    const SecondVolume other;
    t.write("a", "content");
    EXPECT_EQ(ordovan::moveExclusively(t.path("a").c_str(), other.path("b").c_str(), GetParam()), EXDEV);
    EXPECT_EQ(other.root().count(), 0u);
    EXPECT_EQ(t.read("a"), "content");
}

TEST_P(ExclusiveMove, RefusesAnotherMountOfTheSameDevice) {
    if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
    const TempFolder t;
    t.write("a", "content");
    t.makeFolder("shown");
    const BindMount elsewhere(t.path("shown"));
    EXPECT_EQ(ordovan::moveExclusively(t.path("a").c_str(), elsewhere.root().path("b").c_str(), GetParam()), EXDEV);
    EXPECT_EQ(t.count("shown"), 0u);
    EXPECT_EQ(t.read("a"), "content");
}

TEST_P(ExclusiveMove, LeavesTheItemAloneWhenItsFolderMayNotChange) {
    const TempFolder t;
    t.write("locked/a", "content");
    t.makeFolder("open");
    ordovan::test::giveToUnprivileged(t.path());
    ::chmod(t.path("locked").c_str(), 0500);
    EXPECT_EQ(ordovan::test::unprivileged([&] { return move(t, "locked/a", "open/b", GetParam()); }), EACCES);
    EXPECT_EQ(t.read("locked/a"), "content");
    EXPECT_EQ(t.count("open"), 0u);
}

TEST(ExclusiveMoveWhereRenamesReplace, TakesALinkInstead) {
    for (const int refusal : {EINVAL, ENOSYS, EOPNOTSUPP}) {
        const TempFolder t;
        t.write("a", "content");
        t.write("taken", "");
        renameRefusal = refusal;
        EXPECT_EQ(move(t, "a", "taken", {}), EEXIST);
        EXPECT_EQ(move(t, "a", "b", {}), 0);
        renameRefusal = 0;
        EXPECT_EQ(t.read("b"), "content");
        EXPECT_EQ(t.count(), 2u);
    }
}

TEST(ExclusiveMoveWhereRenamesReplace, TakesNoOtherWayForAnotherReason) {
    const TempFolder t;
    t.write("a", "content");
    renameRefusal = EIO;
    EXPECT_EQ(move(t, "a", "b", {}), EIO);
    renameRefusal = 0;
    EXPECT_EQ(t.read("a"), "content");
    EXPECT_EQ(t.count(), 1u);
}

TEST(ExclusiveMoveOfAFolder, TakesAnEmptyFolderAsPlaceholder) {
    const TempFolder t;
    t.write("a/inside", "content");
    EXPECT_EQ(move(t, "a", "b", byLinkOrPlaceholder), 0);
    EXPECT_EQ(t.read("b/inside"), "content");
    EXPECT_FALSE(t.has("a"));
}

TEST(ExclusiveMoveOfAFolder, NeverReplacesAnEmptyFolder) {
    const TempFolder t;
    t.write("a/inside", "content");
    t.makeFolder("b");
    EXPECT_EQ(move(t, "a", "b", byLinkOrPlaceholder), EEXIST);
    EXPECT_EQ(move(t, "a", "b", {}), EEXIST);
    EXPECT_EQ(t.read("a/inside"), "content");
    EXPECT_EQ(t.count("b"), 0u);
}

TEST(ExclusiveMoveOfAFolder, HasNoOtherWayThanAPlaceholderWhereRenamesReplace) {
    const TempFolder t;
    t.write("a/x", "content");
    EXPECT_EQ(move(t, "a", "b", byLink), ENOTSUP);
    EXPECT_EQ(t.read("a/x"), "content");
    EXPECT_EQ(t.count(), 1u);
}

TEST(ExclusiveMoveOfAFolder, RefusesItsOwnInsideAndLeavesNothingThere) {
    const TempFolder t;
    t.makeFolder("a");
    EXPECT_EQ(move(t, "a", "a/b", {}), EINVAL);
    EXPECT_EQ(t.count("a"), 0u);
}

TEST(ExclusiveMoveByLink, TakesThePlaceholderWhereThereAreNoLinks) {
    for (const int refusal : {EPERM, EMLINK, EOPNOTSUPP}) {
        const TempFolder t;
        t.write("a", "content");
        t.write("taken", "");
        linkRefusal = refusal;
        EXPECT_EQ(move(t, "a", "taken", byLinkOrPlaceholder), EEXIST);
        EXPECT_EQ(move(t, "a", "b", byLinkOrPlaceholder), 0);
        linkRefusal = 0;
        EXPECT_EQ(t.read("b"), "content");
        EXPECT_EQ(t.count(), 2u);
    }
}

TEST(ExclusiveMoveByLink, LeavesAFileThatTookTheOldNameMeanwhile) {
    const TempFolder t;
    t.write("a", "old");
    t.write("fresh", "new");
    atExamination = [&] { std::filesystem::rename(t.path("fresh"), t.path("a")); };
    skip = 1;  // after the link was made
    EXPECT_EQ(move(t, "a", "b", byLink), 0);
    EXPECT_EQ(t.read("a"), "new");
    EXPECT_EQ(t.read("b"), "old");
}

TEST(ExclusiveMoveByLink, IsDoneWhenTheOldNameWentMeanwhile) {
    const TempFolder t;
    t.write("a", "old");
    atExamination = [&] { std::filesystem::remove(t.path("a")); };
    skip = 1;
    EXPECT_EQ(move(t, "a", "b", byLink), 0);
    EXPECT_EQ(t.read("b"), "old");
    EXPECT_EQ(t.count(), 1u);
}

TEST(ExclusiveMoveByLink, GivesAFileItsNameBackThatWasSavedBehindTheLastLook) {
    const TempFolder t;
    t.write("a", "old");
    t.write("fresh", "new");
    atRename = [&] { std::filesystem::rename(t.path("fresh"), t.path("a")); };
    EXPECT_EQ(move(t, "a", "b", byLink), 0);
    EXPECT_EQ(t.read("a"), "new");
    EXPECT_EQ(t.read("b"), "old");
    EXPECT_EQ(t.count(), 2u);
}

TEST(ExclusiveMoveByLink, IsDoneWhenTheOldNameWentBehindTheLastLook) {
    const TempFolder t;
    t.write("a", "old");
    atRename = [&] { std::filesystem::remove(t.path("a")); };
    EXPECT_EQ(move(t, "a", "b", byLink), 0);
    EXPECT_EQ(t.read("b"), "old");
    EXPECT_EQ(t.count(), 1u);
}

TEST(ExclusiveMoveByLink, LeavesAFileHiddenOnlyWhileAnotherHasItsName) {
    const TempFolder t;
    t.write("a", "old");
    t.write("fresh", "new");
    t.write("fresher", "newer");
    atRename = [&] { std::filesystem::rename(t.path("fresh"), t.path("a")); };
    atExamination = [&] {
        atExamination = [&] { std::filesystem::rename(t.path("fresher"), t.path("a")); };
        skip = 0;
    };
    skip = 1;  // looked at: a, b, then the hidden name
    EXPECT_EQ(move(t, "a", "b", byLink), 0);
    EXPECT_EQ(t.read("a"), "newer");
    EXPECT_EQ(t.read("b"), "old");
    EXPECT_EQ(t.count(), 3u) << "nothing of others is removed";
}

TEST(ExclusiveMoveByLink, TakesAHiddenNameOfOursWithoutMoreSteps) {
    const TempFolder t;
    const std::string own = ".a.ordovan-partial-00000000-0000-4000-8000-000000000000";
    int announced = 0;
    const std::function<void(const std::string&)> announce = [&](const std::string&) { ++announced; };
    const MoveWays ways{.rename = false, .announce = &announce};
    t.write("a", "content");
    linkRefusal = EIO;
    EXPECT_EQ(move(t, "a", own.c_str(), ways), 0);
    linkRefusal = 0;
    EXPECT_EQ(announced, 0);
    t.write("a", "other");
    EXPECT_EQ(move(t, "a", own.c_str(), ways), EEXIST);
    EXPECT_EQ(t.read(own), "content");
    examination = {t.path(own), EIO};
    EXPECT_EQ(move(t, "a", own.c_str(), ways), EIO);
    examination = {};
    EXPECT_EQ(t.read("a"), "other");
}

TEST(ExclusiveMoveByLink, AnnouncesTheHiddenNameThatItIsGoingToUse) {
    for (const char* from : {"a", ".a.ordovan-partial-00000000-0000-4000-8000-000000000000"}) {
        const TempFolder t;
        t.write(from, "content");
        std::string name = "none";
        const std::function<void(const std::string&)> announce = [&](const std::string& hiddenName) {
            name = hiddenName;
        };
        std::string seen;
        atExamination = [&] { seen = !name.empty() && t.has(name) ? "hidden" : "not"; };
        skip = 2;
        EXPECT_EQ(move(t, from, "b", {.rename = false, .announce = &announce}), 0);
        EXPECT_EQ(name.starts_with(".a.ordovan-partial-") ? "hidden" : "not", seen);
        EXPECT_EQ(name.empty(), from[0] == '.') << "what bears one needs no other";
        EXPECT_EQ(t.count(), 1u);
        atExamination = nullptr;
    }
}

/// The reply to a call says that it was not done, and it was.
class ExclusiveMoveWithLostReplies : public testing::Test {
protected:
    ExclusiveMoveWithLostReplies() { t.write("a", "content"); }
    ~ExclusiveMoveWithLostReplies() override {
        linkReply = renameReply = 0;
        hidden = {};
        examination = {};
        atExamination = nullptr;
    }
    void expectOnly(const char* name) {
        EXPECT_EQ(t.read(name), "content");
        EXPECT_EQ(t.count(), 1u);
    }
    TempFolder t;
};

TEST_F(ExclusiveMoveWithLostReplies, GoesOnWhenTheLinkWasMade) {
    for (const int reply : {EIO, EEXIST, ETIMEDOUT}) {
        for (const MoveWays ways : {byLink, byLinkPlainly}) {
            linkReply = reply;
            EXPECT_EQ(move(t, "a", "b", ways), 0);
            expectOnly("b");
            std::filesystem::rename(t.path("b"), t.path("a"));
        }
    }
}

TEST_F(ExclusiveMoveWithLostReplies, LeavesANameThatTheFileHadBefore) {
    std::filesystem::create_hard_link(t.path("a"), t.path("b"));
    linkRefusal = EIO;
    EXPECT_EQ(move(t, "a", "b", byLink), EIO);
    linkRefusal = 0;
    EXPECT_EQ(t.count(), 2u);
}

TEST_F(ExclusiveMoveWithLostReplies, TakesTheLinkBackThatItCanNotSee) {
    linkReply = EIO;
    atExamination = [&] { examination = {t.path("b"), EIO}; };
    skip = 0;
    EXPECT_EQ(move(t, "a", "b", byLink), EIO);
    expectOnly("a");
}

TEST_F(ExclusiveMoveWithLostReplies, TouchesNothingUnseenWhereSomethingStoodAlready) {
    linkReply = EEXIST;
    atExamination = [&] { examination = {t.path("b"), EIO}; };
    skip = 0;
    EXPECT_EQ(move(t, "a", "b", byLink), EEXIST);
    EXPECT_EQ(t.read("a"), "content");
    EXPECT_EQ(t.count(), 2u);
}

TEST_F(ExclusiveMoveWithLostReplies, GoesOnWhenTheOldNameWasHidden) {
    for (const int reply : {EIO, ENOENT}) {
        renameReply = reply;
        EXPECT_EQ(move(t, "a", "b", byLink), 0);
        expectOnly("b");
        std::filesystem::rename(t.path("b"), t.path("a"));
    }
}

TEST_F(ExclusiveMoveWithLostReplies, TakesTheLinkBackWhenTheOldNameCanNotBeHidden) {
    hidden.rename = EBUSY;
    EXPECT_EQ(move(t, "a", "b", byLink), EBUSY);
    expectOnly("a");
}

TEST_F(ExclusiveMoveWithLostReplies, GoesBackWhenTheHiddenNameCanNotBeSeen) {
    hidden.examination = EIO;
    EXPECT_EQ(move(t, "a", "b", byLink), EIO);
    expectOnly("a");
}

TEST_F(ExclusiveMoveWithLostReplies, HasItsOldNameWhenTheHiddenOneStays) {
    hidden.removal = EBUSY;
    EXPECT_EQ(move(t, "a", "b", byLink), EBUSY);
    EXPECT_EQ(t.read("a"), "content");
    EXPECT_FALSE(t.has("b"));
    EXPECT_EQ(t.count(), 2u) << "the hidden name, which the record of the run tells";
}

TEST_F(ExclusiveMoveWithLostReplies, HasMovedWhenTheHiddenNameStaysAndTheOldOneIsTaken) {
    hidden.removal = EBUSY;
    atExamination = [&] { t.write("a", "new"); };
    skip = 2;
    EXPECT_EQ(move(t, "a", "b", byLink), 0);
    EXPECT_EQ(t.read("a"), "new");
    EXPECT_EQ(t.read("b"), "content");
}

TEST(ExclusiveMoveByPlaceholder, NeverReplacesWhatWasWrittenIntoThePlaceholder) {
    const TempFolder t;
    t.write("a", "content");
    atExamination = [&] { t.write("b", "someone else's"); };
    skip = 1;  // the first looks at the source
    EXPECT_EQ(move(t, "a", "b", byPlaceholder), EEXIST);
    EXPECT_EQ(t.read("a"), "content");
    EXPECT_EQ(t.read("b"), "someone else's");
}

TEST(ExclusiveMoveByPlaceholder, NeverReplacesAFileThatTookThePlaceOfThePlaceholder) {
    const TempFolder t;
    t.write("a", "content");
    t.write("other", "");
    const ::ino_t other = inode(t.path("other"));
    atExamination = [&] { std::filesystem::rename(t.path("other"), t.path("b")); };
    skip = 1;
    EXPECT_EQ(move(t, "a", "b", byPlaceholder), EEXIST);
    EXPECT_EQ(t.read("a"), "content");
    EXPECT_EQ(inode(t.path("b")), other);
}

/// Moves "a" to "b"; from the examination after `skipped` others on, `b` can not be examined.
class ExclusiveMoveInTheDark : public testing::Test {
protected:
    ExclusiveMoveInTheDark() { t.write("a", "content"); }
    ~ExclusiveMoveInTheDark() override {
        atExamination = nullptr;
        examination = removal = {};
        openFileRefusal = 0;
    }
    int moveBlind(MoveWays ways, int skipped, int error = EIO) {
        atExamination = [=, this] { examination = {t.path("b"), error}; };
        skip = skipped;
        const int moved = move(t, "a", "b", ways);
        examination = {};
        return moved;
    }
    void expectOnlyTheOldName() {
        EXPECT_EQ(t.read("a"), "content");
        EXPECT_EQ(t.count(), 1u);
    }
    TempFolder t;
};

TEST_F(ExclusiveMoveInTheDark, TakesTheLinkBackThatItCanNotSee) {
    EXPECT_EQ(moveBlind(byLinkPlainly, 0), EIO);
    expectOnlyTheOldName();
}

TEST_F(ExclusiveMoveInTheDark, TakesTheLinkBackOfAFileWithOtherNames) {
    std::filesystem::create_hard_link(t.path("a"), t.path("other"));
    EXPECT_EQ(moveBlind(byLinkPlainly, 0), EIO);
    EXPECT_FALSE(t.has("b"));
    EXPECT_EQ(t.count(), 2u);
}

TEST_F(ExclusiveMoveInTheDark, TakesTheLinkBackWhenTheOldNameStays) {
    removal = {t.path("a"), EBUSY};
    EXPECT_EQ(move(t, "a", "b", byLinkPlainly), EBUSY);
    expectOnlyTheOldName();
    EXPECT_EQ(moveBlind(byLinkPlainly, 4), EBUSY);  // looked at: a, b, a, a, then b once more
    expectOnlyTheOldName();
}

TEST_F(ExclusiveMoveInTheDark, KeepsTheLinkWhenItIsTheOnlyName) {
    atExamination = [&] {
        std::filesystem::remove(t.path("a"));
        examination = {t.path("b"), EIO};
    };
    skip = 1;
    EXPECT_EQ(move(t, "a", "b", byLinkPlainly), EIO);
    EXPECT_EQ(t.read("b"), "content");
}

TEST_F(ExclusiveMoveInTheDark, KeepsAFileThatTookThePlaceOfTheLink) {
    t.write("theirs", "someone else's");
    atExamination = [&] {
        std::filesystem::rename(t.path("theirs"), t.path("b"));
        examination = {t.path("b"), EIO};
    };
    skip = 1;
    EXPECT_EQ(move(t, "a", "b", byLinkPlainly), EIO);
    EXPECT_EQ(t.read("b"), "someone else's");
    EXPECT_EQ(t.read("a"), "content");
}

TEST_F(ExclusiveMoveInTheDark, TakesTheLinkBackWhenTheOldNameCanNotBeSeenForAMoment) {
    for (const int error : {EIO, ESTALE, EACCES}) {
        atExamination = [&, error] {
            examination = {t.path("a"), error};
            atExamination = [] { examination = {}; };
            skip = 0;
        };
        skip = 2;  // looked at: a, b, then a once more
        EXPECT_EQ(move(t, "a", "b", byLinkPlainly), error);
        expectOnlyTheOldName();
    }
}

TEST_F(ExclusiveMoveInTheDark, ClaimsNoSuccessWhileTheOldNameCanNotBeSeen) {
    atExamination = [&] { examination = {t.path("a"), EIO}; };
    skip = 2;
    EXPECT_EQ(move(t, "a", "b", byLinkPlainly), EIO);
    EXPECT_EQ(t.read("a"), "content");
    EXPECT_EQ(t.read("b"), "content");
}

TEST_F(ExclusiveMoveInTheDark, TakesThePlaceholderBackThatItCanNotSee) {
    EXPECT_EQ(moveBlind(byPlaceholder, 0), EIO);
    expectOnlyTheOldName();
}

TEST_F(ExclusiveMoveInTheDark, TakesThePlaceholderBackThatItCanNotLookInto) {
    openFileRefusal = EIO;
    EXPECT_EQ(move(t, "a", "b", byPlaceholder), EIO);
    openFileRefusal = 0;
    expectOnlyTheOldName();
}

TEST_F(ExclusiveMoveInTheDark, TakesThePlaceholderBackWhenTheSourceGoes) {
    atExamination = [&] { std::filesystem::rename(t.path("a"), t.path("c")); };
    skip = 1;
    EXPECT_EQ(move(t, "a", "b", byPlaceholder), ENOENT);
    EXPECT_EQ(t.read("c"), "content");
    EXPECT_EQ(t.count(), 1u);
}

TEST_F(ExclusiveMoveInTheDark, TakesThePlaceholderBackWhenTheSourceGoesAndItCanNotSee) {
    atExamination = [&] {
        std::filesystem::rename(t.path("a"), t.path("c"));
        atExamination = [&] { examination = {t.path("b"), EIO}; };
        skip = 0;
    };
    skip = 1;
    EXPECT_EQ(move(t, "a", "b", byPlaceholder), ENOENT);
    EXPECT_EQ(t.count(), 1u);
}

TEST_F(ExclusiveMoveInTheDark, KeepsWhatWasWrittenIntoThePlaceholder) {
    atExamination = [&] {
        t.write("b", "someone else's");
        examination = {t.path("b"), EIO};
    };
    skip = 1;
    EXPECT_EQ(move(t, "a", "b", byPlaceholder), EIO);
    EXPECT_EQ(t.read("b"), "someone else's");
    EXPECT_EQ(t.read("a"), "content");
}

TEST_F(ExclusiveMoveInTheDark, KeepsAFileThatTookThePlaceOfThePlaceholder) {
    t.write("theirs", "");
    atExamination = [&] {
        std::filesystem::rename(t.path("theirs"), t.path("b"));
        examination = {t.path("b"), EIO};
    };
    skip = 1;
    EXPECT_EQ(move(t, "a", "b", byPlaceholder), EIO);
    EXPECT_EQ(t.read("a"), "content");
    EXPECT_EQ(t.count(), 2u);
}

TEST_F(ExclusiveMoveInTheDark, TakesTheFolderPlaceholderBackWhenTheRenameFails) {
    t.makeFolder("folder/inside");
    EXPECT_EQ(move(t, "folder", "folder/inside/b", byPlaceholder), EINVAL);
    EXPECT_EQ(t.count("folder/inside"), 0u);
}

TEST(ExclusiveMoveWithoutWays, ChangesNothing) {
    const TempFolder t;
    t.write("a", "content");
    EXPECT_EQ(move(t, "a", "b", {false, false, false}), ENOTSUP);
    EXPECT_EQ(t.read("a"), "content");
}

std::string synced;

TEST(DurableMove, FlushesTheFolderOfTheNewName) {
    const TempFolder t;
    t.write("a", "content");
    synced.clear();
    const auto sync = [](ordovan::FolderEntry item) {
        synced = item.name;
        return 0;
    };
    EXPECT_EQ(ordovan::moveDurably(t.path("a").c_str(), t.path("b").c_str(), {}, sync), 0);
    EXPECT_EQ(synced, t.path("b"));
    EXPECT_EQ(t.read("b"), "content");
}

TEST(DurableMove, GoesBackWhenTheFolderCanNotBeFlushed) {
    const TempFolder t;
    t.write("a", "content");
    for (const MoveWays ways : {MoveWays{}, byLink, byPlaceholder}) {
        const int error = ordovan::moveDurably(t.path("a").c_str(), t.path("b").c_str(), ways,
                                               [](ordovan::FolderEntry) { return EIO; });
        EXPECT_EQ(error, EIO);
        EXPECT_EQ(t.read("a"), "content");
        EXPECT_EQ(t.count(), 1u);
    }
}

TEST(DurableMove, FlushesNothingWhenTheMoveFails) {
    const TempFolder t;
    t.write("a", "content");
    t.write("b", "");
    synced.clear();
    const auto sync = [](ordovan::FolderEntry item) {
        synced = item.name;
        return 0;
    };
    EXPECT_EQ(ordovan::moveDurably(t.path("a").c_str(), t.path("b").c_str(), {}, sync), EEXIST);
    EXPECT_EQ(synced, "");
}

}  // namespace
