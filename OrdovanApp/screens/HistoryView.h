#pragma once

#include "OrdovanApp/models/HistoryModel.h"
#include "OrdovanApp/screens/SectionView.h"

#include <QDate>
#include <QPointer>

class EmptyState;
class HistoryNotices;
class QPushButton;
class QStackedWidget;
class RowsView;
class Segments;
class Sheet;

/// The section that lists past runs by day, and clears the list when asked to.
class HistoryView : public SectionView {
    Q_OBJECT

public:
    HistoryView(const AppContext& context, QWidget* parent = nullptr);

protected:
    bool event(QEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    QWidget* makeEmpty();
    QWidget* makeTimeline();
    QWidget* makeFilters();
    QWidget* makeList();
    void connectModel();
    void chooseKind(int segment);
    void refreshRecords();
    void refresh();
    [[nodiscard]] Sheet* confirmation();

    HistoryModel model_;
    QPushButton* clear_;
    HistoryNotices* notices_;
    EmptyState* empty_;
    QWidget* timeline_;
    Segments* kinds_;
    QStackedWidget* stack_;
    RowsView* list_;
    EmptyState* noMatch_;
    QPointer<Sheet> sheet_;
    QDate today_;
};
