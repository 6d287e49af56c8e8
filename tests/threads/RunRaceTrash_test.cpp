// As RunRace_test, for what goes to the Trash and comes back: a second thread exchanges folders on the way, those of
// the Trash among them, for links to decoys, and files for others, while files are hashed, moved and looked at.

#include "OrdovanCore/DuplicateTrasher.h"
#include "OrdovanCore/FileTrasher.h"
#include "OrdovanCore/TrashPlace.h"
#include "OrdovanCore/platform/TrashNaming.h"
#include "tests/support/RaceWorld.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

using ordovan::RunFileSystem;
using ordovan::test::Attacker;
using ordovan::test::Damage;
using ordovan::test::Patience;
using ordovan::test::RaceWorld;
using ordovan::test::TempFolder;
using ordovan::test::ToldRun;
using ordovan::testing::FaultyFileSystem;

namespace {

using Kind = OrdovanRunRecord::Kind;
using Pairs = std::vector<Attacker::Pair>;

constexpr int wantedMoves = ordovan::test::isSanitized ? 120 : 2'000;
constexpr unsigned restAmongFolders = 200;
constexpr unsigned restAmongFiles = 30;
constexpr unsigned restByPath = 10;  // where hardly any move need come to its end

enum class Attacked {
    sourceFolder,  ///< that of the files
    trashFolders,  ///< "files" and "info"
    allFolders,
    files,  ///< each for another, those of the folder on their way to the Trash, those of the Trash on their way back
};

/// What moves to the Trash and from it by path, each time after a look that finds no link on the way: what the disk of
/// a run has to be better than.
class ByPath final : public SystemFileSystem {
public:
    explicit ByPath(const std::string& trash) : files_(trash + "/files"), info_(trash + "/info") {}

    OrdovanResult<Url> trash(const Url& url) override {
        const Url place = Url::file(files_).appending(url.lastPathComponent());
        if (!areFolders()) return std::unexpected(OrdovanSystemError::posix(ELOOP));
        const std::string infoPath = ordovan::trashInfoPath(place.path()).value();
        std::ofstream(infoPath) << ordovan::trashInfoText(url.path(), std::time(nullptr));
        if (const auto moved = rename(url, place); !moved) {
            ::unlink(infoPath.c_str());
            return std::unexpected(moved.error());
        }
        return place;
    }
    OrdovanResult<void> move(const Url& from, const Url& to) override {
        if (!areFolders()) return std::unexpected(OrdovanSystemError::posix(ELOOP));
        auto moved = rename(from, to);
        if (moved) ::unlink(ordovan::trashInfoPath(from.path()).value().c_str());
        return moved;
    }

private:
    bool areFolders() { return !isSymlink(Url::file(files_)) && !isSymlink(Url::file(info_)); }
    static OrdovanResult<void> rename(const Url& from, const Url& to) {
        Attacker::letIn();
        const std::string source(from.path()), target(to.path());
        if (::renameat2(AT_FDCWD, source.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) == 0) return {};
        return std::unexpected(OrdovanSystemError::posix(errno));
    }

    std::string files_, info_;
};

/// The files of "root/in" go to the home Trash, or to that of their volume.
class RunRaceTrash : public RaceWorld, public testing::WithParamInterface<std::tuple<Attacked, ordovan::TrashKind>> {
protected:
    ~RunRaceTrash() override { ::unsetenv("XDG_DATA_HOME"); }

    [[nodiscard]] static Attacked attacked() { return std::get<0>(GetParam()); }
    [[nodiscard]] static bool isHome() { return std::get<1>(GetParam()) == ordovan::TrashKind::home; }
    [[nodiscard]] static unsigned rest() { return attacked() == Attacked::files ? restAmongFiles : restAmongFolders; }
    [[nodiscard]] static int fileCount() { return attacked() == Attacked::files ? 4 : 24; }
    [[nodiscard]] std::string trashName() const {
        return isHome() ? "data/Trash" : ".Trash-" + std::to_string(::geteuid());
    }
    [[nodiscard]] std::string inTrash(std::string_view name) const {
        return path(trashName() + "/" + std::string(name));
    }

