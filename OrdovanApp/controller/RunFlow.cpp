#include "OrdovanApp/controller/RunFlow.h"

#include "OrdovanApp/controller/FolderRun.h"
#include "OrdovanApp/controller/PreviewFlow.h"

#include <algorithm>
#include <iterator>
#include <ranges>
#include <string>
#include <unordered_set>
#include <utility>

namespace {

using OrdovanProposalPlanner::canonicalPath;
using OrdovanProposalPlanner::containsCanonical;

/// Brings earlier runs that were interrupted to their end. False, and the result refuses, where one of them goes on.
bool settleEarlier(const TidyPorts& ports, RunInputs& inputs, RunResult& result) {
    Recovery recovery = RunRecovery::settle(ports, inputs.root, inputs.memory, inputs.nowEpoch,
                                            RunRecovery::Occasion::run, inputs.recovery);
    result.refused = recovery.isHeld;
    result.recovered = std::move(recovery.runs);
    return !result.refused;
}

/// What every run ends with, once the record of what it did is stored or could not be.
void finish(const TidyPorts& ports, const RunInputs& inputs, OrdovanRunRecord::Kind kind, FolderRun::Record& record,
            RunResult& result) {
    result.run = OrdovanRunRecord::make(kind, *result.report, inputs.root, inputs.nowEpoch);
    result.run.id = record.id();
    result.history = ports.history.add(result.run, inputs.memory.unsavedRuns, inputs.nowEpoch);
    const bool isMissing = result.record && result.record->warning;
    result.keepsRecord = isMissing ? record.isStored() : !record.remove();
}

/// One folder and the entries that lie in it.
struct UndoBatch {
    Url outputRoot;
    OrdovanJournal journal;
};

/// The entries by the output folder they lie in. What lies in none is a journal's error, if not an attack, and goes
/// with the current output folder, where the scope check refuses it and says so.
std::vector<UndoBatch> batches(const OrdovanJournal& entries, const RunInputs& inputs) {
    std::vector<UndoBatch> result;
    std::vector<std::string> canonicalRoots;
    OrdovanJournal empty;
    empty.createdAtEpoch = entries.createdAtEpoch;
    for (const Url& root : PreviewFlow::outputRoots(entries, inputs.root)) {
        result.push_back({root, empty});
        canonicalRoots.push_back(canonicalPath(root));
    }
    UndoBatch stray = {inputs.outputRoot, empty};
    for (const OrdovanJournalEntry& entry : entries.entries) {
        const std::string path = canonicalPath(Url::file(entry.destination()));
        std::size_t home = 0;
        while (home < result.size() && !containsCanonical(path, canonicalRoots[home])) ++home;
        (home < result.size() ? result[home] : stray).journal.entries.push_back(entry);
    }
    if (!stray.journal.entries.empty()) result.push_back(std::move(stray));
    return result;
}

/// The control of one batch of a run: its progress counts from where the batches before it ended.
OrdovanRunControl batchControl(const OrdovanRunControl& control, std::size_t doneBefore, std::size_t total) {
    OrdovanRunControl result = control;
    if (control.progressed) {
        result.progressed = [&progressed = control.progressed, doneBefore, total](std::size_t done, std::size_t) {
            progressed(doneBefore + done, total);
        };
    }
    return result;
}

/// Puts back the files of one batch and adds its outcomes to the report. The places that they left.
std::vector<Url> undoBatch(const RunInputs& inputs, const UndoBatch& batch, OrdovanFileSystem& fs,
                           const OrdovanRunControl& control, OrdovanExecutionReport& report) {
    OrdovanExecutionReport part = OrdovanExecutor::undo(batch.journal, inputs.root, batch.outputRoot, fs, control);
    std::vector<Url> vacated;
    for (const OrdovanExecutionOutcome& outcome : part.outcomes) {
        if (outcome.status == OrdovanExecutionStatus::moved) vacated.push_back(outcome.destination);
    }
    std::ranges::move(part.outcomes, std::back_inserter(report.outcomes));
    std::ranges::move(part.journal.entries, std::back_inserter(report.journal.entries));
    return vacated;
}

OrdovanExecutionReport undoBatches(const TidyPorts& ports, const RunInputs& inputs, const OrdovanJournal& entries,
                                   FolderRun::Record& record) {
    const std::vector<UndoBatch> all = batches(entries, inputs);
    std::vector<Url> organized;
    organized.reserve(entries.entries.size());
    record.reserve(entries.entries.size());
    for (const UndoBatch& batch : all) {
        record.addOutputRoot(batch.outputRoot);
        for (const OrdovanJournalEntry& entry : std::views::reverse(batch.journal.entries)) {
            organized.push_back(Url::file(entry.destination()));
        }
    }
    auto place = organized.begin();
    for (const UndoBatch& batch : all) {
        for (const OrdovanJournalEntry& entry : std::views::reverse(batch.journal.entries)) {
            record.add(*place++, Url::file(entry.source()), entry.byteSize(), entry.contentHash());
        }
    }
    record.lookAtAll();
    FolderRun::FileSystem files(ports, inputs.root, organized);
    OrdovanFileSystem& fs = record.begin(files.port(), files.stepwise());
    OrdovanExecutionReport report;
    report.journal.createdAtEpoch = entries.createdAtEpoch;
    std::vector<std::vector<Url>> vacated;
    for (const UndoBatch& batch : all) {
        const auto control = batchControl(inputs.control, report.outcomes.size(), entries.entries.size());
        vacated.push_back(undoBatch(inputs, batch, fs, control, report));
    }
    record.endNotes();
    // Last: files that may be back need their folders, and one of those may be a volume of its own.
    for (std::size_t i = 0; i < all.size() && record.isOnDisk(); ++i) {
        ports.removeEmptyFolders(vacated[i], all[i].outputRoot);
    }
    return report;
}

OrdovanExecutionReport applyAll(const TidyPorts& ports, const RunInputs& inputs,
                                std::span<const OrdovanFileProposal> proposals, FolderRun::Record& record) {
    std::vector<Url> sources;
    sources.reserve(proposals.size());
    for (const OrdovanFileProposal& proposal : proposals) sources.push_back(proposal.source);
    record.addOutputRoot(inputs.outputRoot);
    record.reserve(proposals.size());
    for (const OrdovanFileProposal& proposal : proposals) record.add(proposal.source, proposal.destination);
    record.lookAtAll();
    FolderRun::FileSystem files(ports, inputs.root, sources);
    OrdovanFileSystem& fs = record.begin(files.port(), files.stepwise());
    OrdovanExecutionReport report =
        OrdovanExecutor::apply(proposals, inputs.root, inputs.outputRoot, fs, inputs.nowEpoch, inputs.control);
    record.endNotes();
    RunRecovery::dropPassingIdentities(ports, report.journal);
    return report;
}

std::unordered_set<std::string_view> restoredDestinations(const OrdovanExecutionReport& report) {
    std::unordered_set<std::string_view> restored;
    for (const OrdovanExecutionOutcome& outcome : report.outcomes) {
        if (outcome.status == OrdovanExecutionStatus::moved) restored.insert(outcome.destination.path());
    }
    return restored;
}

}  // namespace

