#include "OrdovanApp/screens/SmartInboxPlan.h"

#include "OrdovanApp/controller/CommandCenter.h"
#include "OrdovanApp/controller/TidyViewModel.h"
#include "OrdovanApp/models/Formats.h"
#include "OrdovanApp/models/Language.h"
#include "OrdovanApp/screens/CommandAvailability.h"
#include "OrdovanApp/screens/Desktop.h"
#include "OrdovanApp/screens/SmartInboxTexts.h"
#include "OrdovanApp/theme/BottomBar.h"
#include "OrdovanApp/theme/Buttons.h"
#include "OrdovanApp/theme/EmptyState.h"
#include "OrdovanApp/theme/FilterField.h"
#include "OrdovanApp/theme/RowsView.h"
#include "OrdovanApp/theme/Segments.h"
#include "OrdovanApp/theme/StatRow.h"
#include "OrdovanApp/theme/StyleSheet.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QScrollBar>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace {

constexpr std::array ages = {7, 30, 90};
constexpr int sizeColumn = 84;
constexpr int dateColumn = 96;
constexpr int lowPage = 340;
constexpr int leastListHeight = 60;
constexpr int narrowList = 640;
constexpr int narrowestList = 440;

QString ageHeading() {
    return SmartInboxPlan::tr("Tick only files last changed more than this long ago");
}

}  // namespace

SmartInboxPlan::SmartInboxPlan(const AppContext& context, QWidget* parent)
    : QWidget(parent),
      context_(context),
      model_(context.model, context.theme),
      nothingProposed_(makeNothingProposed()),
      stats_(new StatRow(context.theme, this)) {
    setObjectName(u"planPage"_s);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(nothingProposed_);
    layout->addWidget(stats_);
    layout->addSpacing(10);
    layout->addWidget(makeFilters());
    layout->addSpacing(12);
    layout->addWidget(makeList(), 1);
    layout->addWidget(makeBar());
    connect(&model_, &PlanModel::tickedChanged, this, [this] {
        refreshFigures();
        refreshActions();
    });
}

// Making.

/// What is said above a plan that holds nothing but files to be left where they are.
QWidget* SmartInboxPlan::makeNothingProposed() {
    auto* lines = new QWidget(this);
    lines->setObjectName(u"nothingProposed"_s);
    auto* layout = new QVBoxLayout(lines);
    layout->setContentsMargins(0, 0, 0, 14);
    layout->setSpacing(4);
    auto* title = new QLabel(SmartInboxTexts::nothingTitle(), lines);
    StyleSheet::setType(title, StyleSheet::LabelType::heading);
    auto* message = new QLabel(SmartInboxTexts::nothingMessage(), lines);
    message->setWordWrap(true);
    StyleSheet::setType(message, StyleSheet::LabelType::second);
    layout->addWidget(title);
    layout->addWidget(message);
    lines->hide();
    return lines;
}

QWidget* SmartInboxPlan::makeFilters() {
    auto* row = new QWidget(this);
    row->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    filters_ = new QVBoxLayout(row);
    filters_->setContentsMargins(0, 0, 0, 0);
    filters_->setSpacing(8);
    firstFilters_ = new QHBoxLayout;
    firstFilters_->setSpacing(8);
    filters_->addLayout(firstFilters_);
    search_ = new FilterField(context_.theme, tr("Search proposed files"), row);
    search_->setObjectName(u"search"_s);
    connect(search_, &QLineEdit::textChanged, this, [this](const QString& text) {
        model_.setQuery(text);
        showListOrNothing();
    });
    folders_ = new Segments(context_.theme, row);
    folders_->setObjectName(u"folderFilter"_s);
    folders_->setAccessibleName(tr("Folder to sort into"));
    connect(folders_, &Segments::currentChanged, this, &SmartInboxPlan::chooseFolder);
    age_ = makeAgeFilter();
    export_ = Buttons::quiet(tr("Export Plan…"), row);
    export_->setObjectName(u"exportPlan"_s);
    connect(export_, &QPushButton::clicked, this, &SmartInboxPlan::exportRequested);
    planButtons_ = new QWidget(row);
    auto* buttons = new QHBoxLayout(planButtons_);
    buttons->setContentsMargins(0, 0, 0, 0);
    buttons->setSpacing(8);
    buttons->addWidget(age_);
    buttons->addWidget(export_);
    planButtons_->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    firstFilters_->addWidget(search_);
    firstFilters_->addWidget(folders_, 1);
    firstFilters_->addStretch(0);
    firstFilters_->addWidget(planButtons_);
    return row;
}

