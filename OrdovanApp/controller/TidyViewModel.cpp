#include "OrdovanApp/controller/TidyViewModel.h"

#include "OrdovanApp/controller/DuplicateSearch.h"
#include "OrdovanApp/controller/PreviewFlow.h"
#include "OrdovanApp/controller/ProgressThrottle.h"
#include "OrdovanApp/controller/RunFlow.h"
#include "OrdovanApp/stores/AppSettings.h"
#include "OrdovanApp/stores/RuleStore.h"
#include "OrdovanCore/Categories.h"

#include <algorithm>
#include <utility>

namespace {

constexpr const char* heldElsewhere = "Another ordovan+ run is working in this folder. Try again when it has finished.";
constexpr const char* exportFailed = "The plan couldn't be saved there. Try another folder.";
constexpr double secondsPerDay = 86'400;

}  // namespace

TidyViewModel::TidyViewModel(TidyPorts ports, Options options, QObject* parent)
    : QObject(parent), ports_(std::move(ports)), options_(options) {
    refreshInputs();
    if (options_.loadsInBackground) {
        refreshRecords();
        return;
    }
    history_ = ports_.history.load();
    recentFolders_ = ports_.recentFolders.load();
    adoptTrashRecord(ports_.trashRecords.load({}));
}

TidyViewModel::~TidyViewModel() {
    for (const auto& flag : {scanFlag_, recoveryFlag_, searchFlag_, runFlag_}) {
        if (flag) flag->cancel();
    }
}

std::optional<Url> TidyViewModel::outputRoot() const {
    if (!rootURL_) return std::nullopt;
    return rootURL_->appending(OrdovanOutput::folderName);
}

OrdovanPreviewStatus TidyViewModel::status() const {
    switch (phase_.kind) {
        case Phase::Case::scanning:
            return OrdovanPreviewStatus::scanning();
        case Phase::Case::failed:
            return OrdovanPreviewStatus::failed();
        case Phase::Case::ready:
            return OrdovanPreviewStatus::ready(static_cast<std::int64_t>(plan_->proposals.size()),
                                               static_cast<std::int64_t>(plan_->conflicts.size()));
        case Phase::Case::idle:
            break;
    }
    return OrdovanPreviewStatus::idle();
}

// Preview.

void TidyViewModel::findFolder(const Url& place, std::function<void(bool isThere)> done) {
    ports_.tasks.compute(
        [&files = ports_.fileSystem, resolve = ports_.resolveExisting, place] {
            const Url item = resolve(place);
            return files.exists(item) && !files.isRegularFile(item);
        },
        whileAlive(std::move(done)));
}

void TidyViewModel::chooseFolder(const Url& folder, PreviewDepth depth) {
    depth_ = depth;
    if (rootURL_ != folder) {
        cancelDuplicateSearch();
        if (recoveryFlag_) recoveryFlag_->cancel();
        // The other folder's is not known before it has been read.
        journalRoot_.reset();
        adoptedSurvey_ = surveys_;
        set(recoverableCount_, std::size_t{0}, &TidyViewModel::recoverableCountChanged);
        publish(journal_, std::shared_ptr<const OrdovanJournal>(), &TidyViewModel::recoverableJournalChanged);
    }
    isResolved_ = false;
    set(rootURL_, std::optional(folder), &TidyViewModel::rootURLChanged);
    preview();
}

/// Finding out where a path leads may wait for a disk, so the preview does it, before anything else.
void TidyViewModel::adoptResolved(const Url& chosen, const Url& resolved) {
    if (rootURL_ != chosen || isResolved_) return;
    isResolved_ = true;
    set(rootURL_, std::optional(resolved), &TidyViewModel::rootURLChanged);
    // A preview that was given up before this may be of a folder with a plan.
    if (phase_.kind == Phase::Case::idle) rest();
}

