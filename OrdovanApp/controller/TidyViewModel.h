#pragma once

#include "OrdovanApp/controller/CancelFlag.h"
#include "OrdovanApp/controller/DuplicateSearch.h"
#include "OrdovanApp/controller/ExcludedProposals.h"
#include "OrdovanApp/controller/FileLooks.h"
#include "OrdovanApp/controller/PlanIndex.h"
#include "OrdovanApp/controller/PreviewDepth.h"
#include "OrdovanApp/controller/RecoverySurvey.h"
#include "OrdovanApp/controller/TidyPorts.h"
#include "OrdovanCore/Duplicates.h"
#include "OrdovanCore/Executor.h"
#include "OrdovanCore/FileTrasher.h"
#include "OrdovanCore/Inventory.h"
#include "OrdovanCore/Journal.h"
#include "OrdovanCore/KeepPolicy.h"
#include "OrdovanCore/PlanExport.h"
#include "OrdovanCore/Planner.h"
#include "OrdovanCore/PreviewStatus.h"
#include "OrdovanCore/Reconcile.h"
#include "OrdovanCore/Rules.h"
#include "OrdovanCore/RunHistory.h"
#include "OrdovanCore/TrashRecord.h"
#include "OrdovanCore/Url.h"

#include <QObject>
#include <QString>

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

struct PreviewInputs;
struct PreviewResult;
struct RecordsInMemory;
struct RecoveredRun;
struct RecoveryControl;
struct RunInputs;
struct RunResult;
struct TrashResult;

/// The application's controller: it previews one folder, organizes what is ticked, finds duplicates and large files,
/// moves them to the Trash, takes all of that back and keeps the record of it. Both front ends drive it.
///
/// Confined to the thread that made it. Long work runs through the task runner of its ports; its result is applied
/// here. Every field has a reader and a signal that is sent only when the value changed. Big values are immutable and
/// shared, so that reading one costs a pointer and a view may keep an old one.
class TidyViewModel : public QObject {
    Q_OBJECT

public:
    /// Where the preview stands.
    struct Phase {
        enum class Case { idle, scanning, ready, failed };
        Case kind = Case::idle;
        std::string message;  ///< for `failed`: a sentence for the user
        friend bool operator==(const Phase&, const Phase&) = default;
    };

    struct Options {
        /// Whether a folder is previewed again after each run in it.
        bool repreviewsAfterRuns = true;
        /// Whether history, trash record and recent folders are loaded on a background task, to be there soon after.
        bool loadsInBackground = false;
        /// Whether each preview makes a `planIndex` as well, on its background task.
        bool indexesPlans = false;
    };

    /// Stands in for the stored settings in the previews of this controller; they are not changed.
    struct SettingOverrides {
        std::optional<bool> groupByMonth;
        std::optional<bool> includeHidden;
        friend bool operator==(const SettingOverrides&, const SettingOverrides&) = default;
    };

    /// Loads the history, the trash record and the recent folders.
    explicit TidyViewModel(TidyPorts ports, Options options, QObject* parent = nullptr);
    /// Stops what runs; a run under way still saves the record of what it moved (the task runner waits for it).
    ~TidyViewModel() override;

