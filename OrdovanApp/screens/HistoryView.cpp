#include "OrdovanApp/screens/HistoryView.h"

#include "OrdovanApp/controller/TidyViewModel.h"
#include "OrdovanApp/screens/CommandAvailability.h"
#include "OrdovanApp/screens/HistoryNotices.h"
#include "OrdovanApp/theme/Buttons.h"
#include "OrdovanApp/theme/EmptyState.h"
#include "OrdovanApp/theme/RowsView.h"
#include "OrdovanApp/theme/ScreenHeader.h"
#include "OrdovanApp/theme/Segments.h"
#include "OrdovanApp/theme/Sheet.h"
#include "OrdovanApp/theme/StyleSheet.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <array>

using namespace Qt::StringLiterals;

namespace {

constexpr int timeColumn = 64;
constexpr int headHeight = 42;

struct Filter {
    std::optional<OrdovanRunRecord::Kind> kind;
    const char* text;
    const char* help;
};
constexpr std::array<Filter, 5> filters = {{
    {std::nullopt, QT_TRANSLATE_NOOP("HistoryView", "All"), QT_TRANSLATE_NOOP("HistoryView", "Shows every run")},
    {OrdovanRunRecord::Kind::organize, QT_TRANSLATE_NOOP("HistoryView", "Organize"),
     QT_TRANSLATE_NOOP("HistoryView", "Shows only runs that organized files")},
    {OrdovanRunRecord::Kind::undo, QT_TRANSLATE_NOOP("HistoryView", "Undo"),
     QT_TRANSLATE_NOOP("HistoryView", "Shows only runs that undid organizing")},
    {OrdovanRunRecord::Kind::trash, QT_TRANSLATE_NOOP("HistoryView", "Trash"),
     QT_TRANSLATE_NOOP("HistoryView", "Shows only runs that moved files to the Trash")},
    {OrdovanRunRecord::Kind::restoreTrash, QT_TRANSLATE_NOOP("HistoryView", "Put Back"),
     QT_TRANSLATE_NOOP("HistoryView", "Shows only runs that put files back from the Trash")},
}};

QString heading() {
    return HistoryView::tr("Past runs, newest first");
}

}  // namespace

HistoryView::HistoryView(const AppContext& context, QWidget* parent)
    : SectionView(context, tr("History"), parent),
      model_(context.model, context.theme),
      clear_(Buttons::quiet(tr("Clear History…"))),
      notices_(new HistoryNotices(context, this)),
      today_(QDate::currentDate()) {
    setObjectName(u"history"_s);
    header_->setLede(tr("Kept on this computer. Clearing it doesn't touch your files or the undo record."));
    clear_->setObjectName(u"clearHistory"_s);
    connect(clear_, &QPushButton::clicked, this, [this] { confirmation()->open(); });
    header_->addButton(clear_);
    for (QWidget* page : {makeEmpty(), makeTimeline()}) pages_->addWidget(page);
    assemble(notices_);
    connectModel();
    refresh();
}

// Making.

QWidget* HistoryView::makeEmpty() {
    empty_ = new EmptyState(context_.theme, Glyph::history, pages_);
    empty_->setObjectName(u"emptyPage"_s);
    empty_->setTitle(heading());
    empty_->setMessage(tr("Each time you organize or undo, a summary appears here."));
    return empty_;
}

QWidget* HistoryView::makeTimeline() {
    timeline_ = new QWidget(pages_);
    timeline_->setObjectName(u"timelinePage"_s);
    auto* layout = new QVBoxLayout(timeline_);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(12);
    layout->addWidget(makeFilters());
    layout->addWidget(makeList(), 1);
    return timeline_;
}