    void build() override {
        ::setenv("XDG_DATA_HOME", isHome() ? path("data").c_str() : elsewhere_.path("data").c_str(), 1);
        if (isHome()) volume_->root().write(".Trash-" + std::to_string(::geteuid()), "in the way");
        for (int i = 0; i < fileCount(); ++i) {
            const std::string name = std::to_string(i);
            write("root/in/" + name, i);
            writeDecoy("decoy/in/" + name, i);
            writeDecoy("decoy/files/" + name, i);
            volume_->root().write("decoy/info/" + name + ".trashinfo",
                                  ordovan::trashInfoText(told("root/in/" + name), std::time(nullptr)));
        }
        volume_->root().makeLink("root/.in", path("decoy/in"));
        for (const std::string folder : {"files", "info"}) {
            volume_->root().makeFolder(trashName() + "/" + folder);
            volume_->root().makeLink(trashName() + "/." + folder, path("decoy/" + folder));
        }
    }
    /// A path as an info file of the Trash tells it.
    [[nodiscard]] std::string told(const std::string& name) const { return isHome() ? path(name) : name; }
    [[nodiscard]] std::vector<std::string> homes() const override { return {path("root"), inTrash("files")}; }

    [[nodiscard]] Pairs pairs(bool isRestore) const {
        const Attacker::Pair source{path("root/in"), path("root/.in")};
        const Attacker::Pair files{inTrash("files"), inTrash(".files")};
        const Attacker::Pair info{inTrash("info"), inTrash(".info")};
        const std::string from = isRestore ? inTrash("files/") : path("root/in/");
        switch (attacked()) {
            case Attacked::sourceFolder:
                return {source};
            case Attacked::trashFolders:
                return {files, info};
            case Attacked::allFolders:
                return {source, files, info};
            case Attacked::files:
                break;
        }
        return {{from + "0", from + "1"}, {from + "2", from + "3"}};
    }

    struct Tally {
        int trashed = 0;
        int restored = 0;
        int attempts = 0;
        int putRight = 0;    // runs that left something
        int unrecorded = 0;  // files that lie in the Trash, and no record tells
        int untold = 0;      // the same, and no info file does
        int outdated = 0;    // entries of files that are back in their place
        int orphans = 0;     // info files without a file
    };

    /// Moves files to the Trash and back under attack, until as many were as are wanted. By path, until that does
    /// damage.
    Tally race(bool byPath) {
        const Patience patience;
        Tally tally;
        while ((byPath || tally.trashed < wantedMoves) && !patience.isOver()) {
            trashAll(byPath, tally);
            lookAfterRun(tally, false);
            if (byPath && total_ != Damage()) break;
            restoreAll(byPath, tally);
            lookAfterRun(tally, true);
            if (byPath && total_ != Damage()) break;
            beginAnew();
        }
        std::printf(
            "%d trashed, %d put back, %d attempts, %d runs put right, %d unrecorded, %d outdated, %d info files left\n",
            tally.trashed, tally.restored, tally.attempts, tally.putRight, tally.unrecorded, tally.outdated,
            tally.orphans);
        return tally;
    }
    [[nodiscard]] const Damage& total() const { return total_; }

private:
    void trashAll(bool byPath, Tally& tally) {
        ToldRun run(Kind::trash, root());
        std::vector<OrdovanFileTrasher::Item> items;
        for (const auto& entry : std::filesystem::directory_iterator(path("root/in"))) {
            const Url url = Url::file(entry.path().native());
            items.push_back({url, static_cast<std::int64_t>(entry.file_size())});
            run.add(url, Url());
        }
        const auto report = underAttack(
            byPath, run, false, [&](OrdovanFileSystem& fs) { return OrdovanFileTrasher::trash(items, root(), fs); });
        tally.trashed += static_cast<int>(report.movedCount());
        tally.attempts += static_cast<int>(report.outcomes.size());
        for (const auto& entry : report.record.entries) record_.entries.push_back(entry);
        if (!found_) return;
        ++tally.putRight;
        for (const auto& entry : found_->trashed.entries) {
            std::erase_if(record_.entries, [&](const auto& known) { return known.id() == entry.id(); });
            record_.entries.push_back(entry);
        }
    }

    void restoreAll(bool byPath, Tally& tally) {
        ToldRun run(Kind::restoreTrash, root());
        for (auto entry = record_.entries.rbegin(); entry != record_.entries.rend(); ++entry) {
            run.add(Url::file(entry->trashed()), Url::file(entry->original()), entry->contentHash());
        }
        const auto report = underAttack(byPath, run, true, [&](OrdovanFileSystem& fs) {
            return OrdovanDuplicateTrasher::restore(record_, root(), fs);
        });
        tally.restored += static_cast<int>(report.movedCount());
        const Files found = files();
        for (const auto& entry : record_.entries) {
            const bool isBack = std::ranges::find(report.record.entries, entry) == report.record.entries.end();
            if (isBack) expectAt(found, entry.original(), entry.contentHash());
        }
        record_ = report.record;
        if (!found_) return;
        ++tally.putRight;
        std::erase_if(record_.entries, [&](const OrdovanTrashEntry& entry) {
            return std::ranges::find(found_->putBack, entry.trashed()) != found_->putBack.end();
        });
    }

