#include "OrdovanCore/platform/Volumes.h"

#include "OrdovanCore/platform/CaseProbe.h"
#include "tests/support/SecondVolume.h"
#include "tests/support/TempFolder.h"
#include "tests/support/Unprivileged.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/fs.h>
#include <linux/magic.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdarg>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

using ordovan::CaseRule;
using ordovan::caseRuleOfType;
using ordovan::FolderNames;
using ordovan::namesDifferByCase;
using ordovan::supportsCaseSensitiveNames;
using ordovan::test::SecondVolume;
using ordovan::test::TempFolder;

namespace {

/// The flags of every folder, in place of the real ones.
std::optional<int> flagsToTell;

}  // namespace

// Takes the place of the C library's: folders with the casefold flag exist on few machines.
extern "C" int ioctl(int file, unsigned long request, ...) noexcept {
    std::va_list arguments;
    va_start(arguments, request);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    if (request != FS_IOC_GETFLAGS || !flagsToTell) {
        return static_cast<int>(::syscall(SYS_ioctl, file, request, argument));
    }
    *static_cast<int*>(argument) = *flagsToTell;
    return 0;
}

namespace {

std::string lower(std::string name) {
    for (char& c : name) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return name;
}

/// A folder that is not on disk, of either kind, or on a server that does not answer.
class SomeNames final : public FolderNames {
public:
    enum class Kind { sensitive, insensitive, silent };
    SomeNames(Kind kind, std::vector<std::string> names) : kind_(kind), names_(std::move(names)) {}

    std::optional<std::string> next() override {
        if (at_ == names_.size()) return std::nullopt;
        return names_[at_++];
    }
    void rewind() override { at_ = 0; }
    Lookup lookUp(const std::string& name) override {
        ++lookUps;
        if (kind_ == Kind::silent || lookUps <= unanswered) return Lookup::unknown;
        const bool found = std::ranges::any_of(names_, [&](const std::string& listed) {
            return kind_ == Kind::sensitive ? listed == name : lower(listed) == lower(name);
        });
        return found ? Lookup::found : Lookup::missing;
    }