    // State.
    [[nodiscard]] const Phase& phase() const { return phase_; }
    /// The folder being previewed: the only one in which anything is moved. The one chosen, and as soon as it is known
    /// where that leads, its path without links.
    [[nodiscard]] const std::optional<Url>& rootURL() const { return rootURL_; }
    /// The folder that organized files go to: inside `rootURL`. Only when a folder is chosen.
    [[nodiscard]] std::optional<Url> outputRoot() const;
    /// The last plan, or null. While another folder is scanned, or when it could not be read, this is still the last
    /// folder's; `planRoot` tells.
    [[nodiscard]] const std::shared_ptr<const OrdovanPlanResult>& plan() const { return plan_; }
    /// The last scan, or null; it belongs to the plan.
    [[nodiscard]] const std::shared_ptr<const OrdovanInventory>& inventory() const { return inventory_; }
    /// What was made of plan and inventory for lists of them; null where `plan` is, or with options without it.
    [[nodiscard]] const std::shared_ptr<const PlanIndex>& planIndex() const { return planIndex_; }
    /// The folder that plan and inventory are of.
    [[nodiscard]] const std::optional<Url>& planRoot() const { return planRoot_; }
    /// Whether the last plan takes names that differ only in case for one name.
    [[nodiscard]] bool caseInsensitive() const { return caseInsensitive_; }
    /// The last scan stopped at one of its limits.
    [[nodiscard]] bool partialScan() const { return partialScan_; }
    /// An organize or an undo is running.
    [[nodiscard]] bool isApplying() const { return isApplying_; }
    /// The report of the last organize or undo, or null.
    [[nodiscard]] const std::shared_ptr<const OrdovanExecutionReport>& lastReport() const { return lastReport_; }
    /// What can be undone in the chosen folder; null when nothing can, or its journal has not been read yet.
    [[nodiscard]] const std::shared_ptr<const OrdovanJournal>& recoverableJournal() const { return journal_; }
    /// What can be put back from the Trash, of all folders; never null.
    [[nodiscard]] const std::shared_ptr<const OrdovanTrashRecord>& trashRecord() const { return trashRecord_; }
    /// The entries of it whose original places lie in the chosen folder: what `restore` puts back. Oldest first. Takes
    /// a microsecond or less for each of the record, unless `countRecoverable` has found them.
    [[nodiscard]] std::vector<OrdovanTrashEntry> restorableEntries() const;
    /// Looks in the background at what of `recoverableJournal` and `trashRecord` could be taken back in the chosen
    /// folder now, and hands what it found to `done` on this thread; not at all once this object is gone.
    void surveyRecovery(std::function<void(ordovan::RecoverySurvey)> done);
    /// The same for `recoverableCount` alone.
    void countRecoverable();
    /// How many files of both records could be taken back in the chosen folder when they were looked at last; 0 where
    /// that was in another folder.
    [[nodiscard]] std::size_t recoverableCount() const { return recoverableCount_; }
    /// The duplicates among the previewed files, or null when they were not searched for. A new preview of the folder
    /// leaves out the files that it does not find any more; that of another folder leaves nothing.
    [[nodiscard]] const std::shared_ptr<const OrdovanDuplicateReport>& duplicateReport() const {
        return duplicateReport_;
    }
    /// The files that the search behind that report left out because their content could not be read, by path; without
    /// those that are not there any more, or are no regular files. Changes with the report, with the inventory and at
    /// the end of a search.
    [[nodiscard]] const std::vector<Url>& unreadFiles() const { return unreadFiles_; }
    /// The copies chosen to be kept: group id to path. A group without a choice keeps its first file.
    [[nodiscard]] const std::unordered_map<std::string, std::string>& duplicateKeepers() const {
        return duplicateKeepers_;
    }
    /// The copy of a group of the report that is kept, whether chosen or not.
    [[nodiscard]] Url keeper(const OrdovanDuplicateGroup& group) const;
    /// The previewed files are being compared.
    [[nodiscard]] bool isScanningDuplicates() const { return isScanningDuplicates_; }
    /// Files are being moved to the Trash or put back from it.
    [[nodiscard]] bool isTrashing() const { return isTrashing_; }
    /// The report of the last run that moved files to the Trash or put them back, or null.
    [[nodiscard]] const std::shared_ptr<const OrdovanTrashReport>& lastTrashReport() const { return lastTrashReport_; }
    /// A sentence about the undo record, the restore record or else the history, until the next run starts.
    [[nodiscard]] const std::optional<std::string>& journalWarning() const { return journalWarning_; }
    /// Why the last run did nothing at all (another run holds the folder), until the next run starts.
    [[nodiscard]] const std::optional<std::string>& runRefusal() const { return runRefusal_; }
    /// A run that was found interrupted and has been brought to an end, or null: of those that were not dismissed yet,
    /// whatever folder they worked in, the one that was found first.
    [[nodiscard]] const std::shared_ptr<const OrdovanInterruptedRun>& interruptedRun() const { return interruptedRun_; }
    /// The next one, if any, takes its place.
    void dismissInterruptedRun();
    /// Whether something that can be undone or put back is in memory only, and lost when the program ends.
    [[nodiscard]] bool journalUnsaved() const;
    /// The rules, settings and overrides as the last preview used them.
    [[nodiscard]] const OrdovanRuleSet& rules() const { return rules_; }
    [[nodiscard]] bool groupByMonth() const { return groupByMonth_; }
    [[nodiscard]] bool includeHidden() const { return includeHidden_; }
    /// The ids of the proposals that are not ticked. Made for each call; `exclusion` has the same as bits.
    [[nodiscard]] std::unordered_set<std::string> excluded() const { return excluded_.ids(); }
    [[nodiscard]] const ExcludedProposals& exclusion() const { return excluded_; }
    [[nodiscard]] const OrdovanRunHistory& history() const { return history_; }
    /// Newest first, at most 5.
    [[nodiscard]] const std::vector<Url>& recentFolders() const { return recentFolders_; }
    /// The state of the preview in words.
    [[nodiscard]] OrdovanPreviewStatus status() const;

