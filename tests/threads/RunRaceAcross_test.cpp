// As RunRace_test, for files that go to another volume, for those that come back from it, and for removals: a second
// thread exchanges folders for links to decoys, and files for others, while a file is hashed, copied, looked at and
// removed. What such a run leaves half done its record has to put right.

#include "OrdovanCore/ExecutionScope.h"
#include "OrdovanCore/Executor.h"
#include "tests/support/RaceWorld.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

using ordovan::ConfinedFolders;
using ordovan::RunFileSystem;
using ordovan::test::Attacker;
using ordovan::test::Damage;
using ordovan::test::Patience;
using ordovan::test::RaceWorld;
using ordovan::test::SecondVolume;
using ordovan::test::ToldRun;
using ordovan::testing::FaultyFileSystem;

namespace {

using Kind = OrdovanRunRecord::Kind;
using Pairs = std::vector<Attacker::Pair>;

constexpr int wantedCopies = ordovan::test::isSanitized ? 250 : 2'000;
constexpr int wantedRemovals = ordovan::test::isSanitized ? 1'000 : 10'000;
constexpr unsigned restAmongFolders = 300;
constexpr unsigned restAmongFiles = 30;
constexpr unsigned restByPath = 20;  // where hardly any move need come to its end

std::string nameOfWay(const testing::TestParamInfo<ConfinedFolders::Entering>& way) {
    return way.param == ConfinedFolders::Entering::atOnce ? "AtOnce" : "StepByStep";
}

/// "root/in" is on one volume and "root/other" on a second one.
class RunRaceAcross : public RaceWorld {
protected:
    void build() override {
        other_ = std::make_unique<SecondVolume>();
        for (int i = 0; i < fileCount(); ++i) {
            const std::string name = std::to_string(i);
            write("root/in/" + name, i);
            writeDecoy("decoy/in/" + name, i);
        }
        volume_->root().makeLink("root/.in", path("decoy/in"));
        other_->root().makeFolder("share/out");
        other_->root().makeFolder("decoy/out");
        other_->root().makeLink("share/.out", other_->path("decoy/out"));
        volume_->root().makeFolder("root/other");
        ASSERT_TRUE(ordovan::test::detail::MountNamespace::get().bind(other_->path("share"), path("root/other")));
    }
    void TearDown() override {
        if (other_) ordovan::test::detail::MountNamespace::get().unmount(path("root/other"));
    }
    [[nodiscard]] std::vector<std::string> decoys() const override { return {path("decoy"), other_->path("decoy")}; }
    [[nodiscard]] std::vector<std::string> homes() const override { return {path("root")}; }
    [[nodiscard]] virtual unsigned rest() const { return restAmongFolders; }
    [[nodiscard]] virtual int fileCount() const { return 24; }
    [[nodiscard]] Url output() const { return volume_->url("root/other"); }

    struct Tally {
        int copies = 0;      // files that were moved
        int attempts = 0;    // that were to be
        int rolledBack = 0;  // that were copied, and the copy taken away again
        int putRight = 0;    // runs that left something
        int told = 0;        // files that stay under a hidden name, which the user is told
        int untold = 0;      // the same, and nobody is told
    };

    /// Organizes what is in "in" and takes it back, under attack, until as many files were moved as are wanted.
    Tally race(ConfinedFolders::Entering entering) {
        return race(entering, [](const Tally& tally) { return tally.copies >= wantedCopies; });
    }
    /// The same by path, without a record and by the plain disk, until that does the harm.
    void raceByPath(std::size_t Damage::* harm) {
        race(std::nullopt, [&](const Tally&) { return total_.*harm > 0; });
    }
    /// What all runs together did.
    [[nodiscard]] const Damage& total() const { return total_; }

    /// What is exchanged while files are moved out, and while they are moved back.
    [[nodiscard]] virtual Pairs pairs(bool /*isUndo*/) const {
        return {{path("root/other/out"), path("root/other/.out")}, {path("root/in"), path("root/.in")}};
    }
    /// Whether this folder's files keep their names under attack.
    [[nodiscard]] virtual bool keepsNames(std::string_view /*folder*/, bool /*isUndo*/) const { return true; }
    /// Called at rest, when files were moved out and back.
    virtual void beginAnew() {}
    void forgetJournal() { journal_.entries.clear(); }

private:
    template <class Condition>
    Tally race(std::optional<ConfinedFolders::Entering> entering, const Condition& isEnough) {
        const Patience patience;
        Tally tally;
        while (!isEnough(tally) && !patience.isOver()) {
            organize(entering, tally);
            lookAfterRun(tally);
            undo(entering, tally);
            lookAfterRun(tally);
            beginAnew();
        }
        std::printf("%d moves, %d attempts, %d copies taken back, %d runs put right, %d left and told\n", tally.copies,
                    tally.attempts, tally.rolledBack, tally.putRight, tally.told);
        return tally;
    }

