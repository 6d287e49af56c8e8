#include "OrdovanApp/screens/DuplicatesView.h"

#include "OrdovanApp/controller/CommandCenter.h"
#include "OrdovanApp/controller/TidyViewModel.h"
#include "OrdovanApp/models/EngineTexts.h"
#include "OrdovanApp/models/Formats.h"
#include "OrdovanApp/models/Language.h"
#include "OrdovanApp/screens/CommandAvailability.h"
#include "OrdovanApp/screens/Desktop.h"
#include "OrdovanApp/screens/DuplicatesNotices.h"
#include "OrdovanApp/screens/ListSight.h"
#include "OrdovanApp/screens/SpaceTexts.h"
#include "OrdovanApp/theme/BottomBar.h"
#include "OrdovanApp/theme/Buttons.h"
#include "OrdovanApp/theme/EmptyState.h"
#include "OrdovanApp/theme/FilterField.h"
#include "OrdovanApp/theme/ProgressStrip.h"
#include "OrdovanApp/theme/RowsView.h"
#include "OrdovanApp/theme/ScreenHeader.h"
#include "OrdovanApp/theme/Sheet.h"
#include "OrdovanApp/theme/StatRow.h"

#include <QHBoxLayout>
#include <QMenu>
#include <QPushButton>
#include <QStackedWidget>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;
using Case = TidyViewModel::Phase::Case;

namespace {

constexpr int lowPage = 340;
constexpr int leastListHeight = 60;

QString extras(qint64 count) {
    return DuplicatesView::tr("%1 extras", nullptr, pluralOf(count)).arg(Formats::count(count));
}

QString notShown(qint64 count) {
    return DuplicatesView::tr("%1 of them not shown", nullptr, pluralOf(count)).arg(Formats::count(count));
}

}  // namespace

DuplicatesView::DuplicatesView(const AppContext& context, QWidget* parent)
    : SectionView(context, tr("Duplicates"), parent),
      model_(context.model, context.theme),
      notices_(new DuplicatesNotices(context, this)) {
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
    autoPick_ = Buttons::quiet(tr("Auto-pick the copy to keep"));
    autoPick_->setObjectName(u"autoPick"_s);
    auto* menu = new QMenu(autoPick_);
    for (const OrdovanKeepPolicy policy : OrdovanKeepPolicies::allCases) {
        QAction* action = menu->addAction(EngineTexts::keepPolicy(policy));
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
    start_->setTitle(tr("Find exact duplicates"));
    start_->setMessage(tr("Scans the files from your current preview and groups byte-for-byte identical copies."));
    find_ = makeSearchButton(Buttons::primary(tr("Find Duplicates")));
    find_->setObjectName(u"findDuplicates"_s);
    start_->addButton(find_);
    choose_ = Buttons::primary(tr("Choose Folder…"));
    choose_->setObjectName(u"chooseFolder"_s);
    CommandAvailability::bind(context_, choose_, Commands::chooseFolder);
    start_->addButton(choose_);
    return start_;
}

QWidget* DuplicatesView::makeSearching() {
    searching_ = makeProgressPage(u"searchingPage"_s, search_);
    search_->setObjectName(u"searchProgress"_s);
    search_->setText(tr("Hashing files to find exact duplicates…"));
    connect(search_, &ProgressStrip::cancelled, &context_.model, &TidyViewModel::cancelDuplicateSearch);
    return searching_;
}

QWidget* DuplicatesView::makeNone() {
    none_ = new EmptyState(context_.theme, Glyph::check, pages_);
    none_->setObjectName(u"nonePage"_s);
    none_->setTitle(tr("No exact duplicates"));
    none_->setMessage(tr("Every file in this folder is unique by content."));
    againForNone_ = makeSearchButton(Buttons::quiet(tr("Search Again")));
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
    filter_ = new FilterField(context_.theme, tr("Search duplicates"), row);
    filter_->setObjectName(u"search"_s);
    connect(filter_, &QLineEdit::textChanged, this, [this](const QString& text) {
        model_.setQuery(text);
        showListOrNothing();
        refreshFigures();
    });
    again_ = makeSearchButton(Buttons::quiet(tr("Search Again"), row));
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
    list_->setAccessibleName(tr("Groups of identical copies"));
    list_->setMaximumColumns(3);
    list_->setModel(&model_);
    connect(list_, &RowsView::actionTriggered, this, &DuplicatesView::act);
    noMatch_ = makeNoMatch(stack_, tr("No duplicate matches the search."), [this] {
        filter_->clear();
        list_->setFocus();
    });
    stack_->addWidget(list_);
    stack_->addWidget(noMatch_);
    return stack_;
}

QWidget* DuplicatesView::makeBar() {
    bar_ = new BottomBar(context_.theme, found_);
    trash_ = Buttons::primary(tr("Move All Extras to Trash…"), bar_);
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
    connect(notices_, &DuplicatesNotices::runChanged, this, &DuplicatesView::refreshRun);
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
    pages_->setCurrentWidget(page());
    refreshStart();
    refreshFigures();
    refreshUnread();
    refreshRun();
    const bool isFound = page() == found_;
    header_->setLede(isFound
                         ? tr("Click a file to keep it. Extras go to the Trash — you can put them back here or from "
                              "the Finder.")
                         : QString());
    autoPick_->setVisible(isFound);
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
        Buttons::setAvailable(again, reason, tr("Compares the files of the preview once more"));
    }
}

