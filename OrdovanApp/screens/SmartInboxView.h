#pragma once

#include "OrdovanApp/screens/SectionView.h"

#include <QPointer>
#include <QTimer>

class EmptyState;
class ProgressStrip;
class QPushButton;
class Sheet;
class SmartInboxNotices;
class SmartInboxPlan;

/// The first section: choose a folder, see the plan, tick what moves, export the plan, organize, undo.
///
/// Shows one page for the state of the controller; the plan of a folder stays in sight while the same folder is
/// previewed again.
class SmartInboxView : public SectionView {
    Q_OBJECT

public:
    SmartInboxView(const AppContext& context, QWidget* parent = nullptr);

    /// Asks whether to organize the ticked files, and does. Nothing happens where there is nothing to organize.
    void requestOrganize();
    /// Asks where to save the plan, and does. Nothing happens without a preview.
    void requestExport();

private:
    void makePages();
    QWidget* makeScanning();
    void makeRescanning();
    static void beginScan(ProgressStrip* strip);
    void makeScanProgress(QWidget* place, ProgressStrip* strip);
    QWidget* makeFailed();
    QWidget* makeNothing();
    void connectModel();
    void refresh();
    void refreshHeader();
    void refreshRun();
    void refreshFoot();
    void showRescan();
    [[nodiscard]] QWidget* page() const;
    [[nodiscard]] bool showsPlanOfFolder() const;
    [[nodiscard]] Sheet* confirmation();
    void organize();

    QPushButton* choose_;
    SmartInboxNotices* notices_;
    QWidget* welcome_;
    QWidget* scanning_;
    ProgressStrip* scan_;
    QWidget* rescanning_;
    ProgressStrip* rescan_;  ///< of a folder whose last plan stays in sight
    QTimer rescanDelay_{this};
    EmptyState* failed_;
    EmptyState* nothing_;
    SmartInboxPlan* plan_;
    QPointer<Sheet> sheet_;
    bool organizes_ = false;
};
