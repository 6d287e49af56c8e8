// The power is cut at every call by which a run changes something: the file system is shut down without writing
// anything more (ext4, xfs), or what its device holds at that moment is all that is left (btrfs). Then it is mounted
// again, the program is started again, and everything must be in order.

#include "tests/proofs/Flows.h"
#include "tests/proofs/LoopVolume.h"
#include "tests/proofs/Proof.h"

#include <gtest/gtest.h>

using namespace ordovan::proofs;

namespace {

struct Case {
    const char* type;
    Flow flow;
    bool acrossVolumes;  ///< files are organized into a second volume of that type, which loses its power as well
};

/// The second volume of a case under test.
LoopVolume* second = nullptr;
std::size_t round_ = 0;

std::string shareOfSecond() {
    return second->path("share" + std::to_string(round_));
}

void fillOntoSecond(Disk& disk) {
    flows::fill(disk);
    std::filesystem::create_directories(shareOfSecond());
    disk.bind(shareOfSecond(), "tree/ordovan+");
}

constexpr std::array flowsOfOne = {
    Flow{"organize", false, flows::fill, flows::nothing, flows::organize},
    Flow{"undo", false, flows::fill, flows::organize, flows::undo},
    Flow{"trash files", false, flows::fill, flows::nothing, flows::trashFiles},
    Flow{"restore", false, flows::fill, flows::trashFiles, flows::restore},
};
constexpr std::array flowsOfTwo = {
    Flow{"organize across volumes", true, fillOntoSecond, flows::nothing, flows::organize},
    Flow{"undo across volumes", true, fillOntoSecond, flows::organize, flows::undo},
};

std::vector<Case> cases() {
    std::vector<Case> all;
    for (const char* type : {"ext4", "xfs", "btrfs"}) {
        for (const Flow& flow : flowsOfOne) all.push_back({type, flow, false});
        for (const Flow& flow : flowsOfTwo) all.push_back({type, flow, true});
    }
    return all;
}

class PowerCuts : public ::testing::TestWithParam<Case> {};

TEST_P(PowerCuts, AtEveryCallThatChangesSomethingLoseNothing) {
    const Case& each = GetParam();
    const std::string proof = std::string("power cut on ") + each.type + ": " + each.flow.name;
    if (const std::string why = LoopVolume::missing({std::string("mkfs.") + each.type}); !why.empty()) {
        tellSkipped(proof, why);
        GTEST_SKIP() << "NOT TESTED: " << why;
    }
    LoopVolume volume(each.type);
    std::unique_ptr<LoopVolume> other = each.acrossVolumes ? std::make_unique<LoopVolume>(each.type) : nullptr;
    second = other.get();
    std::size_t points = 0;
    const bool hasLog = std::string_view(each.type) != "btrfs";
    for (const bool isLogWritten : {false, true}) {
        if (isLogWritten && !hasLog) continue;
        for (std::size_t number = rounds(isLogWritten ? 7 : 4, 1);; number += rounds(9, 1)) {
            SCOPED_TRACE("cut before call " + std::to_string(number) + (isLogWritten ? ", the log written" : ""));
            ++round_;
            const std::string folder = volume.path("round" + std::to_string(round_));
            std::filesystem::create_directories(folder);
            Scene scene(each.flow, folder);
            ::sync();  // all that was there before is on the device
            const bool wasCut = wasKilled([&] {
                SystemCalls::watch({.below = scene.disk.path(""), .at = number, .before = [&] {
                                        volume.cut(isLogWritten);
                                        if (other) other->cut(isLogWritten);
                                        die();
                                    }});
                scene.act();
            });
            if (!wasCut) break;  // the power stayed on to the end
            scene.disk.unmountAll();
            volume.startAgain();
            if (other) other->startAgain();
            if (other) scene.disk.bind(shareOfSecond(), "tree/ordovan+");
            scene.allows.staleEntries = !hasLog;
            scene.expectOrder();
            ++points;
            if (HasFailure()) return;
        }
    }
    EXPECT_GT(points, 0U);
    tell(proof, points, "points, each with a new start and everything taken back");
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
    volume.mountAgain();
    ASSERT_NE(volume.number(), before);
    Program reopened(disk);
    EXPECT_TRUE(reopened.undo());
    EXPECT_EQ(disk.described(), files);
}

INSTANTIATE_TEST_SUITE_P(Of, PowerCuts, ::testing::ValuesIn(cases()), [](const auto& of) {
    std::string name = std::string(of.param.type) + "_" + of.param.flow.name;
    std::ranges::replace(name, ' ', '_');
    return name;
});

}  // namespace