    // Preview.
    /// Finds out whether there is something at this place, links followed, that is no regular file and so may be
    /// previewed. Looks on a background task; `done` is called once, unless this object is gone by then.
    void findFolder(const Url& place, std::function<void(bool isThere)> done);
    /// Makes a folder the chosen one (links in its path resolved) and previews it. The path is kept byte for byte.
    /// `depth`: how much of this preview, and of those after it, is made.
    void chooseFolder(const Url& folder, PreviewDepth depth = PreviewDepth::plan);
    /// Previews the chosen folder anew; a preview under way is dropped. Without a chosen folder nothing happens.
    void preview();
    /// Drops the preview under way: the phase is then `ready` where the folder has a plan, else `idle`. An interrupted
    /// run that it was bringing to its end waits for the next preview or run.
    void cancelPreview();
    /// Applies from the next preview on.
    void setSettingOverrides(const SettingOverrides& overrides) { overrides_ = overrides; }

    // Selection.
    /// The ticked proposals in plan order.
    [[nodiscard]] std::vector<OrdovanFileProposal> selectedProposals() const;
    /// Ticks or unticks one proposal.
    void toggle(const std::string& proposalID);
    /// The same with its place in the plan. Constant time.
    void toggle(std::size_t proposal);
    /// Unticks exactly these proposals. Ids that the plan lacks are forgotten at the next preview.
    void setExcluded(const std::unordered_set<std::string>& proposalIDs);
    /// The same with a bit for each proposal of the plan.
    void setExcludedProposals(std::vector<bool> proposals);
    /// Ticks the files last changed more than this many days ago, and unticks the others.
    void tickOlderThan(double days);

    // Export.
    /// Writes the plan of the chosen folder, and what of it is ticked, to a file, on a background task: whole or not at
    /// all. A regular file of that name is replaced (the user was asked). False without a plan of the chosen folder, or
    /// while another export goes on. True when it was started; `planExported` tells how it went.
    bool exportPlan(const Url& file, OrdovanPlanExportFormat format);

    // Duplicates and large files.
    /// Looks for files of equal content among the previewed ones. False without a preview of the chosen folder, or
    /// while a search goes on. True when a search was started; it has ended when `isScanningDuplicates` is false again.
    bool findDuplicates();
    /// Drops the search under way; what an earlier one found stays. A file being read is left in the middle.
    void cancelDuplicateSearch();
    /// Keeps this copy of a group of the report. False when there is no such group, or it has no such file.
    bool keep(std::string_view path, const std::string& groupID);
    /// Chooses the copy to keep in every group, also where one was chosen by hand.
    void autoPick(OrdovanKeepPolicy policy);
    /// The largest of the previewed files, as `OrdovanLargeFiles::top` finds them; none without a preview of the
    /// chosen folder.
    [[nodiscard]] std::vector<OrdovanInventoryEntry> largeFiles(std::int64_t limit, std::int64_t minimumBytes) const;
    /// Reads the beginnings of files, to show what is in them.
    [[nodiscard]] FileLooks& looks() { return looks_; }

