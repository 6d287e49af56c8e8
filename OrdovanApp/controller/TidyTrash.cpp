#include "OrdovanApp/controller/DuplicateSearch.h"
#include "OrdovanApp/controller/ProgressThrottle.h"
#include "OrdovanApp/controller/TidyViewModel.h"
#include "OrdovanApp/controller/TrashFlow.h"
#include "OrdovanCore/LargeFiles.h"
#include "OrdovanCore/Proposals.h"

#include <algorithm>
#include <iterator>
#include <utility>

// The part of the controller that deals with duplicates, large files and the Trash.

using OrdovanProposalPlanner::canonicalPath;
using OrdovanProposalPlanner::containsCanonical;

namespace {

bool holds(const OrdovanDuplicateGroup& group, std::string_view path) {
    return std::ranges::find(group.files, path, &Url::path) != group.files.end();
}

}  // namespace

// Duplicates and large files.

bool TidyViewModel::hasPreview() const {
    return inventory_ && rootURL_ && planRoot_ == rootURL_;
}

bool TidyViewModel::findDuplicates() {
    if (isScanningDuplicates_ || !hasPreview()) return false;
    searchFlag_ = std::make_shared<CancelFlag>();
    set(isScanningDuplicates_, true, &TidyViewModel::isScanningDuplicatesChanged);
    const auto tell = whileAlive([this, flag = searchFlag_](const OrdovanDuplicateProgress& progress) {
        if (flag->isCancelled()) return;
        Q_EMIT duplicateSearchProgressed(progress.filesDone, progress.filesTotal, progress.bytesDone,
                                         progress.bytesTotal);
    });
    const auto progressed = [tell, &tasks = ports_.tasks](const OrdovanDuplicateProgress& progress) {
        tasks.post([tell, progress] { tell(progress); });
    };
    ports_.tasks.compute([ports = ports_, inventory = inventory_, flag = searchFlag_,
                          progressed] { return DuplicateSearch::run(ports, *inventory, flag, progressed); },
                         whileAlive([this, root = *rootURL_, inventory = inventory_,
                                     flag = searchFlag_](std::optional<DuplicateSearch::Found> found) {
                             if (found && !flag->isCancelled()) completeSearch(root, inventory, std::move(*found));
                         }));
    return true;
}

void TidyViewModel::cancelDuplicateSearch() {
    if (!isScanningDuplicates_) return;
    searchFlag_->cancel();
    set(isScanningDuplicates_, false, &TidyViewModel::isScanningDuplicatesChanged);
}

void TidyViewModel::completeSearch(const Url& root, const std::shared_ptr<const OrdovanInventory>& searched,
                                   DuplicateSearch::Found found) {
    if (planRoot_ == root) {
        if (inventory_ != searched) found = DuplicateSearch::remaining(found.report, found.unread, *inventory_);
        adoptDuplicates(std::move(found));
    }
    set(isScanningDuplicates_, false, &TidyViewModel::isScanningDuplicatesChanged);
}

/// Takes over what a search found, or that there was none, and forgets the choices that have no file in it any more.
void TidyViewModel::adoptDuplicates(std::optional<DuplicateSearch::Found> found) {
    std::shared_ptr<const OrdovanDuplicateReport> report;
    if (found) report = std::make_shared<const OrdovanDuplicateReport>(std::move(found->report));
    unreadFiles_ = found ? std::move(found->unread) : std::vector<Url>();
    std::unordered_map<std::string, std::string> keepers;
    if (report && !duplicateKeepers_.empty()) {
        for (const OrdovanDuplicateGroup& group : report->groups) {
            const auto chosen = duplicateKeepers_.find(group.id());
            if (chosen == duplicateKeepers_.end()) continue;
            if (holds(group, chosen->second)) keepers.insert(*chosen);
        }
    }
    publish(duplicateReport_, std::move(report), &TidyViewModel::duplicateReportChanged);
    set(duplicateKeepers_, std::move(keepers), &TidyViewModel::duplicateKeepersChanged);
}

Url TidyViewModel::keeper(const OrdovanDuplicateGroup& group) const {
    const auto chosen = duplicateKeepers_.find(group.id());
    return chosen == duplicateKeepers_.end() ? group.files.front() : Url::file(chosen->second);
}

bool TidyViewModel::keep(std::string_view path, const std::string& groupID) {
    if (!duplicateReport_) return false;
    const auto group = std::ranges::find(duplicateReport_->groups, groupID, &OrdovanDuplicateGroup::id);
    if (group == duplicateReport_->groups.end()) return false;
    if (!holds(*group, path)) return false;
    auto keepers = duplicateKeepers_;
    keepers.insert_or_assign(groupID, std::string(path));
    set(duplicateKeepers_, std::move(keepers), &TidyViewModel::duplicateKeepersChanged);
    return true;
}

void TidyViewModel::autoPick(OrdovanKeepPolicy policy) {
    if (!duplicateReport_ || !inventory_) return;
    const auto modified = modificationTimes();
    auto keepers = duplicateKeepers_;
    for (const OrdovanDuplicateGroup& group : duplicateReport_->groups) {
        const auto file = OrdovanKeepPolicies::keep(policy, group, modified);
        if (file) keepers.insert_or_assign(group.id(), std::string(file->path()));
    }
    set(duplicateKeepers_, std::move(keepers), &TidyViewModel::duplicateKeepersChanged);
}