    int lookUps = 0;
    int unanswered = 0;  ///< so many look-ups, from the first on, get no answer

private:
    Kind kind_;
    std::vector<std::string> names_;
    std::size_t at_ = 0;
};

std::optional<bool> answerOf(SomeNames::Kind kind, std::vector<std::string> names) {
    SomeNames some(kind, std::move(names));
    return namesDifferByCase(some);
}

using Kind = SomeNames::Kind;

TEST(CaseOfNames, FollowsFromTypesThatTell) {
    for (const unsigned long type : {0xef53ul, 0x9123683eul, 0x01021994ul, 0x794c7630ul}) {
        EXPECT_EQ(caseRuleOfType(type), CaseRule::sensitive) << type;
    }
    EXPECT_EQ(caseRuleOfType(0xF2F52010), CaseRule::sensitive) << "F2FS, whose number has the sign bit";
    for (const unsigned long type : {0x4d44ul, 0x2011bab0ul, 0x4244ul}) {
        EXPECT_EQ(caseRuleOfType(type), CaseRule::insensitive) << type;
    }
}

TEST(CaseOfNames, HasToBeAskedOfTypesThatDoNotTell) {
    constexpr unsigned long fuse = 0x65735546, nfs = 0x6969, smb2 = 0xfe534d42, xfs = 0x58465342, unheardOf = 1;
    for (const unsigned long type : {fuse, nfs, smb2, xfs, unheardOf}) {
        EXPECT_EQ(caseRuleOfType(type), CaseRule::ask) << type;
    }
}

TEST(CaseOfNames, DiffersWhereTheOtherCaseIsMissing) {
    EXPECT_EQ(answerOf(Kind::sensitive, {"Report.pdf"}), true);
    EXPECT_EQ(answerOf(Kind::sensitive, {"2024", "a"}), true);
}

TEST(CaseOfNames, DoesNotDifferWhereTheOtherCaseIsFoundButNotListed) {
    EXPECT_EQ(answerOf(Kind::insensitive, {"Report.pdf"}), false);
    EXPECT_EQ(answerOf(Kind::insensitive, {"2024", "-", "a", "b"}), false);
}

TEST(CaseOfNames, DiffersWhereBothCasesAreListed) {
    EXPECT_EQ(answerOf(Kind::sensitive, {"a", "A"}), true);
    EXPECT_EQ(answerOf(Kind::sensitive, {"A", "b", "a"}), true);
}

TEST(CaseOfNames, DiffersWhereTheOtherCaseIsListedBeforeTheNameAsked) {
    SomeNames names(Kind::sensitive, {"A", "a"});
    names.unanswered = 1;
    EXPECT_EQ(namesDifferByCase(names), true);
}

TEST(CaseOfNames, IsNotToldByNamesWithoutLetters) {
    EXPECT_EQ(answerOf(Kind::sensitive, {}), std::nullopt);
    EXPECT_EQ(answerOf(Kind::sensitive, {"2024", "\u00e9\u00c9", "[@`{"}), std::nullopt);
}

TEST(CaseOfNames, IsNotToldByAServerThatDoesNotAnswerAndIsNotAskedForLong) {
    SomeNames names(Kind::silent, std::vector<std::string>(1000, "name"));
    EXPECT_EQ(namesDifferByCase(names), std::nullopt);
    EXPECT_EQ(names.lookUps, 64);
}

TEST(CaseOfAFolder, DiffersHere) {
    const TempFolder t;
    EXPECT_EQ(supportsCaseSensitiveNames(t.url()), true);
    t.makeLink("link", ".");
    EXPECT_EQ(supportsCaseSensitiveNames(t.url("link")), true);
}

TEST(CaseOfAFolder, IsFoundOutByLookingUpWhereTheTypeDoesNotTell) {
    EXPECT_EQ(caseRuleOfType(PROC_SUPER_MAGIC), CaseRule::ask);
    EXPECT_EQ(supportsCaseSensitiveNames(Url::file("/proc/self")), true);
}

TEST(CaseOfAFolder, IsToldByTheFolderAboveAnEmptyOne) {
    if (::access("/proc/tty/ldisc", R_OK) != 0) GTEST_SKIP() << "NOT TESTED: the kernel has no empty folder in /proc";
    EXPECT_EQ(supportsCaseSensitiveNames(Url::file("/proc/tty/ldisc")), true);
}

TEST(CaseOfAFolder, IsUnknownOfWhatIsNoFolder) {
    const TempFolder t;
    EXPECT_EQ(supportsCaseSensitiveNames(t.url("missing")), std::nullopt);
    EXPECT_EQ(supportsCaseSensitiveNames(t.write("file", "")), std::nullopt);
    EXPECT_EQ(supportsCaseSensitiveNames(Url::file("relative")), std::nullopt);
    ::mkfifo(t.path("pipe").c_str(), 0600);
    EXPECT_EQ(supportsCaseSensitiveNames(t.url("pipe")), std::nullopt);
}

TEST(CaseOfAFolder, IsUnknownOfOneThatMayNotBeRead) {
    const TempFolder t;
    t.makeFolder("closed");
    ordovan::test::giveToUnprivileged(t.path());
    ::chmod(t.path("closed").c_str(), 0);
    EXPECT_TRUE(ordovan::test::unprivileged([&] { return !supportsCaseSensitiveNames(t.url("closed")).has_value(); }));
}

TEST(CaseOfAFolder, FollowsItsFlag) {
    const TempFolder t;
    flagsToTell = FS_CASEFOLD_FL;
    EXPECT_EQ(supportsCaseSensitiveNames(t.url()), false);
    flagsToTell = FS_NOATIME_FL;
    EXPECT_EQ(supportsCaseSensitiveNames(t.url()), true);
    flagsToTell.reset();
}

TEST(CaseOfAFolder, FollowsItsFlagOnAVolumeThatFoldsByFolder) {
    if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
    std::optional<SecondVolume> folding;
    try {
        folding.emplace(1 << 20, "tmpfs", "casefold=utf8-12.1.0");
    } catch (const std::system_error&) {
        GTEST_SKIP() << "NOT TESTED: this kernel can not fold case by folder";
    }
    folding->root().makeFolder("folded");
    folding->root().makeFolder("plain");
    const int folder = ::open(folding->path("folded").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    int flags = FS_CASEFOLD_FL;
    EXPECT_EQ(::ioctl(folder, FS_IOC_SETFLAGS, &flags), 0);
    ::close(folder);
    EXPECT_EQ(supportsCaseSensitiveNames(folding->url("folded")), false);
    EXPECT_EQ(supportsCaseSensitiveNames(folding->url("plain")), true);
}

}  // namespace