    // Runs. One at a time: while `isApplying` or `isTrashing`, these do nothing and say false. They say true when a run
    // was started; it has ended when `isApplying` (of the first three) or `isTrashing` is false again.
    /// Organizes the ticked proposals. False without a plan of the chosen folder or with nothing ticked.
    bool organize();
    /// Puts back everything the journal of the chosen folder holds. False where it holds nothing.
    bool undo();
    /// Puts back the entries with these ids (their destination paths). False where there are none.
    bool undo(const std::unordered_set<std::string>& entryIDs);
    /// Moves every file of every group of the report to the Trash but the one to keep. False without a group.
    bool trashExtras();
    /// Moves these files to the Trash. False without a chosen folder or without files.
    bool trashBigFiles(std::vector<OrdovanFileTrasher::Item> items);
    /// Puts back everything that was trashed from the chosen folder. False where there is nothing.
    bool restore();
    /// Puts back the entries with these ids (their original paths), where they lie in the chosen folder. False where
    /// there are none.
    bool restore(const std::unordered_set<std::string>& entryIDs);
    /// Stops the run before its next file; what it did is recorded. A run with the Trash leaves a file in the middle of
    /// examining it. An interrupted run that it was bringing to its end waits for the next preview or run.
    void cancelRun();

    // Records.
    /// Empties the history, on disk as well; where that fails, it stays. `historyCleared` tells how it went.
    void clearHistory();
    /// Reads the history, the trash record and the recent folders again, as other processes have left them, on a
    /// background task. What can not be read stays as it is.
    void refreshRecords();
    /// Whether the record of a run could be saved now. It is tried by writing a small file where records are kept and
    /// removing it: at once, on the calling thread, so not while an interface waits for it. No lock is taken; what goes
    /// wrong later is told by `journalWarning` and `journalUnsaved`.
    [[nodiscard]] bool canSaveRecords() const;

Q_SIGNALS:
    void phaseChanged();
    void rootURLChanged();
    void planChanged();
    void inventoryChanged();
    void partialScanChanged();
    void isApplyingChanged();
    void lastReportChanged();
    void recoverableJournalChanged();
    void trashRecordChanged();
    void recoverableCountChanged();
    void duplicateReportChanged();
    void duplicateKeepersChanged();
    void isScanningDuplicatesChanged();
    void isTrashingChanged();
    void lastTrashReportChanged();
    void journalWarningChanged();
    void runRefusalChanged();
    void interruptedRunChanged();
    void rulesChanged();
    void groupByMonthChanged();
    void includeHiddenChanged();
    void excludedChanged();
    void historyChanged();
    void recentFoldersChanged();
    /// A preview goes on: files and folders met so far. At most some ten times a second, and at the end of the scan.
    void previewProgressed(quint64 files, quint64 folders);
    /// A preview or a run brings an interrupted run to its end, before anything else: files of that run done, of how
    /// many. At most some ten times a second, and at the end.
    void recoveryProgressed(quint64 done, quint64 total);
    /// An export has ended: `error` is empty when the file was saved, else a sentence for the user.
    void planExported(const QString& error);
    /// Clearing the history has ended: `error` is empty when it is empty, else a sentence for the user.
    void historyCleared(const QString& error);
    /// An organize or an undo goes on: files done, of how many. At most some ten times a second.
    void runProgressed(quint64 done, quint64 total);
    /// A run with the Trash goes on: files and their bytes done, of how many. At most some ten times a second.
    void trashProgressed(quint64 filesDone, quint64 filesTotal, quint64 bytesDone, quint64 bytesTotal);
    /// A search for duplicates goes on: files that share their size with another, and their bytes. At most some ten
    /// times a second.
    void duplicateSearchProgressed(quint64 filesDone, quint64 filesTotal, quint64 bytesDone, quint64 bytesTotal);

private:
    using Signal = void (TidyViewModel::*)();
    template <class T>
    void set(T& field, T value, Signal changed);
    template <class T>
    void publish(std::shared_ptr<const T>& field, std::shared_ptr<const T> value, Signal changed);