void TidyViewModel::preview() {
    if (!rootURL_) return;
    if (scanFlag_) scanFlag_->cancel();
    scanFlag_ = std::make_shared<CancelFlag>();
    if (!recoveryFlag_ || recoveryFlag_->isCancelled()) recoveryFlag_ = std::make_shared<CancelFlag>();
    refreshInputs();
    set(phase_, Phase{Phase::Case::scanning, {}}, &TidyViewModel::phaseChanged);
    const auto adopt = whileAlive([this, chosen = *rootURL_](const Url& root) { adoptResolved(chosen, root); });
    const auto recover = whileAlive([this](const Url& root, const RecoveredRun& run) { adoptRecovered(root, run); });
    const PreviewInputs inputs = {
        .depth = depth_,
        .root = *rootURL_,
        .isResolved = isResolved_,
        .resolved = [adopt, &tasks = ports_.tasks](const Url& root) { tasks.post([adopt, root] { adopt(root); }); },
        .includeHidden = includeHidden_,
        .groupByMonth = groupByMonth_,
        .rules = rules_,
        .unsavedJournals = unsavedJournals_,
        .knownTrash = {trashRecord_, unsavedTrash_},
        .unsavedRuns = unsavedRuns_,
        .ownRuns = ownRuns_,
        .recovered =
            [recover, &tasks = ports_.tasks](const Url& root, RecoveredRun run) {
                tasks.post([recover, root, run = std::move(run)] { recover(root, run); });
            },
        .recovery = recoveryControl(recoveryFlag_),
        .recoveryTurn = recoveryTurn_,
        .known = {planRoot_.value_or(Url()), inventory_, plan_, planIndex_},
        .indexesPlan = options_.indexesPlans,
        .flag = scanFlag_,
        .progressed = previewProgress()};
    ports_.tasks.compute([ports = ports_, inputs] { return PreviewFlow::run(ports, inputs); },
                         whileAlive([this, inputs](PreviewResult result) {
                             if (!inputs.flag->isCancelled()) completePreview(inputs, std::move(result));
                         }));
}

std::function<void(std::uint64_t files, std::uint64_t folders, bool isLast)> TidyViewModel::previewProgress() {
    const auto tell = whileAlive([this, flag = scanFlag_](std::uint64_t files, std::uint64_t folders) {
        if (!flag->isCancelled()) Q_EMIT previewProgressed(files, folders);
    });
    return [tell, &tasks = ports_.tasks, clock = ports_.clock, throttle = ProgressThrottle()](
               std::uint64_t files, std::uint64_t folders, bool isLast) {
        if (!throttle.isDue(clock(), isLast)) return;
        tasks.post([tell, files, folders] { tell(files, folders); });
    };
}

/// How what brings an interrupted run to its end tells of that, and is stopped.
RecoveryControl TidyViewModel::recoveryControl(std::shared_ptr<const CancelFlag> flag) {
    const auto tell = whileAlive([this, flag](std::size_t done, std::size_t total) {
        if (!flag->isCancelled()) Q_EMIT recoveryProgressed(done, total);
    });
    return {.flag = std::move(flag), .progressed = thinnedOut(tell)};
}

/// To be told on any thread of files done; tells of some of that on this one.
template <class Tell>
std::function<void(std::size_t done, std::size_t total)> TidyViewModel::thinnedOut(const Tell& tell) const {
    return [tell, &tasks = ports_.tasks, clock = ports_.clock, throttle = ProgressThrottle()](std::size_t done,
                                                                                              std::size_t total) {
        if (!throttle.isDue(clock(), done == total)) return;
        tasks.post([tell, done, total] { tell(done, total); });
    };
}

void TidyViewModel::cancelPreview() {
    if (phase_.kind != Phase::Case::scanning) return;
    scanFlag_->cancel();
    recoveryFlag_->cancel();
    rest();
}

/// Goes back to the phase before the preview that has come to no plan.
void TidyViewModel::rest() {
    const bool hasPlan = plan_ && planRoot_ == rootURL_;
    set(phase_, Phase{hasPlan ? Phase::Case::ready : Phase::Case::idle, {}}, &TidyViewModel::phaseChanged);
}

/// Copies what the next preview shall use.
void TidyViewModel::refreshInputs() {
    set(rules_, OrdovanRuleSet(ports_.rules.ruleSet()), &TidyViewModel::rulesChanged);
    set(groupByMonth_, overrides_.groupByMonth.value_or(ports_.settings.groupByMonth()),
        &TidyViewModel::groupByMonthChanged);
    set(includeHidden_, overrides_.includeHidden.value_or(ports_.settings.includeHidden()),
        &TidyViewModel::includeHiddenChanged);
}

void TidyViewModel::completePreview(const PreviewInputs& inputs, PreviewResult result) {
    const Url root = result.found.root;
    adoptLoadedTrash(std::move(result.trash));
    adoptLoadedJournal(root, std::move(result.journal), result.unsavedBefore);
    if (inputs.depth == PreviewDepth::records) return rest();
    if (!result.found.plan) {
        set(phase_, Phase{Phase::Case::failed, std::string(OrdovanPreviewStatus::unreadableFolder)},
            &TidyViewModel::phaseChanged);
        return;
    }
    addRecentFolder(root);
    if (duplicateReport_) {
        if (planRoot_ == root)
            adoptDuplicates(DuplicateSearch::remaining(*duplicateReport_, unreadFiles_, *result.found.inventory));
        else
            adoptDuplicates(std::nullopt);
    }
    planRoot_ = root;
    caseInsensitive_ = result.caseInsensitive;
    planIndex_ = std::move(result.found.index);
    const bool excludedChanges = excluded_.follow(result.found.plan);
    // Those that are equal to what they were are the same objects.
    set(inventory_, std::move(result.found.inventory), &TidyViewModel::inventoryChanged);
    set(plan_, std::move(result.found.plan), &TidyViewModel::planChanged);
    if (excludedChanges) Q_EMIT excludedChanged();
    set(partialScan_, result.partial, &TidyViewModel::partialScanChanged);
    set(phase_, Phase{Phase::Case::ready, {}}, &TidyViewModel::phaseChanged);
}

