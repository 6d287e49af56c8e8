#include "OrdovanApp/controller/RunRecovery.h"
#include "OrdovanApp/controller/TidyViewModel.h"

#include <algorithm>
#include <optional>
#include <ranges>
#include <utility>

// The part of the controller that deals with what is stored about runs.

namespace {

struct Reread {
    std::optional<OrdovanRunHistory> history;
    ordovan::TrashRecordStore::Known trash;
    ordovan::RecentFoldersStore::Result recentFolders;
};

}  // namespace

RecordsInMemory TidyViewModel::recordsInMemory() const {
    return {.journal = journalRoot_ == rootURL_ ? journal_ : nullptr,
            .unsavedJournal = unsavedJournal(*rootURL_),
            .trash = {trashRecord_, unsavedTrash_},
            .unsavedRuns = unsavedRuns_,
            .ownRuns = ownRuns_};
}

/// Takes over what became of a run that had been interrupted in a folder.
void TidyViewModel::adoptRecovered(const Url& root, RecoveredRun recovered) {
    if (recovered.journal) {
        adoptJournal(root, std::move(recovered.journal->journal), std::move(recovered.journal->unsaved),
                     recovered.journal->revision);
        warnOfRecord(false, std::move(recovered.journal->warning));
    }
    if (recovered.trash) {
        adoptTrashRecord(std::move(recovered.trash->known));
        warnOfRecord(false, std::move(recovered.trash->warning));
    }
    if (recovered.run) adoptHistory(*recovered.run, std::move(recovered.history));
    if (recovered.told && isNews(recovered.told)) tell(std::move(recovered.told));
}

/// A run of which more is known now takes its own place, any other waits until those before it are dismissed.
void TidyViewModel::tell(std::shared_ptr<const OrdovanInterruptedRun> run) {
    const bool isKnown = !run->isUnreadable;
    if (!interruptedRun_ || (isKnown && interruptedRun_->id == run->id)) {
        publish(interruptedRun_, std::move(run), &TidyViewModel::interruptedRunChanged);
        return;
    }
    const auto same = [&](const auto& waiting) { return isKnown && waiting->id == run->id; };
    const auto waiting = std::ranges::find_if(moreInterruptedRuns_, same);
    if (waiting == moreInterruptedRuns_.end()) {
        moreInterruptedRuns_.push_back(std::move(run));
    } else {
        *waiting = std::move(run);
    }
}

/// False for a run that was told in this way before: its record still stands, and each preview finds it again.
bool TidyViewModel::isNews(const std::shared_ptr<const OrdovanInterruptedRun>& told) {
    if (told->isUnreadable) return true;
    const auto idOf = [](const auto& run) { return run->id; };
    const auto known = std::ranges::find(toldRuns_, told->id, idOf);
    if (known == toldRuns_.end()) {
        toldRuns_.push_back(told);
        return true;
    }
    return *std::exchange(*known, told) != *told;
}

/// Warns of a record that could not be stored. Without a warning, the one from bringing an earlier run to its end
/// stays, but for the case that what could not be stored then is stored now.
void TidyViewModel::warnOfRecord(bool wasUnsaved, std::optional<std::string> warning) {
    if (!warning && !(wasUnsaved && !journalUnsaved())) return;
    set(journalWarning_, std::move(warning), &TidyViewModel::journalWarningChanged);
}

void TidyViewModel::dismissInterruptedRun() {
    std::shared_ptr<const OrdovanInterruptedRun> next;
    if (!moreInterruptedRuns_.empty()) {
        next = std::move(moreInterruptedRuns_.front());
        moreInterruptedRuns_.erase(moreInterruptedRuns_.begin());
    }
    publish(interruptedRun_, std::move(next), &TidyViewModel::interruptedRunChanged);
}

/// Remembers a run whose record still stands, so that it is not taken for an interrupted one.
void TidyViewModel::keepRecord(bool isKept, const ordovan::Uuid& run) {
    if (isKept) ownRuns_.push_back(run);
}

