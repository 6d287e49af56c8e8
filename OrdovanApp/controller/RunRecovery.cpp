#include "OrdovanApp/controller/RunRecovery.h"

#include "OrdovanApp/controller/FolderRun.h"
#include "OrdovanApp/controller/StoppableFileSystem.h"

#include "OrdovanCore/TrashPlace.h"

#include <algorithm>
#include <numeric>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace {

using Kind = OrdovanRunRecord::Kind;
using Found = ordovan::RunRecordStore::Found;

/// The entries of a folder's journal, by their destinations. Only organize runs come to have entries there; for others
/// it is not read.
class Journaled {
public:
    Journaled(const TidyPorts& ports, const Url& root, Kind kind, const RecordsInMemory& memory) {
        if (kind != Kind::organize) return;
        for (const auto& journal : {ports.journals.read(root).journal, memory.unsavedJournal}) {
            if (!journal) continue;
            for (const OrdovanJournalEntry& entry : journal->entries) entries_[entry.destination()] = &entry;
            journals_.push_back(journal);
        }
    }
    [[nodiscard]] const OrdovanJournalEntry* at(std::string_view destination) const {
        const auto found = entries_.find(destination);
        return found == entries_.end() ? nullptr : found->second;
    }

private:
    std::vector<ordovan::JournalStore::Journal> journals_;
    std::unordered_map<std::string_view, const OrdovanJournalEntry*> entries_;
};

ordovan::ReconcilePorts reconcilePorts(const TidyPorts& ports, OrdovanFileSystem& fs, const Journaled& journaled) {
    const RecordingPorts& recording = ports.recording;
    const auto isAnothers = [&journaled](const OrdovanRunItem& item, std::string_view contentHash,
                                         std::string_view identity) {
        const OrdovanJournalEntry* const entry = journaled.at(item.destination);
        if (entry == nullptr || entry->source() == item.source.view()) return false;
        if (entry->contentHash() != contentHash) return false;
        return !entry->sameVolume() || entry->fileID().empty() || entry->fileID() == identity;
    };
    return {.fs = fs,
            .facts = recording.facts,
            .findInTrash = recording.findInTrash,
            .removeTrashInfo = recording.removeTrashInfo,
            .forgetTrashInfo = recording.forgetTrashInfo,
            .isAnothers = isAnothers};
}

/// Whether a record is of this folder. Two folders share a record's name where their paths differ only in how accented
/// letters are put together; and one folder may have two such paths.
bool isOf(const TidyPorts& ports, const Url& root, const OrdovanRunIntent& intent) {
    if (intent.root == root) return true;
    const auto here = ports.recording.facts(root);
    const auto there = ports.recording.facts(intent.root);
    return here && there && here->identity == there->identity;
}

OrdovanReconciliation reconciled(const TidyPorts& ports, const OrdovanUnfinishedRun& run, const Journaled& journaled,
                                 const RecoveryControl& control) {
    if (control.progressed) control.progressed(0, run.intent.items.size());
    FolderRun::FileSystem files(ports, run.intent.root);
    StoppableFileSystem fs(files.port(), files.contents(), *control.flag);
    return OrdovanReconciler::reconcile(
        run, reconcilePorts(ports, fs, journaled),
        {.shouldContinue = [&] { return fs.beginFile(); }, .progressed = control.progressed});
}

std::unordered_set<std::string_view> viewsOf(const std::vector<std::string>& texts) {
    return {texts.begin(), texts.end()};
}

/// Leaves out the entries that would come in the place of those of later runs: of a file that is not in sight where
/// another one stands, and of one that a stored entry tells to be another run's by its identity.
void dropOvertaken(OrdovanReconciliation& found, const Journaled& journaled, const ordovan::FactsFunction& factsOf) {
    std::erase_if(found.journal.entries, [&](const OrdovanJournalEntry& entry) {
        const OrdovanJournalEntry* const known = journaled.at(entry.destination());
        if (known == nullptr || *known == entry) return false;
        const auto there = factsOf(Url::file(entry.destination()));
        if (!there) return false;
        const bool isKnownFile = known->sameVolume() && !known->fileID().empty() &&
                                 known->fileID() == there->identity && known->source() != entry.source();
        return isKnownFile || found.unseen.contains(std::string(entry.destination()));
    });
}

