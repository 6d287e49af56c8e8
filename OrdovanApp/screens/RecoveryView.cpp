#include "OrdovanApp/screens/RecoveryView.h"

#include "OrdovanApp/controller/CommandCenter.h"
#include "OrdovanApp/controller/TidyViewModel.h"
#include "OrdovanApp/models/Formats.h"
#include "OrdovanApp/models/Language.h"
#include "OrdovanApp/screens/CommandAvailability.h"
#include "OrdovanApp/screens/Desktop.h"
#include "OrdovanApp/screens/RecoveryNotices.h"
#include "OrdovanApp/screens/RunTexts.h"
#include "OrdovanApp/theme/Buttons.h"
#include "OrdovanApp/theme/ElidedLabel.h"
#include "OrdovanApp/theme/EmptyState.h"
#include "OrdovanApp/theme/FilterField.h"
#include "OrdovanApp/theme/RowsView.h"
#include "OrdovanApp/theme/ScreenHeader.h"
#include "OrdovanApp/theme/Sheet.h"
#include "OrdovanApp/theme/StyleSheet.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QPushButton>
#include <QScrollBar>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr int sizeColumn = 84;
constexpr int narrowList = 640;

QString rule() {
    return RecoveryView::tr(
        "Undo is fail-closed: a file changed since organizing, or whose original slot is now occupied, is left where "
        "it is.");
}

}  // namespace

RecoveryView::RecoveryView(const AppContext& context, QWidget* parent)
    : SectionView(context, tr("Recovery Center"), parent),
      model_(context.model, context.theme),
      notices_(new RecoveryNotices(context, this)) {
    setObjectName(u"recovery"_s);
    makeHeader();
    for (QWidget* page : {makeNothing(), makeRecords()}) pages_->addWidget(page);
    assemble(notices_);
    connectModel();
    refresh();
    followRun();
}

// Making.

void RecoveryView::makeHeader() {
    undo_ = Buttons::quiet(tr("Undo Organize…"));
    undo_->setObjectName(u"undoOrganize"_s);
    connect(undo_, &QPushButton::clicked, this, &RecoveryView::askToUndo);
    restore_ = Buttons::quiet(tr("Put All Back…"));
    restore_->setObjectName(u"putAllBack"_s);
    connect(restore_, &QPushButton::clicked, this, &RecoveryView::askToRestore);
    header_->addButton(undo_);
    header_->addButton(restore_);
}

QWidget* RecoveryView::makeNothing() {
    nothing_ = new EmptyState(context_.theme, Glyph::recovery, pages_);
    nothing_->setObjectName(u"nothingPage"_s);
    nothing_->setTitle(tr("Nothing to recover"));
    nothing_->setMessage(
        tr("After you organize files or move duplicates to the Trash, this is where you can undo it."));
    return nothing_;
}

QWidget* RecoveryView::makeRecords() {
    records_ = new QWidget(pages_);
    records_->setObjectName(u"recordsPage"_s);
    search_ = new FilterField(context_.theme, tr("Search organized and trashed files"), records_);
    search_->setObjectName(u"search"_s);
    connect(search_, &QLineEdit::textChanged, this, [this](const QString& text) {
        model_.setQuery(text);
        showListOrNothing();
    });
    elsewhere_ = new ElidedLabel(records_);
    elsewhere_->setObjectName(u"elsewhere"_s);
    elsewhere_->setElideMode(Qt::ElideRight);
    StyleSheet::setType(elsewhere_, StyleSheet::LabelType::second);
    auto* filters = new QHBoxLayout;
    filters->setSpacing(16);
    filters->addWidget(search_);
    filters->addWidget(elsewhere_, 1);
    filters->addStretch(0);
    auto* layout = new QVBoxLayout(records_);
    layout->setContentsMargins(0, 0, 0, 20);
    layout->setSpacing(12);
    layout->addLayout(filters);
    layout->addWidget(makeList(), 1);
    return records_;
}

