#pragma once

#include "OrdovanApp/screens/RunNotices.h"
#include "OrdovanCore/Executor.h"

/// The lines above the Recovery Center; of runs those that put files back from there.
class RecoveryNotices : public RunNotices {
    Q_OBJECT

public:
    RecoveryNotices(const AppContext& context, QWidget* parent);

    /// "Put back 3 files from the Trash; 1 skipped, 2 failed."
    [[nodiscard]] static QString restoreSummary(const OrdovanExecutionReport& report);

    /// Follows the beginning and the end of a run. `isOwn`: it puts files back.
    void followRun(bool isOwn);

private:
    void showLastReport();

    bool undoes_ = false;
    bool restores_ = false;
};