/// Finding out what a folder's path leads to may wait for a disk.
void TidyViewModel::addRecentFolder(const Url& folder) {
    ports_.tasks.compute(
        [&store = ports_.recentFolders, folder, known = recentFolders_] { return store.add(folder, known); },
        whileAlive([this](ordovan::RecentFoldersStore::Result result) { adoptRecentFolders(std::move(result)); }));
}

void TidyViewModel::adoptRecentFolders(ordovan::RecentFoldersStore::Result result) {
    if (result.revision <= recentRevision_) return;
    recentRevision_ = result.revision;
    set(recentFolders_, std::move(result.folders), &TidyViewModel::recentFoldersChanged);
}

// Selection.

std::vector<OrdovanFileProposal> TidyViewModel::selectedProposals() const {
    return excluded_.remaining();
}

void TidyViewModel::toggle(const std::string& proposalID) {
    excluded_.toggle(proposalID);
    Q_EMIT excludedChanged();
}

void TidyViewModel::toggle(std::size_t proposal) {
    excluded_.toggle(proposal);
    Q_EMIT excludedChanged();
}

void TidyViewModel::setExcluded(const std::unordered_set<std::string>& proposalIDs) {
    if (excluded_.set(proposalIDs)) Q_EMIT excludedChanged();
}

void TidyViewModel::setExcludedProposals(std::vector<bool> proposals) {
    if (excluded_.set(std::move(proposals))) Q_EMIT excludedChanged();
}

void TidyViewModel::tickOlderThan(double days) {
    if (!plan_ || !inventory_) return;
    const double cutoff = ports_.clock() - days * secondsPerDay;
    if (planIndex_) {
        setExcludedProposals(changedSince(cutoff));
    } else {
        setExcluded(plan_->proposalIDs(cutoff, modificationTimes()));
    }
}

/// What `OrdovanPlanResult::proposalIDs` says, as bits.
std::vector<bool> TidyViewModel::changedSince(double epoch) const {
    std::vector<bool> changed(plan_->proposals.size());
    for (std::size_t i = 0; i < changed.size(); ++i) {
        const std::uint32_t entry = planIndex_->entries[i];
        const auto modified =
            entry == PlanIndex::nowhere ? std::optional<double>() : inventory_->files[entry].modifiedEpoch;
        changed[i] = !modified || *modified >= epoch;
    }
    return changed;
}

/// The modification times of the previewed files by their paths, in seconds since 1970.
std::unordered_map<std::string, double> TidyViewModel::modificationTimes() const {
    std::unordered_map<std::string, double> modified;
    for (const OrdovanInventoryEntry& entry : inventory_->files) {
        if (entry.modifiedEpoch) modified.emplace(entry.url.path(), *entry.modifiedEpoch);
    }
    return modified;
}

// Export.

bool TidyViewModel::exportPlan(const Url& file, OrdovanPlanExportFormat format) {
    if (isExporting_ || !hasPreview()) return false;
    isExporting_ = true;
    ports_.tasks.compute(
        [write = ports_.writeDocument, file, format, plan = plan_, excluded = excluded_, root = *rootURL_] {
            return write(file, OrdovanPlanExport::text(format, *plan, root.lastPathComponent(), excluded.ids()))
                .has_value();
        },
        whileAlive([this](bool saved) {
            isExporting_ = false;
            Q_EMIT planExported(saved ? QString() : QString::fromLatin1(exportFailed));
        }));
    return true;
}

// Runs.

bool TidyViewModel::organize() {
    if (isRunning() || !rootURL_ || planRoot_ != rootURL_) return false;
    std::vector<OrdovanFileProposal> proposals = selectedProposals();
    if (proposals.empty()) return false;
    RunInputs inputs = beginRun();
    auto done = whileAlive([this, root = inputs.root](RunResult result) { completeRun(root, std::move(result)); });
    ports_.tasks.compute([ports = ports_, inputs = std::move(inputs),
                          proposals = std::move(proposals)] { return RunFlow::organize(ports, inputs, proposals); },
                         std::move(done));
    return true;
}

bool TidyViewModel::undo() {
    if (!journal_) return false;
    return startUndo(*journal_);
}

bool TidyViewModel::undo(const std::unordered_set<std::string>& entryIDs) {
    if (!journal_) return false;
    OrdovanJournal chosen;
    chosen.createdAtEpoch = journal_->createdAtEpoch;
    std::ranges::copy_if(journal_->entries, std::back_inserter(chosen.entries),
                         [&](const OrdovanJournalEntry& entry) { return entryIDs.contains(std::string(entry.id())); });
    return startUndo(std::move(chosen));
}

