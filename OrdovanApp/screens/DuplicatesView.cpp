#include "OrdovanApp/screens/DuplicatesView.h"

#include "OrdovanApp/controller/CommandCenter.h"
#include "OrdovanApp/controller/TidyViewModel.h"
#include "OrdovanApp/models/Formats.h"
#include "OrdovanApp/screens/CommandAvailability.h"
#include "OrdovanApp/screens/Desktop.h"
#include "OrdovanApp/screens/ListSight.h"
#include "OrdovanApp/screens/SpaceTexts.h"
#include "OrdovanApp/screens/TrashNotices.h"
#include "OrdovanApp/theme/BottomBar.h"
#include "OrdovanApp/theme/Buttons.h"
#include "OrdovanApp/theme/EmptyState.h"
#include "OrdovanApp/theme/FilterField.h"
#include "OrdovanApp/theme/ProgressStrip.h"
#include "OrdovanApp/theme/RowsView.h"
#include "OrdovanApp/theme/ScreenHeader.h"
#include "OrdovanApp/theme/Sheet.h"
#include "OrdovanApp/theme/StatRow.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QMenu>
#include <QPushButton>
#include <QStackedWidget>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;
using Case = TidyViewModel::Phase::Case;

namespace {

constexpr int lowPage = 340;
constexpr int leastListHeight = 100;

QString extras(qint64 count) {
    return Formats::counted(count, u"extra");
}

QString notShown(qint64 count) {
    return u"%1 of them not shown"_s.arg(Formats::count(count));
}

}  // namespace

DuplicatesView::DuplicatesView(const AppContext& context, QWidget* parent)
    : SectionView(context, u"Duplicates"_s, parent),
      model_(context.model, context.theme),
      notices_(new TrashNotices(context, u"extra"_s, this)) {
    setObjectName(u"duplicates"_s);
    header_->addButton(makeAutoPick());
    for (QWidget* page : {makeStart(), makeSearching(), makeNone(), makeFound()}) pages_->addWidget(page);
    assemble(notices_);
    connectModel();
    refresh();
    followSearch();
}

// Making.

QPushButton* DuplicatesView::makeAutoPick() {
    autoPick_ = Buttons::quiet(u"Auto-pick the copy to keep"_s);
    autoPick_->setObjectName(u"autoPick"_s);
    auto* menu = new QMenu(autoPick_);
    for (const OrdovanKeepPolicy policy : OrdovanKeepPolicies::allCases) {
        QAction* action = menu->addAction(Formats::text(rawValue(policy)));
        connect(action, &QAction::triggered, this, [this, policy] { context_.model.autoPick(policy); });
    }
    Buttons::setMenu(context_.theme, autoPick_, menu);
    return autoPick_;
}

/// Makes a button one that looks for duplicates.
QPushButton* DuplicatesView::makeSearchButton(QPushButton* button) {
    connect(button, &QPushButton::clicked, this, [this] { context_.model.findDuplicates(); });
    return button;
}

QWidget* DuplicatesView::makeStart() {
    start_ = new EmptyState(context_.theme, Glyph::duplicates, pages_);
    start_->setObjectName(u"startPage"_s);
    start_->setTitle(u"Find exact duplicates"_s);
    start_->setMessage(u"Scans the files from your current preview and groups byte-for-byte identical copies."_s);
    find_ = makeSearchButton(Buttons::primary(u"Find Duplicates"_s));
    find_->setObjectName(u"findDuplicates"_s);
    start_->addButton(find_);
    choose_ = Buttons::primary(u"Choose Folder…"_s);
    choose_->setObjectName(u"chooseFolder"_s);
    CommandAvailability::bind(context_, choose_, Commands::chooseFolder);
    start_->addButton(choose_);
    return start_;
}

QWidget* DuplicatesView::makeSearching() {
    searching_ = makeProgressPage(u"searchingPage"_s, search_);
    search_->setObjectName(u"searchProgress"_s);
    search_->setText(u"Hashing files to find exact duplicates…"_s);
    connect(search_, &ProgressStrip::cancelled, &context_.model, &TidyViewModel::cancelDuplicateSearch);
    return searching_;
}

QWidget* DuplicatesView::makeNone() {
    none_ = new EmptyState(context_.theme, Glyph::check, pages_);
    none_->setObjectName(u"nonePage"_s);
    none_->setTitle(u"No exact duplicates"_s);
    none_->setMessage(u"Every file in this folder is unique by content."_s);
    againForNone_ = makeSearchButton(Buttons::quiet(u"Search Again"_s));
    againForNone_->setObjectName(u"searchAgainForNone"_s);
    none_->addButton(againForNone_);
    return none_;
}