    void organize(std::optional<ConfinedFolders::Entering> entering, Tally& tally) {
        std::vector<OrdovanFileProposal> proposals;
        ToldRun run(Kind::organize, root());
        run.addOutputRoot(output());
        for (const auto& entry : std::filesystem::directory_iterator(path("root/in"))) {
            const std::string name = entry.path().filename();
            if (name.starts_with('.')) continue;
            proposals.push_back({.source = volume_->url("root/in/" + name),
                                 .destination = volume_->url("root/other/out/" + name),
                                 .explanation = "",
                                 .ruleFolder = std::nullopt});
            run.add(proposals.back().source, proposals.back().destination);
        }
        isUndo_ = false;
        const auto report = attacked(entering, run, [&](OrdovanFileSystem& fs) {
            return OrdovanExecutor::apply(proposals, root(), output(), fs, 0);
        });
        account(report, tally);
        for (const auto& entry : report.journal.entries) journal_.entries.push_back(entry);
        if (!found_) return;
        for (const auto& entry : found_->journal.entries) {
            std::erase_if(journal_.entries, [&](const auto& known) { return known.id() == entry.id(); });
            journal_.entries.push_back(entry);
        }
    }

    void undo(std::optional<ConfinedFolders::Entering> entering, Tally& tally) {
        ToldRun run(Kind::undo, root());
        run.addOutputRoot(output());
        for (auto entry = journal_.entries.rbegin(); entry != journal_.entries.rend(); ++entry) {
            run.add(Url::file(entry->destination()), Url::file(entry->source()), entry->contentHash());
        }
        isUndo_ = true;
        const auto report = attacked(entering, run, [&](OrdovanFileSystem& fs) {
            return OrdovanExecutor::undo(journal_, root(), output(), fs);
        });
        account(report, tally);
        const Files found = RaceWorld::files();
        for (const auto& entry : journal_.entries) {
            const bool isBack = std::ranges::find(report.journal.entries, entry) == report.journal.entries.end();
            if (isBack) expectAt(found, entry.source(), entry.contentHash());
        }
        journal_ = report.journal;
        if (!found_) return;
        std::erase_if(journal_.entries, [&](const OrdovanJournalEntry& entry) {
            return std::ranges::find(found_->restored, entry.destination()) != found_->restored.end();
        });
    }

    /// One run under attack; then what it left is put right.
    template <class Action>
    OrdovanExecutionReport attacked(std::optional<ConfinedFolders::Entering> entering, ToldRun& run,
                                    const Action& action) {
        OrdovanExecutionReport report;
        found_.reset();
        if (!entering) {
            const Attacker attacker(pairs(isUndo_), restByPath);
            return action(byPath());
        }
        RunFileSystem disk(root(), *entering);
        FaultyFileSystem fs(run.begin(disk));
        Attacker::letInto(fs);
        {
            const Attacker attacker(pairs(isUndo_), rest());
            report = action(fs);
        }
        found_ = run.end();
        return report;
    }

    void account(const OrdovanExecutionReport& report, Tally& tally) const {
        tally.copies += static_cast<int>(report.movedCount());
        tally.attempts += static_cast<int>(report.outcomes.size());
        for (const auto& outcome : report.outcomes) {
            if (outcome.message.contains("verification failed")) ++tally.rolledBack;
        }
        if (found_) ++tally.putRight;
    }

    /// The journal tells of every file that is out, and only of these. What has to stay under a hidden name is told.
    void lookAfterRun(Tally& tally) {
        const Files found = files();
        std::size_t out = 0;
        for (const auto& [place, text] : found) {
            if (OrdovanPartialName::isPartial(place)) {
                ++(isTold(place) ? tally.told : tally.untold);
            } else if (place.starts_with(path("root/other/"))) {
                ++out;
            }
        }
        if (keepsNames("root/other/out", isUndo_)) {
            for (const auto& entry : journal_.entries) expectAt(found, entry.destination(), entry.contentHash());
            wrong_ += std::max(out, journal_.entries.size()) - std::min(out, journal_.entries.size());
        }
        const Damage now = damage();
        total_.escapes += now.escapes;
        total_.missing += now.missing;
        total_.doubled += now.doubled;
        total_.wrong = now.wrong;
    }
    [[nodiscard]] bool isTold(const std::string& place) const {
        return found_ && std::ranges::any_of(found_->run.outcomes, [&](const OrdovanExecutionOutcome& outcome) {
                   return outcome.message.contains(place);
               });
    }

