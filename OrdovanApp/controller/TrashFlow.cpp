#include "OrdovanApp/controller/TrashFlow.h"

#include "OrdovanApp/controller/FolderRun.h"
#include "OrdovanApp/controller/StoppableFileSystem.h"
#include "OrdovanCore/DuplicateTrasher.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <ranges>
#include <string_view>
#include <unordered_set>
#include <utility>

namespace {

/// The files of a run and their sizes, in the order in which the run hashes them.
class RunFiles {
public:
    /// A file that goes to the Trash (`to` is empty) or comes back from it.
    struct Move {
        Url from;
        Url to;
        std::int64_t byteSize = OrdovanRunItem::unknownSize;
        std::string contentHash = {};  ///< where it is known before
    };

    void reserve(std::size_t count) {
        moves_.reserve(count);
        sizes_.reserve(count);
        ahead_.reserve(count);
    }

    /// A file that is examined, trashed or put back. `byteSize` as it is known before.
    void add(Move move, std::int64_t byteSize) {
        sizes_.push_back(counted(byteSize));
        bytes_ += sizes_.back();
        addReference(move.from, byteSize);
        moves_.push_back(std::move(move));
    }

    /// A file that is only hashed. A large one is not hashed ahead, so that nothing waits for it after a stop.
    void addReference(const Url& file, std::int64_t byteSize) {
        if (byteSize <= StoppableFileSystem::largeFile) ahead_.push_back(file);
    }

    [[nodiscard]] const std::vector<Move>& moves() const { return moves_; }
    [[nodiscard]] std::span<const Url> toBeHashed() const { return ahead_; }
    [[nodiscard]] std::uint64_t bytes() const { return bytes_; }
    [[nodiscard]] const std::vector<std::uint64_t>& sizes() const { return sizes_; }

private:
    /// A size as a record tells it may be anything.
    static std::uint64_t counted(std::int64_t byteSize) {
        return static_cast<std::uint64_t>(std::max<std::int64_t>(byteSize, 0));
    }

    std::vector<Move> moves_;
    std::vector<std::uint64_t> sizes_;
    std::vector<Url> ahead_;
    std::uint64_t bytes_ = 0;
};

/// The file system and the control of one run over its files. Stays where it is made: the control refers to it.
class Run {
public:
    Run(const TidyPorts& ports, const TrashInputs& inputs, const RunFiles& files, FolderRun::Record& record)
        : inputs_(inputs),
          files_(files),
          disk_(ports, inputs.root, files.toBeHashed()),
          fs_(disk_.port(), disk_.contents(), *inputs.recovery.flag),
          record_(record),
          recorded_(begun(record, files, fs_, disk_)),
          control_({.shouldContinue = [this] { return fs_.beginFile(); },
                    .progressed = [this](std::size_t, std::size_t) { fileDone(); }}) {}
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;

    ~Run() { record_.endNotes(); }

    OrdovanFileSystem& fs() { return recorded_; }
    [[nodiscard]] const OrdovanRunControl& control() const { return control_; }

private:
    /// Records what the run is about to do, which is read ahead already.
    static OrdovanFileSystem& begun(FolderRun::Record& record, const RunFiles& files, OrdovanFileSystem& fs,
                                    const FolderRun::FileSystem& disk) {
        record.reserve(files.moves().size());
        for (const RunFiles::Move& move : files.moves())
            record.add(move.from, move.to, move.byteSize, move.contentHash);
        return record.begin(fs, disk.stepwise());
    }

    void fileDone() {
        if (done_ < files_.sizes().size()) bytesDone_ += files_.sizes()[done_];
        ++done_;
        if (inputs_.progressed) inputs_.progressed({done_, files_.sizes().size(), bytesDone_, files_.bytes()});
    }