    template <class Action>
    OrdovanTrashReport underAttack(bool byPath, ToldRun& run, bool isRestore, const Action& action) {
        OrdovanTrashReport report;
        found_.reset();
        if (byPath) {
            ByPath disk(path(trashName()));
            FaultyFileSystem fs(disk);
            Attacker::letInto(fs);
            const Attacker attacker(pairs(isRestore), restByPath);
            return action(fs);
        }
        RunFileSystem disk(root());
        FaultyFileSystem fs(run.begin(disk));
        Attacker::letInto(fs);
        {
            const Attacker attacker(pairs(isRestore), rest());
            report = action(fs);
        }
        found_ = run.end();
        return report;
    }

    /// The record tells of every file in the Trash, and what it tells is so; each file there has its info file.
    void lookAfterRun(Tally& tally, bool isRestore) {
        const Files found = files();
        const bool keepsNames = attacked() != Attacked::files || !isRestore;
        if (keepsNames) {
            for (const auto& entry : record_.entries) {
                const bool isBack = isAt(found, entry.original(), entry.contentHash());
                tally.outdated += isBack ? 1 : 0;
                if (!isBack) expectAt(found, entry.trashed(), entry.contentHash());
            }
        }
        for (const auto& [place, text] : found) {
            if (OrdovanPartialName::isPartial(place)) ++tally.untold;
            if (!place.starts_with(inTrash("files/"))) continue;
            const bool isRecorded =
                std::ranges::any_of(record_.entries, [&](const auto& entry) { return entry.trashed() == place; });
            if (!isRecorded) ++tally.unrecorded;
            if (!std::filesystem::exists(ordovan::trashInfoPath(place).value())) ++tally.untold;
        }
        for (const auto& entry : std::filesystem::directory_iterator(inTrash("info"))) {
            if (!found.contains(inTrash("files/" + entry.path().stem().string()))) ++tally.orphans;
        }
        const Damage now = damage();
        total_.escapes += now.escapes;
        total_.missing += now.missing;
        total_.doubled += now.doubled;
        total_.wrong = now.wrong;
    }

    /// The files are in their folder again and the Trash is empty, whatever the attack has left.
    void beginAnew() {
        for (const auto& [place, text] : files()) std::filesystem::remove(place);
        for (const auto& entry : std::filesystem::directory_iterator(inTrash("info"))) {
            std::filesystem::remove(entry.path());
        }
        record_.entries.clear();
        written_ = 0;
        for (int i = 0; i < fileCount(); ++i) write("root/in/" + std::to_string(i), i);
    }

    TempFolder elsewhere_;
    OrdovanTrashRecord record_;
    std::optional<OrdovanReconciliation> found_;
    Damage total_;
};

std::string nameOf(const testing::TestParamInfo<RunRaceTrash::ParamType>& info) {
    constexpr const char* names[] = {"SourceFolder", "TrashFolders", "AllFolders", "Files"};
    const bool isHome = std::get<1>(info.param) == ordovan::TrashKind::home;
    return std::string(names[static_cast<int>(std::get<0>(info.param))]) + (isHome ? "Home" : "Own");
}

INSTANTIATE_TEST_SUITE_P(Attacks, RunRaceTrash,
                         testing::Combine(testing::Values(Attacked::sourceFolder, Attacked::trashFolders,
                                                          Attacked::allFolders, Attacked::files),
                                          testing::Values(ordovan::TrashKind::home, ordovan::TrashKind::own)),
                         nameOf);

TEST_P(RunRaceTrash, NothingLeavesTheRootAndTheTrashOrComesFromOutside) {
    const Tally tally = race(false);
    EXPECT_GE(tally.trashed, wantedMoves / 50) << "of " << tally.attempts << " attempts";
    EXPECT_GT(tally.restored, 0);
    EXPECT_EQ(total(), Damage());
    EXPECT_EQ(tally.unrecorded, 0);
    EXPECT_EQ(tally.untold, 0);
}

TEST_P(RunRaceTrash, ByPathItDoes) {
    race(true);
    EXPECT_NE(total(), Damage()) << "the attack does not work here, so that the test above proves nothing";
}

}  // namespace
