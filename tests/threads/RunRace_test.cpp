// A second thread exchanges the folders on the way for links to decoys outside, or the files for others, while files
// are moved. Nothing may leave the root or be taken from outside, and what was hashed is what is moved. Controls show
// that the same moves by path do go astray, although every folder is checked right before.

#include "OrdovanCore/ExecutionScope.h"
#include "OrdovanCore/platform/RunFileSystem.h"
#include "OrdovanCore/platform/SystemFileSystem.h"
#include "tests/support/Attacker.h"
#include "tests/support/TempFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

using ordovan::ConfinedFolders;
using ordovan::RunFileSystem;
using ordovan::test::Attacker;
using ordovan::test::Patience;
using ordovan::test::TempFolder;
using ordovan::testing::FaultyFileSystem;

namespace {

constexpr int wantedMoves = ordovan::test::isSanitized ? 2'000 : 20'000;
constexpr int fileCount = 64;
// To hash a file and to move it takes many calls, all of which a file exchanged meanwhile ends.
constexpr unsigned restBetweenFiles = 64;

class RunRace : public testing::Test {
protected:
    void SetUp() override {
        t.makeFolder("root/out");
        t.makeFolder("decoy/out");
        for (int i = 0; i < fileCount; ++i) {
            const std::string name = std::to_string(i);
            t.write("root/in/" + name, "content of " + name);
            t.write("decoy/in/" + name, "decoy " + name);
        }
        t.makeLink("root/.in", t.path("decoy/in"));
        t.makeLink("root/.out", t.path("decoy/out"));
        if (!Attacker::works(linkPairs()))
            GTEST_SKIP() << "NOT TESTED: this file system exchanges no folders for links";
    }
    [[nodiscard]] Url at(const char* folder, const std::string& name) const {
        return t.url("root/" + std::string(folder) + "/" + name);
    }
    /// Exchanges both folders for links to the decoys.
    [[nodiscard]] std::vector<Attacker::Pair> linkPairs() const {
        return {{t.path("root/out"), t.path("root/.out")}, {t.path("root/in"), t.path("root/.in")}};
    }
    /// How many files left the root or came from outside.
    [[nodiscard]] std::size_t escapes() const {
        return t.count("decoy/out") + (static_cast<std::size_t>(fileCount) - t.count("decoy/in"));
    }
    /// Every file of the root, by the name in its content.
    [[nodiscard]] std::vector<std::string> contents() const {
        std::vector<std::string> found;
        for (const char* folder : {"root/in/", "root/out/"}) {
            for (const auto& entry : std::filesystem::directory_iterator(t.path(folder))) {
                found.push_back(t.read(folder + entry.path().filename().string()));
            }
        }
        std::ranges::sort(found);
        return found;
    }

    struct Tally {
        int moves = 0;
        int attempts = 0;
    };

    /// Moves so many files to and fro, or until one has escaped, each after the check that every run makes: no folder
    /// on the way is a link.
    Tally moveFiles(OrdovanFileSystem& fs, std::optional<int> moves) {
        const Patience patience;
        Tally tally;
        std::array<bool, fileCount> isOut{};
        const std::string root = t.path("root");
        while ((!moves || tally.moves < *moves) && !patience.isOver()) {
            const std::size_t i = static_cast<std::size_t>(tally.attempts++) % fileCount;
            const std::string name = std::to_string(i);
            const Url from = at(isOut[i] ? "out" : "in", name), to = at(isOut[i] ? "in" : "out", name);
            if (OrdovanHasSymlinkedParent(from, root, fs) || OrdovanHasSymlinkedParent(to, root, fs)) continue;
            if (tally.attempts % 2 == 0) static_cast<void>(fs.contentHash(from));
            if (fs.move(from, to)) {
                isOut[i] = !isOut[i];
                ++tally.moves;
            }
            if (!moves && tally.attempts % 256 == 0 && escapes() > 0) break;
        }
        return tally;
    }

    /// Hashes and moves a file so often while an attacker exchanges it for another, or until the wrong one is moved:
    /// how many were.
    int wrongMoves(OrdovanFileSystem& fs, std::optional<int> moves) {
        const Patience patience;
        SystemFileSystem disk;
        int wrong = 0, done = 0;
        const std::string name = "0";
        while ((moves ? done < *moves : wrong == 0) && !patience.isOver()) {
            const auto hash = fs.contentHash(at("in", name));
            if (!hash || !fs.move(at("in", name), at("out", name))) continue;
            ++done;
            wrong += disk.contentHash(at("out", name)) == hash ? 0 : 1;
            EXPECT_TRUE(disk.move(at("out", name), at("in", name)));
        }
        EXPECT_GE(done, moves.value_or(0) / 50);
        return wrong;
    }
    /// Two files of two sizes.
    [[nodiscard]] std::vector<Attacker::Pair> filePair() const { return {{t.path("root/in/0"), t.path("root/in/10")}}; }

    /// Moves by path.
    OrdovanFileSystem& byPath() {
        Attacker::letInto(byPath_);
        return byPath_;
    }

    TempFolder t;

private:
    SystemFileSystem disk_;
    FaultyFileSystem byPath_{disk_};
};

class BothWays : public RunRace, public testing::WithParamInterface<ConfinedFolders::Entering> {};

INSTANTIATE_TEST_SUITE_P(RunRace, BothWays,
                         testing::Values(ConfinedFolders::Entering::atOnce, ConfinedFolders::Entering::stepByStep),
                         [](const auto& way) {
                             return way.param == ConfinedFolders::Entering::atOnce ? "AtOnce" : "StepByStep";
                         });

TEST_P(BothWays, MovesNothingAcrossLinksThatTakeTheNamesOfFolders) {
    const auto before = contents();
    Tally tally;
    {
        RunFileSystem disk(t.url("root"), GetParam());
        FaultyFileSystem fs(disk);
        Attacker::letInto(fs);
        const Attacker attacker(linkPairs());
        tally = moveFiles(fs, wantedMoves);
    }
    EXPECT_GE(tally.moves, wantedMoves / 50) << "of " << tally.attempts << " attempts";
    EXPECT_EQ(escapes(), 0u);
    EXPECT_EQ(contents(), before);
    std::printf("%d moves, %d attempts, %zu escapes\n", tally.moves, tally.attempts, escapes());
}

TEST_F(RunRace, IsLostByMovesByPath) {
    const Attacker attacker(linkPairs());
    const Tally tally = moveFiles(byPath(), std::nullopt);
    EXPECT_GT(escapes(), 0u) << "the attack does not work here, so that the test above proves nothing";
    std::printf("%d moves, %d attempts, %zu escapes\n", tally.moves, tally.attempts, escapes());
}

TEST_F(RunRace, MovesWhatWasHashedThoughFilesAreExchanged) {
    RunFileSystem disk(t.url("root"));
    FaultyFileSystem fs(disk);
    Attacker::letInto(fs);
    const Attacker attacker(filePair(), restBetweenFiles);
    EXPECT_EQ(wrongMoves(fs, wantedMoves), 0);
}

TEST_F(RunRace, MovesSomethingElseByPathWhenFilesAreExchanged) {
    const Attacker attacker(filePair(), restBetweenFiles);
    EXPECT_GT(wrongMoves(byPath(), std::nullopt), 0)
        << "the attack does not work here, so that the test above proves nothing";
}

}  // namespace