std::vector<OrdovanInventoryEntry> TidyViewModel::largeFiles(std::int64_t limit, std::int64_t minimumBytes) const {
    if (!hasPreview()) return {};
    return OrdovanLargeFiles::top(inventory_->files, limit, minimumBytes);
}

// Runs with the Trash.

bool TidyViewModel::trashExtras() {
    if (isRunning() || !hasPreview() || !duplicateReport_ || duplicateReport_->groups.empty()) return false;
    std::vector<KeptDuplicate> groups;
    groups.reserve(duplicateReport_->groups.size());
    for (const OrdovanDuplicateGroup& group : duplicateReport_->groups) groups.push_back({group, keeper(group)});
    startTrashRun([groups = std::move(groups)](const TidyPorts& ports, const TrashInputs& inputs) {
        return TrashFlow::trashExtras(ports, inputs, groups);
    });
    return true;
}

bool TidyViewModel::trashBigFiles(std::vector<OrdovanFileTrasher::Item> items) {
    if (isRunning() || !rootURL_ || items.empty()) return false;
    startTrashRun([items = std::move(items)](const TidyPorts& ports, const TrashInputs& inputs) {
        return TrashFlow::trashBigFiles(ports, inputs, items);
    });
    return true;
}

bool TidyViewModel::restore() {
    return startRestore(restorableEntries());
}

bool TidyViewModel::restore(const std::unordered_set<std::string>& entryIDs) {
    std::vector<OrdovanTrashEntry> entries = restorableEntries();
    std::erase_if(entries, [&](const OrdovanTrashEntry& entry) { return !entryIDs.contains(std::string(entry.id())); });
    return startRestore(std::move(entries));
}

TidyViewModel::Restorable TidyViewModel::restorable(std::shared_ptr<const OrdovanTrashRecord> record, const Url& root) {
    Restorable found = {.record = std::move(record), .root = root, .entries = {}};
    const std::string folder = canonicalPath(root);
    std::ranges::copy_if(found.record->entries, std::back_inserter(found.entries), [&](const OrdovanTrashEntry& entry) {
        return containsCanonical(canonicalPath(entry.original()), folder);
    });
    return found;
}

std::vector<OrdovanTrashEntry> TidyViewModel::restorableEntries() const {
    if (!rootURL_) return {};
    if (restorable_.record == trashRecord_ && restorable_.root == rootURL_) return restorable_.entries;
    return restorable(trashRecord_, *rootURL_).entries;
}

bool TidyViewModel::startRestore(std::vector<OrdovanTrashEntry> entries) {
    if (isRunning() || entries.empty()) return false;
    OrdovanTrashRecord record = {.version = trashRecord_->version, .entries = std::move(entries)};
    startTrashRun([record = std::move(record)](const TidyPorts& ports, const TrashInputs& inputs) {
        return TrashFlow::restore(ports, inputs, record);
    });
    return true;
}

/// Captures what the run works from, says that it has begun and starts it.
template <class Work>
void TidyViewModel::startTrashRun(Work work) {
    beginAnyRun();
    const auto tell = whileAlive([this](const TrashProgress& progress) {
        Q_EMIT trashProgressed(progress.filesDone, progress.filesTotal, progress.bytesDone, progress.bytesTotal);
    });
    const auto progressed = [tell, &tasks = ports_.tasks, clock = ports_.clock,
                             throttle = ProgressThrottle()](const TrashProgress& progress) {
        if (!throttle.isDue(clock(), progress.filesDone == progress.filesTotal)) return;
        tasks.post([tell, progress] { tell(progress); });
    };
    TrashInputs inputs = {.root = *rootURL_,
                          .nowEpoch = ports_.clock(),
                          .memory = recordsInMemory(),
                          .recovery = recoveryControl(runFlag_),
                          .progressed = progressed};
    set(isTrashing_, true, &TidyViewModel::isTrashingChanged);
    ports_.tasks.compute(
        [ports = ports_, inputs = std::move(inputs), work = std::move(work)] { return work(ports, inputs); },
        whileAlive([this, root = *rootURL_](TrashResult result) { completeTrashRun(root, std::move(result)); }));
}

void TidyViewModel::completeTrashRun(const Url& root, TrashResult result) {
    endAnyRun(result.refused);
    if (!result.refused) {
        for (RecoveredRun& run : result.recovered) adoptRecovered(root, std::move(run));
        const bool wasUnsaved = journalUnsaved();
        keepRecord(result.keepsRecord, result.run.id);
        if (auto& record = result.record) {
            adoptTrashRecord(std::move(record->known));
            warnOfRecord(wasUnsaved, std::move(record->warning));
        }
        publish(lastTrashReport_, std::move(result.report), &TidyViewModel::lastTrashReportChanged);
        adoptHistory(result.run, std::move(result.history));
    }
    set(isTrashing_, false, &TidyViewModel::isTrashingChanged);
    if (!result.refused && options_.repreviewsAfterRuns) preview();
}

void TidyViewModel::adoptTrashRecord(ordovan::TrashRecordStore::Known known) {
    unsavedTrash_ = std::move(known.unsaved);
    trashRevision_ = std::max(trashRevision_, known.revision);
    publish(trashRecord_, std::move(known.record), &TidyViewModel::trashRecordChanged);
}

/// The same with what was read in the background, unless a run has left something later here meanwhile.
void TidyViewModel::adoptLoadedTrash(ordovan::TrashRecordStore::Known known) {
    if (known.revision > trashRevision_ && *known.unsaved == *unsavedTrash_) adoptTrashRecord(std::move(known));
}
