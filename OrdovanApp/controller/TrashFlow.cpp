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
    void reserve(std::size_t count) {
        sizes_.reserve(count);
        ahead_.reserve(count);
    }

    /// A file that is examined, trashed or put back.
    void add(const Url& file, std::int64_t byteSize) {
        sizes_.push_back(counted(byteSize));
        bytes_ += sizes_.back();
        addReference(file, byteSize);
    }

    /// A file that is only hashed. A large one is not hashed ahead, so that nothing waits for it after a stop.
    void addReference(const Url& file, std::int64_t byteSize) {
        if (byteSize <= StoppableFileSystem::largeFile) ahead_.push_back(file);
    }

    [[nodiscard]] std::span<const Url> toBeHashed() const { return ahead_; }
    [[nodiscard]] std::uint64_t bytes() const { return bytes_; }
    [[nodiscard]] const std::vector<std::uint64_t>& sizes() const { return sizes_; }

private:
    /// A size as a record tells it may be anything.
    static std::uint64_t counted(std::int64_t byteSize) {
        return static_cast<std::uint64_t>(std::max<std::int64_t>(byteSize, 0));
    }

    std::vector<std::uint64_t> sizes_;
    std::vector<Url> ahead_;
    std::uint64_t bytes_ = 0;
};

/// The file system and the control of one run over its files. Stays where it is made: the control refers to it.
class Run {
public:
    Run(const TidyPorts& ports, const TrashInputs& inputs, const RunFiles& files)
        : inputs_(inputs),
          files_(files),
          disk_(ports, inputs.root, files.toBeHashed()),
          fs_(disk_.port(), ports.contents, *inputs.flag),
          control_({.shouldContinue = [this] { return fs_.beginFile(); },
                    .progressed = [this](std::size_t, std::size_t) { fileDone(); }}) {}
    Run(const Run&) = delete;
    Run& operator=(const Run&) = delete;

    OrdovanFileSystem& fs() { return fs_; }
    [[nodiscard]] const OrdovanRunControl& control() const { return control_; }

private:
    void fileDone() {
        if (done_ < files_.sizes().size()) bytesDone_ += files_.sizes()[done_];
        ++done_;
        if (inputs_.progressed) inputs_.progressed({done_, files_.sizes().size(), bytesDone_, files_.bytes()});
    }

    const TrashInputs& inputs_;
    const RunFiles& files_;
    FolderRun::FileSystem disk_;
    StoppableFileSystem fs_;
    OrdovanRunControl control_;
    std::size_t done_ = 0;
    std::uint64_t bytesDone_ = 0;
};

void addToHistory(const TidyPorts& ports, const TrashInputs& inputs, OrdovanRunRecord::Kind kind, TrashResult& result) {
    result.run = OrdovanRunRecord::make(kind, result.report->asExecutionReport(), inputs.root, inputs.nowEpoch);
    result.history = ports.history.add(result.run, inputs.unsavedRuns, inputs.nowEpoch);
}

/// Records what was trashed.
TrashResult trashed(const TidyPorts& ports, const TrashInputs& inputs, OrdovanTrashReport report) {
    TrashResult result;
    if (report.record.entries.empty()) {
        result.record = {.known = inputs.known, .warning = std::nullopt};
    } else {
        result.record = ports.trashRecords.append(report.record, inputs.known, inputs.nowEpoch);
    }
    result.report = std::make_shared<const OrdovanTrashReport>(std::move(report));
    addToHistory(ports, inputs, OrdovanRunRecord::Kind::trash, result);
    return result;
}

RunFiles filesOf(std::span<const KeptDuplicate> groups) {
    RunFiles files;
    for (const auto& [group, keeper] : groups) {
        files.addReference(keeper, group.byteSize);
        for (const Url& file : group.files) {
            if (file.path() != keeper.path()) files.add(file, group.byteSize);
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

TrashResult TrashFlow::trashExtras(const TidyPorts& ports, const TrashInputs& inputs,
                                   std::span<const KeptDuplicate> groups) {
    return FolderRun::locked(ports, inputs.root, [&] {
        const RunFiles files = filesOf(groups);
        OrdovanTrashReport report;
        report.outcomes.reserve(files.sizes().size());
        {
            Run run(ports, inputs, files);
            for (const auto& [group, keeper] : groups) {
                OrdovanTrashReport part =
                    OrdovanDuplicateTrasher::trashExtras(group, keeper, inputs.root, run.fs(), run.control());
                std::ranges::move(part.outcomes, std::back_inserter(report.outcomes));
                std::ranges::move(part.record.entries, std::back_inserter(report.record.entries));
            }
        }
        return trashed(ports, inputs, std::move(report));
    });
}

TrashResult TrashFlow::trashBigFiles(const TidyPorts& ports, const TrashInputs& inputs,
                                     std::span<const OrdovanFileTrasher::Item> items) {
    return FolderRun::locked(ports, inputs.root, [&] {
        RunFiles files;
        files.reserve(items.size());
        for (const OrdovanFileTrasher::Item& item : items) files.add(item.url, item.expectedSize);
        OrdovanTrashReport report;
        {
            Run run(ports, inputs, files);
            report = OrdovanFileTrasher::trash(items, inputs.root, run.fs(), run.control());
        }
        return trashed(ports, inputs, std::move(report));
    });
}

TrashResult TrashFlow::restore(const TidyPorts& ports, const TrashInputs& inputs, const OrdovanTrashRecord& entries) {
    return FolderRun::locked(ports, inputs.root, [&] {
        RunFiles files;
        files.reserve(entries.entries.size());
        for (const OrdovanTrashEntry& entry : std::views::reverse(entries.entries)) {
            files.add(Url::file(entry.trashed()), entry.byteSize());
        }
        TrashResult result;
        {
            Run run(ports, inputs, files);
            result.report = std::make_shared<const OrdovanTrashReport>(
                OrdovanDuplicateTrasher::restore(entries, inputs.root, run.fs(), run.control()));
        }
        result.record = ports.trashRecords.removePutBack(placesPutBack(entries, result.report->record), inputs.known,
                                                         inputs.nowEpoch, ports.fileSystem);
        addToHistory(ports, inputs, OrdovanRunRecord::Kind::restoreTrash, result);
        return result;
    });
}