QWidget* HistoryView::makeFilters() {
    auto* row = new QWidget(timeline_);
    kinds_ = new Segments(context_.theme, row);
    kinds_->setObjectName(u"kindFilter"_s);
    kinds_->setAccessibleName(tr("Kind of run"));
    QStringList texts;
    QStringList helps;
    for (const Filter& filter : filters) {
        texts.append(tr(filter.text));
        helps.append(tr(filter.help));
    }
    kinds_->setSegments(texts, helps);
    connect(kinds_, &Segments::currentChanged, this, &HistoryView::chooseKind);
    auto* title = new QLabel(heading(), row);
    StyleSheet::setType(title, StyleSheet::LabelType::second);
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(16);
    layout->addWidget(kinds_);
    layout->addStretch(1);
    layout->addWidget(title);
    return row;
}

QWidget* HistoryView::makeList() {
    stack_ = new QStackedWidget(timeline_);
    list_ = new RowsView(context_.theme, RowsView::Style::cards, stack_);
    list_->setObjectName(u"historyList"_s);
    list_->setAccessibleName(heading());
    list_->setMaximumColumns(1);
    list_->setHeadsOutside(true);
    list_->setHeadHeight(headHeight);
    list_->setColumnWidths({timeColumn});
    list_->setModel(&model_);
    noMatch_ = new EmptyState(context_.theme, Glyph::history, stack_);
    noMatch_->setObjectName(u"noMatch"_s);
    noMatch_->setTitle(tr("No runs of this kind"));
    QPushButton* all = Buttons::quiet(tr("Show All Runs"));
    all->setObjectName(u"clearFilters"_s);
    connect(all, &QPushButton::clicked, this, [this] {
        kinds_->setCurrent(0);
        list_->setFocus();
    });
    noMatch_->addButton(all);
    stack_->addWidget(list_);
    stack_->addWidget(noMatch_);
    return stack_;
}

void HistoryView::connectModel() {
    connect(&model_, &HistoryModel::modelReset, this, &HistoryView::refresh);
    const TidyViewModel* model = &context_.model;
    connect(model, &TidyViewModel::isApplyingChanged, this, &HistoryView::refresh);
    connect(model, &TidyViewModel::isTrashingChanged, this, &HistoryView::refresh);
}

// What the controller has.

bool HistoryView::event(QEvent* event) {
    if (event->type() == QEvent::WindowActivate) refreshRecords();
    return QWidget::event(event);
}

void HistoryView::showEvent(QShowEvent*) {
    refreshRecords();
}

/// Other programs may have run since, and today may have become yesterday.
void HistoryView::refreshRecords() {
    context_.model.refreshRecords();
    if (const QDate now = QDate::currentDate(); now != today_) {
        today_ = now;
        model_.reload();
    }
}

void HistoryView::refresh() {
    const bool isEmpty = model_.isEmpty();
    pages_->setCurrentWidget(isEmpty ? static_cast<QWidget*>(empty_) : timeline_);
    stack_->setCurrentWidget(model_.rowCount() == 0 ? static_cast<QWidget*>(noMatch_) : list_);
    const QString running = CommandAvailability::againstRun(context_.model);
    const bool hasNone = running.isEmpty() && isEmpty;
    Buttons::setAvailable(clear_, hasNone ? tr("There is nothing to clear.") : running, tr("Clears this log only"));
}

void HistoryView::chooseKind(int segment) {
    const Filter& filter = filters[static_cast<std::size_t>(segment)];
    model_.setKind(filter.kind);
    noMatch_->setMessage(tr("None of the past runs is of the kind “%1”.").arg(tr(filter.text)));
}

// Commands.

Sheet* HistoryView::confirmation() {
    if (sheet_) return sheet_;
    sheet_ = makeSheet(u"clearHistorySheet"_s);
    sheet_->setTitle(tr("Clear the run history?"));
    sheet_->setMessage(tr("Only this log is cleared. Organized files and Undo stay as they are."));
    sheet_->setConfirm(tr("Clear History"), true);
    connect(sheet_, &Sheet::confirmed, &context_.model, &TidyViewModel::clearHistory);
    return sheet_;
}
