#include "OrdovanCore/platform/FolderLock.h"

#include "tests/support/Results.h"
#include "tests/support/TempFolder.h"
#include "tests/support/Unprivileged.h"

#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <ctime>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <utility>

using ordovan::FolderLock;
using ordovan::test::error;
using ordovan::test::TempFolder;

namespace {

/// What happens when a lock is asked for next, or the errno with which that is refused.
std::function<int()> atLocking;

/// What happens at each sleep, instead of it; and how many there were.
std::function<void()> atSleeping;
int sleeps = 0;

}  // namespace

// Takes the place of the C library's, so that a test can act while a lock is waited for.
extern "C" int flock(int file, int operation) noexcept {
    const int refused = atLocking ? std::exchange(atLocking, nullptr)() : 0;
    if (refused == 0) return static_cast<int>(::syscall(SYS_flock, file, operation));
    errno = refused;
    return -1;
}

extern "C" int nanosleep(const ::timespec*, ::timespec*) {
    ++sleeps;
    if (atSleeping) atSleeping();
    return 0;
}

namespace {

using std::chrono::milliseconds;

const ordovan::LockPatience none;

TEST(FolderLock, ExcludesAnother) {
    const TempFolder t;
    const auto first = FolderLock::tryAcquire(t.url());
    ASSERT_TRUE(first);
    EXPECT_EQ(error(FolderLock::tryAcquire(t.url())), EWOULDBLOCK);
}

TEST(FolderLock, LeavesOtherFoldersAlone) {
    const TempFolder t;
    const auto outer = FolderLock::tryAcquire(t.url());
    EXPECT_TRUE(FolderLock::tryAcquire(t.makeFolder("inner")));
}

TEST(FolderLock, EndsWithItsObject) {
    const TempFolder t;
    {
        const auto first = FolderLock::tryAcquire(t.url());
    }
    EXPECT_TRUE(FolderLock::tryAcquire(t.url()));
}

TEST(FolderLock, MovesWithItsObject) {
    const TempFolder t;
    std::optional<FolderLock> kept;
    {
        auto first = FolderLock::tryAcquire(t.url());
        kept = std::move(*first);
    }
    EXPECT_EQ(error(FolderLock::tryAcquire(t.url())), EWOULDBLOCK);
    kept.reset();
    EXPECT_TRUE(FolderLock::tryAcquire(t.url()));
}

TEST(FolderLock, GivesItsOldFolderUpWhenAssigned) {
    const TempFolder t;
    {
        auto a = FolderLock::tryAcquire(t.makeFolder("a"));
        auto b = FolderLock::tryAcquire(t.makeFolder("b"));
        *a = std::move(*b);
        EXPECT_EQ(error(FolderLock::tryAcquire(t.url("b"))), EWOULDBLOCK);
    }
    EXPECT_TRUE(FolderLock::tryAcquire(t.url("a")));
    EXPECT_TRUE(FolderLock::tryAcquire(t.url("b")));
}

TEST(FolderLock, EndsWithItsProcess) {
    const TempFolder t;
    int held[2], end[2];
    ASSERT_EQ(::pipe(held), 0);
    ASSERT_EQ(::pipe(end), 0);
    const ::pid_t child = ::fork();
    if (child == 0) {
        const auto lock = FolderLock::tryAcquire(t.url());
        char byte = lock ? 'y' : 'n';
        if (::write(held[1], &byte, 1) != 1 || ::read(end[0], &byte, 1) != 1) ::_exit(1);
        ::_exit(0);  // without a destructor, as a killed process
    }
    char byte = 0;
    ASSERT_EQ(::read(held[0], &byte, 1), 1);
    EXPECT_EQ(byte, 'y');
    EXPECT_EQ(error(FolderLock::tryAcquire(t.url())), EWOULDBLOCK);
    ASSERT_EQ(::write(end[1], &byte, 1), 1);
    ::waitpid(child, nullptr, 0);
    EXPECT_TRUE(FolderLock::tryAcquire(t.url()));
    for (const int pipe : {held[0], held[1], end[0], end[1]}) ::close(pipe);
}

TEST(FolderLock, LeavesNoFileBehind) {
    const TempFolder t;
    const auto lock = FolderLock::tryAcquire(t.url());
    EXPECT_EQ(t.count(), 0u);
}

TEST(FolderLock, WantsAFolder) {
    const TempFolder t;
    EXPECT_EQ(error(FolderLock::tryAcquire(t.url("missing"))), ENOENT);
    EXPECT_EQ(error(FolderLock::tryAcquire(t.write("file", ""))), ENOTDIR);
    EXPECT_EQ(error(FolderLock::acquire(t.url("file"), none)), EEXIST);
    EXPECT_EQ(error(FolderLock::tryAcquire(Url::file("relative"))), EINVAL);
    EXPECT_EQ(error(FolderLock::acquire(Url::file("relative"), none)), EINVAL);
}

TEST(FolderLock, WantsAFolderThatMayBeRead) {
    const TempFolder t;
    t.makeFolder("closed");
    ordovan::test::giveToUnprivileged(t.path());
    ::chmod(t.path("closed").c_str(), 0);
    EXPECT_EQ(ordovan::test::errorUnprivileged([&] { return FolderLock::tryAcquire(t.url("closed")); }), EACCES);
    EXPECT_EQ(ordovan::test::errorUnprivileged([&] { return FolderLock::acquire(t.url("closed"), none); }), EACCES);
}

TEST(FolderLock, MakesTheFolderItWaitsFor) {
    const TempFolder t;
    const auto lock = FolderLock::acquire(t.url("made/too"), none);
    ASSERT_TRUE(lock);
    struct ::stat facts{};
    ASSERT_EQ(::stat(t.path("made/too").c_str(), &facts), 0);
    EXPECT_EQ(facts.st_mode & 07777, 0700u);
    EXPECT_EQ(error(FolderLock::tryAcquire(t.url("made/too"))), EWOULDBLOCK);
}

TEST(FolderLock, WaitsUntilTheOtherIsDone) {
    const TempFolder t;
    auto first = std::optional(FolderLock::tryAcquire(t.url()));
    ASSERT_TRUE(*first);
    sleeps = 0;
    atSleeping = [&] {
        if (sleeps == 3) first.reset();
    };
    const auto lock = FolderLock::acquire(t.url(), {.longest = std::chrono::hours(1)});
    atSleeping = nullptr;
    EXPECT_TRUE(lock);
    EXPECT_EQ(sleeps, 3);
}

TEST(FolderLock, IsWaitedForNoLongerThanThePatience) {
    const TempFolder t;
    const auto first = FolderLock::tryAcquire(t.url());
    static constexpr milliseconds longest(30);
    atSleeping = [] {  // a sleep can take longer than it should
        const auto end = std::chrono::steady_clock::now() + longest;
        while (std::chrono::steady_clock::now() < end) {
        }
    };
    sleeps = 0;
    EXPECT_EQ(error(FolderLock::acquire(t.url(), {.longest = longest})), EWOULDBLOCK);
    EXPECT_EQ(sleeps, 1);
    EXPECT_EQ(error(FolderLock::acquire(t.url(), none)), EWOULDBLOCK);
    EXPECT_EQ(sleeps, 1);
    atSleeping = nullptr;
}

TEST(FolderLock, IsNoLongerWaitedForWhenTheWaitIsEnded) {
    const TempFolder t;
    auto first = std::optional(FolderLock::tryAcquire(t.url()));
    sleeps = 0;
    const ordovan::LockPatience patience = {.longest = std::chrono::hours(1), .isEnded = [] { return sleeps == 3; }};
    EXPECT_EQ(error(FolderLock::acquire(t.url(), patience)), EINTR);
    EXPECT_EQ(sleeps, 3);
    EXPECT_EQ(error(FolderLock::acquire(t.url(), patience)), EINTR);
    EXPECT_EQ(sleeps, 3);
    first.reset();
    EXPECT_TRUE(FolderLock::acquire(t.url(), patience));  // what is free is taken all the same
}

TEST(FolderLock, IsOnTheFolderThatBearsTheNameAfterTheWait) {
    const TempFolder t;
    t.makeFolder("folder");
    atLocking = [&] {
        std::filesystem::rename(t.path("folder"), t.path("elsewhere"));
        t.makeFolder("folder");
        return 0;
    };
    const auto lock = FolderLock::acquire(t.url("folder"), none);
    ASSERT_TRUE(lock);
    EXPECT_EQ(error(FolderLock::tryAcquire(t.url("folder"))), EWOULDBLOCK);
    EXPECT_TRUE(FolderLock::tryAcquire(t.url("elsewhere")));
}

TEST(FolderLock, IsGivenUpWhereTheFolderIsExchangedAgainAndAgain) {
    const TempFolder t;
    t.makeFolder("folder");
    int exchanges = 0;
    std::function<int()> exchange = [&] {
        std::filesystem::rename(t.path("folder"), t.path("elsewhere" + std::to_string(exchanges)));
        t.makeFolder("folder");
        if (++exchanges < 1000) atLocking = exchange;
        return 0;
    };
    atLocking = exchange;
    sleeps = 0;
    EXPECT_EQ(error(FolderLock::acquire(t.url("folder"), none)), EWOULDBLOCK);
    EXPECT_EQ(exchanges, 100);
    EXPECT_EQ(sleeps, 98) << "a pause between them, but for the first";
    atLocking = nullptr;
}

TEST(FolderLock, IsGivenUpWhereTheFolderVanishesAgainAndAgain) {
    const TempFolder t;
    int calls = 0;
    std::function<int()> vanish = [&] {
        if (++calls < 1000) atLocking = vanish;
        return ENOENT;
    };
    atLocking = vanish;
    EXPECT_EQ(error(FolderLock::acquire(t.url("folder"), none)), ENOENT);
    EXPECT_EQ(calls, 100);
    atLocking = nullptr;
}

TEST(FolderLock, IsAskedForAgainAfterASignal) {
    const TempFolder t;
    atLocking = [] { return EINTR; };
    const auto lock = FolderLock::tryAcquire(t.url());
    ASSERT_TRUE(lock);
    EXPECT_EQ(error(FolderLock::tryAcquire(t.url())), EWOULDBLOCK);
}

TEST(FolderLock, ExcludesNobodyWhereThereAreNoLocks) {
    for (const int refusal : {ENOLCK, ENOTSUP}) {
        const TempFolder t;
        atLocking = [=] { return refusal; };
        EXPECT_TRUE(FolderLock::tryAcquire(t.url()));
        atLocking = [=] { return refusal; };
        EXPECT_TRUE(FolderLock::acquire(t.url(), none));
    }
}

}  // namespace
