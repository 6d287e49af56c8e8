#pragma once

#include "OrdovanApp/models/BigFilesModel.h"
#include "OrdovanApp/screens/SectionView.h"

#include <QPointer>

#include <vector>

class BottomBar;
class EmptyState;
class FilterField;
class QPushButton;
class QStackedWidget;
class QuickLook;
class RowsView;
class Segments;
class Sheet;
class StatRow;
class TrashNotices;

/// The section that shows the largest files of the preview, lets their user look into them, and moves the ticked ones
/// to the Trash.
class BigFilesView : public SectionView {
    Q_OBJECT

public:
    BigFilesView(const AppContext& context, QWidget* parent = nullptr);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    QWidget* makeNoPreview();
    QWidget* makeFiles();
    QWidget* makeStats();
    QWidget* makeFilters();
    QWidget* makeInstallersHint();
    QWidget* makeList();
    QWidget* makeBar();
    void connectModel();

    [[nodiscard]] bool hasPreview() const;
    void reload();
    void refresh();
    void refreshHeader();
    void refreshKinds();
    void refreshFigures();
    void refreshCopies();
    void refreshRun();
    void showListOrNothing();
    void refreshRoom();
    void refreshHint();

    void chooseSize(int segment);
    void chooseKind(int segment);
    void clearFilters();
    void act(int row, int action);
    void lookAt(int row);
    [[nodiscard]] bool quickLookIsOpen() const;
    void steer(int key);
    [[nodiscard]] Sheet* confirmation();
    void requestTrash();

    BigFilesModel model_;
    QPushButton* choose_;
    TrashNotices* notices_;
    EmptyState* noPreview_;
    QPushButton* chooseFirst_;
    QWidget* files_;
    QWidget* figures_;
    StatRow* stats_;
    QWidget* findCard_;
    QPushButton* find_;
    FilterField* search_;
    Segments* sizes_;
    Segments* kinds_;
    std::vector<OrdovanFileCategory> offered_;  // behind "All kinds"
    QWidget* installers_;
    bool hintClosed_ = false;
    QStackedWidget* stack_;
    RowsView* list_;
    EmptyState* noneOfSize_;
    EmptyState* noMatch_;
    BottomBar* bar_;
    QPushButton* trash_;
    QPointer<Sheet> sheet_;
    QPointer<QuickLook> quickLook_;
    std::vector<OrdovanFileTrasher::Item> asked_;
    Url root_;
};
