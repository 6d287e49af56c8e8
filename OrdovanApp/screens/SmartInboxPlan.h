#pragma once

#include "OrdovanApp/models/PlanModel.h"
#include "OrdovanApp/screens/AppContext.h"

#include <QWidget>

#include <string>
#include <vector>

class BottomBar;
class EmptyState;
class FilterField;
class QHBoxLayout;
class QPushButton;
class QStackedWidget;
class QVBoxLayout;
class RowsView;
class Segments;
class StatRow;

/// The plan of the previewed folder: figures, filters, the list, and what is to be done with it.
class SmartInboxPlan : public QWidget {
    Q_OBJECT

public:
    SmartInboxPlan(const AppContext& context, QWidget* parent);

    /// Takes over the controller's plan. For the same folder as before the list stays where it is scrolled to, and what
    /// is selected stays selected; another folder starts at its top without a search.
    void reload();
    /// Files that have a row, in sight or not.
    [[nodiscard]] int rows() const { return model_.proposals() + model_.conflicts() + model_.skipped(); }
    /// The proposals that are ticked.
    [[nodiscard]] int tickedFiles() const { return model_.ticked().files; }
    /// Whether the bar with the buttons is shown; progress takes its place.
    void setBarShown(bool shown);
    /// Follows what can be done and what can not right now.
    void refreshActions();

Q_SIGNALS:
    void organizeRequested();
    void exportRequested();

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    /// What a list looks like to its user.
    struct Sight {
        std::vector<std::string> selected;
        std::string current;
        std::string top;
        int topOffset = 0;
        int scroll = 0;
    };

    QWidget* makeNothingProposed();
    QWidget* makeFilters();
    QPushButton* makeAgeFilter();
    QWidget* makeList();
    QWidget* makeBar();
    void chooseFolder(int segment);
    void clearFilters();
    void refreshFolders();
    void refreshFigures();
    void refreshRoom();
    void showListOrNothing();
    void act(int row, int action);
    [[nodiscard]] std::vector<int> selectedRows() const;
    [[nodiscard]] Sight sight() const;
    void restore(const Sight& sight);

    AppContext context_;
    PlanModel model_;
    Url root_;
    QWidget* nothingProposed_;
    StatRow* stats_;
    QVBoxLayout* filters_;
    QHBoxLayout* firstFilters_;
    QWidget* planButtons_;
    bool buttonsHaveOwnLine_ = false;
    FilterField* search_;
    Segments* folders_;
    QPushButton* age_;
    QPushButton* export_;
    QStackedWidget* stack_;
    RowsView* list_;
    EmptyState* noMatch_;
    BottomBar* bar_;
    QPushButton* tickAll_;
    QPushButton* organize_;
};
