#include "OrdovanCLI/Session.h"

#include "OrdovanApp/stores/HeldLock.h"
#include "OrdovanCLI/Format.h"
#include "OrdovanCLI/Options.h"
#include "OrdovanCLI/TextPage.h"
#include "OrdovanCore/platform/Interrupts.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <ranges>
#include <system_error>
#include <utility>

namespace ordovan::cli {
namespace {

/// The program ends after its run, so nobody would see a second preview.
constexpr TidyViewModel::Options withoutRepreviews = {.repreviewsAfterRuns = false};

/// Shows how far bringing an interrupted run to its end is, while this object lives.
class RecoveryProgress {
public:
    RecoveryProgress(TidyViewModel& model, Console& console)
        : shown_(QObject::connect(&model, &TidyViewModel::recoveryProgressed, &model,
                                  [&console](quint64 done, quint64 total) {
                                      if (done == 0) console.clearProgress();  // the next line is shown at once
                                      std::string line = "Putting an interrupted run in order… ";
                                      appendInteger(line, static_cast<std::int64_t>(done));
                                      line += " of ";
                                      appendCount(line, total, "file");
                                      console.progress(line);
                                  })) {}
    ~RecoveryProgress() { QObject::disconnect(shown_); }
    RecoveryProgress(const RecoveryProgress&) = delete;
    RecoveryProgress& operator=(const RecoveryProgress&) = delete;

private:
    QMetaObject::Connection shown_;
};

/// Twice as long as saving a journal of a million entries takes.
constexpr std::chrono::seconds longestForTheRecords{4};

/// The settings file's lock is waited for two seconds.
constexpr std::chrono::seconds longestFinish{3};

template <class IsRunning>
void waitWhile(IsRunning isRunning) {
    while (isRunning()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

}  // namespace

Session::Session(Console& console) : console_(console), model_(ports(), withoutRepreviews) {
    auto* notifier = new QSocketNotifier(interrupts::descriptor(), QSocketNotifier::Read, &model_);
    QObject::connect(notifier, &QSocketNotifier::activated, &model_, [this] { stopWhatRuns(); });
}

void Session::stopWhatRuns() {
    interrupts::drain();
    if (model_.isApplying() || model_.isTrashing()) {
        if (!std::exchange(isStopping_, true)) console_.remark("Stopping after the file in work.");
        return model_.cancelRun();
    }
    interrupts::letThemEndTheProgram(exitInterrupted);
    model_.isScanningDuplicates() ? model_.cancelDuplicateSearch() : model_.cancelPreview();
}

bool Session::areRecordsHeldElsewhere() const {
    return isHeldElsewhere(
        lockFolderWithin({.longest = longestForTheRecords, .isEnded = interrupts::requested})(recordsFolder()));
}

bool Session::areSettingsHeldElsewhere() const {
    return isHeldElsewhere(tryLockFolder(settingsFolder()));
}

void Session::preview(const Url& folder, const TidyViewModel::SettingOverrides& overrides, PreviewDepth depth) {
    const RecoveryProgress recovery(model_, console_);
    console_.progress(OrdovanPreviewStatus::scanning().pulseSummary());
    model_.setSettingOverrides(overrides);
    model_.chooseFolder(folder, depth);
    waitWhile([&] { return model_.phase().kind == TidyViewModel::Phase::Case::scanning; });
    console_.clearProgress();
    tellOfInterruptedRun();
}

/// One message: what became of that run, and below it the files it did not simply leave alone. First come those that
/// the user has to look at: all of them, since nothing may tell of them again.
void Session::tellOfInterruptedRun() {
    constexpr std::size_t mostOthers = 20;
    const auto run = model_.interruptedRun();
    if (!run) return;
    auto outcomes = run->outcomes;
    const auto others = std::ranges::stable_partition(
        outcomes, [](const auto& outcome) { return outcome.status == OrdovanExecutionStatus::failed; });
    const std::size_t shown = outcomes.size() - others.size() + std::min(others.size(), mostOthers);
    std::string block = run->summary();
    for (const OrdovanExecutionOutcome& outcome : outcomes | std::views::take(shown)) {
        block += "\n  ";
        appendSafe(block, below(outcome.source.path(), run->root.path()));
        block += ": ";
        appendSafe(block, outcome.message);
    }
    if (outcomes.size() > shown) {
        block += "\n  and ";
        appendCount(block, outcomes.size() - shown, "more file");
    }
    console_.warn(block);
    model_.dismissInterruptedRun();
    tellOfInterruptedRun();  // of the next one, if any
}

std::optional<std::string> Session::exportPlan(const Url& file, OrdovanPlanExportFormat format) {
    std::optional<std::string> answer;
    const auto told = QObject::connect(&model_, &TidyViewModel::planExported, &model_,
                                       [&](const QString& error) { answer = error.toStdString(); });
    const bool isStarted = model_.exportPlan(file, format);
    if (isStarted) waitWhile([&] { return !answer.has_value(); });
    QObject::disconnect(told);
    if (!isStarted) return "There is no plan to save.";
    return answer->empty() ? std::nullopt : answer;
}

bool Session::findDuplicates() {
    constexpr std::string_view verb = "Hashing files to find exact duplicates";
    const auto shown =
        QObject::connect(&model_, &TidyViewModel::duplicateSearchProgressed, &model_,
                         [&](quint64 filesDone, quint64 filesTotal, quint64 bytesDone, quint64 bytesTotal) {
                             showProgress(verb, filesDone, filesTotal, bytesDone, bytesTotal);
                         });
    console_.progress(std::string(verb) + "…");
    model_.findDuplicates();
    waitWhile([&] { return model_.isScanningDuplicates(); });
    QObject::disconnect(shown);
    console_.clearProgress();
    return !interrupts::requested() && model_.duplicateReport() != nullptr;
}

bool Session::run(std::string_view verb, const std::function<bool(TidyViewModel&)>& start) {
    const RecoveryProgress recovery(model_, console_);
    const auto shown =
        QObject::connect(&model_, &TidyViewModel::runProgressed, &model_, [&](quint64 done, quint64 total) {
            std::string line = std::string(verb) + "… ";
            appendInteger(line, static_cast<std::int64_t>(done));
            line += " of ";
            appendInteger(line, static_cast<std::int64_t>(total));
            console_.progress(line);
        });
    const auto trashShown =
        QObject::connect(&model_, &TidyViewModel::trashProgressed, &model_,
                         [&](quint64 filesDone, quint64 filesTotal, quint64 bytesDone, quint64 bytesTotal) {
                             showProgress(verb, filesDone, filesTotal, bytesDone, bytesTotal);
                         });
    const bool started = start(model_);
    waitWhile([&] { return model_.isApplying() || model_.isTrashing(); });
    QObject::disconnect(shown);
    QObject::disconnect(trashShown);
    console_.clearProgress();
    tellOfInterruptedRun();
    return started;
}

bool Session::canReachRecords() const {
    namespace fs = std::filesystem;
    std::error_code unknown;
    fs::path place = recordsFolder().path();
    while (fs::symlink_status(place, unknown).type() == fs::file_type::not_found && place.has_relative_path()) {
        place = place.parent_path();
    }
    return fs::is_directory(place, unknown);
}

std::optional<std::string_view> Session::settingsProblem() {
    if (!environment_.couldReadSettings()) return "The settings couldn't be read; without them there are no rules.";
    if (!rules().wasWhole()) return "Not all of your rules could be read.";
    return std::nullopt;
}

bool Session::finish() {
    interrupts::letThemEndTheProgram(exitInterrupted);
    return environment_.waitForWork(longestFinish);
}

void Session::showProgress(std::string_view verb, quint64 filesDone, quint64 filesTotal, quint64 bytesDone,
                           quint64 bytesTotal) {
    std::string line = std::string(verb) + "… ";
    appendInteger(line, static_cast<std::int64_t>(filesDone));
    line += " of ";
    appendCount(line, filesTotal, "file");
    line += ", ";
    appendSize(line, static_cast<std::int64_t>(bytesDone));
    line += " of ";
    appendSize(line, static_cast<std::int64_t>(bytesTotal));
    console_.progress(line);
}

}  // namespace ordovan::cli
