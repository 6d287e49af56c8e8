#include "OrdovanApp/controller/RunRecovery.h"

#include "OrdovanApp/controller/FolderRun.h"
#include "OrdovanApp/controller/StoppableFileSystem.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace {

using Kind = OrdovanRunRecord::Kind;
using Found = ordovan::RunRecordStore::Found;

ordovan::ReconcilePorts reconcilePorts(const TidyPorts& ports, OrdovanFileSystem& fs) {
    const RecordingPorts& recording = ports.recording;
    return {.fs = fs,
            .facts = recording.facts,
            .findInTrash = recording.findInTrash,
            .removeTrashInfo = recording.removeTrashInfo,
            .forgetTrashInfo = recording.forgetTrashInfo};
}

/// Whether a record is of this folder. Two folders share a record's name where their paths differ only in how accented
/// letters are put together; and one folder may have two such paths.
bool isOf(const TidyPorts& ports, const Url& root, const OrdovanRunIntent& intent) {
    if (intent.root == root) return true;
    const auto here = ports.recording.facts(root);
    const auto there = ports.recording.facts(intent.root);
    return here && there && here->identity == there->identity;
}

OrdovanReconciliation reconciled(const TidyPorts& ports, const OrdovanUnfinishedRun& run,
                                 const RecoveryControl& control) {
    if (control.progressed) control.progressed(0, run.intent.items.size());
    FolderRun::FileSystem files(ports, run.intent.root);
    StoppableFileSystem fs(files.port(), files.contents(), *control.flag);
    return OrdovanReconciler::reconcile(
        run, reconcilePorts(ports, fs),
        {.shouldContinue = [&] { return fs.beginFile(); }, .progressed = control.progressed});
}

std::unordered_set<std::string_view> viewsOf(const std::vector<std::string>& texts) {
    return {texts.begin(), texts.end()};
}

/// Stores what a journal has to say about the run.
ordovan::JournalStore::Saved storeJournal(const TidyPorts& ports, const Url& root, const OrdovanUnfinishedRun& run,
                                          OrdovanReconciliation& found, const RecordsInMemory& memory,
                                          double nowEpoch) {
    if (run.intent.kind == Kind::organize) {
        RunRecovery::dropPassingIdentities(ports, found.journal);
        return ports.journals.append(root, found.journal, memory.journal, memory.unsavedJournal, nowEpoch);
    }
    std::vector<Url> vacated(found.restored.size());
    std::ranges::transform(found.restored, vacated.begin(), [](const std::string& path) { return Url::file(path); });
    for (const Url& outputRoot : run.intent.outputRoots) ports.removeEmptyFolders(vacated, outputRoot);
    return ports.journals.removeRestored(root, viewsOf(found.restored), memory.journal, memory.unsavedJournal, nowEpoch,
                                         ports.fileSystem);
}

/// Puts what the run has moved on the disk before a record says that it was.
void syncMoves(const TidyPorts& ports, const OrdovanReconciliation& found) {
    if (!ports.recording.syncMoves) return;
    std::vector<Url> arrivals, departures;
    for (const OrdovanExecutionOutcome& outcome : found.run.outcomes) {
        if (outcome.status != OrdovanExecutionStatus::moved) continue;
        arrivals.push_back(outcome.destination);
        departures.push_back(outcome.source);
    }
    ports.recording.syncMoves(arrivals, departures);
}

/// Stores what the run did, where runs of its kind do. False when that was not possible.
bool store(const TidyPorts& ports, const Url& root, const OrdovanUnfinishedRun& run, OrdovanReconciliation& found,
           RecordsInMemory& memory, double nowEpoch, RecoveredRun& result) {
    syncMoves(ports, found);
    if (!found.journal.entries.empty() || !found.restored.empty()) {
        result.journal = storeJournal(ports, root, run, found, memory, nowEpoch);
        memory.journal = result.journal->journal;
        memory.unsavedJournal = result.journal->unsaved;
        return !result.journal->warning;
    }
    if (!found.trashed.entries.empty()) {
        result.trash = ports.trashRecords.append(found.trashed, memory.trash, nowEpoch);
    } else if (!found.putBack.empty()) {
        result.trash =
            ports.trashRecords.removePutBack(viewsOf(found.putBack), memory.trash, nowEpoch, ports.fileSystem);
    }
    if (result.trash) memory.trash = result.trash->known;
    return !result.trash || !result.trash->warning;
}

void addToHistory(const TidyPorts& ports, const OrdovanRunRecord& run, RecordsInMemory& memory, double nowEpoch,
                  RecoveredRun& result) {
    result.run = run;
    result.history = ports.history.add(run, memory.unsavedRuns, nowEpoch);
    if (result.history.saved) {
        memory.unsavedRuns.clear();
    } else {
        memory.unsavedRuns.insert(memory.unsavedRuns.begin(), run);
    }
}

RecoveredRun settleUnreadable(const TidyPorts& ports, const Url& root, double nowEpoch) {
    RecoveredRun result;
    result.standsThere = !ports.recording.runRecords->setAside(root, nowEpoch);
    if (result.standsThere) return result;
    OrdovanInterruptedRun told;
    told.root = root;
    told.isUnreadable = true;
    result.told = std::make_shared<const OrdovanInterruptedRun>(std::move(told));
    return result;
}

}  // namespace

RecoveredRun RunRecovery::settle(const TidyPorts& ports, const Url& root, RecordsInMemory& memory, double nowEpoch,
                                 Occasion occasion, const RecoveryControl& control) {
    RecoveredRun result;
    const ordovan::RunRecordStore* store = ports.recording.runRecords;
    if (store == nullptr) return result;
    const Found stored = store->read(root);
    if (stored.state == Found::State::none) return result;
    if (stored.state == Found::State::unreadable) return settleUnreadable(ports, root, nowEpoch);
    result.standsThere = true;
    if (stored.state == Found::State::unknown) return result;
    const OrdovanRunIntent& intent = stored.run.intent;
    if (!isOf(ports, root, intent)) return result;
    const bool isOwn = std::ranges::find(memory.ownRuns, intent.id) != memory.ownRuns.end();
    if (isOwn && occasion == Occasion::preview) return result;

    OrdovanReconciliation found = reconciled(ports, stored.run, control);
    if (found.isStopped) return result;
    const bool isStored =
        !found.isElsewhere && ::store(ports, root, stored.run, found, memory, nowEpoch, result) && found.isComplete;
    if (!found.isElsewhere) {
        // A run of this program is in the history, or in memory until it can be.
        if (!isOwn) result.told = std::make_shared<const OrdovanInterruptedRun>(found.run);
        if (!isOwn && isStored) addToHistory(ports, found.historyRecord(intent), memory, nowEpoch, result);
    }
    if (isStored) result.standsThere = !store->remove(root);
    return result;
}

void RunRecovery::dropPassingIdentities(const TidyPorts& ports, OrdovanJournal& journal) {
    if (!ports.recording.keepsIdentities) return;
    std::unordered_map<std::string, bool> keeps;  // by the device
    for (OrdovanJournalEntry& entry : journal.entries) {
        const std::string_view identity = entry.fileID();
        if (identity.empty()) continue;
        const auto [device, isNew] = keeps.try_emplace(std::string(identity.substr(0, identity.find(':'))), true);
        if (isNew) device->second = ports.recording.keepsIdentities(Url::file(ordovan::parentPath(entry.source())));
        if (device->second) continue;
        entry = OrdovanJournalEntry(entry.source(), entry.destination(), entry.sameVolume(), entry.byteSize(),
                                    entry.contentHash(), {});
    }
}