    const TrashInputs& inputs_;
    const RunFiles& files_;
    FolderRun::FileSystem disk_;
    StoppableFileSystem fs_;
    FolderRun::Record& record_;
    OrdovanFileSystem& recorded_;  // on top: it is to see every hash
    OrdovanRunControl control_;
    std::size_t done_ = 0;
    std::uint64_t bytesDone_ = 0;
};

/// Brings earlier runs that were interrupted to their end. False, and the result refuses, where one of them goes on.
bool settleEarlier(const TidyPorts& ports, TrashInputs& inputs, TrashResult& result) {
    Recovery recovery = RunRecovery::settle(ports, inputs.root, inputs.memory, inputs.nowEpoch,
                                            RunRecovery::Occasion::run, inputs.recovery);
    result.refused = recovery.isHeld;
    result.recovered = std::move(recovery.runs);
    return !result.refused;
}

/// What every run ends with, once the record of what it did is stored or could not be.
void finish(const TidyPorts& ports, const TrashInputs& inputs, OrdovanRunRecord::Kind kind, FolderRun::Record& record,
            TrashResult& result) {
    result.run = OrdovanRunRecord::make(kind, result.report->asExecutionReport(), inputs.root, inputs.nowEpoch);
    result.run.id = record.id();
    result.history = ports.history.add(result.run, inputs.memory.unsavedRuns, inputs.nowEpoch);
    const bool isMissing = result.record && result.record->warning;
    result.keepsRecord = isMissing ? record.isStored() : !record.remove();
}

/// Moves files to the Trash by `work` and records what was moved. Under the folder's lock.
template <class Work>
TrashResult trash(const TidyPorts& ports, TrashInputs& inputs, const RunFiles& files, Work work) {
    TrashResult result;
    if (!settleEarlier(ports, inputs, result)) return result;
    constexpr auto kind = OrdovanRunRecord::Kind::trash;
    FolderRun::Record record(ports, kind, inputs.root, inputs.nowEpoch);
    OrdovanTrashReport report;
    {
        Run run(ports, inputs, files, record);
        report = work(run);
    }
    if (!report.record.entries.empty()) {
        result.record = ports.trashRecords.append(report.record, inputs.memory.trash, inputs.nowEpoch);
    }
    result.report = std::make_shared<const OrdovanTrashReport>(std::move(report));
    finish(ports, inputs, kind, record, result);
    return result;
}

RunFiles filesOf(std::span<const KeptDuplicate> groups) {
    RunFiles files;
    for (const auto& [group, keeper] : groups) {
        files.addReference(keeper, group.byteSize);
        for (const Url& file : group.files) {
            if (file.path() != keeper.path()) files.add({.from = file, .to = {}}, group.byteSize);
        }
    }
    return files;
}

/// The places in the Trash of the entries that are not among those left.
std::unordered_set<std::string_view> placesPutBack(const OrdovanTrashRecord& entries, const OrdovanTrashRecord& left) {
    std::unordered_set<std::string_view> places;
    places.reserve(entries.entries.size());
    for (const OrdovanTrashEntry& entry : entries.entries) places.insert(entry.trashed());
    for (const OrdovanTrashEntry& entry : left.entries) places.erase(entry.trashed());
    return places;
}

}  // namespace

TrashResult TrashFlow::trashExtras(const TidyPorts& ports, TrashInputs inputs, std::span<const KeptDuplicate> groups) {
    return FolderRun::locked(ports, inputs.root, [&] {
        const RunFiles files = filesOf(groups);
        return trash(ports, inputs, files, [&](Run& run) {
            OrdovanTrashReport report;
            report.outcomes.reserve(files.sizes().size());
            for (const auto& [group, keeper] : groups) {
                OrdovanTrashReport part =
                    OrdovanDuplicateTrasher::trashExtras(group, keeper, inputs.root, run.fs(), run.control());
                std::ranges::move(part.outcomes, std::back_inserter(report.outcomes));
                std::ranges::move(part.record.entries, std::back_inserter(report.record.entries));
            }
            return report;
        });
    });
}

TrashResult TrashFlow::trashBigFiles(const TidyPorts& ports, TrashInputs inputs,
                                     std::span<const OrdovanFileTrasher::Item> items) {
    return FolderRun::locked(ports, inputs.root, [&] {
        RunFiles files;
        files.reserve(items.size());
        for (const OrdovanFileTrasher::Item& item : items) {
            files.add({.from = item.url, .to = {}}, item.expectedSize);
        }
        return trash(ports, inputs, files,
                     [&](Run& run) { return OrdovanFileTrasher::trash(items, inputs.root, run.fs(), run.control()); });
    });
}

TrashResult TrashFlow::restore(const TidyPorts& ports, TrashInputs inputs, const OrdovanTrashRecord& entries) {
    return FolderRun::locked(ports, inputs.root, [&] {
        RunFiles files;
        files.reserve(entries.entries.size());
        for (const OrdovanTrashEntry& entry : std::views::reverse(entries.entries)) {
            files.add({.from = Url::file(entry.trashed()),
                       .to = Url::file(entry.original()),
                       .byteSize = entry.byteSize(),
                       .contentHash = std::string(entry.contentHash())},
                      entry.byteSize());
        }
        TrashResult result;
        if (!settleEarlier(ports, inputs, result)) return result;
        constexpr auto kind = OrdovanRunRecord::Kind::restoreTrash;
        FolderRun::Record record(ports, kind, inputs.root, inputs.nowEpoch);
        {
            Run run(ports, inputs, files, record);
            result.report = std::make_shared<const OrdovanTrashReport>(
                OrdovanDuplicateTrasher::restore(entries, inputs.root, run.fs(), run.control()));
        }
        result.record =
            ports.trashRecords.removePutBack(placesPutBack(entries, result.report->record), inputs.memory.trash,
                                             inputs.nowEpoch, ports.fileSystem, record.isOnDisk());
        finish(ports, inputs, kind, record, result);
        return result;
    });
}
