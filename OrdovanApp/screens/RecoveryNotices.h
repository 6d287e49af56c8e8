#pragma once

#include "OrdovanApp/screens/AppContext.h"
#include "OrdovanApp/theme/Banner.h"
#include "OrdovanCore/Executor.h"

#include <QString>
#include <QWidget>

/// The lines above the Recovery Center: what its last run put back with its problems, warnings about records, and why a
/// run was refused.
class RecoveryNotices : public QWidget {
    Q_OBJECT

public:
    RecoveryNotices(const AppContext& context, QWidget* parent);

    /// "Put back 3 files from the Trash; 1 skipped, 2 failed."
    [[nodiscard]] static QString restoreSummary(const OrdovanExecutionReport& report);

    /// Follows the beginning and the end of a run. `isOwn`: it puts files back.
    void followRun(bool isOwn);

private:
    Banner* addBanner(Banner::Kind kind, const QString& name);
    void showReport(const OrdovanExecutionReport& report, const QString& summary);
    void showLastReport();
    void tell(Banner* banner, const QString& text);
    void showWarning();
    void showRefusal();
    void refreshRoom();

    AppContext context_;
    Banner* result_;
    Banner* warning_;
    Banner* refusal_;
    bool undoes_ = false;
    bool restores_ = false;
};
