// The program is killed in the middle of a run and started again.

#include "tests/cli/CommandLine.h"
#include "tests/support/SecondVolume.h"

#include <gmock/gmock.h>

#include <sys/inotify.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

using ordovan::test::Finished;
using ordovan::test::Home;
using ordovan::test::SecondVolume;
using ordovan::test::Terminal;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;

namespace {

constexpr int fileCount = 600;

/// Comes back when something new is in a folder.
class Watch {
public:
    explicit Watch(const std::string& folder) : events_(::inotify_init1(IN_CLOEXEC)) {
        if (::inotify_add_watch(events_, folder.c_str(), IN_CREATE | IN_MOVED_TO) < 0) {
            throw std::runtime_error("can not watch " + folder);
        }
    }
    ~Watch() { ::close(events_); }
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;
    void wait() const {
        char event[4096];
        while (::read(events_, event, sizeof event) < 0 && errno == EINTR) {
        }
    }

private:
    int events_;
};

/// A Downloads folder of many documents, in which a run is killed as soon as the first of them has arrived.
class Interrupted : public ::testing::Test {
protected:
    void SetUp() override {
        for (int i = 0; i < fileCount; ++i) {
            home.write(name(i), std::string(16 << 10, static_cast<char>('a' + i % 26)) + std::to_string(i));
        }
        before = home.tree();
        std::filesystem::create_directories(home.organized("Documents"));
    }
    static std::string name(int number) { return "document " + std::to_string(number) + ".pdf"; }

    void kill(const Home::Arguments& arguments, const std::string& folder) const {
        const Watch watch(folder);
        const ::pid_t child = home.start(arguments, [] {
            const int nothing = ::open("/dev/null", O_RDWR);
            for (const int descriptor : {0, 1, 2}) ::dup2(nothing, descriptor);
        });
        watch.wait();
        ::kill(child, SIGKILL);
        EXPECT_EQ(Home::await(child), 128 + SIGKILL);
    }
    [[nodiscard]] std::size_t organizedCount() const {
        std::size_t count = 0;
        for (const auto& entry : std::filesystem::directory_iterator(home.organized("Documents"))) {
            if (entry.path().filename().string().front() != '.') ++count;
        }
        return count;
    }
    [[nodiscard]] bool hasRunRecord() const { return !std::filesystem::is_empty(home.records() + "/runs"); }

    Home home;
    std::map<std::string, std::string> before;
};

TEST_F(Interrupted, OrganizeIsToldOnceAndAllOfItCanBeUndone) {
    kill({"organize", "--yes"}, home.organized("Documents"));
    EXPECT_TRUE(hasRunRecord());
    const std::size_t moved = organizedCount();
    const Finished preview = home.run({"preview", "--json"});
    EXPECT_EQ(preview.status, 0);
    EXPECT_THAT(preview.err, HasSubstr("warning: An earlier run was interrupted. " + std::to_string(moved) + " file"));
    EXPECT_THAT(preview.err, HasSubstr(".pdf: Moved.\n"));
    EXPECT_EQ(preview.json().at("proposals").as_array().size(), fileCount - moved);
    EXPECT_FALSE(hasRunRecord());
    EXPECT_THAT(home.run({"preview"}).err, Not(HasSubstr("interrupted")));
    EXPECT_THAT(home.run({"history"}).out, HasSubstr("Organized " + std::to_string(moved) + " file"));

    EXPECT_EQ(home.run({"undo", "--yes"}).status, 0);
    EXPECT_EQ(home.tree(), before);
}

TEST_F(Interrupted, IsPutInOrderBeforeTheEyesOfWhoeverIsAtATerminal) {
    kill({"organize", "--yes"}, home.organized("Documents"));
    Terminal terminal(home, {"preview"});
    EXPECT_TRUE(terminal.waitFor("Putting an interrupted run in order… 0 of 600 files"));
    EXPECT_THAT(terminal.finish().out, HasSubstr("An earlier run was interrupted. "));
}

TEST_F(Interrupted, UndoFindsWhatNoJournalKnew) {
    kill({"organize", "--yes"}, home.organized("Documents"));
    const Finished undone = home.run({"undo", "--yes", "--quiet"});
    EXPECT_EQ(undone.status, 0);
    EXPECT_THAT(undone.err, HasSubstr("An earlier run was interrupted."));
    EXPECT_EQ(home.tree(), before);
}

TEST_F(Interrupted, UndoIsFinishedByTheNextOne) {
    ASSERT_EQ(home.run({"organize", "--yes"}).status, 0);
    kill({"undo", "--yes"}, home.downloads());
    const Finished undone = home.run({"undo", "--yes"});
    EXPECT_THAT(undone.err, HasSubstr("An earlier run was interrupted."));
    EXPECT_EQ(home.tree(), before);
    EXPECT_THAT(home.run({"recovery"}).err, Not(HasSubstr("interrupted")));
}

TEST_F(Interrupted, ManyFilesAreToldInOneShortBlock) {
    kill({"organize", "--yes"}, home.organized("Documents"));
    const std::string told = home.run({"recovery"}).err;
    EXPECT_LE(std::ranges::count(told, '\n'), 22);
}

TEST_F(Interrupted, EveryFileThatNeedsALookIsTold) {
    kill({"organize", "--yes"}, home.organized("Documents"));
    for (int i = 0; i < fileCount; ++i) {
        std::filesystem::remove(home.downloads() + "/" + name(i));
        std::filesystem::remove(home.organized("Documents") + "/" + name(i));
    }
    const std::string told = home.run({"preview"}).err;
    EXPECT_THAT(told, HasSubstr(std::to_string(fileCount) + " files need a look."));
    EXPECT_EQ(std::ranges::count(told, '\n'), fileCount + 1);
    EXPECT_THAT(told, Not(HasSubstr("more file")));
}

TEST_F(Interrupted, ACopyToAnotherVolumeLeavesNothingBehind) {
    if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
    const auto& mounts = ordovan::test::detail::MountNamespace::get();
    ASSERT_TRUE(mounts.mount(home.organized("Documents"), "tmpfs", "mode=755"));
    kill({"organize", "--yes"}, home.organized("Documents"));
    EXPECT_THAT(home.run({"undo", "--yes"}).err, HasSubstr("An earlier run was interrupted."));
    std::vector<std::string> left;
    for (const auto& entry : std::filesystem::directory_iterator(home.organized("Documents"))) {
        left.push_back(entry.path().filename());
    }
    EXPECT_THAT(left, IsEmpty());
    mounts.unmount(home.organized("Documents"));
    auto after = home.tree();
    after.erase("ordovan+/Documents");
    EXPECT_EQ(after, before);
}

}  // namespace
