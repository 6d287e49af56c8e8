// Volumes that are full, have no file numbers left, exceed a quota, or turn read-only in the middle of a run. Nothing
// is lost, what could not be done is said, and once there is room everything can be taken back.

#include "tests/proofs/Flows.h"
#include "tests/proofs/LoopVolume.h"
#include "tests/proofs/Proof.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/statvfs.h>
#include <sys/vfs.h>

using namespace ordovan::proofs;
using ordovan::test::SecondVolume;
using ordovan::test::detail::MountNamespace;

namespace {

constexpr std::size_t page = 4096;

/// A file that takes all of a volume but so many bytes, as far as it can be told.
class Filler {
public:
    Filler(const std::string& folder, std::size_t left) : path_(folder + "/.filler") {
        const int file = ::open(path_.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
        struct ::statvfs volume;
        if (file >= 0 && ::statvfs(folder.c_str(), &volume) == 0) {
            const std::size_t free = volume.f_bavail * volume.f_frsize;
            if (free > left) static_cast<void>(::posix_fallocate(file, 0, static_cast<::off_t>(free - left)));
        }
        ::close(file);
    }
    ~Filler() { std::filesystem::remove(path_); }
    Filler(const Filler&) = delete;
    Filler& operator=(const Filler&) = delete;

private:
    std::string path_;
};

void fillLarge(Disk& disk) {
    for (const char* name : {"a.pdf", "b.jpg", "sub/c.txt"}) {
        disk.write(std::string("tree/") + name, std::string(5 * page + 100, name[0]));
    }
}
void fillLargeAcross(Disk& disk) {
    fillLarge(disk);
    disk.mount("tree/ordovan+", 256 * page);
}
/// The records lie on a small volume of their own.
void fillSmallRecords(Disk& disk) {
    fillLarge(disk);
    disk.mount("data/ordovan", 64 * page);
}

void organizeNow(Program& program, Disk&) {
    program.organize();
}
void undoNow(Program& program, Disk&) {
    program.undo();
}
void trashTwo(Program& program, Disk& disk) {
    program.trash({disk.path("tree/a.pdf"), disk.path("tree/sub/c.txt")});
}

/// A run on a volume with less and less room.
struct Narrow {
    const char* name;
    void (*fill)(Disk& disk);
    void (*prepare)(Disk& disk);
    void (*act)(Program& program, Disk& disk);
    const char* volume;  ///< the folder where room is scarce
    std::size_t steps;   ///< pages of room to try
};

/// A run where something ran out, and then it did not any more: nothing was lost, and all that was moved comes back, in
/// the program that said so as long as it could not record it.
void expectOrderAfter(Scene& scene, const std::function<void(Program&, Disk&)>& act,
                      const std::function<void()>& makeRoom) {
    {
        Program program(scene.disk);
        act(program, scene.disk);
        scene.expectNothingLost("while there was no room");
        makeRoom();
        if (program.model().journalUnsaved()) {
            scene.expectAllComesBack(program);
            return;
        }
    }
    scene.expectOrder();
}

class FullDisks : public ::testing::TestWithParam<Narrow> {};

TEST_P(FullDisks, LoseNothingAtEveryStepOfRoom) {
    const Narrow& narrow = GetParam();
    if (!SecondVolume::available()) {
        tellSkipped(std::string("disk full: ") + narrow.name, SecondVolume::unavailable);
        GTEST_SKIP() << SecondVolume::unavailable;
    }
    for (std::size_t pages = 0; pages <= narrow.steps; ++pages) {
        SCOPED_TRACE(std::to_string(pages) + " pages of room");
        const Flow flow{"", true, narrow.fill, narrow.prepare, nullptr};
        Scene scene(flow);
        auto filler = std::make_unique<Filler>(scene.disk.path(narrow.volume), pages * page);
        expectOrderAfter(scene, narrow.act, [&] { filler.reset(); });
        if (HasFailure()) return;
    }
    tell(std::string("disk full: ") + narrow.name, narrow.steps + 1, "steps of 4 KiB of room");
}

INSTANTIATE_TEST_SUITE_P(
    Of, FullDisks,
    ::testing::Values(
        Narrow{"organize across volumes", fillLargeAcross, flows::nothing, organizeNow, "tree/ordovan+", 22},
        Narrow{"undo across volumes", fillLargeAcross, flows::organize, undoNow, "tree", 22},
        Narrow{"organize, records full", fillSmallRecords, flows::nothing, organizeNow, "data/ordovan", 10},
        Narrow{"undo, records full", fillSmallRecords, flows::organize, undoNow, "data/ordovan", 10},
        Narrow{"trash, records full", fillSmallRecords, flows::nothing, trashTwo, "data/ordovan", 10},
        Narrow{"trash, Trash full", fillLarge, flows::nothing, trashTwo, "tree", 10}),
    [](const auto& of) {
        std::string name(of.param.name);
        std::ranges::replace_if(name, [](char c) { return c == ' ' || c == ','; }, '_');
        return name;
    });

TEST(FileNumbers, ThatRunOutLoseNothing) {
    if (!SecondVolume::available()) {
        tellSkipped("no file numbers left", SecondVolume::unavailable);
        GTEST_SKIP() << SecondVolume::unavailable;
    }
    std::size_t steps = 0;
    for (const bool areRecords : {false, true}) {
        for (std::size_t numbers = 1; numbers <= 24; ++numbers, ++steps) {
            SCOPED_TRACE(std::to_string(numbers) + " file numbers" + (areRecords ? " for the records" : ""));
            static std::string limit;
            static const char* place;
            limit = "nr_inodes=" + std::to_string(numbers);
            place = areRecords ? "data/ordovan" : "tree/ordovan+";
            const Flow flow{"", true,
                            [](Disk& disk) {
                                fillLarge(disk);
                                disk.mount(place, 256 * page, limit);
                            },
                            flows::nothing, nullptr};
            Scene scene(flow);
            expectOrderAfter(scene, organizeNow, [&] { scene.disk.remount(place, 256 * page, "nr_inodes=1000"); });
            if (HasFailure()) return;
        }
    }
    tell("no file numbers left", steps, "limits of a volume");
}

/// A volume turns read-only before a call of a run, and later writable again.
class ReadOnly : public ::testing::TestWithParam<Flow> {};

TEST_P(ReadOnly, InTheMiddleOfARunLosesNothing) {
    if (!SecondVolume::available()) {
        tellSkipped(std::string("read-only: ") + GetParam().name, SecondVolume::unavailable);
        GTEST_SKIP() << SecondVolume::unavailable;
    }
    const std::vector<std::string> calls = callsOf(GetParam(), true);
    std::size_t points = 0;
    for (std::size_t number = 1; number <= calls.size(); number += rounds(3, 1)) {
        SCOPED_TRACE("read-only before call " + std::to_string(number) + ": " + calls[number - 1]);
        Scene scene(GetParam());
        bool isDone = false;
        SystemCalls::watch({.below = scene.disk.path(""), .at = number, .before = [&] {
                                isDone = scene.disk.setReadOnly(true);
                                if (!isDone) scene.disk.setReadOnly(false);
                            }});
        scene.act();
        SystemCalls::ignore();
        scene.disk.setReadOnly(false);
        scene.expectOrder();
        if (isDone) ++points;  // a file that is open for writing keeps its volume writable
        if (HasFailure()) return;
    }
    EXPECT_GT(points, 0U);
    tell(std::string("read-only: ") + GetParam().name, points, "points at which the volumes turn read-only");
}

INSTANTIATE_TEST_SUITE_P(Of, ReadOnly, ::testing::ValuesIn(allFlows), [](const auto& of) {
    std::string name(of.param.name);
    std::ranges::replace(name, ' ', '_');
    return name;
});

void restoreNow(Program& program, Disk&) {
    program.restore();
}
/// The files, what is organized and the records lie on three volumes; or the records on one of two.
void fillApart(Disk& disk) {
    disk.mount("tree");
    disk.mount("tree/ordovan+");
    disk.mount("data/ordovan");
    flows::fill(disk);
}
void fillRecordsApart(Disk& disk) {
    disk.mount("data/ordovan");
    flows::fill(disk);
}

/// One volume alone turns read-only in the middle of a run, which goes on with the others.
struct Alone {
    const char* name;
    void (*fill)(Disk& disk);
    void (*prepare)(Disk& disk);
    void (*act)(Program& program, Disk& disk);
    const char* volume;
};

class OneReadOnly : public ::testing::TestWithParam<Alone> {};

TEST_P(OneReadOnly, InTheMiddleOfARunLosesNothing) {
    const Alone& alone = GetParam();
    const std::string proof = std::string("one volume read-only: ") + alone.name;
    if (!SecondVolume::available()) {
        tellSkipped(proof, SecondVolume::unavailable);
        GTEST_SKIP() << SecondVolume::unavailable;
    }
    std::size_t points = 0;
    bool isReached = true;
    for (std::size_t number = 1; isReached; number += rounds(7, 1)) {
        SCOPED_TRACE("before call " + std::to_string(number));
        const Flow flow{"", true, alone.fill, alone.prepare, nullptr};
        Scene scene(flow);
        scene.allows.infoFiles = true;
        // What could not be taken out of a record is skipped when it is undone again.
        scene.allows.staleEntries = std::string_view(alone.volume) == "data/ordovan";
        bool isDone = false;
        const auto act = [&](Program& program, Disk& disk) {
            SystemCalls::watch({.below = disk.path(""), .at = number, .before = [&] {
                                    isDone = disk.setReadOnly(alone.volume, true);
                                }});
            alone.act(program, disk);
            SystemCalls::ignore();
        };
        expectOrderAfter(scene, act, [&] { scene.disk.setReadOnly(alone.volume, false); });
        isReached = SystemCalls::happened() > 0;
        if (isDone) ++points;  // a file that is open for writing keeps its volume writable
        if (HasFailure()) return;
    }
    EXPECT_GT(points, 0U);
    tell(proof, points, "points at which that volume turns read-only");
}

INSTANTIATE_TEST_SUITE_P(
    Of, OneReadOnly,
    ::testing::Values(Alone{"organize, the source", fillApart, flows::nothing, organizeNow, "tree"},
                      Alone{"organize, the destination", fillApart, flows::nothing, organizeNow, "tree/ordovan+"},
                      Alone{"organize, the records", fillApart, flows::nothing, organizeNow, "data/ordovan"},
                      Alone{"undo, the source", fillApart, flows::organize, undoNow, "tree/ordovan+"},
                      Alone{"undo, the destination", fillApart, flows::organize, undoNow, "tree"},
                      Alone{"undo, the records", fillApart, flows::organize, undoNow, "data/ordovan"},
                      Alone{"trash, the files", fillRecordsApart, flows::nothing, trashTwo, ""},
                      Alone{"trash, the records", fillRecordsApart, flows::nothing, trashTwo, "data/ordovan"},
                      Alone{"restore, the files", fillRecordsApart, flows::trashFiles, restoreNow, ""},
                      Alone{"restore, the records", fillRecordsApart, flows::trashFiles, restoreNow, "data/ordovan"}),
    [](const auto& of) {
        std::string name(of.param.name);
        std::ranges::replace_if(name, [](char c) { return c == ' ' || c == ','; }, '_');
        return name;
    });

/// Files are organized into a btrfs volume that may hold so much and no more; unlike a user's, its quota binds root as
/// well.
TEST(Quota, ThatIsUsedUpLosesNothing) {
    if (const std::string why = LoopVolume::missing({"mkfs.btrfs", "btrfs"}); !why.empty()) {
        tellSkipped("quota: btrfs", why);
        GTEST_SKIP() << "NOT TESTED: " << why;
    }
    const LoopVolume volume("btrfs");
    static std::string share;
    share = volume.path("share");
    std::size_t points = 0;
    for (std::size_t pages = 0; pages <= 40; pages += rounds(5, 1), ++points) {
        SCOPED_TRACE(std::to_string(pages) + " pages of quota");
        ASSERT_TRUE(LoopVolume::did("btrfs subvolume create " + share));
        const Flow across{"", true,
                          [](Disk& disk) {
                              fillLarge(disk);
                              disk.bind(share, "tree/ordovan+");
                          },
                          flows::nothing, nullptr};
        {
            Scene scene(across);
            ASSERT_TRUE(LoopVolume::did("btrfs quota enable " + volume.path()));
            ASSERT_TRUE(LoopVolume::did("btrfs qgroup limit " + std::to_string(16384 + pages * page) + " " + share));
            // A limit that is reached can not be changed any more.
            expectOrderAfter(scene, organizeNow,
                             [&] { EXPECT_TRUE(LoopVolume::did("btrfs quota disable " + volume.path())); });
        }
        ASSERT_TRUE(LoopVolume::did("btrfs subvolume delete " + share));
        if (HasFailure()) return;
    }
    tell("quota: btrfs", points, "limits of the quota");
}

}  // namespace