    std::unique_ptr<SecondVolume> other_;
    OrdovanJournal journal_;
    std::optional<OrdovanReconciliation> found_;
    bool isUndo_ = false;
    Damage total_;
};

class BothWays : public RunRaceAcross, public testing::WithParamInterface<ConfinedFolders::Entering> {};

INSTANTIATE_TEST_SUITE_P(RunRaceAcross, BothWays,
                         testing::Values(ConfinedFolders::Entering::atOnce, ConfinedFolders::Entering::stepByStep),
                         nameOfWay);

TEST_P(BothWays, CopiesNothingAcrossLinksThatTakeTheNamesOfFolders) {
    const Tally tally = race(GetParam());
    EXPECT_GE(tally.copies, wantedCopies / 50) << "of " << tally.attempts << " attempts";
    EXPECT_EQ(total(), Damage());
    EXPECT_EQ(tally.told + tally.untold, 0);
}

TEST_F(RunRaceAcross, CopiesByPathGoAcrossLinks) {
    raceByPath(&Damage::escapes);
    EXPECT_GT(total().escapes, 0U) << "the attack does not work here, so that the test above proves nothing";
}

/// Files that are exchanged for one another where they are moved from, and one more that takes the name of one as soon
/// as that is free.
class FilesExchanged : public RunRaceAcross {
protected:
    void build() override {
        RunRaceAcross::build();
        write("root/in/.spare", fileCount());
    }
    [[nodiscard]] unsigned rest() const override { return restAmongFiles; }
    [[nodiscard]] int fileCount() const override { return 4; }
    [[nodiscard]] Pairs pairs(bool isUndo) const override {
        const std::string folder = path(isUndo ? "root/other/out/" : "root/in/");
        return {{folder + "0", folder + "1"}, {folder + ".spare", folder + "0", false}, {folder + "2", folder + "3"}};
    }
    [[nodiscard]] bool keepsNames(std::string_view folder, bool isUndo) const override {
        return folder == (isUndo ? "root/in" : "root/other/out");
    }
    void beginAnew() override {
        for (const auto& [place, text] : files()) std::filesystem::remove(place);
        written_ = 0;
        for (int i = 0; i < fileCount(); ++i) write("root/in/" + std::to_string(i), i);
        write("root/in/.spare", fileCount());
        forgetJournal();
    }
};

TEST_F(FilesExchanged, NoContentIsLostAndNoneIsTakenForAnother) {
    const Tally tally = race(ConfinedFolders::Entering::atOnce);
    EXPECT_GE(tally.copies, wantedCopies / 50) << "of " << tally.attempts << " attempts";
    EXPECT_EQ(total(), Damage());
    EXPECT_EQ(tally.untold, 0);
}

TEST_F(FilesExchanged, OneIsLostByPath) {
    raceByPath(&Damage::missing);
    EXPECT_GT(total().missing, 0U) << "the attack does not work here, so that the test above proves nothing";
}

/// Files are made and removed in "root/in".
class Removals : public RaceWorld {
protected:
    void build() override {
        for (int i = 0; i < fileCount; ++i) writeDecoy("decoy/" + std::to_string(i), i);
        volume_->root().makeFolder("root/in");
        volume_->root().makeLink("root/.in", path("decoy"));
        in_ = ordovan::Descriptor::open(path("root/in").c_str(), O_PATH | O_DIRECTORY);
    }
    [[nodiscard]] std::vector<std::string> homes() const override { return {path("root")}; }

    /// Removes so many files, or until one has escaped, each after the check that every run makes; then how many. Half
    /// of them are hashed before.
    int removeFiles(OrdovanFileSystem& fs, std::optional<int> wanted) {
        const Patience patience;
        const Attacker attacker({{path("root/in"), path("root/.in")}}, restAmongRemovals);
        int removed = 0, attempts = 0;
        for (; (!wanted || removed < *wanted) && !patience.isOver(); ++attempts) {
            const int i = attempts % fileCount;
            const Url file = volume_->url("root/in/" + std::to_string(i));
            make(i);
            if (OrdovanHasSymlinkedParent(file, root().path(), fs)) continue;
            if ((attempts / fileCount) % 2 == 1) static_cast<void>(fs.contentHash(file));
            if (fs.remove(file)) ++removed;
            if (!wanted && attempts % 256 == 0 && escapes() > 0) break;
        }
        std::printf("%d removals, %d attempts\n", removed, attempts);
        return removed;
    }

private:
    static constexpr int fileCount = 64;
    static constexpr unsigned restAmongRemovals = 16;

    /// Makes a file in the real folder, whatever has its name just now, unless it is there.
    void make(int i) {
        const ordovan::Descriptor file =
            ordovan::Descriptor::openAt(in_.get(), std::to_string(i).c_str(), O_WRONLY | O_CREAT | O_EXCL, 0644);
        if (!file) return;
        const std::string text = content("mine", i);
        ASSERT_EQ(::write(file.get(), text.data(), text.size()), static_cast<::ssize_t>(text.size()));
    }

    ordovan::Descriptor in_;
};

class RemovalsBothWays : public Removals, public testing::WithParamInterface<ConfinedFolders::Entering> {};

INSTANTIATE_TEST_SUITE_P(RunRaceAcross, RemovalsBothWays,
                         testing::Values(ConfinedFolders::Entering::atOnce, ConfinedFolders::Entering::stepByStep),
                         nameOfWay);

TEST_P(RemovalsBothWays, RemoveNothingBehindALinkThatTakesTheNameOfTheFolder) {
    RunFileSystem disk(root(), GetParam());
    FaultyFileSystem fs(disk);
    Attacker::letInto(fs);
    EXPECT_GE(removeFiles(fs, wantedRemovals), wantedRemovals / 50);
    EXPECT_EQ(damage(), Damage());
}

TEST_F(Removals, ByPathGoBehindTheLink) {
    removeFiles(byPath(), std::nullopt);
    EXPECT_GT(damage().escapes, 0U) << "the attack does not work here, so that the test above proves nothing";
}

}  // namespace
