// Every system call of a run about files fails with every error, once or from then on, before or after its effect, or
// reads and writes less than it was told to. Then the program is started again without faults, and everything must be
// in order.

#include "tests/proofs/Flows.h"
#include "tests/proofs/Proof.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace ordovan::proofs;
using ordovan::test::SecondVolume;

namespace {

constexpr std::array errors = {ENOSPC, EDQUOT, EROFS,  EPERM,  EACCES, EBUSY, ETXTBSY, EIO,    ESTALE,    ETIMEDOUT,
                               EMFILE, ENOMEM, ENOENT, EEXIST, EXDEV,  EINTR, EINVAL,  ENOSYS, EOPNOTSUPP};

struct Fault {
    int error;
    bool afterEffect;
    bool forGood;
};

std::string describe(const Fault& fault, std::size_t number, const std::vector<std::string>& calls) {
    return "call " + std::to_string(number) + " (" + (number <= calls.size() ? calls[number - 1] : "") + ") fails " +
           (fault.afterEffect ? "after its effect " : "") + (fault.forGood ? "and so do all later ones " : "") +
           "with " + std::strerror(fault.error);
}

/// True for an error that a call of this name can give: only what makes a name can find it taken, and what is done to
/// an open file finds it. A file that was made while the reply says that its name is taken can not be told from
/// another's.
bool canGive(std::string_view call, const Fault& fault) {
    constexpr std::array makingNames = {"openat", "openat2", "renameat2", "linkat", "mkdir", "mkdirat"};
    constexpr std::array withPath = {"openat", "openat2", "renameat2", "linkat",   "mkdir",  "mkdirat", "stat",
                                     "lstat",  "fstatat", "statx",     "unlinkat", "unlink", "rmdir"};
    const auto isOf = [&](const auto& names) { return std::ranges::find(names, call) != names.end(); };
    if (fault.error == EEXIST) return isOf(makingNames) && !fault.afterEffect;
    return fault.error != ENOENT || isOf(withPath);
}

class SystemErrors : public ::testing::TestWithParam<Flow> {
protected:
    void SetUp() override {
        // Where its home Trash fails, a file goes to that of its volume, which has to be the test's own.
        const bool trashes = GetParam().act == flows::trashExtras || GetParam().act == flows::trashFiles;
        if ((GetParam().needsVolumes || trashes) && !SecondVolume::available()) {
            tellSkipped(std::string("errors: ") + GetParam().name, SecondVolume::unavailable);
            GTEST_SKIP() << SecondVolume::unavailable;
        }
    }

    /// A run with that befalling it; what happened to how many calls.
    std::size_t runWith(SystemCallPlan plan) {
        Scene scene(GetParam());
        plan.below = scene.disk.path("");
        plan.changesOnly = false;
        SystemCalls::watch(plan);
        scene.act();
        SystemCalls::ignore();
        const auto calls = SystemCalls::calls();
        const std::size_t happened = SystemCalls::happened();
        // Files are also hashed on another thread, so it may not be the call that it was when they were counted.
        const std::string befallen = plan.at <= calls.size() ? calls[plan.at - 1] : "none";
        SCOPED_TRACE("it befell " + befallen);
        scene.allows.infoFiles = plan.error != 0;
        // Not every volume can keep them, so that is no reason not to move a file.
        constexpr std::array attributes = {"futimens", "fchmod", "fchown", "fsetxattr"};
        scene.allows.times = plan.error != 0 && std::ranges::any_of(attributes, [&](const char* name) {
                                 return befallen.starts_with(name);
                             });
        scene.expectOrder();
        return happened;
    }
};

TEST_P(SystemErrors, OfEveryCallLoseNothing) {
    const std::vector<std::string> calls = callsOf(GetParam(), false);
    Dice dice(7);
    std::size_t runs = 0;
    const std::size_t step = rounds(5, 1);
    for (std::size_t number = 1 + dice.below(step); number <= calls.size(); number += step) {
        for (std::size_t pick = 0; pick < errors.size(); ++pick) {
            const int error = isLong() ? errors[pick] : errors[dice.below(errors.size())];
            for (int kind = 0; kind < 3; ++kind) {
                if (!isLong() && static_cast<std::size_t>(kind) != number % 3) continue;
                // A call that was interrupted has done nothing, and is made again.
                const Fault fault{error, kind == 1 && error != EINTR, kind == 2 && error != EINTR};
                SCOPED_TRACE(describe(fault, number, calls));
                (void)runWith({.at = number,
                               .forGood = fault.forGood,
                               .error = fault.error,
                               .afterEffect = fault.afterEffect,
                               .applies = [&](std::string_view call) { return canGive(call, fault); }});
                ++runs;
                if (HasFailure() && !isLong()) return;
            }
            if (!isLong()) break;
        }
    }
    tell(std::string("errors: ") + GetParam().name, runs, "runs with a failing call, each in order afterwards");
}

TEST_P(SystemErrors, ShortReadsAndWritesChangeNothing) {
    const std::vector<std::string> calls = callsOf(GetParam(), false);
    EXPECT_GT(runWith({.at = 1, .forGood = true, .isShort = true}), 10U);
    std::size_t runs = 1;
    std::vector<std::size_t> transfers;
    for (std::size_t number = 1; number <= calls.size(); ++number) {
        const std::string_view name = std::string_view(calls[number - 1]).substr(0, calls[number - 1].find(' '));
        constexpr std::array moving = {"read", "write", "pread", "pwrite", "copy_file_range"};
        if (std::ranges::find(moving, name) != moving.end()) transfers.push_back(number);
    }
    for (std::size_t i = 0; i < transfers.size(); i += rounds(6, 1)) {
        SCOPED_TRACE("call " + std::to_string(transfers[i]) + " (" + calls[transfers[i] - 1] + ") is short");
        (void)runWith({.at = transfers[i], .isShort = true});
        ++runs;
        if (HasFailure()) return;
    }
    tell(std::string("short reads and writes: ") + GetParam().name, runs, "runs, each as if nothing had been short");
}

INSTANTIATE_TEST_SUITE_P(Of, SystemErrors, ::testing::ValuesIn(allFlows), [](const auto& of) {
    std::string name(of.param.name);
    std::ranges::replace(name, ' ', '_');
    return name;
});

}  // namespace
