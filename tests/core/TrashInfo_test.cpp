// What becomes of an item's info file when a volume does not do what it says, or another program is at work in the
// Trash at the same moment.

#include "OrdovanCore/platform/SystemFileSystem.h"
#include "OrdovanCore/platform/Trash.h"
#include "tests/support/Results.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

using ordovan::moveToTrash;
using ordovan::TrashSession;
using ordovan::test::error;
using ordovan::test::TempFolder;

namespace {

/// A rename as a volume is asked for it.
struct Rename {
    int fromFolder;
    const char* from;
    int toFolder;
    const char* to;

    [[nodiscard]] int done() const {
        return static_cast<int>(::syscall(SYS_renameat2, fromFolder, from, toFolder, to, RENAME_NOREPLACE));
    }
};

/// What the volume does in place of the next rename.
std::function<int(const Rename& asked)> inPlaceOfRename;

/// The errno with which "a" can not be looked at in an open folder.
int lookRefusal = 0;

}  // namespace

// Takes the place of the C library's.
extern "C" int renameat2(int fromFolder, const char* from, int toFolder, const char* to, unsigned) noexcept {
    const Rename asked{fromFolder, from, toFolder, to};
    return inPlaceOfRename ? std::exchange(inPlaceOfRename, nullptr)(asked) : asked.done();
}
extern "C" int fstatat(int folder, const char* path, struct stat* facts, int flags) noexcept {
    if (lookRefusal == 0 || std::string_view(path) != "a") {
        return static_cast<int>(::syscall(SYS_newfstatat, folder, path, facts, flags));
    }
    errno = lookRefusal;
    return -1;
}

namespace {

class TrashInfo : public testing::Test {
protected:
    TrashInfo() { ::setenv("XDG_DATA_HOME", t.path("data").c_str(), 1); }
    ~TrashInfo() override {
        inPlaceOfRename = nullptr;
        lookRefusal = 0;
        ::unsetenv("XDG_DATA_HOME");
    }

    TempFolder t;
    const std::string item = "data/Trash/files/a", info = "data/Trash/info/a.trashinfo";
};

TEST_F(TrashInfo, StaysWithAnItemThatIsInTheTrashAndStillStandsAndIsNotSaidToBeTrashed) {
    const Url file = t.write("a", "one");
    inPlaceOfRename = [](const Rename& asked) {
        return ::linkat(asked.fromFolder, asked.from, asked.toFolder, asked.to, 0);
    };
    bool leavesSomething = false;
    EXPECT_EQ(error(TrashSession().move(file, {.leavesSomething = &leavesSomething})),
              OrdovanSystemError::fileWriteUnknown);
    EXPECT_TRUE(leavesSomething);
    EXPECT_EQ(t.read("a"), "one");
    EXPECT_EQ(t.read(item), "one");
    EXPECT_TRUE(t.has(info));
}

TEST_F(TrashInfo, StaysWhereNobodyCanSeeWhetherTheItemWasTakenBack) {
    const Url file = t.write("a", "one");
    inPlaceOfRename = [](const Rename& asked) {
        inPlaceOfRename = [](const Rename& back) {
            lookRefusal = EIO;
            return back.done();
        };
        return ::linkat(asked.fromFolder, asked.from, asked.toFolder, asked.to, 0);
    };
    EXPECT_EQ(error(moveToTrash(file)), OrdovanSystemError::fileWriteUnknown);
    lookRefusal = 0;
    EXPECT_EQ(t.read(item), "one");
    EXPECT_TRUE(t.has(info));
}

TEST_F(TrashInfo, GoesAndNothingIsLeftWhereAnItemIsTakenBackOrNeverMoved) {
    const Url file = t.write("a", "one");
    bool leavesSomething = false;
    inPlaceOfRename = [](const Rename&) { return 0; };
    EXPECT_EQ(error(TrashSession().move(file, {.leavesSomething = &leavesSomething})),
              OrdovanSystemError::fileWriteUnknown);
    inPlaceOfRename = [](const Rename&) {
        errno = ENOSPC;
        return -1;
    };
    EXPECT_EQ(error(TrashSession().move(file, {.leavesSomething = &leavesSomething})), ENOSPC);
    EXPECT_FALSE(leavesSomething);
    EXPECT_EQ(t.read("a"), "one");
    EXPECT_EQ(t.count("data/Trash/files") + t.count("data/Trash/info"), 0U);
}

TEST_F(TrashInfo, StaysWithAnItemThatCanNotBeTakenBackSinceItsNameIsTaken) {
    const Url file = t.write("a", "one");
    inPlaceOfRename = [this](const Rename& asked) {
        const int result = asked.done();
        t.write(item, "one and more");  // by whom has it open; what is there is not what was to go
        t.write("a", "another");
        return result;
    };
    EXPECT_EQ(error(moveToTrash(file)), OrdovanSystemError::fileWriteUnknown);
    EXPECT_EQ(t.read("a"), "another");
    EXPECT_EQ(t.read(item), "one and more");
    EXPECT_TRUE(t.has(info));
}

TEST_F(TrashInfo, OfAnotherItemStaysWhereItTookTheNameOfOneThatWasNotTrashed) {
    const Url file = t.write("a", "one");
    inPlaceOfRename = [this](const Rename&) {
        t.write("theirs", "[Trash Info]\nPath=/theirs\n");
        EXPECT_EQ(std::rename(t.path("theirs").c_str(), t.path(info).c_str()), 0);
        errno = EACCES;
        return -1;
    };
    EXPECT_EQ(error(moveToTrash(file)), EACCES);
    EXPECT_EQ(t.read(info), "[Trash Info]\nPath=/theirs\n");
}

TEST_F(TrashInfo, StaysWhereItLiesBehindALink) {
    SystemFileSystem fs;
    const Url file = t.write("a", "one");
    const auto trashed = fs.trash(file);
    ASSERT_TRUE(trashed);
    ASSERT_EQ(std::rename(t.path("data/Trash/info").c_str(), t.path("elsewhere").c_str()), 0);
    t.makeLink("data/Trash/info", t.path("elsewhere"));
    EXPECT_EQ(error(fs.move(*trashed, file)), 0);
    EXPECT_TRUE(t.has("elsewhere/a.trashinfo"));
}

TEST_F(TrashInfo, StaysWhereAnItemCameToThePlaceOfTheOneThatIsPutBack) {
    SystemFileSystem fs;
    const Url file = t.write("a", "one");
    const auto trashed = fs.trash(file);
    ASSERT_TRUE(trashed);
    inPlaceOfRename = [this](const Rename& asked) {
        const int result = asked.done();
        t.write(item, "another");
        return result;
    };
    EXPECT_TRUE(fs.move(*trashed, file));
    EXPECT_EQ(t.read("a"), "one");
    EXPECT_EQ(t.read(item), "another");
    EXPECT_TRUE(t.has(info));
}

}  // namespace
