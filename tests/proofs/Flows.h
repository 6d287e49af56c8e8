#pragma once

#include "OrdovanCore/FileSystem.h"
#include "tests/proofs/DiskWorld.h"
#include "tests/proofs/SystemCalls.h"

#include <gtest/gtest.h>

#include <sys/wait.h>

#include <array>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace ordovan::proofs {

/// A run that changes the user's files, from the state of the disk before it to the step of the controller.
struct Flow {
    const char* name;
    bool needsVolumes;
    /// Makes the files. What they are after this is what everything must come back to.
    void (*fill)(Disk& disk);
    /// Does what comes before the run.
    void (*prepare)(Disk& disk);
    /// The run itself, the preview before it included.
    void (*act)(Disk& disk);
};

namespace flows {

inline void fill(Disk& disk) {
    disk.build({"a.pdf = one", "b.jpg = two", "sub/c.txt = three", "sub/deep/d.zip = four", "e.mp3 = five"});
}
inline void fillAcross(Disk& disk) {
    fill(disk);
    disk.mount("tree/ordovan+");
}
inline void fillCopies(Disk& disk) {
    disk.build(
        {"a.pdf = same", "b.pdf = same", "sub/c.pdf = same", "x.jpg = pair", "sub/y.jpg = pair", "z.txt = alone"});
}
inline void nothing(Disk&) {}
inline void organize(Disk& disk) {
    Program(disk).organize();
}
inline void organizeTwice(Disk& disk) {
    std::filesystem::rename(disk.path("tree/e.mp3"), disk.path("late.mp3"));
    organize(disk);
    std::filesystem::rename(disk.path("late.mp3"), disk.path("tree/e.mp3"));
}
inline void undo(Disk& disk) {
    Program(disk).undo();
}
inline void trashExtras(Disk& disk) {
    Program(disk).trashExtras();
}
inline void trashFiles(Disk& disk) {
    Program(disk).trash({disk.path("tree/a.pdf"), disk.path("tree/sub/c.txt"), disk.path("tree/sub/deep/d.zip")});
}
inline void restore(Disk& disk) {
    Program(disk).restore();
}
/// What lies in the Trash has to go back to another volume.
inline void trashAndMount(Disk& disk) {
    trashFiles(disk);
    disk.mount("tree/sub");
}

}  // namespace flows

inline constexpr std::array allFlows = {
    Flow{"organize", false, flows::fill, flows::nothing, flows::organize},
    Flow{"organize once more", false, flows::fill, flows::organizeTwice, flows::organize},
    Flow{"organize across volumes", true, flows::fillAcross, flows::nothing, flows::organize},
    Flow{"undo", false, flows::fill, flows::organize, flows::undo},
    Flow{"undo across volumes", true, flows::fillAcross, flows::organize, flows::undo},
    Flow{"trash duplicates", false, flows::fillCopies, flows::nothing, flows::trashExtras},
    Flow{"trash files", false, flows::fill, flows::nothing, flows::trashFiles},
    Flow{"restore", false, flows::fill, flows::trashFiles, flows::restore},
    Flow{"restore across volumes", true, flows::fill, flows::trashAndMount, flows::restore},
};

/// A disk on which a flow is about to begin, and what has to hold of it whatever comes.
class Scene {
public:
    explicit Scene(const Flow& flow) : flow_(flow) {
        flow_.fill(disk);
        original_ = plainTree();
        contents_ = disk.contents();
        decoy_ = disk.decoy();
        flow_.prepare(disk);
    }

    void act() { flow_.act(disk); }

    /// Starts the program anew, as its user would; then everything must be in order, must stay so when it is started
    /// once more, and everything can be taken back.
    void expectOrder() {
        {
            Program reopened(disk);
        }
        expectEachFileOnce("after a new start");
        const auto files = disk.files();
        const auto records = recordsOf();
        {
            Program again(disk);
        }
        EXPECT_EQ(disk.files(), files) << "a second start changed something";
        EXPECT_EQ(recordsOf(), records) << "a second start changed a record";
        expectAllCanBeTakenBack();
    }

    /// Every file exists once, none under a partial name, and nothing else was touched.
    void expectEachFileOnce(const char* when) const {
        EXPECT_EQ(disk.contents(), contents_) << when << list();
        EXPECT_EQ(disk.decoy(), decoy_) << when;
        for (const auto& [path, content] : disk.files()) {
            EXPECT_FALSE(OrdovanPartialName::isPartial(path)) << when << ": " << path;
        }
    }

    /// Each content is there at least as often as before.
    void expectNothingLost(const char* when) const {
        const auto now = disk.contents();
        for (const std::string& content : contents_) {
            EXPECT_GE(now.count(content), contents_.count(content)) << when << list();
        }
        EXPECT_EQ(disk.decoy(), decoy_) << when;
    }

    Disk disk;

private:
    void expectAllCanBeTakenBack() {
        {
            Program program(disk);
            program.undo();
            program.restore();
        }
        EXPECT_EQ(plainTree(), original_) << "not everything could be taken back";
        expectEachFileOnce("after taking back");
        const auto left = recordsOf();
        for (const auto& [name, content] : left) {
            EXPECT_FALSE(name.starts_with("journals/") || name.starts_with("runs/")) << name << " is left";
        }
        for (const char* folder : {"data/Trash/files", "data/Trash/info"}) {
            EXPECT_TRUE(!disk.has(folder) || std::filesystem::is_empty(disk.path(folder))) << folder << list();
        }
    }

    /// The chosen folder without the folders that organizing makes, which may stay when they are empty.
    [[nodiscard]] std::map<std::string, std::string> plainTree() const {
        auto items = disk.described();
        std::erase_if(items, [](const auto& item) {
            return item.first.starts_with("ordovan+/") && item.second.starts_with("folder");
        });
        return items;
    }

    /// The documents that the program keeps, without the history.
    [[nodiscard]] std::map<std::string, std::string> recordsOf() const {
        auto items = testing::describeTree(disk.path("data/ordovan"));
        std::erase_if(
            items, [](const auto& item) { return item.second.starts_with("folder") || item.first == "history.json"; });
        return items;
    }

    [[nodiscard]] std::string list() const {
        std::string text = "\n";
        for (const auto& [path, content] : disk.files()) text += "    " + path + " = " + content.substr(0, 20) + "\n";
        return text;
    }

    const Flow& flow_;
    std::map<std::string, std::string> original_;
    std::multiset<std::string> contents_;
    std::map<std::string, std::string> decoy_;
};

/// Runs something in a process of its own, which ends when it is done. True when it was killed before that.
template <class Action>
bool wasKilled(const Action& action) {
    const ::pid_t child = ::fork();
    if (child == 0) {
        action();
        ::_exit(0);
    }
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    if (WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) return true;
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "the run ended with status " << status;
    return false;
}

inline void die() {
    ::kill(::getpid(), SIGKILL);
}

/// The calls that a flow makes, in order.
inline std::vector<std::string> callsOf(const Flow& flow, bool changesOnly) {
    Scene scene(flow);
    SystemCalls::watch({.below = scene.disk.base(), .changesOnly = changesOnly});
    scene.act();
    SystemCalls::ignore();
    return SystemCalls::calls();
}

}  // namespace ordovan::proofs
