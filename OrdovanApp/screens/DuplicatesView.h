#pragma once

#include "OrdovanApp/models/DuplicatesModel.h"
#include "OrdovanApp/screens/SectionView.h"

#include <QElapsedTimer>
#include <QPointer>

class BottomBar;
class DuplicatesNotices;
class EmptyState;
class FilterField;
class ProgressStrip;
class QPushButton;
class QStackedWidget;
class RowsView;
class Sheet;
class StatRow;

/// The section that finds exact duplicates in the preview, lets their user choose the copy of each that stays, and
/// moves the others to the Trash.
///
/// Shows one page for the state of the controller. What was found stays in sight while extras are being moved.
class DuplicatesView : public SectionView {
    Q_OBJECT

public:
    DuplicatesView(const AppContext& context, QWidget* parent = nullptr);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QWidget* makeStart();
    QWidget* makeSearching();
    QWidget* makeNone();
    QWidget* makeFound();
    QWidget* makeFilters();
    QWidget* makeList();
    QWidget* makeBar();
    QPushButton* makeAutoPick();
    QPushButton* makeSearchButton(QPushButton* button);
    void connectModel();

    [[nodiscard]] QWidget* page() const;
    void reload();
    void refresh();
    void refreshStart();
    void refreshFigures();
    void refreshUnread();
    void refreshRun();
    void followSearch();
    void showSearchProgress(quint64 files, quint64 filesTotal, quint64 bytes, quint64 bytesTotal);
    void showListOrNothing();
    void act(int row, int action);
    [[nodiscard]] Sheet* confirmation();
    void requestTrash();

    DuplicatesModel model_;
    DuplicatesNotices* notices_;
    EmptyState* start_;
    QPushButton* choose_;
    QPushButton* find_;
    QWidget* searching_;
    ProgressStrip* search_;
    EmptyState* none_;
    QPushButton* againForNone_;
    QWidget* found_;
    StatRow* stats_;
    FilterField* filter_;
    QPushButton* autoPick_;
    QPushButton* again_;
    QStackedWidget* stack_;
    RowsView* list_;
    EmptyState* noMatch_;
    BottomBar* bar_;
    QPushButton* trash_;
    QPointer<Sheet> sheet_;
    QElapsedTimer sinceSearch_;
    Url root_;
};