bool TidyViewModel::startUndo(OrdovanJournal entries) {
    if (isRunning() || entries.entries.empty() || !rootURL_ || journalRoot_ != rootURL_) return false;
    RunInputs inputs = beginRun();
    auto done = whileAlive([this, root = inputs.root](RunResult result) { completeRun(root, std::move(result)); });
    ports_.tasks.compute([ports = ports_, inputs = std::move(inputs),
                          entries = std::move(entries)] { return RunFlow::undo(ports, inputs, entries); },
                         std::move(done));
    return true;
}

void TidyViewModel::cancelRun() {
    if (runFlag_) runFlag_->cancel();
}

/// Captures what a run works from, and says that it has begun.
RunInputs TidyViewModel::beginRun() {
    beginAnyRun();
    RunInputs inputs = {.root = *rootURL_,
                        .outputRoot = *outputRoot(),
                        .nowEpoch = ports_.clock(),
                        .memory = recordsInMemory(),
                        .recovery = recoveryControl(runFlag_),
                        .control = runControl()};
    set(isApplying_, true, &TidyViewModel::isApplyingChanged);
    return inputs;
}

/// What every run begins with.
void TidyViewModel::beginAnyRun() {
    runFlag_ = std::make_shared<CancelFlag>();
    set(journalWarning_, std::optional<std::string>(), &TidyViewModel::journalWarningChanged);
    set(runRefusal_, std::optional<std::string>(), &TidyViewModel::runRefusalChanged);
}

/// What every run ends with.
void TidyViewModel::endAnyRun(bool refused) {
    runFlag_ = nullptr;
    if (refused) set(runRefusal_, std::optional<std::string>(heldElsewhere), &TidyViewModel::runRefusalChanged);
}

OrdovanRunControl TidyViewModel::runControl() {
    OrdovanRunControl control;
    control.shouldContinue = [flag = runFlag_] { return !flag->isCancelled(); };
    control.progressed =
        thinnedOut(whileAlive([this](std::size_t done, std::size_t total) { Q_EMIT runProgressed(done, total); }));
    return control;
}

void TidyViewModel::completeRun(const Url& root, RunResult result) {
    endAnyRun(result.refused);
    if (!result.refused) {
        for (RecoveredRun& run : result.recovered) adoptRecovered(root, std::move(run));
        const bool wasUnsaved = journalUnsaved();
        keepRecord(result.keepsRecord, result.run.id);
        publish(lastReport_, std::move(result.report), &TidyViewModel::lastReportChanged);
        if (auto& record = result.record) {
            adoptJournal(root, std::move(record->journal), std::move(record->unsaved), record->revision);
            warnOfRecord(wasUnsaved, std::move(record->warning));
        }
        adoptHistory(result.run, std::move(result.history));
    }
    set(isApplying_, false, &TidyViewModel::isApplyingChanged);
    if (!result.refused && options_.repreviewsAfterRuns) preview();
}

/// Takes over what can be undone in a folder; it is shown when that folder is still the chosen one.
void TidyViewModel::adoptJournal(const Url& root, std::shared_ptr<const OrdovanJournal> journal,
                                 std::shared_ptr<const OrdovanJournal> unsaved, std::uint64_t revision) {
    if (unsaved) {
        unsavedJournals_.insert_or_assign(std::string(root.path()), std::move(unsaved));
    } else {
        unsavedJournals_.erase(std::string(root.path()));
    }
    if (rootURL_ != root) return;
    journalRoot_ = root;
    journalRevision_ = std::max(journalRevision_, revision);
    publish(journal_, std::move(journal), &TidyViewModel::recoverableJournalChanged);
}

/// The same with what was read in the background, unless a run has left something later here meanwhile.
void TidyViewModel::adoptLoadedJournal(const Url& root, ordovan::JournalStore::Loaded loaded,
                                       const std::shared_ptr<const OrdovanJournal>& unsavedBefore) {
    const auto unsaved = unsavedJournal(root);
    const bool hasSameUnsaved = unsaved == unsavedBefore || (unsaved && unsavedBefore && *unsaved == *unsavedBefore);
    const bool isOlder = loaded.revision < journalRevision_ || !hasSameUnsaved;
    if (journalRoot_ == root && isOlder) return;
    adoptJournal(root, std::move(loaded.journal), std::move(loaded.unsaved), loaded.revision);
}

std::shared_ptr<const OrdovanJournal> TidyViewModel::unsavedJournal(const Url& root) const {
    const auto found = unsavedJournals_.find(std::string(root.path()));
    return found == unsavedJournals_.end() ? nullptr : found->second;
}
