#pragma once

#include "OrdovanCore/FileSystem.h"
#include "OrdovanCore/Url.h"
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
    /// What the file systems do not know.
    enum class Lacks { nothing, exclusiveRenames, exclusiveRenamesAndLinks };
    Lacks lacks = Lacks::nothing;
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

/// Moves that take more than one step, as NFS and many FUSE file systems need them, and those without links.
inline constexpr std::array stepwiseFlows = {
    Flow{"organize by links", false, flows::fill, flows::nothing, flows::organize, Flow::Lacks::exclusiveRenames},
    Flow{"organize across volumes by links", true, flows::fillAcross, flows::nothing, flows::organize,
         Flow::Lacks::exclusiveRenames},
    Flow{"trash files by links", false, flows::fill, flows::nothing, flows::trashFiles, Flow::Lacks::exclusiveRenames},
    Flow{"organize over empty files", false, flows::fill, flows::nothing, flows::organize,
         Flow::Lacks::exclusiveRenamesAndLinks},
    Flow{"organize across volumes over empty files", true, flows::fillAcross, flows::nothing, flows::organize,
         Flow::Lacks::exclusiveRenamesAndLinks},
    Flow{"undo over empty files", false, flows::fill, flows::organize, flows::undo,
         Flow::Lacks::exclusiveRenamesAndLinks},
    Flow{"trash files over empty files", false, flows::fill, flows::nothing, flows::trashFiles,
         Flow::Lacks::exclusiveRenamesAndLinks},
    Flow{"restore over empty files", false, flows::fill, flows::trashFiles, flows::restore,
         Flow::Lacks::exclusiveRenamesAndLinks},
};

/// A disk on which a flow is about to begin, and what has to hold of it whatever comes.
class Scene {
public:
    /// On a disk of its own, or in a folder of a volume.
    template <class... Place>
    explicit Scene(const Flow& flow, const Place&... place) : disk(place...), flow_(flow) {
        std::map<std::string_view, int> lacking;
        if (flow.lacks != Flow::Lacks::nothing) lacking["renameat2"] = EINVAL;
        if (flow.lacks == Flow::Lacks::exclusiveRenamesAndLinks) lacking["linkat"] = EPERM;
        SystemCalls::lack(std::move(lacking));
        flow_.fill(disk);
        original_ = plainTree();
        contents_ = disk.contents();
        decoy_ = disk.decoy();
        flow_.prepare(disk);
    }

    ~Scene() { SystemCalls::lack({}); }
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;

    void act() { flow_.act(disk); }

    /// Starts the program anew, as its user would; then everything must be in order, must stay so when it is started
    /// once more, and everything can be taken back.
    void expectOrder() {
        {
            Program reopened(disk);
            expectTruth(reopened);
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

    /// Everything that the program has moved comes back when it is asked to take it back.
    void expectAllComesBack(Program& program) {
        program.undo();
        program.restore();
        auto now = plainTree(), original = original_;
        if (allows.times) {
            for (auto* items : {&now, &original}) {
                for (auto& [path, description] : *items) {
                    description.erase(0, std::min(description.find(" = "), description.size()));
                }
            }
        }
        EXPECT_EQ(now, original) << "not everything could be taken back";
        expectEachFileOnce("after taking back");
    }

    Disk disk;

    /// How many interrupted runs users were told of, of all scenes.
    static inline std::size_t runsTold = 0;

    /// What may be left undone when calls fail, and does no harm.
    struct {
        bool infoFiles = false;  ///< an info file of the Trash stays without its item
        /// The undo record still lists files that are back where they were: a volume may lose a rename with the power
        /// that came before a record which it keeps.
        bool staleEntries = false;
        bool times = false;  ///< a file that was copied has another time or other permissions
    } allows;

private:
    /// What the user is told about an interrupted run is what is on the disk, and nothing is left for him to look at.
    void expectTruth(Program& program) const {
        const auto& told = program.model().interruptedRun();
        if (!told) return;
        ++runsTold;
        EXPECT_FALSE(told->isUnreadable);
        EXPECT_EQ(told->unsettled, 0U) << told->summary();
        const auto isThere = [](const Url& url) { return std::filesystem::exists(url.path()); };
        for (const OrdovanExecutionOutcome& outcome : told->outcomes) {
            const bool isMoved = outcome.status == OrdovanExecutionStatus::moved;
            if (outcome.source == outcome.destination) {  // it did not get as far as having another place
                EXPECT_TRUE(!isMoved && isThere(outcome.source)) << outcome.id() << ": " << outcome.message;
                continue;
            }
            EXPECT_NE(isThere(outcome.source), isThere(outcome.destination)) << outcome.id() << ": " << outcome.message;
            const bool isAtDestination = isThere(outcome.destination);
            EXPECT_EQ(isMoved, isAtDestination) << outcome.id() << ": " << outcome.message;
        }
        EXPECT_LE(told->outcomes.size(), told->finished + told->untouched + told->putRight);
    }

    void expectAllCanBeTakenBack() {
        {
            Program program(disk);
            expectAllComesBack(program);
        }
        const auto left = recordsOf();
        for (const auto& [name, content] : left) {
            // What writing a document left unfinished begins with a dot; it goes when that is written again.
            const bool isDocument = !lastPathComponent(name).starts_with('.');
            const bool isStale = name.starts_with("journals/") && allows.staleEntries;
            EXPECT_FALSE(isDocument && !isStale && (name.starts_with("journals/") || name.starts_with("runs/")))
                << name << " is left";
        }
        for (const auto& [name, description] : trash()) {
            const bool isInfo = name.ends_with(".trashinfo");
            EXPECT_TRUE(isInfo && (tellsNothing(name) || allows.infoFiles))
                << name << " is left in the Trash" << list();
        }
    }

    /// Whether the text of an info file did not reach the disk: then it is empty or all zeros, and nobody may take it
    /// for ours.
    [[nodiscard]] bool tellsNothing(const std::string& info) const {
        return disk.read("data/Trash/info/" + info).find_first_not_of('\0') == std::string::npos;
    }

    /// What is left in the Trash folders of the disk, the folders themselves not.
    [[nodiscard]] std::map<std::string, std::string> trash() const {
        std::map<std::string, std::string> items;
        for (const char* folder : {"data/Trash/files", "data/Trash/info"}) {
            if (disk.has(folder)) items.merge(testing::describeTree(disk.path(folder)));
        }
        return items;
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
    SystemCalls::watch({.below = scene.disk.path(""), .changesOnly = changesOnly});
    scene.act();
    SystemCalls::ignore();
    return SystemCalls::calls();
}

}  // namespace ordovan::proofs
