#include "OrdovanApp/controller/RunRecovery.h"

#include "OrdovanApp/controller/FolderRun.h"
#include "OrdovanApp/controller/StoppableFileSystem.h"

#include "OrdovanCore/TrashPlace.h"

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

/// Puts what the run has moved, what was moved back and what was taken away on the disk, before a record says so and
/// the run's own is removed: else a copy that only this one tells of might be there again. False where that is not
/// certain.
bool syncMoves(const TidyPorts& ports, const OrdovanRunIntent& intent, const OrdovanReconciliation& found) {
    if (!ports.recording.syncMoves) return true;
    std::vector<Url> arrivals, departures;
    for (const OrdovanExecutionOutcome& outcome : found.run.outcomes) {
        if (outcome.status == OrdovanExecutionStatus::moved) arrivals.push_back(outcome.destination);
    }
    const std::string below = std::string(intent.root.path()) + "/";
    const auto isReached = [&](const ordovan::SharedText& path) {
        return path.view().starts_with(below) || ordovan::isInTrash(path);
    };
    for (const OrdovanRunItem& item : intent.items) {
        if (isReached(item.destination)) arrivals.push_back(Url::file(item.destination));
        if (isReached(item.source)) departures.push_back(Url::file(item.source));
    }
    return ports.recording.syncMoves(arrivals, departures);
}

/// Stores what the run did, where runs of its kind do. False when that was not possible.
bool store(const TidyPorts& ports, const Url& root, const OrdovanUnfinishedRun& run, OrdovanReconciliation& found,
           RecordsInMemory& memory, double nowEpoch, RecoveredRun& result) {
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

/// One that can not even be set aside is left alone, and nothing is told of it each time.
std::optional<RecoveredRun> setAside(const TidyPorts& ports, const Url& root, std::size_t place, double nowEpoch) {
    if (!ports.recording.runRecords->setAside(root, place, nowEpoch)) return std::nullopt;
    OrdovanInterruptedRun told;
    told.root = root;
    told.isUnreadable = true;
    RecoveredRun result;
    result.told = std::make_shared<const OrdovanInterruptedRun>(std::move(told));
    return result;
}

/// The same for the run of one readable record. Nothing where nothing could be said of it this time.
std::optional<RecoveredRun> settle(const TidyPorts& ports, const Url& root, std::size_t place,
                                   const OrdovanUnfinishedRun& run, RecordsInMemory& memory, double nowEpoch,
                                   RunRecovery::Occasion occasion, const RecoveryControl& control) {
    if (!isOf(ports, root, run.intent)) return std::nullopt;
    const bool isOwn = std::ranges::find(memory.ownRuns, run.intent.id) != memory.ownRuns.end();
    if (isOwn && occasion == RunRecovery::Occasion::preview) return std::nullopt;

    const std::vector<std::string> devices = FolderRun::devicesOf(run.intent, ports.recording.facts);
    OrdovanReconciliation found = reconciled(ports, run, control);
    if (found.isStopped || found.isElsewhere) return std::nullopt;
    RecoveredRun result;
    // The volumes are looked at behind the flush: where one is gone, that found nothing to do.
    const bool isFlushed = syncMoves(ports, run.intent, found) || !run.intent.isFlushable;
    const bool isOnDisk = isFlushed && FolderRun::devicesOf(run.intent, ports.recording.facts) == devices;
    // Else nothing is recorded yet: later runs may have to do with the same places before this one's end is certain.
    const bool isStored = isOnDisk && store(ports, root, run, found, memory, nowEpoch, result);
    const bool isSettled = isStored && (found.isComplete || found.uncertain.size() < run.intent.items.size());
    // A run of this program is in the history, or in memory until it can be.
    if (!isOwn) result.told = std::make_shared<const OrdovanInterruptedRun>(found.run);
    if (!isOwn && isSettled) addToHistory(ports, found.historyRecord(run.intent), memory, nowEpoch, result);
    // What is settled is not looked at again: later runs may have to do with the same places.
    if (isStored && found.isComplete) {
        static_cast<void>(ports.recording.runRecords->remove(root, place));
    } else if (isSettled) {
        static_cast<void>(ports.recording.runRecords->replace(root, place, run.only(found.uncertain)));
    }
    return result;
}

}  // namespace

Recovery RunRecovery::settle(const TidyPorts& ports, const Url& root, RecordsInMemory& memory, double nowEpoch,
                             Occasion occasion, const RecoveryControl& control) {
    Recovery result;
    const ordovan::RunRecordStore* store = ports.recording.runRecords;
    if (store == nullptr) return result;
    std::vector<Found> stored;  // held from here on
    for (std::size_t place = 1; place <= ordovan::RunRecordStore::places; ++place) {
        stored.push_back(store->read(root, place));
        result.isHeld = result.isHeld || stored.back().state == Found::State::inUse;
    }
    if (result.isHeld) return result;
    for (std::size_t i = 0; i < stored.size() && !control.flag->isCancelled(); ++i) {
        std::optional<RecoveredRun> run;
        if (stored[i].state == Found::State::unreadable) run = setAside(ports, root, i + 1, nowEpoch);
        if (stored[i].state == Found::State::readable) {
            run = ::settle(ports, root, i + 1, stored[i].run, memory, nowEpoch, occasion, control);
        }
        if (run) result.runs.push_back(std::move(*run));
    }
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