QWidget* DuplicatesView::makeFound() {
    found_ = new QWidget(pages_);
    found_->setObjectName(u"foundPage"_s);
    stats_ = new StatRow(context_.theme, found_);
    auto* layout = new QVBoxLayout(found_);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(stats_);
    layout->addSpacing(10);
    layout->addWidget(makeFilters());
    layout->addSpacing(12);
    layout->addWidget(makeList(), 1);
    layout->addWidget(makeBar());
    found_->installEventFilter(this);
    return found_;
}

QWidget* DuplicatesView::makeFilters() {
    auto* row = new QWidget(found_);
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(8);
    filter_ = new FilterField(context_.theme, u"Search duplicates"_s, row);
    filter_->setObjectName(u"search"_s);
    connect(filter_, &QLineEdit::textChanged, this, [this](const QString& text) {
        model_.setQuery(text);
        showListOrNothing();
        refreshFigures();
    });
    again_ = makeSearchButton(Buttons::quiet(u"Search Again"_s, row));
    again_->setObjectName(u"searchAgain"_s);
    layout->addWidget(filter_);
    layout->addStretch(1);
    layout->addWidget(again_);
    return row;
}

QWidget* DuplicatesView::makeList() {
    stack_ = new QStackedWidget(found_);
    stack_->setMinimumHeight(leastListHeight);  // less than what stands for an empty list would take
    list_ = new RowsView(context_.theme, RowsView::Style::cards, stack_);
    list_->setObjectName(u"duplicateList"_s);
    list_->setAccessibleName(u"Groups of identical copies"_s);
    list_->setMaximumColumns(3);
    list_->setModel(&model_);
    connect(list_, &RowsView::actionTriggered, this, &DuplicatesView::act);
    noMatch_ = makeNoMatch(stack_, u"No duplicate matches the search."_s, [this] {
        filter_->clear();
        list_->setFocus();
    });
    stack_->addWidget(list_);
    stack_->addWidget(noMatch_);
    return stack_;
}

QWidget* DuplicatesView::makeBar() {
    bar_ = new BottomBar(context_.theme, found_);
    trash_ = Buttons::primary(u"Move All Extras to Trash…"_s, bar_);
    trash_->setObjectName(u"trash-all-extras"_s);
    connect(trash_, &QPushButton::clicked, this, &DuplicatesView::requestTrash);
    bar_->addButton(trash_);
    return bar_;
}

void DuplicatesView::connectModel() {
    const TidyViewModel* model = &context_.model;
    for (const auto signal : {&TidyViewModel::duplicateReportChanged, &TidyViewModel::inventoryChanged}) {
        connect(model, signal, this, &DuplicatesView::reload);
    }
    for (const auto signal : {&TidyViewModel::phaseChanged, &TidyViewModel::rootURLChanged,
                              &TidyViewModel::isApplyingChanged, &TidyViewModel::isTrashingChanged}) {
        connect(model, signal, this, &DuplicatesView::refresh);
    }
    connect(model, &TidyViewModel::isScanningDuplicatesChanged, this, &DuplicatesView::followSearch);
    connect(model, &TidyViewModel::duplicateSearchProgressed, this, &DuplicatesView::showSearchProgress);
    connect(notices_, &TrashNotices::runChanged, this, &DuplicatesView::refreshRun);
    followTrashProgress();
}

// What the controller has.

QWidget* DuplicatesView::page() const {
    const TidyViewModel& model = context_.model;
    if (model.isScanningDuplicates()) return searching_;
    const bool isOfFolder = model.inventory() && model.planRoot() == model.rootURL();
    if (!isOfFolder || !model.duplicateReport()) return start_;
    return model.duplicateReport()->groups.empty() ? static_cast<QWidget*>(none_) : found_;
}

void DuplicatesView::reload() {
    const Url root = context_.model.planRoot().value_or(Url());
    const ListSight before(*list_, model_);
    if (root != root_) filter_->clear();
    model_.reload();
    if (root == root_) before.restore();
    root_ = root;
    showListOrNothing();
    refresh();
}

void DuplicatesView::refresh() {
    showPage();
    refreshStart();
    refreshFigures();
    refreshRun();
    const bool isFound = page() == found_;
    header_->setLede(isFound ? u"Click a file to keep it. Extras go to the Trash — you can put them back here or from "
                               "the Finder."_s
                             : QString());
    autoPick_->setVisible(isFound);
}

/// Where the page that had the focus goes, the one that takes its place has it.
void DuplicatesView::showPage() {
    QWidget* shown = page();
    const QWidget* focus = QApplication::focusWidget();
    // The page has the focus itself as long as what should have it can not be pressed.
    if (pages_->currentWidget() == shown && focus != shown) return;
    const bool hadFocus = focus != nullptr && (focus == pages_ || pages_->isAncestorOf(focus));
    pages_->setCurrentWidget(shown);
    if (!hadFocus) return;
    refreshStart();  // what can not be pressed can not have the focus
    if (shown == found_)
        list_->setFocus();
    else if (shown == none_)
        againForNone_->setFocus();
    else if (auto* button = shown->findChild<QPushButton*>(u"progressCancel"_s))
        button->setFocus();
    else
        find_->setFocus();
}