QPushButton* SmartInboxPlan::makeAgeFilter() {
    QPushButton* button = Buttons::quiet(tr("Older than…"), this);
    button->setObjectName(u"ageFilter"_s);
    auto* menu = new QMenu(button);
    menu->addAction(ageHeading())->setEnabled(false);
    menu->addSeparator();
    for (const int days : ages) {
        QAction* action = menu->addAction(tr("Older than %1 days", nullptr, days).arg(days));
        connect(action, &QAction::triggered, this, [this, days] { context_.model.tickOlderThan(days); });
    }
    Buttons::setMenu(context_.theme, button, menu);
    return button;
}

QWidget* SmartInboxPlan::makeList() {
    stack_ = new QStackedWidget(this);
    stack_->setMinimumHeight(leastListHeight);  // less than what stands for an empty list would take
    list_ = new RowsView(context_.theme, RowsView::Style::sections, stack_);
    list_->setObjectName(u"planList"_s);
    list_->setAccessibleName(tr("Proposed file changes"));
    list_->setSelectionMode(QAbstractItemView::ExtendedSelection);
    list_->setModel(&model_);
    connect(list_, &RowsView::actionTriggered, this, &SmartInboxPlan::act);

    noMatch_ = new EmptyState(context_.theme, Glyph::search, stack_);
    noMatch_->setObjectName(u"noMatch"_s);
    noMatch_->setTitle(tr("No matching files"));
    noMatch_->setMessage(tr("No file of this preview matches the search."));
    QPushButton* clear = Buttons::quiet(tr("Show All Files"));
    clear->setObjectName(u"clearFilters"_s);
    connect(clear, &QPushButton::clicked, this, &SmartInboxPlan::clearFilters);
    noMatch_->addButton(clear);
    stack_->addWidget(list_);
    stack_->addWidget(noMatch_);
    return stack_;
}

QWidget* SmartInboxPlan::makeBar() {
    bar_ = new BottomBar(context_.theme, this);
    tickAll_ = Buttons::ghost(QString(), bar_);
    tickAll_->setObjectName(u"tickAll"_s);
    connect(tickAll_, &QPushButton::clicked, this, [this] { model_.tickShown(!model_.allShownTicked()); });
    organize_ = Buttons::primary(QString(), bar_);
    organize_->setObjectName(u"organize"_s);
    connect(organize_, &QPushButton::clicked, this, &SmartInboxPlan::organizeRequested);
    bar_->addButton(tickAll_);
    bar_->addButton(organize_);
    return bar_;
}

void SmartInboxPlan::setBarShown(bool shown) {
    bar_->setVisible(shown);
}

// Filters.

void SmartInboxPlan::chooseFolder(int segment) {
    const auto& folders = model_.folders();
    const auto place = static_cast<std::size_t>(segment) - 1;
    if (segment > 0 && place < folders.size()) {
        model_.setFolder(folders[place].name);
    } else {
        model_.setFolder(std::nullopt);
    }
    refreshFolders();
    showListOrNothing();
}

void SmartInboxPlan::clearFilters() {
    search_->clear();
    folders_->setCurrent(0);
    list_->setFocus();
}

/// One segment for each folder of the plan, after the one for all.
void SmartInboxPlan::refreshFolders() {
    QStringList texts = {tr("All folders")};
    QStringList helps = {tr("Shows all folders")};
    for (const PlanModel::Folder& folder : model_.folders()) {
        texts += Formats::text(folder.name);
        helps += tr("Shows only this folder");
    }
    folders_->setSegments(texts, helps);
    folders_->setToolTip(model_.folder() ? helps.back() : helps.front());
}

void SmartInboxPlan::showListOrNothing() {
    stack_->setCurrentWidget(model_.rowCount() == 0 && model_.isNarrowed() ? static_cast<QWidget*>(noMatch_) : list_);
}

// What the controller has.

void SmartInboxPlan::reload() {
    const Url root = context_.model.planRoot().value_or(Url());
    const bool isSame = root == root_;
    const Sight before = sight();
    if (!isSame) {
        root_ = root;
        search_->clear();
        folders_->setCurrent(0);
    }
    if (!model_.reload()) return;
    nothingProposed_->setVisible(model_.proposals() == 0);
    refreshRoom();
    refreshFolders();
    const auto& folders = model_.folders();
    const auto chosen = std::ranges::find(folders, model_.folder(), &PlanModel::Folder::name);
    folders_->setCurrent(chosen == folders.end() ? 0 : static_cast<int>(chosen - folders.begin()) + 1);
    showListOrNothing();
    if (isSame)
        restore(before);
    else
        list_->verticalScrollBar()->setValue(0);
}

