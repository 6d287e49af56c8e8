#pragma once

#include "OrdovanApp/models/RecoveryModel.h"
#include "OrdovanApp/screens/SectionView.h"

#include <QPointer>

#include <string>

class ElidedLabel;
class EmptyState;
class FilterField;
class QPushButton;
class QStackedWidget;
class RecoveryNotices;
class RowsView;
class Sheet;

/// The section that takes back: organized files of the chosen folder go back where they came from, files in the Trash
/// back to where they lay.
///
/// What is not there any more is looked up in the background whenever the records change, the section is shown, or its
/// window becomes the active one.
class RecoveryView : public SectionView {
    Q_OBJECT

public:
    RecoveryView(const AppContext& context, QWidget* parent = nullptr);

protected:
    bool event(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    /// What the list looks like to its user.
    struct Sight {
        std::string current;
        int row = -1;
        int scroll = 0;
    };

    void makeHeader();
    QWidget* makeNothing();
    QWidget* makeRecords();
    QWidget* makeList();
    void connectModel();
    void refreshRecords();
    void refresh();
    void refreshActions();
    void followRun();
    void showListOrNothing();
    void keepSight();
    void restoreSight();
    void act(int row, int action);
    [[nodiscard]] Sheet* confirmation();
    void askToUndo();
    void askToRestore();

    RecoveryModel model_;
    QPushButton* undo_;
    QPushButton* restore_;
    RecoveryNotices* notices_;
    EmptyState* nothing_;
    QWidget* records_;
    FilterField* search_;
    ElidedLabel* elsewhere_;
    QStackedWidget* stack_;
    RowsView* list_;
    EmptyState* noMatch_;
    QPointer<Sheet> sheet_;
    Sight sight_;
    bool asksToUndo_ = false;
    bool ownRun_ = false;
};