    void refreshInputs();
    void rest();
    void completePreview(const PreviewInputs& inputs, PreviewResult result);
    void adoptResolved(const Url& chosen, const Url& resolved);
    void addRecentFolder(const Url& folder);
    void adoptRecentFolders(ordovan::RecentFoldersStore::Result result);
    [[nodiscard]] std::function<void(std::uint64_t files, std::uint64_t folders, bool isLast)> previewProgress();
    [[nodiscard]] RecoveryControl recoveryControl(std::shared_ptr<const CancelFlag> flag);
    template <class Tell>
    [[nodiscard]] std::function<void(std::size_t done, std::size_t total)> thinnedOut(const Tell& tell) const;
    [[nodiscard]] std::vector<bool> changedSince(double epoch) const;
    [[nodiscard]] std::unordered_map<std::string, double> modificationTimes() const;

    [[nodiscard]] bool hasPreview() const;
    void completeSearch(const Url& root, const std::shared_ptr<const OrdovanInventory>& searched,
                        DuplicateSearch::Found found);
    void adoptDuplicates(std::optional<DuplicateSearch::Found> found);

    [[nodiscard]] bool isRunning() const { return isApplying_ || isTrashing_; }
    void beginAnyRun();
    void endAnyRun(bool refused);
    void adoptRecovered(const Url& root, RecoveredRun recovered);
    void tell(std::shared_ptr<const OrdovanInterruptedRun> run);
    [[nodiscard]] bool isNews(const std::shared_ptr<const OrdovanInterruptedRun>& told);
    void warnOfRecord(bool wasUnsaved, std::optional<std::string> warning);
    void keepRecord(bool isKept, const ordovan::Uuid& run);
    [[nodiscard]] RecordsInMemory recordsInMemory() const;
    void adoptHistory(const OrdovanRunRecord& run, ordovan::HistoryStore::Result result);
    void warnOfHistory(std::optional<std::string> warning);
    template <class Work>
    void startTrashRun(Work work);
    bool startRestore(std::vector<OrdovanTrashEntry> entries);
    void completeTrashRun(const Url& root, TrashResult result);
    void adoptTrashRecord(ordovan::TrashRecordStore::Known known);
    void adoptLoadedTrash(ordovan::TrashRecordStore::Known known);
    /// What of a record can be put back in a folder.
    struct Restorable {
        std::shared_ptr<const OrdovanTrashRecord> record;
        Url root;
        std::vector<OrdovanTrashEntry> entries;
    };
    [[nodiscard]] static Restorable restorable(std::shared_ptr<const OrdovanTrashRecord> record, const Url& root);
    /// Does `look` with a survey in the background, then `done` with what that made.
    template <class Look, class Done>
    void survey(Look look, Done done);
    [[nodiscard]] RunInputs beginRun();
    [[nodiscard]] OrdovanRunControl runControl();
    bool startUndo(OrdovanJournal entries);
    void completeRun(const Url& root, RunResult result);
    void adoptJournal(const Url& root, std::shared_ptr<const OrdovanJournal> journal,
                      std::shared_ptr<const OrdovanJournal> unsaved, std::uint64_t revision);
    void adoptLoadedJournal(const Url& root, ordovan::JournalStore::Loaded loaded,
                            const std::shared_ptr<const OrdovanJournal>& unsavedBefore);
    [[nodiscard]] std::shared_ptr<const OrdovanJournal> unsavedJournal(const Url& root) const;

    /// A call that does nothing once this object is gone. For calls on the controller's thread.
    template <class Call>
    [[nodiscard]] auto whileAlive(Call call) const;

    const TidyPorts ports_;
    const Options options_;
    FileLooks looks_{ports_.tasks, ports_.contents};