void DuplicatesView::refreshFigures() {
    const qint64 count = model_.extras();
    const QString size = Formats::byteSize(model_.reclaimableBytes());
    const auto& inventory = context_.model.inventory();
    const auto unread = static_cast<qint64>(context_.model.unreadFiles().size());
    const qint64 compared = (inventory ? static_cast<qint64>(inventory->fileCount()) : 0) - unread;
    stats_->setStats({{Formats::count(model_.groups()), tr("duplicate groups", nullptr, model_.groups())},
                      {Formats::count(count), tr("extras", nullptr, pluralOf(count))},
                      {size, tr("can be freed"), true},
                      {Formats::count(compared), tr("files compared", nullptr, pluralOf(compared))}});
    QString what = tr("· %1, each checked again first").arg(size);
    if (const qint64 hidden = model_.hiddenExtras(); hidden > 0) what += u" · "_s + notShown(hidden);
    bar_->setSummary(extras(count), what);
}

void DuplicatesView::refreshUnread() {
    const bool isResult = page() == found_ || page() == none_;
    if (isResult)
        notices_->showUnread(context_.model.unreadFiles(), context_.model.planRoot().value_or(Url()));
    else
        notices_->showUnread({}, Url());
}

/// Follows the beginning and the end of runs.
void DuplicatesView::refreshRun() {
    const bool isOwn = notices_->isOwnRun();
    showRun(isOwn, tr("Checking each file again, then moving extras to the Trash…"));
    bar_->setVisible(!isOwn);
    const QString reason = CommandAvailability::againstRun(context_.model);
    model_.setLocked(reason);
    Buttons::setAvailable(
        autoPick_, reason,
        tr("Oldest, newest, shortest or deepest path, for every group at once. You can still click any copy."));
    Buttons::setAvailable(trash_, reason,
                          tr("Moves every copy but the kept one of each group. You will be asked to confirm."));
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
    sheet_->setTitle(tr("Move duplicate extras to the Trash?"));
    sheet_->setMessage(
        tr("The copy you chose to keep stays. Each extra is checked again first, and anything that changed is left "
           "alone. You can put files back from the Recovery Center or the Finder Trash."));
    connect(sheet_, &Sheet::confirmed, this, [this] {
        notices_->expectRun();
        context_.model.trashExtras();
    });
    return sheet_;
}

void DuplicatesView::requestTrash() {
    Sheet* sheet = confirmation();
    sheet->clearPoints();
    if (const qint64 hidden = model_.hiddenExtras(); hidden > 0) sheet->addPoint(Glyph::search, notShown(hidden));
    const qint64 extras = model_.extras();
    sheet->setConfirm(tr("Move %1 Extras to Trash", nullptr, pluralOf(extras)).arg(Formats::count(extras)), true);
    sheet->open();
}