/// Takes over the history that a run led to; a run that could not be stored is kept until it can be.
void TidyViewModel::adoptHistory(const OrdovanRunRecord& run, ordovan::HistoryStore::Result result) {
    if (result.saved) {
        unsavedRuns_.clear();
    } else {
        unsavedRuns_.insert(unsavedRuns_.begin(), run);
        result.history = history_.adding(run);
        warnOfHistory(std::move(result.warning));
    }
    if (result.revision > historyRevision_) {
        historyRevision_ = result.revision;
        set(history_, std::move(result.history), &TidyViewModel::historyChanged);
    }
}

/// A warning about what can be undone or put back matters more than one about the log.
void TidyViewModel::warnOfHistory(std::optional<std::string> warning) {
    if (!journalWarning_) set(journalWarning_, std::move(warning), &TidyViewModel::journalWarningChanged);
}

void TidyViewModel::clearHistory() {
    ports_.tasks.compute([&history = ports_.history] { return history.clear(); },
                         whileAlive([this](ordovan::HistoryStore::Result result) {
                             if (result.saved && result.revision > historyRevision_) {
                                 historyRevision_ = result.revision;
                                 unsavedRuns_.clear();
                                 set(history_, std::move(result.history), &TidyViewModel::historyChanged);
                             }
                             Q_EMIT historyCleared(QString::fromStdString(result.warning.value_or("")));
                         }));
}

template <class Look, class Done>
void TidyViewModel::survey(Look look, Done done) {
    struct Found {
        ordovan::RecoverySurvey survey;
        decltype(look(std::declval<const ordovan::RecoverySurvey&>())) seen;
    };
    ports_.tasks.compute(
        [&fs = ports_.fileSystem, folder = rootURL_, journal = journal_, trash = trashRecord_, look = std::move(look)] {
            ordovan::RecoverySurvey survey = ordovan::RecoverySurvey::of(folder, journal, trash, fs);
            auto seen = look(survey);
            return Found{std::move(survey), std::move(seen)};
        },
        whileAlive([this, done = std::move(done), number = ++surveys_](Found found) {
            const bool isOfRecords = found.survey.journal == journal_ && found.survey.trash == trashRecord_;
            if (isOfRecords && number > adoptedSurvey_) {
                adoptedSurvey_ = number;
                set(recoverableCount_, found.survey.recoverable(), &TidyViewModel::recoverableCountChanged);
            }
            done(std::move(found));
        }));
}

void TidyViewModel::surveyRecovery(std::function<void(ordovan::RecoverySurvey)> done) {
    const auto names = [folder = rootURL_](const ordovan::RecoverySurvey& survey) {
        return ordovan::RecoverySurvey::namesOf(folder, survey.journal.get(), *survey.trash);
    };
    survey(names, [done = std::move(done)](auto found) {
        found.survey.names = std::move(found.seen);
        done(std::move(found.survey));
    });
}

void TidyViewModel::countRecoverable() {
    if (!rootURL_) return;
    const auto entries = [root = *rootURL_](const ordovan::RecoverySurvey& survey) {
        return restorable(survey.trash, root);
    };
    survey(entries, [this](auto found) { restorable_ = std::move(found.seen); });
}

void TidyViewModel::refreshRecords() {
    ports_.tasks.compute(
        [ports = ports_, known = ordovan::TrashRecordStore::Known{trashRecord_, unsavedTrash_},
         folders = recentFolders_] {
            return Reread{.history = ports.history.loadReadable(),
                          .trash = ports.trashRecords.load(known),
                          .recentFolders = ports.recentFolders.reload(folders)};
        },
        whileAlive([this, revision = historyRevision_](Reread found) {
            adoptLoadedTrash(std::move(found.trash));
            // What was read before a run or a change ended is older than what that left here.
            if (found.history && revision == historyRevision_) {
                for (const OrdovanRunRecord& run : std::views::reverse(unsavedRuns_)) {
                    // Another process may have found its record and stored it.
                    const auto& stored = found.history->records;
                    const bool isStored = std::ranges::find(stored, run.id, &OrdovanRunRecord::id) != stored.end();
                    if (!isStored) found.history = found.history->adding(run);
                }
                set(history_, std::move(*found.history), &TidyViewModel::historyChanged);
            }
            adoptRecentFolders(std::move(found.recentFolders));
        }));
}

bool TidyViewModel::journalUnsaved() const {
    return !unsavedJournals_.empty() || !unsavedTrash_->entries.empty();
}

bool TidyViewModel::canSaveRecords() const {
    return ports_.journals.canSave();
}