/// The same for what was trashed.
void dropOvertaken(OrdovanReconciliation& found, const OrdovanTrashRecord& recorded,
                   const ordovan::FactsFunction& factsOf) {
    std::unordered_map<std::string_view, const OrdovanTrashEntry*> entries;  // by the original place
    for (const OrdovanTrashEntry& entry : recorded.entries) entries[entry.original()] = &entry;
    std::erase_if(found.trashed.entries, [&](const OrdovanTrashEntry& entry) {
        const auto known = entries.find(entry.original());
        return known != entries.end() && *known->second != entry &&
               found.unseen.contains(std::string(entry.original())) && factsOf(Url::file(known->second->trashed()));
    });
}

/// Stores what a journal has to say about the run.
ordovan::JournalStore::Saved storeJournal(const TidyPorts& ports, const Url& root, const OrdovanUnfinishedRun& run,
                                          OrdovanReconciliation& found, const RecordsInMemory& memory,
                                          double nowEpoch) {
    if (run.intent.kind == Kind::organize) {
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
    std::vector<Url> arrivals, departures;
    for (const OrdovanExecutionOutcome& outcome : found.run.outcomes) {
        if (outcome.status == OrdovanExecutionStatus::moved) arrivals.push_back(outcome.destination);
    }
    const std::string below = std::string(intent.root.path()) + "/";
    const auto isReached = [&](const ordovan::SharedText& path) {
        return path.view().starts_with(below) || ordovan::isInTrash(path);
    };
    for (const std::size_t i : found.touched) {
        const OrdovanRunItem& item = intent.items[i];
        if (isReached(item.destination)) arrivals.push_back(Url::file(item.destination));
        if (isReached(item.source)) departures.push_back(Url::file(item.source));
    }
    return FolderRun::syncMoves(ports, intent, arrivals, departures);
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
std::optional<RecoveredRun> settle(const TidyPorts& ports, const Url& root, std::size_t place, Found& stored,
                                   RecordsInMemory& memory, double nowEpoch, RunRecovery::Occasion occasion,
                                   const RecoveryControl& control) {
    const OrdovanUnfinishedRun& run = stored.run;
    if (!isOf(ports, root, run.intent)) return std::nullopt;
    const bool isOwn = std::ranges::find(memory.ownRuns, run.intent.id) != memory.ownRuns.end();
    if (isOwn && occasion == RunRecovery::Occasion::preview) return std::nullopt;

    const std::vector<std::string> devices = FolderRun::devicesOf(run.intent, ports.recording.facts);
    const Journaled journaled(ports, root, run.intent.kind, memory);
    OrdovanReconciliation found = reconciled(ports, run, journaled, control);
    if (found.isStopped || found.isElsewhere) return std::nullopt;
    RecoveredRun result;
    // The volumes are looked at behind the flush: where one is gone, that found nothing to do.
    const bool isFlushed = syncMoves(ports, run.intent, found);
    const bool isOnDisk = isFlushed && FolderRun::devicesOf(run.intent, ports.recording.facts) == devices;
    RunRecovery::dropPassingIdentities(ports, found.journal);
    dropOvertaken(found, journaled, ports.recording.facts);
    if (!found.trashed.entries.empty()) {
        dropOvertaken(found, *ports.trashRecords.load(memory.trash).record, ports.recording.facts);
    }
    // Else nothing is recorded yet: later runs may have to do with the same places before this one's end is certain.
    const bool isStored = isOnDisk && store(ports, root, run, found, memory, nowEpoch, result);
    found.run.isRecorded = isStored;
    const bool isSettled = isStored && (found.isComplete || found.uncertain.size() < run.intent.items.size());
    // A run of this program is in the history, or in memory until it can be.
    if (!isOwn) result.told = std::make_shared<const OrdovanInterruptedRun>(found.run);
    if (!isOwn && isSettled) addToHistory(ports, found.historyRecord(run.intent), memory, nowEpoch, result);
    // What is settled is not looked at again: later runs may have to do with the same places.
    if (isStored && found.isComplete) {
        static_cast<void>(ports.recording.runRecords->remove(root, place));
    } else if (isSettled) {
        auto replaced = ports.recording.runRecords->replace(root, place, run.only(found.uncertain));
        if (replaced && *replaced) stored.holder = std::move(*replaced);
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
    std::vector<std::size_t> byTime(stored.size());
    std::iota(byTime.begin(), byTime.end(), 0);
    std::ranges::stable_sort(byTime, {}, [&](std::size_t i) { return stored[i].run.intent.startedAtEpoch; });
    for (const std::size_t i : byTime) {
        if (control.flag->isCancelled()) break;
        std::optional<RecoveredRun> run;
        if (stored[i].state == Found::State::unreadable) run = setAside(ports, root, i + 1, nowEpoch);
        if (stored[i].state == Found::State::readable) {
            run = ::settle(ports, root, i + 1, stored[i], memory, nowEpoch, occasion, control);
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