void SmartInboxPlan::refreshFigures() {
    const PlanModel::Ticked& ticked = model_.ticked();
    const QString size = Formats::byteSize(ticked.bytes);
    const auto folders = static_cast<qint64>(model_.folders().size());
    stats_->setStats({{Formats::count(model_.proposals()), tr("proposed, %1 ticked").arg(Formats::count(ticked.files))},
                      {Formats::count(model_.conflicts()), tr("need review")},
                      {Formats::count(folders), tr("folders to sort into", nullptr, pluralOf(folders))},
                      {size, tr("in ticked files")}});
    QString rest = u"· "_s + size;
    if (ticked.hidden > 0) {
        rest += u" · "_s + tr("%1 of them not shown", nullptr, ticked.hidden).arg(Formats::count(ticked.hidden));
    }
    if (ticked.files == 0) {
        bar_->setSummary(tr("No files ticked"));
    } else {
        bar_->setSummary(Formats::files(ticked.files), rest);
    }
    organize_->setText(SmartInboxTexts::organizeButton(ticked.files));
    tickAll_->setText(model_.allShownTicked() && model_.hasShownProposals() ? tr("Tick None") : tr("Tick All"));
}

void SmartInboxPlan::refreshActions() {
    const QString running = CommandAvailability::againstRun(context_.model);
    const auto reason = [this](QStringView command) {
        return CommandAvailability::reasonAgainst(command, context_.model, context_.desktop);
    };
    model_.setLocked(running);
    Buttons::setAvailable(organize_, reason(Commands::organize),
                          tr("Move the selected files. You will be asked to confirm, and can undo afterward."));
    Buttons::setAvailable(export_, reason(Commands::exportPlan), tr("Save this preview as a Markdown or CSV report"));
    Buttons::setAvailable(age_, running, ageHeading());
    const QString narrowed = model_.isNarrowed() ? tr("Ticks or unticks the files that are shown") : QString();
    const bool hasNone = running.isEmpty() && !model_.hasShownProposals();
    Buttons::setAvailable(tickAll_, hasNone ? tr("No proposed file is shown.") : running, narrowed);
}

// The list.

void SmartInboxPlan::resizeEvent(QResizeEvent*) {
    refreshRoom();
}

/// On little room the list comes first, and in it where a file goes: the figures go, date and size as well, and the
/// buttons get a line of their own before they would be cut off.
void SmartInboxPlan::refreshRoom() {
    const auto scaled = [this](int pixels) { return context_.theme.scaled(pixels); };
    stats_->setVisible(model_.proposals() > 0 && height() >= scaled(lowPage));
    QList<int> columns;
    if (width() >= scaled(narrowestList)) columns.append(sizeColumn);
    if (width() >= scaled(narrowList)) columns.append(dateColumn);
    list_->setColumnWidths(columns);
    const int needed = search_->sizeHint().width() + folders_->minimumSizeHint().width() +
                       planButtons_->sizeHint().width() + 2 * filters_->spacing();
    const bool ownLine = needed > width();
    if (ownLine == buttonsHaveOwnLine_) return;
    buttonsHaveOwnLine_ = ownLine;
    QBoxLayout* line = ownLine ? static_cast<QBoxLayout*>(filters_) : firstFilters_;
    line->addWidget(planButtons_);
}

void SmartInboxPlan::act(int row, int action) {
    if (action == PlanModel::reveal)
        context_.desktop.reveal(model_.url(row));
    else
        model_.toggle(row);
}

std::vector<int> SmartInboxPlan::selectedRows() const {
    std::vector<int> rows;
    for (const QModelIndex& index : list_->selectionModel()->selectedIndexes()) rows.push_back(index.row());
    return rows;
}

SmartInboxPlan::Sight SmartInboxPlan::sight() const {
    Sight sight;
    const auto path = [this](int row) { return std::string(model_.url(row).path()); };
    for (const int row : selectedRows()) sight.selected.push_back(path(row));
    if (list_->currentIndex().isValid()) sight.current = path(list_->currentIndex().row());
    sight.scroll = list_->verticalScrollBar()->value();
    for (const int row : list_->rowsInSight()) {
        if (model_.isHead(row)) continue;
        sight.top = path(row);
        sight.topOffset = list_->visualRect(model_.index(row)).top();
        break;
    }
    return sight;
}

void SmartInboxPlan::restore(const Sight& sight) {
    const auto rowOf = [this](const std::string& path) {
        const std::vector<int> rows = model_.rowsOf(std::span(&path, path.empty() ? 0 : 1));
        return rows.empty() ? -1 : rows.front();
    };
    if (const int current = rowOf(sight.current); current >= 0) {
        list_->selectionModel()->setCurrentIndex(model_.index(current), QItemSelectionModel::NoUpdate);
    }
    QItemSelection selection;
    for (const int row : model_.rowsOf(sight.selected)) selection.select(model_.index(row), model_.index(row));
    list_->selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
    QScrollBar* bar = list_->verticalScrollBar();
    bar->setValue(sight.scroll);
    if (const int top = sight.scroll > 0 ? rowOf(sight.top) : -1; top >= 0) {
        bar->setValue(bar->value() + list_->visualRect(model_.index(top)).top() - sight.topOffset);
    }
}
