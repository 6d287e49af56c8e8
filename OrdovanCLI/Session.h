#pragma once

#include "OrdovanApp/controller/SystemEnvironment.h"
#include "OrdovanApp/controller/TidyViewModel.h"
#include "OrdovanCLI/Console.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace ordovan::cli {

/// The controller with the real world around it, driven step by step: each step waits on the event loop until the
/// controller has done it. Needs a QCoreApplication.
///
/// A request to stop ends a preview or a search at once, and a run before its next file.
class Session {
public:
    explicit Session(Console& console);

    [[nodiscard]] TidyPorts ports() { return environment_.ports(); }
    [[nodiscard]] AppSettings& settings() { return environment_.settings(); }
    [[nodiscard]] RuleStore& rules() { return environment_.rules(); }
    [[nodiscard]] TidyViewModel& model() { return model_; }
    [[nodiscard]] const Url& recordsFolder() const { return environment_.locations().recordsFolder; }

    /// True when another process keeps the lock of the shared records for seconds: a record could not be saved then.
    /// Waits for it, at most until a request to stop.
    [[nodiscard]] bool areRecordsHeldElsewhere() const;

    [[nodiscard]] const Url& settingsFolder() const { return environment_.locations().settingsFolder; }
    /// True when another process keeps the lock of the settings now.
    [[nodiscard]] bool areSettingsHeldElsewhere() const;

    /// Previews a folder as far as `depth` says, and tells of a run that was found interrupted in it. Afterwards the
    /// controller's phase says whether it failed.
    void preview(const Url& folder, const TidyViewModel::SettingOverrides& overrides, PreviewDepth depth);

    /// Saves the plan and its selection in a file. A sentence when that fails; else nothing.
    [[nodiscard]] std::optional<std::string> exportPlan(const Url& file, OrdovanPlanExportFormat format);

    /// Compares the previewed files. False when it was interrupted; else the controller has the report.
    [[nodiscard]] bool findDuplicates();

    /// Starts a run by `start` (one of the controller's operations) and waits for its end, showing `verb`
    /// ("Organizing") and how far it is. False when the controller did not start one.
    bool run(std::string_view verb, const std::function<bool(TidyViewModel&)>& start);

    /// False when the folder of the records can not be reached, as on a disk that is not there: that nothing is
    /// recorded can not be told then.
    [[nodiscard]] bool canReachRecords() const;
    /// Why the settings and rules are not those the user has made, as a sentence; nothing when they are.
    [[nodiscard]] std::optional<std::string_view> settingsProblem();
    /// The stored documents that could not be used and were set aside.
    [[nodiscard]] auto allSetAside() const { return environment_.allSetAside(); }

    /// Waits for what is still being stored in the background, such as the list of recent folders; a request to stop
    /// ends the program at once. False when it takes too long.
    [[nodiscard]] bool finish();

private:
    void stopWhatRuns();
    void tellOfInterruptedRun();
    void showProgress(std::string_view verb, quint64 filesDone, quint64 filesTotal, quint64 bytesDone,
                      quint64 bytesTotal);

    Console& console_;
    SystemEnvironment environment_;
    TidyViewModel model_;
    bool isStopping_ = false;
};

}  // namespace ordovan::cli