    Phase phase_;
    std::optional<Url> rootURL_;
    bool isResolved_ = false;  // whether rootURL_ is a path without links
    std::optional<Url> planRoot_;
    std::shared_ptr<const OrdovanPlanResult> plan_;
    std::shared_ptr<const OrdovanInventory> inventory_;
    std::shared_ptr<const PlanIndex> planIndex_;
    bool caseInsensitive_ = true;
    bool partialScan_ = false;
    bool isApplying_ = false;
    std::shared_ptr<const OrdovanExecutionReport> lastReport_;
    std::shared_ptr<const OrdovanJournal> journal_;
    std::optional<Url> journalRoot_;
    std::uint64_t journalRevision_ = 0;
    std::shared_ptr<const OrdovanTrashRecord> trashRecord_ = std::make_shared<const OrdovanTrashRecord>();
    std::uint64_t trashRevision_ = 0;
    Restorable restorable_;  // as it was found last
    std::size_t recoverableCount_ = 0;
    std::uint64_t surveys_ = 0;
    std::uint64_t adoptedSurvey_ = 0;
    std::shared_ptr<const OrdovanDuplicateReport> duplicateReport_;
    std::vector<Url> unreadFiles_;
    std::unordered_map<std::string, std::string> duplicateKeepers_;
    bool isScanningDuplicates_ = false;
    bool isTrashing_ = false;
    std::shared_ptr<const OrdovanTrashReport> lastTrashReport_;
    std::optional<std::string> journalWarning_;
    std::optional<std::string> runRefusal_;
    std::shared_ptr<const OrdovanInterruptedRun> interruptedRun_;
    std::vector<std::shared_ptr<const OrdovanInterruptedRun>> moreInterruptedRuns_;  // to be told after it
    std::vector<std::shared_ptr<const OrdovanInterruptedRun>> toldRuns_;             // each as it was told last
    std::vector<ordovan::Uuid> ownRuns_;  // of which the record still stands, though they came to their end
    OrdovanRuleSet rules_;
    bool groupByMonth_ = false;
    bool includeHidden_ = false;
    SettingOverrides overrides_;
    PreviewDepth depth_ = PreviewDepth::plan;
    ExcludedProposals excluded_;
    OrdovanRunHistory history_;
    std::uint64_t historyRevision_ = 0;
    std::vector<OrdovanRunRecord> unsavedRuns_;  // newest first
    std::vector<Url> recentFolders_;
    std::uint64_t recentRevision_ = 0;

    bool isExporting_ = false;
    std::shared_ptr<CancelFlag> scanFlag_;
    std::shared_ptr<CancelFlag> recoveryFlag_;  // of the previews of one folder
    std::shared_ptr<std::mutex> recoveryTurn_ = std::make_shared<std::mutex>();
    std::shared_ptr<CancelFlag> searchFlag_;
    std::shared_ptr<CancelFlag> runFlag_;
    /// What could not be saved, for each folder: kept until it can be, or until the program ends.
    std::unordered_map<std::string, std::shared_ptr<const OrdovanJournal>> unsavedJournals_;
    /// The part of the trash record that could not be saved; never null.
    std::shared_ptr<const OrdovanTrashRecord> unsavedTrash_ = trashRecord_;
    std::shared_ptr<const bool> alive_ = std::make_shared<const bool>(true);
};

template <class T>
void TidyViewModel::set(T& field, T value, Signal changed) {
    if (field == value) return;
    field = std::move(value);
    Q_EMIT(this->*changed)();
}

template <class T>
void TidyViewModel::publish(std::shared_ptr<const T>& field, std::shared_ptr<const T> value, Signal changed) {
    if (field == value || (field && value && *field == *value)) return;
    field = std::move(value);
    Q_EMIT(this->*changed)();
}

template <class Call>
auto TidyViewModel::whileAlive(Call call) const {
    return [alive = std::weak_ptr(alive_), call = std::move(call)](auto&&... arguments) {
        if (alive.lock()) call(std::forward<decltype(arguments)>(arguments)...);
    };
}
