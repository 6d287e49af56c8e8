#pragma once

#include "OrdovanApp/screens/AppContext.h"
#include "OrdovanApp/theme/Banner.h"

#include <QWidget>

class QPushButton;

/// The lines above the inbox's pages: what the last run did with its problems and an undo, warnings about records, why
/// a run was refused, and how an export went.
class SmartInboxNotices : public QWidget {
    Q_OBJECT

public:
    SmartInboxNotices(const AppContext& context, QWidget* parent);

    /// The run that starts next organizes; any other puts files back.
    void expectOrganize() { organizes_ = true; }

private:
    Banner* addBanner(Banner::Kind kind, const QString& name);
    void refreshRoom();
    void followRun();
    void showReport();
    void undoRun();
    void refreshUndo();
    void showWarning();
    void showRefusal();
    void showExport(const QString& error);

    AppContext context_;
    Banner* run_;
    Banner* warning_;
    Banner* refusal_;
    Banner* export_;
    QPushButton* undo_;
    bool organizes_ = false;
    bool running_ = false;
    bool offersUndo_ = false;
};
