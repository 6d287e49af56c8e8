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

void addToHistory(const TidyPorts& ports, const RunInputs& inputs, OrdovanRunRecord::Kind kind, RunResult& result) {
    result.run = OrdovanRunRecord::make(kind, *result.report, inputs.root, inputs.nowEpoch);
    result.history = ports.history.add(result.run, inputs.unsavedRuns, inputs.nowEpoch);
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

/// Puts back the files of one batch, adds its outcomes to the report and tidies up behind it.
void undoBatch(const TidyPorts& ports, const RunInputs& inputs, const UndoBatch& batch,
               const OrdovanRunControl& control, OrdovanExecutionReport& report) {
    std::vector<Url> organized;
    organized.reserve(batch.journal.entries.size());
    for (const OrdovanJournalEntry& entry : std::views::reverse(batch.journal.entries)) {
        organized.push_back(Url::file(entry.destination()));
    }
    FolderRun::FileSystem files(ports, inputs.root, organized);
    OrdovanExecutionReport part =
        OrdovanExecutor::undo(batch.journal, inputs.root, batch.outputRoot, files.port(), control);
    std::vector<Url> vacated;
    for (const OrdovanExecutionOutcome& outcome : part.outcomes) {
        if (outcome.status == OrdovanExecutionStatus::moved) vacated.push_back(outcome.destination);
    }
    ports.removeEmptyFolders(vacated, batch.outputRoot);
    std::ranges::move(part.outcomes, std::back_inserter(report.outcomes));
    std::ranges::move(part.journal.entries, std::back_inserter(report.journal.entries));
}

std::unordered_set<std::string_view> restoredDestinations(const OrdovanExecutionReport& report) {
    std::unordered_set<std::string_view> restored;
    for (const OrdovanExecutionOutcome& outcome : report.outcomes) {
        if (outcome.status == OrdovanExecutionStatus::moved) restored.insert(outcome.destination.path());
    }
    return restored;
}

}  // namespace

RunResult RunFlow::organize(const TidyPorts& ports, const RunInputs& inputs,
                            std::span<const OrdovanFileProposal> proposals) {
    return FolderRun::locked(ports, inputs.root, [&] {
        std::vector<Url> sources;
        sources.reserve(proposals.size());
        for (const OrdovanFileProposal& proposal : proposals) sources.push_back(proposal.source);
        FolderRun::FileSystem files(ports, inputs.root, sources);
        RunResult result;
        result.report = std::make_shared<const OrdovanExecutionReport>(OrdovanExecutor::apply(
            proposals, inputs.root, inputs.outputRoot, files.port(), inputs.nowEpoch, inputs.control));
        if (result.report->journal.entries.empty()) {
            result.record = {.journal = inputs.known, .unsaved = inputs.unsaved, .warning = std::nullopt};
        } else {
            result.record = ports.journals.append(inputs.root, result.report->journal, inputs.known, inputs.unsaved,
                                                  inputs.nowEpoch);
        }
        addToHistory(ports, inputs, OrdovanRunRecord::Kind::organize, result);
        return result;
    });
}

RunResult RunFlow::undo(const TidyPorts& ports, const RunInputs& inputs, const OrdovanJournal& entries) {
    return FolderRun::locked(ports, inputs.root, [&] {
        OrdovanExecutionReport report;
        report.journal.createdAtEpoch = entries.createdAtEpoch;
        for (const UndoBatch& batch : batches(entries, inputs)) {
            const auto control = batchControl(inputs.control, report.outcomes.size(), entries.entries.size());
            undoBatch(ports, inputs, batch, control, report);
        }
        RunResult result;
        result.report = std::make_shared<const OrdovanExecutionReport>(std::move(report));
        result.record = ports.journals.removeRestored(inputs.root, restoredDestinations(*result.report), inputs.known,
                                                      inputs.unsaved, inputs.nowEpoch, ports.fileSystem);
        addToHistory(ports, inputs, OrdovanRunRecord::Kind::undo, result);
        return result;
    });
}