RunResult RunFlow::organize(const TidyPorts& ports, RunInputs inputs, std::span<const OrdovanFileProposal> proposals) {
    using Kind = OrdovanRunRecord::Kind;
    return FolderRun::locked(ports, inputs.root, [&] {
        RunResult result;
        if (!settleEarlier(ports, inputs, result)) return result;
        const RecordsInMemory& memory = inputs.memory;
        FolderRun::Record record(ports, Kind::organize, inputs.root, inputs.nowEpoch);
        result.report = std::make_shared<const OrdovanExecutionReport>(applyAll(ports, inputs, proposals, record));
        if (!result.report->journal.entries.empty()) {
            result.record = ports.journals.append(inputs.root, result.report->journal, memory.journal,
                                                  memory.unsavedJournal, inputs.nowEpoch);
        }
        finish(ports, inputs, Kind::organize, record, result);
        return result;
    });
}

RunResult RunFlow::undo(const TidyPorts& ports, RunInputs inputs, const OrdovanJournal& entries) {
    using Kind = OrdovanRunRecord::Kind;
    return FolderRun::locked(ports, inputs.root, [&] {
        RunResult result;
        if (!settleEarlier(ports, inputs, result)) return result;
        const RecordsInMemory& memory = inputs.memory;
        FolderRun::Record record(ports, Kind::undo, inputs.root, inputs.nowEpoch);
        result.report = std::make_shared<const OrdovanExecutionReport>(undoBatches(ports, inputs, entries, record));
        result.record =
            ports.journals.removeRestored(inputs.root, restoredDestinations(*result.report), memory.journal,
                                          memory.unsavedJournal, inputs.nowEpoch, ports.fileSystem, record.isOnDisk());
        finish(ports, inputs, Kind::undo, record, result);
        return result;
    });
}
