#pragma once

#include "OrdovanApp/screens/RunNotices.h"

class QPushButton;

/// The lines above the inbox's pages; those of a run that organized have an undo, and there is one about an export.
class SmartInboxNotices : public RunNotices {
    Q_OBJECT

public:
    SmartInboxNotices(const AppContext& context, QWidget* parent);

    /// The run that starts next organizes; any other puts files back.
    void expectOrganize() { organizes_ = true; }

private:
    void followRun();
    void showReport();
    void undoRun();
    void refreshUndo();
    void showExport(const QString& error);

    Banner* export_;
    QPushButton* undo_;
    bool organizes_ = false;
    bool running_ = false;
    bool offersUndo_ = false;
};
