// The power is cut at every call by which a run changes something: the file system is shut down without writing
// anything more (ext4, xfs), or what its device holds at that moment is all that is left (btrfs). Then it is mounted
// again, the program is started again, and everything must be in order.

#include "OrdovanCore/platform/Folders.h"
#include "tests/proofs/Flows.h"
#include "tests/proofs/LoopVolume.h"
#include "tests/proofs/Proof.h"

#include <gtest/gtest.h>

using namespace ordovan::proofs;

namespace {

/// A run on one volume, or on two of which the second is seen at a folder of the disk.
struct Case {
    Flow flow;
    const char* type;
    const char* secondType = nullptr;  ///< null: there is none
    const char* at = nullptr;
};

/// Which volumes write their log before they lose their power: what was changed last is on the disk of one, and on
/// that of the other only what was flushed.
struct Logs {
    bool areWritten;
    bool areOfSecondWritten;
};

constexpr const char* output = "tree/ordovan+";
constexpr const char* records = "data/ordovan";
constexpr const char* whole = "tree";

constexpr Flow organizing{"organize", false, flows::fill, flows::nothing, flows::organize};
constexpr Flow undoing{"undo", false, flows::fill, flows::organize, flows::undo};
constexpr Flow trashing{"trash files", false, flows::fill, flows::nothing, flows::trashFiles};
constexpr Flow trashingExtras{"trash duplicates", false, flows::fillCopies, flows::nothing, flows::trashExtras};
constexpr Flow restoring{"restore", false, flows::fill, flows::trashFiles, flows::restore};

/// The volumes of a case, in a new folder of which each round takes place.
class Rig {
public:
    explicit Rig(const Case& of) : case_(of), first_(of.type) {
        if (of.secondType != nullptr) second_ = std::make_unique<LoopVolume>(of.secondType);
        flow_ = of.flow;
        flow_.fill = [](Disk& disk) {
            running->mountSecond(disk);
            running->case_.flow.fill(disk);
        };
        running = this;
    }

    /// The disk of the next round, on which nothing has happened yet.
    std::unique_ptr<Scene> nextScene() {
        if (isLong()) {  // else there is room for all
            std::filesystem::remove_all(folder());
            if (second_) std::filesystem::remove_all(share());
        }
        ++round_;
        std::filesystem::create_directories(folder());
        auto scene = std::make_unique<Scene>(flow_, folder());
        ::sync();  // all that was there before is on the device
        return scene;
    }

    void cut(const Logs& logs) const {
        first_.cut(logs.areWritten);
        if (second_) second_->cut(logs.areOfSecondWritten);
    }

    /// It turns read-only, or answers nothing any more.
    void breakDown(bool isSecond, bool isSilent) const {
        const LoopVolume& volume = isSecond ? *second_ : first_;
        isSilent ? volume.cut(false) : volume.breakDown();
    }

    /// The computer is started again.
    void startAgain(Scene& scene) {
        scene.disk.unmountAll();
        first_.startAgain();
        if (second_) second_->startAgain();
        mountSecond(scene.disk);
    }

    /// Runs something until the power is cut before a call of it; what it changed is then what its devices hold. False
    /// when it ended before that call: then the power is cut right after it.
    template <class Action>
    bool wasCutDuring(Scene& scene, std::size_t number, const Logs& logs, const Action& action) {
        const bool isInTheMiddle = wasKilled([&] {
            SystemCalls::watch({.below = scene.disk.path(""), .at = number, .before = [&] {
                                    cut(logs);
                                    die();
                                }});
            action();
            SystemCalls::ignore();
            cut(logs);
        });
        startAgain(scene);
        // A second volume has no part in the order in which btrfs keeps what is on the first.
        scene.allows.staleEntries = std::string_view(case_.type) == "btrfs";
        return isInTheMiddle;
    }

private:
    void mountSecond(Disk& disk) const {
        if (!second_) return;
        std::filesystem::create_directories(share());
        disk.bind(share(), case_.at);
    }
    [[nodiscard]] std::string folder() const { return first_.path("round" + std::to_string(round_)); }
    [[nodiscard]] std::string share() const { return second_->path("share" + std::to_string(round_)); }

