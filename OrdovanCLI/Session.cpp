#include "OrdovanCLI/Session.h"

#include "OrdovanApp/stores/HeldLock.h"
#include "OrdovanCLI/Format.h"
#include "OrdovanCLI/TextPage.h"
#include "OrdovanCore/platform/Interrupts.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <ranges>
#include <utility>

namespace ordovan::cli {
namespace {

/// The program ends after its run, so nobody would see a second preview.
constexpr TidyViewModel::Options withoutRepreviews = {.repreviewsAfterRuns = false};

/// Twice as long as saving a journal of a million entries takes.
constexpr LockPatience forTheRecords = {.longest = std::chrono::seconds(4), .endsWithASignal = true};

/// The settings file's lock is waited for two seconds.
constexpr std::chrono::seconds longestFinish{3};

template <class IsRunning>
void waitWhile(IsRunning isRunning) {
    while (isRunning()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

}  // namespace

Session::Session(Console& console) : console_(console), model_(environment_.ports(), withoutRepreviews) {
    auto* notifier = new QSocketNotifier(interrupts::descriptor(), QSocketNotifier::Read, &model_);
    QObject::connect(notifier, &QSocketNotifier::activated, &model_, [this] { stopWhatRuns(); });
}

void Session::stopWhatRuns() {
    interrupts::drain();
    if (model_.isApplying() || model_.isTrashing()) {
        if (!std::exchange(isStopping_, true)) console_.remark("Stopping after the file in work.");
        return model_.cancelRun();
    }
    interrupts::letThemEndTheProgram();
    model_.isScanningDuplicates() ? model_.cancelDuplicateSearch() : model_.cancelPreview();
}

bool Session::areRecordsHeldElsewhere() const {
    return isHeldElsewhere(lockFolderWithin(forTheRecords)(recordsFolder()));
}

void Session::preview(const Url& folder, const TidyViewModel::SettingOverrides& overrides, PreviewDepth depth) {
    console_.progress(OrdovanPreviewStatus::scanning().pulseSummary());
    model_.setSettingOverrides(overrides);
    model_.chooseFolder(folder, depth);
    waitWhile([&] { return model_.phase().kind == TidyViewModel::Phase::Case::scanning; });
    console_.clearProgress();
    tellOfInterruptedRun();
}

/// One message: what became of that run, and below it the files it did not simply leave alone; first those that the
/// user has to look at.
void Session::tellOfInterruptedRun() {
    constexpr std::size_t most = 20;
    const auto run = model_.interruptedRun();
    if (!run) return;
    auto outcomes = run->outcomes;
    std::ranges::stable_partition(outcomes,
                                  [](const auto& outcome) { return outcome.status == OrdovanExecutionStatus::failed; });
    std::string block = run->summary();
    for (const OrdovanExecutionOutcome& outcome : outcomes | std::views::take(most)) {
        block += "\n  ";
        appendSafe(block, below(outcome.source.path(), run->root.path()));
        block += ": ";
        appendSafe(block, outcome.message);
    }
    if (outcomes.size() > most) {
        block += "\n  and ";
        appendCount(block, outcomes.size() - most, "more file");
    }
    console_.warn(block);
    model_.dismissInterruptedRun();
    tellOfInterruptedRun();  // of the next one, if any
}

std::string Session::exportPlan(const Url& file, OrdovanPlanExportFormat format) {
    std::optional<std::string> failure;
    const auto told = QObject::connect(&model_, &TidyViewModel::planExported, &model_,
                                       [&](const QString& error) { failure = error.toStdString(); });
    if (model_.exportPlan(file, format)) waitWhile([&] { return !failure.has_value(); });
    QObject::disconnect(told);
    return failure.value_or("");
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

bool Session::finish() {
    interrupts::letThemEndTheProgram();
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