QWidget* RecoveryView::makeList() {
    stack_ = new QStackedWidget(records_);
    list_ = new RowsView(context_.theme, RowsView::Style::sections, stack_);
    list_->setObjectName(u"recoveryList"_s);
    list_->setAccessibleName(tr("Organized and trashed files"));
    list_->setModel(&model_);
    connect(list_, &RowsView::actionTriggered, this, &RecoveryView::act);

    noMatch_ = makeNoMatch(stack_, tr("No organized or trashed file matches the search."), [this] {
        search_->clear();
        list_->setFocus();
    });
    stack_->addWidget(list_);
    stack_->addWidget(noMatch_);
    return stack_;
}

void RecoveryView::connectModel() {
    connect(&model_, &RecoveryModel::modelAboutToBeReset, this, &RecoveryView::keepSight);
    connect(&model_, &RecoveryModel::modelReset, this, &RecoveryView::restoreSight);
    connect(&model_, &RecoveryModel::countsChanged, this, &RecoveryView::refresh);
    const TidyViewModel* model = &context_.model;
    connect(model, &TidyViewModel::rootURLChanged, this, [this] { search_->clear(); });
    connect(model, &TidyViewModel::isApplyingChanged, this, &RecoveryView::followRun);
    connect(model, &TidyViewModel::isTrashingChanged, this, &RecoveryView::followRun);
    connect(model, &TidyViewModel::runProgressed, this,
            [this](quint64 done, quint64 total) { showRunProgress(RunTexts::done(done, total), done, total); });
    connect(model, &TidyViewModel::trashProgressed, this, [this](quint64 done, quint64 total, quint64, quint64) {
        showRunProgress(RunTexts::done(done, total), done, total);
    });
}

/// Where there is little room, the names and where they go have it.
void RecoveryView::resizeEvent(QResizeEvent*) {
    const bool isNarrow = width() < context_.theme.scaled(narrowList);
    model_.setCompact(isNarrow);
    list_->setColumnWidths(isNarrow ? QList<int>() : QList<int>{sizeColumn});
}

// What the controller has.

bool RecoveryView::event(QEvent* event) {
    if (event->type() == QEvent::WindowActivate) refreshRecords();
    return QWidget::event(event);
}

void RecoveryView::showEvent(QShowEvent*) {
    refreshRecords();
}

/// Other programs may have organized, restored or removed files since.
void RecoveryView::refreshRecords() {
    context_.model.refreshRecords();
    model_.survey();
}

void RecoveryView::refresh() {
    const bool isEmpty = model_.isEmpty();
    pages_->setCurrentWidget(isEmpty ? static_cast<QWidget*>(nothing_) : records_);
    header_->setLede(isEmpty ? QString() : rule());
    undo_->setVisible(!isEmpty);
    restore_->setVisible(!isEmpty);
    const int elsewhere = model_.elsewhere();
    elsewhere_->setVisible(elsewhere > 0);
    elsewhere_->setText(
        tr("%1 files came from other folders. Choose their folder to put them back.", nullptr, elsewhere)
            .arg(Formats::count(elsewhere)));
    showListOrNothing();
    refreshActions();
}

void RecoveryView::refreshActions() {
    const QString running = CommandAvailability::againstRun(context_.model);
    model_.setLocked(running);
    QString againstUndo = CommandAvailability::reasonAgainst(Commands::undoOrganize, context_.model, context_.desktop);
    if (againstUndo.isEmpty() && model_.recoverableOrganized() == 0) {
        againstUndo = tr("None of the organized files is there any more.");
    }
    Buttons::setAvailable(undo_, againstUndo, tr("Puts every organized file of this folder back where it came from"));
    QString againstRestore = running;
    if (againstRestore.isEmpty() && !model_.isSurveyed()) {
        againstRestore = tr("Looking whether the files are still there…");
    } else if (againstRestore.isEmpty() && model_.recoverableTrashed() == 0) {
        againstRestore = tr("No file in the Trash can go back to this folder.");
    }
    Buttons::setAvailable(restore_, againstRestore,
                          tr("Puts every file of this folder that is in the Trash back where it came from"));
}