void DuplicatesView::refreshStart() {
    const QString reason =
        CommandAvailability::reasonAgainst(Commands::findDuplicates, context_.model, context_.desktop);
    const Case phase = context_.model.phase().kind;
    const bool hasFolder = phase == Case::ready || phase == Case::scanning;
    find_->setVisible(hasFolder);
    choose_->setVisible(!hasFolder);
    start_->setFootnote(reason);
    Buttons::setAvailable(find_, reason, QString());
    for (QPushButton* again : {again_, againForNone_}) {
        Buttons::setAvailable(again, reason, u"Compares the files of the preview once more"_s);
    }
}

void DuplicatesView::refreshFigures() {
    const qint64 count = model_.extras();
    const QString size = Formats::byteSize(model_.reclaimableBytes());
    const auto& inventory = context_.model.inventory();
    const auto compared = static_cast<qint64>(inventory ? inventory->fileCount() : 0);
    stats_->setStats({{Formats::count(model_.groups()), u"duplicate groups"_s},
                      {Formats::count(count), count == 1 ? u"extra"_s : u"extras"_s},
                      {size, u"can be freed"_s, true},
                      {Formats::count(compared), u"files compared"_s}});
    QString what = u"· %1, each checked again first"_s.arg(size);
    if (const qint64 hidden = model_.hiddenExtras(); hidden > 0) what += u" · "_s + notShown(hidden);
    bar_->setSummary(extras(count), what);
}

/// Follows the beginning and the end of runs.
void DuplicatesView::refreshRun() {
    const bool isOwn = notices_->isOwnRun();
    showRun(isOwn, u"Checking each file again, then moving extras to the Trash…"_s);
    bar_->setVisible(!isOwn);
    const QString reason = CommandAvailability::againstRun(context_.model);
    model_.setLocked(reason);
    Buttons::setAvailable(
        autoPick_, reason,
        u"Oldest, newest, shortest or deepest path, for every group at once. You can still click any copy."_s);
    Buttons::setAvailable(trash_, reason,
                          u"Moves every copy but the kept one of each group. You will be asked to confirm."_s);
}

// Searching.

void DuplicatesView::followSearch() {
    if (context_.model.isScanningDuplicates()) {
        search_->reset();
        sinceSearch_.start();
    }
    refresh();
}

void DuplicatesView::showSearchProgress(quint64 files, quint64 filesTotal, quint64 bytes, quint64 bytesTotal) {
    constexpr qint64 untilARateIsKnown = 500;
    const qint64 milliseconds = sinceSearch_.isValid() ? sinceSearch_.elapsed() : 0;
    const double rate =
        milliseconds < untilARateIsKnown ? 0 : static_cast<double>(bytes) * 1000 / static_cast<double>(milliseconds);
    search_->setDetail(SpaceTexts::hashed(files, filesTotal, bytes, bytesTotal, rate));
    search_->setProgress(static_cast<qint64>(bytes), static_cast<qint64>(bytesTotal));
}

/// On little room the list comes first, and the figures go.
bool DuplicatesView::eventFilter(QObject* watched, QEvent* event) {
    if (watched == found_ && event->type() == QEvent::Resize) {
        stats_->setVisible(found_->height() >= context_.theme.scaled(lowPage));
    }
    return QWidget::eventFilter(watched, event);
}

void DuplicatesView::showListOrNothing() {
    const bool isNothing = model_.rowCount() == 0 && !filter_->text().isEmpty();
    stack_->setCurrentWidget(isNothing ? static_cast<QWidget*>(noMatch_) : list_);
}

// Commands.

void DuplicatesView::act(int row, int action) {
    if (action == DuplicatesModel::reveal)
        context_.desktop.reveal(model_.url(row));
    else
        model_.toggle(row);
}

Sheet* DuplicatesView::confirmation() {
    if (sheet_) return sheet_;
    sheet_ = makeSheet(u"trashExtrasSheet"_s);
    sheet_->setTitle(u"Move duplicate extras to the Trash?"_s);
    sheet_->setMessage(
        u"The copy you chose to keep stays. Each extra is checked again first, and anything that changed is left "
        "alone. You can put files back from the Recovery Center or the Finder Trash."_s);
    connect(sheet_, &Sheet::confirmed, this, [this] {
        notices_->expectRun();
        context_.model.trashExtras();
    });
    return sheet_;
}

void DuplicatesView::requestTrash() {
    const QString what = model_.extras() == 1 ? u"1 Extra"_s : Formats::count(model_.extras()) + u" Extras"_s;
    Sheet* sheet = confirmation();
    sheet->clearPoints();
    if (const qint64 hidden = model_.hiddenExtras(); hidden > 0) sheet->addPoint(Glyph::search, notShown(hidden));
    sheet->setConfirm(u"Move %1 to Trash"_s.arg(what), true);
    sheet->open();
}