    static inline const Rig* running = nullptr;
    const Case& case_;
    Flow flow_{};
    LoopVolume first_;
    std::unique_ptr<LoopVolume> second_;
    std::size_t round_ = 0;
};

std::string nameOf(const Case& of) {
    std::string name = std::string("power cut on ") + of.type + ": " + of.flow.name;
    if (of.at == output) name += " across volumes";
    if (of.at == records) name += std::string(", records on ") + of.secondType;
    if (of.at == whole) name += std::string(" on another ") + of.secondType;
    return name;
}

class PowerCuts : public ::testing::TestWithParam<Case> {
protected:
    void SetUp() override {
        std::vector<std::string> programs = {std::string("mkfs.") + GetParam().type};
        if (GetParam().secondType != nullptr) programs.push_back(std::string("mkfs.") + GetParam().secondType);
        if (const std::string why = LoopVolume::missing(programs); !why.empty()) {
            tellSkipped(nameOf(GetParam()), why);
            GTEST_SKIP() << "NOT TESTED: " << why;
        }
    }

    [[nodiscard]] static std::vector<Logs> logs() {
        if (std::string_view(GetParam().type) == "btrfs") return {{false, false}};
        if (GetParam().at == nullptr || GetParam().at == output) return {{false, false}, {true, true}};
        if (isLong()) return {{false, true}, {true, false}, {false, false}, {true, true}};
        // What is recorded is on the disk, and the moves are so where they were flushed.
        return {{GetParam().at == whole, GetParam().at == records}};
    }
};

TEST_P(PowerCuts, AtEveryCallThatChangesSomethingLoseNothing) {
    const bool areRecordsElsewhere = GetParam().at == records || GetParam().at == whole;
    Rig rig(GetParam());
    std::size_t points = 0;
    for (const Logs& logs : logs()) {
        bool isInTheMiddle = true;
        for (std::size_t number = rounds(logs.areWritten ? 7 : 4, 1); isInTheMiddle;
             number += rounds(areRecordsElsewhere ? 17 : 11, 1)) {
            SCOPED_TRACE("cut before call " + std::to_string(number) + (logs.areWritten ? ", the log written" : "") +
                         (logs.areOfSecondWritten ? ", that of the second volume written" : ""));
            const std::unique_ptr<Scene> scene = rig.nextScene();
            isInTheMiddle = rig.wasCutDuring(*scene, number, logs, [&] { scene->act(); });
            scene->expectOrder();
            ++points;
            if (HasFailure()) return;
        }
    }
    EXPECT_GT(points, logs().size()) << "it was never cut in the middle";
    tell(nameOf(GetParam()), points, "points, each with a new start and everything taken back");
}

using PowerCutsTwice = PowerCuts;

/// The program is killed, and the power is cut while it puts that run in order.
TEST_P(PowerCutsTwice, WhileAnInterruptedRunIsPutInOrderLoseNothing) {
    Rig rig(GetParam());
    std::size_t points = 0;
    bool isKilled = true;
    for (std::size_t number = rounds(9, 1); isKilled; number += rounds(8, 1)) {
        bool isInTheMiddle = true;
        for (std::size_t again = rounds(1 + number % 4, 1); isInTheMiddle; again += rounds(9, 1)) {
            SCOPED_TRACE("killed before call " + std::to_string(number) + ", the power cut before call " +
                         std::to_string(again) + " of the new start");
            const std::unique_ptr<Scene> scene = rig.nextScene();
            isKilled = wasKilled([&] {
                SystemCalls::watch({.below = scene->disk.path(""), .at = number, .before = die});
                scene->act();
            });
            if (!isKilled) break;
            ::sync();
            // Mostly what was not flushed is lost.
            const Logs logs{.areWritten = points % 4 == 3, .areOfSecondWritten = points % 4 == 1};
            isInTheMiddle = rig.wasCutDuring(*scene, again, logs, [&] { Program reopened(scene->disk); });
            scene->expectOrder();
            ++points;
            if (HasFailure()) return;
        }
    }
    EXPECT_GT(points, 0U);
    tell(nameOf(GetParam()) + ", put in order", points, "pairs of a kill and a cut, each in order afterwards");
}

/// One of two volumes meets an error in the middle of a run, which goes on with the other.
struct BrokenCase {
    Case on;
    bool isSecond;
    bool isSilent = false;  ///< as one that is pulled out; else what it holds is still seen
};

std::string brokenName(const BrokenCase& of) {
    const std::string which = of.on.at == records
                                  ? (of.isSecond ? "of the records" : "of the files")
                                  : (of.isSecond ? "of the destination" : "of the source and the records");
    const std::string how = !of.isSilent ? "" : std::string(" silent ") + of.on.type;
    return std::string(of.on.flow.name) + ", that " + which + how;
}

class VolumesThatBreak : public ::testing::TestWithParam<BrokenCase> {
protected:
    [[nodiscard]] static bool areRecordsBroken() { return GetParam().isSecond == (GetParam().on.at == records); }
    /// Whether the undo record may list files that are back where they were: the volume of the files may lose what was
    /// organized, and that of the records what was taken back.
    [[nodiscard]] static bool listsWhatIsBack() {
        if (GetParam().on.at != records) return false;
        const std::string_view flow = GetParam().on.flow.name;
        return areRecordsBroken() ? flow == undoing.name : flow == organizing.name;
    }
    /// Whether a run or what it did is recorded.
    [[nodiscard]] static bool isRecorded(const Disk& disk) {
        const auto holds = [&](const char* folder) {
            if (!disk.has(folder)) return false;
            // What was not written to its end begins with a dot.
            return std::ranges::any_of(std::filesystem::directory_iterator(disk.path(folder)), [](const auto& file) {
                return !file.path().filename().string().starts_with('.');
            });
        };
        return holds("data/ordovan/runs") || holds("data/ordovan/journals");
    }
};

TEST_P(VolumesThatBreak, InTheMiddleOfARunLoseNothing) {
    const Case& on = GetParam().on;
    const std::string what = GetParam().isSilent ? "a volume answers nothing: " : "an error makes a volume read-only: ";
    const std::string proof = what + brokenName(GetParam());
    if (const std::string why = LoopVolume::missing({std::string("mkfs.") + on.type}); !why.empty()) {
        tellSkipped(proof, why);
        GTEST_SKIP() << "NOT TESTED: " << why;
    }
    Rig rig(on);
    std::size_t points = 0;
    bool isBroken = true;
    for (std::size_t number = rounds(3, 1); isBroken; number += rounds(12, 1)) {
        SCOPED_TRACE("before call " + std::to_string(number));
        const std::unique_ptr<Scene> scene = rig.nextScene();
        const bool wasRecorded = isRecorded(scene->disk);
        SystemCalls::watch({.below = scene->disk.path(""), .at = number, .before = [&] {
                                rig.breakDown(GetParam().isSecond, GetParam().isSilent);
                            }});
        scene->act();
        SystemCalls::ignore();
        isBroken = SystemCalls::happened() > 0;
        if (!GetParam().isSilent) scene->expectNothingLost("as long as the volume is broken");
        rig.startAgain(*scene);
        scene->allows.staleEntries = listsWhatIsBack();
        // A run that could have no record is as safe for each file, and can not be taken back in another program.
        const bool canBeTakenBack = wasRecorded || isRecorded(scene->disk) || !areRecordsBroken();
        if (canBeTakenBack) scene->expectOrder();
        if (!canBeTakenBack) scene->expectEachFileOnce("without a record");
        if (isBroken) ++points;
        if (HasFailure()) return;
    }
    EXPECT_GT(points, 0U);
    tell(proof, points, "points at which one volume of two breaks down, and the run goes on");
}

/// Each copy is on the disk when it can not get its name, and is taken away again.
TEST(PowerCut, BringsNoCopyBackThatARunHadTakenAway) {
    if (const std::string why = LoopVolume::missing({"mkfs.ext4"}); !why.empty()) GTEST_SKIP() << "NOT TESTED: " << why;
    const Case across{organizing, "ext4", "ext4", output};
    Rig rig(across);
    const std::unique_ptr<Scene> scene = rig.nextScene();
    EXPECT_FALSE(rig.wasCutDuring(*scene, 0, {.areWritten = false, .areOfSecondWritten = false}, [&] {
        SystemCalls::watch({.below = scene->disk.path(output),
                            .at = 1,
                            .forGood = true,
                            .error = EIO,
                            .applies = [](std::string_view name) { return name == "renameat2"; }});
        scene->act();
    }));
    scene->expectEachFileOnce("after the cut");
    scene->expectOrder();
}

/// Its flush is said to have gone well, and so is that of a folder in which nothing has changed.
TEST(PowerCut, BtrfsThatBreaksIsKnownToHaveFlushedNothing) {
    if (const std::string why = LoopVolume::missing({"mkfs.btrfs"}); !why.empty())
        GTEST_SKIP() << "NOT TESTED: " << why;
    const LoopVolume volume("btrfs", 160U << 20U);
    const auto url = [&](const char* name) { return Url::file(volume.path(name)); };
    for (const char* folder : {"old", "new", "other", "filled"}) std::filesystem::create_directory(volume.path(folder));
    std::ofstream(volume.path("old/a")) << "one";
    EXPECT_TRUE(ordovan::syncMoves(std::vector{url("old/a"), url("other/b")}));
    std::filesystem::rename(volume.path("old/a"), volume.path("new/a"));
    volume.setFull(true);
    const std::string content(1500, 'x');
    for (int i = 0; i < 1'000; ++i) std::ofstream(volume.path("filled/" + std::to_string(i))) << content;
    EXPECT_FALSE(ordovan::syncMoves(std::vector{url("other/b"), url("new/a")}, std::vector{url("old/a")}));
    EXPECT_FALSE(ordovan::syncMoves(std::vector{url("other/b"), url("new/a")}, std::vector{url("old/a")}));
    EXPECT_TRUE(std::filesystem::exists(volume.path("new/a"))) << "it is seen";
    volume.setFull(false);
}

TEST(PowerCut, WhatWasOrganizedOnABtrfsVolumeGoesBackUnderAnotherDeviceNumber) {
    if (const std::string why = LoopVolume::missing({"mkfs.btrfs"}); !why.empty())
        GTEST_SKIP() << "NOT TESTED: " << why;
    LoopVolume volume("btrfs");
    const ::dev_t before = volume.number();
    Disk disk(volume.path());
    flows::fill(disk);
    const auto files = disk.described();
    EXPECT_TRUE(Program(disk).organize());
    EXPECT_NE(disk.described(), files);
    // What is mounted in between may take another number that is free by chance.
    for (int times = 0; volume.number() == before && times < 32; ++times) volume.mountAgain();
    ASSERT_NE(volume.number(), before);
    Program reopened(disk);
    EXPECT_TRUE(reopened.undo());
    EXPECT_EQ(disk.described(), files);
}

std::vector<Case> cases() {
    std::vector<Case> all;
    for (const char* type : {"ext4", "xfs", "btrfs"}) {
        for (const Flow& flow : {organizing, undoing, trashing, trashingExtras, restoring}) all.push_back({flow, type});
        for (const Flow& flow : {organizing, undoing}) all.push_back({flow, type, type, output});
    }
    // The records on another volume than the files.
    using Types = std::pair<const char*, const char*>;
    const std::vector<Types> pairs = isLong()
                                         ? std::vector<Types>{{"ext4", "ext4"}, {"xfs", "xfs"},    {"ext4", "xfs"},
                                                              {"xfs", "ext4"},  {"ext4", "btrfs"}, {"btrfs", "ext4"}}
                                         : std::vector<Types>{{"ext4", "ext4"}};
    for (const auto& [type, secondType] : pairs) {
        for (const Flow& flow : {organizing, undoing, trashing, restoring}) {
            all.push_back({flow, type, secondType, records});
        }
    }
    for (const auto& [type, secondType] : pairs) {
        for (const Flow& flow : {organizing, undoing}) all.push_back({flow, type, secondType, whole});
    }
    if (!isLong()) all.push_back({organizing, "xfs", "ext4", records});
    return all;
}

std::vector<Case> casesOfTwice() {
    if (!isLong())
        return {{organizing, "ext4", "ext4", output}, {trashingExtras, "ext4"}, {organizing, "xfs", "ext4", records}};
    return cases();
}

std::vector<BrokenCase> brokenCases() {
    std::vector<BrokenCase> all;
    for (const bool isSecond : {false, true}) {
        for (const Flow& flow : {organizing, undoing}) all.push_back({{flow, "ext4", "ext4", output}, isSecond});
        for (const Flow& flow : {organizing, undoing, trashing, restoring}) {
            all.push_back({{flow, "ext4", "ext4", records}, isSecond});
        }
    }
    if (!isLong()) {
        for (const Flow& flow : {undoing, restoring}) all.push_back({{flow, "ext4", "ext4", records}, false, true});
        return all;
    }
    const std::vector<BrokenCase> readOnly = all;
    for (const char* type : {"ext4", "xfs"}) {
        for (const BrokenCase& of : readOnly) {
            all.push_back({{of.on.flow, type, type, of.on.at}, of.isSecond, true});
        }
    }
    return all;
}

std::string plain(std::string name) {
    std::erase_if(name, [](char c) { return c == ':' || c == ','; });
    std::ranges::replace(name, ' ', '_');
    return name;
}
std::string caseName(const ::testing::TestParamInfo<Case>& of) {
    return plain(nameOf(of.param).substr(std::string_view("power cut on ").size()));
}

INSTANTIATE_TEST_SUITE_P(Of, PowerCuts, ::testing::ValuesIn(cases()), caseName);
INSTANTIATE_TEST_SUITE_P(Of, PowerCutsTwice, ::testing::ValuesIn(casesOfTwice()), caseName);
INSTANTIATE_TEST_SUITE_P(Of, VolumesThatBreak, ::testing::ValuesIn(brokenCases()),
                         [](const auto& of) { return plain(brokenName(of.param)); });

}  // namespace