/// Follows the beginning and the end of runs. One that begins while this section is in sight puts files back: all
/// others are begun in their own sections.
void RecoveryView::followRun() {
    const bool isRunning = context_.model.isApplying() || context_.model.isTrashing();
    ownRun_ = isRunning && (ownRun_ || isVisible());
    showRun(ownRun_, tr("Putting files back…"));
    notices_->followRun(ownRun_);
    refreshActions();
}

// The list.

void RecoveryView::showListOrNothing() {
    const bool isNothing = model_.rowCount() == 0 && !search_->text().isEmpty();
    stack_->setCurrentWidget(isNothing ? static_cast<QWidget*>(noMatch_) : list_);
}

void RecoveryView::keepSight() {
    const QModelIndex current = list_->currentIndex();
    sight_ = {.current = current.isValid() ? model_.entryID(current.row()) : std::string(),
              .row = current.row(),
              .scroll = list_->verticalScrollBar()->value()};
}

/// The current file stays it; where it went, the one that took its place is. None is where the search hides it.
void RecoveryView::restoreSight() {
    if (sight_.current.empty()) return;
    int row = -1;
    for (int candidate = 0; row < 0 && candidate < model_.rowCount(); ++candidate) {
        if (model_.entryID(candidate) == sight_.current) row = candidate;
    }
    if (row < 0 && model_.holds(sight_.current)) return;
    if (row < 0) row = std::min(sight_.row, model_.rowCount() - 1);
    if (row >= 0 && model_.isHead(row)) row = row + 1 < model_.rowCount() ? row + 1 : row - 1;
    if (row < 0) return;
    list_->setCurrentIndex(model_.index(row));
    list_->verticalScrollBar()->setValue(sight_.scroll);
}

void RecoveryView::act(int row, int action) {
    switch (action) {
        case RecoveryModel::putBack:
            context_.model.undo({model_.entryID(row)});
            break;
        case RecoveryModel::putBackFromTrash:
            context_.model.restore({model_.entryID(row)});
            break;
        case RecoveryModel::showInTrash:
            context_.desktop.showTrash(model_.url(row));
            break;
        case RecoveryModel::reveal:
            context_.desktop.reveal(model_.url(row));
            break;
        default:
            break;
    }
}

// Commands.

Sheet* RecoveryView::confirmation() {
    if (sheet_) return sheet_;
    sheet_ = makeSheet(u"putBackSheet"_s);
    connect(sheet_, &Sheet::confirmed, this, [this] {
        if (asksToUndo_)
            context_.model.undo();
        else
            context_.model.restore();
    });
    return sheet_;
}

void RecoveryView::askToUndo() {
    asksToUndo_ = true;
    Sheet* sheet = confirmation();
    sheet->setTitle(tr("Undo everything organized in this folder?"));
    const qint64 files = model_.recoverableOrganized();
    sheet->setMessage(tr("%1 organized files can go back to where they came from.", nullptr, pluralOf(files))
                          .arg(Formats::count(files)) +
                      u' ' + rule());
    sheet->setConfirm(tr("Undo Organize"));
    sheet->open();
}

void RecoveryView::askToRestore() {
    asksToUndo_ = false;
    Sheet* sheet = confirmation();
    sheet->setTitle(tr("Put all trashed files of this folder back?"));
    const qint64 files = model_.recoverableTrashed();
    sheet->setMessage(
        tr("%1 files can go back from the Trash. A file whose original place is now occupied stays in the "
           "Trash.",
           nullptr, pluralOf(files))
            .arg(Formats::count(files)));
    sheet->setConfirm(tr("Put All Back"));
    sheet->open();
}
