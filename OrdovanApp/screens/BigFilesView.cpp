#include "OrdovanApp/screens/BigFilesView.h"

#include "OrdovanApp/controller/CommandCenter.h"
#include "OrdovanApp/controller/TidyViewModel.h"
#include "OrdovanApp/models/EngineTexts.h"
#include "OrdovanApp/models/Formats.h"
#include "OrdovanApp/models/Language.h"
#include "OrdovanApp/screens/CommandAvailability.h"
#include "OrdovanApp/screens/Desktop.h"
#include "OrdovanApp/screens/ListSight.h"
#include "OrdovanApp/screens/QuickLook.h"
#include "OrdovanApp/screens/TrashNotices.h"
#include "OrdovanApp/theme/BottomBar.h"
#include "OrdovanApp/theme/Buttons.h"
#include "OrdovanApp/theme/EmptyState.h"
#include "OrdovanApp/theme/FilterField.h"
#include "OrdovanApp/theme/RowsView.h"
#include "OrdovanApp/theme/ScreenHeader.h"
#include "OrdovanApp/theme/Segments.h"
#include "OrdovanApp/theme/Sheet.h"
#include "OrdovanApp/theme/StatRow.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QPushButton>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;
using Case = TidyViewModel::Phase::Case;

BigFilesView::BigFilesView(const AppContext& context, QWidget* parent)
    : SectionView(context, tr("Big Files"), parent),
      model_(context.model, context.theme),
      choose_(Buttons::quiet(tr("Choose Folder…"), this)),
      notices_(new TrashNotices(context, TrashNotices::What::files, this)) {
    setObjectName(u"bigFiles"_s);
    choose_->setObjectName(u"chooseFolder"_s);
    CommandAvailability::bind(context_, choose_, Commands::chooseFolder);
    header_->addButton(choose_);
    pages_->addWidget(makeNoPreview());
    pages_->addWidget(makeFiles());
    assemble(notices_);
    connectModel();
    reload();
}

void BigFilesView::connectModel() {
    const TidyViewModel* model = &context_.model;
    for (const auto signal : {&TidyViewModel::inventoryChanged, &TidyViewModel::rootURLChanged}) {
        connect(model, signal, this, &BigFilesView::reload);
    }
    for (const auto signal :
         {&TidyViewModel::phaseChanged, &TidyViewModel::isApplyingChanged, &TidyViewModel::isTrashingChanged}) {
        connect(model, signal, this, &BigFilesView::refresh);
    }
    for (const auto signal : {&TidyViewModel::duplicateReportChanged, &TidyViewModel::isScanningDuplicatesChanged}) {
        connect(model, signal, this, &BigFilesView::refreshCopies);
    }
    connect(&model_, &BigFilesModel::tickedChanged, this, &BigFilesView::refreshRun);
    connect(notices_, &TrashNotices::runChanged, this, &BigFilesView::refreshRun);
    followTrashProgress();
}

// What the controller has.

bool BigFilesView::hasPreview() const {
    return context_.model.inventory() && context_.model.planRoot() == context_.model.rootURL();
}

void BigFilesView::reload() {
    const Url root = context_.model.planRoot().value_or(Url());
    const ListSight before(*list_, model_);
    if (root != root_) {
        clearFilters();
        if (quickLook_) quickLook_->close();
    }
    model_.reload();
    refreshKinds();
    if (root == root_) before.restore();
    root_ = root;
    refresh();
}

void BigFilesView::refresh() {
    pages_->setCurrentWidget(hasPreview() ? files_ : noPreview_);
    refreshHeader();
    refreshFigures();
    refreshRun();
    showListOrNothing();
}

void BigFilesView::refreshHeader() {
    const bool isScanning = context_.model.phase().kind == Case::scanning;
    header_->setFolder(hasPreview() ? std::optional(Formats::path(*context_.model.rootURL())) : std::nullopt);
    header_->setLede(hasPreview() ? tr("The largest files in this folder. Looking changes nothing; files you tick and "
                                       "confirm go to the Trash, and you can put them back.")
                                  : QString());
    choose_->setVisible(hasPreview());
    noPreview_->setFootnote(isScanning ? tr("Previewing — reading metadata only…") : QString());
    chooseFirst_->setVisible(!isScanning);
}

/// One segment for each kind among the largest files, after the one for all. The chosen kind stays while it is there.
void BigFilesView::refreshKinds() {
    offered_ = model_.kinds();
    QStringList texts = {tr("All kinds")};
    for (const OrdovanFileCategory kind : offered_) texts += EngineTexts::category(kind);
    kinds_->setSegments(texts);
    chooseKind(kinds_->current());
}

void BigFilesView::refreshFigures() {
    const BigFilesModel::Total total = model_.total();
    QList<StatRow::Stat> stats = {{Formats::count(total.files), tr("largest files", nullptr, total.files)},
                                  {Formats::byteSize(total.bytes), tr("in the largest files", nullptr, total.files)}};
    const auto& report = context_.model.duplicateReport();
    if (report) stats.append({Formats::byteSize(report->reclaimableBytes()), tr("in duplicate copies"), true});
    stats_->setStats(stats);
    findCard_->setVisible(!report);
    refreshHint();
}

void BigFilesView::refreshCopies() {
    refreshFigures();
    Buttons::setAvailable(
        find_, CommandAvailability::reasonAgainst(Commands::findDuplicates, context_.model, context_.desktop), {});
}

/// Follows the ticks, and the beginning and the end of runs.
void BigFilesView::refreshRun() {
    const bool isOwn = notices_->isOwnRun();
    showRun(isOwn, tr("Checking each file again, then moving files to the Trash…"));
    bar_->setVisible(!isOwn);
    const QString running = CommandAvailability::againstRun(context_.model);
    model_.setLocked(running);

    const BigFilesModel::Ticked ticked = model_.ticked();
    const QString hint = tr("Tick files to clean up. Trashed files can be put back from the Recovery Center.");
    //: What follows "3 files": they are ticked, and their size
    QString what = tr("ticked · %1").arg(Formats::byteSize(ticked.bytes));
    if (ticked.hidden > 0) {
        what += u" · "_s + tr("%1 of them not shown", nullptr, ticked.hidden).arg(Formats::count(ticked.hidden));
    }
    if (ticked.files == 0)
        bar_->setSummary(QString(), hint);
    else
        bar_->setSummary(Formats::files(ticked.files), what + u". "_s + hint);
    const bool hasNone = running.isEmpty() && ticked.files == 0;
    Buttons::setAvailable(trash_, hasNone ? tr("Tick at least one file first.") : running,
                          tr("Moves the ticked files to the Trash. You will be asked to confirm."));
    refreshCopies();
}

void BigFilesView::showListOrNothing() {
    const bool isAnySize = sizes_->current() <= 0;
    noneOfSize_->setMessage(isAnySize ? tr("This folder has no files.") : tr("Try a smaller size filter."));
    noneOfSize_->setTitle(isAnySize ? tr("No files here") : tr("No files this size"));
    QWidget* shown = list_;
    if (!model_.hasFilesOfSize())
        shown = noneOfSize_;
    else if (model_.rowCount() == 0)
        shown = noMatch_;
    stack_->setCurrentWidget(shown);
    refreshHint();
}

/// Where no file is in sight there is nothing to hint at, and no room either.
void BigFilesView::refreshHint() {
    installers_->setVisible(model_.hasInstallers() && !hintClosed_ && stack_->currentWidget() == list_);
}

// Filters.

void BigFilesView::chooseKind(int segment) {
    const auto place = static_cast<std::size_t>(segment) - 1;
    const bool isKind = segment > 0 && place < offered_.size();
    model_.setKind(isKind ? std::optional(offered_[place]) : std::nullopt);
    showListOrNothing();
}

void BigFilesView::clearFilters() {
    search_->clear();
    kinds_->setCurrent(0);
    sizes_->setCurrent(0);
}

// The list.

/// Space looks into a file here, so Return ticks it.
bool BigFilesView::eventFilter(QObject* watched, QEvent* event) {
    if (watched == files_ && event->type() == QEvent::Resize) refreshRoom();
    const int row = list_->currentIndex().row();
    if (watched != list_ || event->type() != QEvent::KeyPress || row < 0) return QWidget::eventFilter(watched, event);
    const auto* key = static_cast<const QKeyEvent*>(event);
    if (key->modifiers() & ~Qt::KeypadModifier) return false;
    switch (key->key()) {
        case Qt::Key_Space:
            lookAt(row);
            return true;
        case Qt::Key_Return:
        case Qt::Key_Enter:
            model_.toggle(row);
            return true;
        default:
            return false;
    }
}

void BigFilesView::act(int row, int action) {
    switch (action) {
        case BigFilesModel::quickLook:
            list_->setCurrentIndex(model_.index(row));
            lookAt(row);
            break;
        case BigFilesModel::reveal:
            context_.desktop.reveal(model_.url(row));
            break;
        case BigFilesModel::selectForTrash:
            model_.toggle(row);
            break;
        default:
            break;
    }
}

void BigFilesView::lookAt(int row) {
    const Url file = model_.url(row);
    const auto& inventory = context_.model.inventory();
    if (!inventory) return;
    const auto entry = std::ranges::find(inventory->files, file, &OrdovanInventoryEntry::url);
    if (entry == inventory->files.end()) return;
    if (!quickLook_) {
        quickLook_ = new QuickLook(context_, this);
        connect(quickLook_, &QuickLook::steered, this, &BigFilesView::steer);
    }
    quickLook_->showFile(*entry, root_);
}

bool BigFilesView::quickLookIsOpen() const {
    return quickLook_ && quickLook_->isVisible();
}

/// Moves the list's current row with a key that was pressed in the quick look; that follows.
void BigFilesView::steer(int key) {
    QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
    QCoreApplication::sendEvent(list_, &press);
}

void BigFilesView::hideEvent(QHideEvent* event) {
    if (quickLook_) quickLook_->close();
    QWidget::hideEvent(event);
}

// Commands.

Sheet* BigFilesView::confirmation() {
    if (sheet_) return sheet_;
    sheet_ = makeSheet(u"trashFilesSheet"_s);
    connect(sheet_, &Sheet::confirmed, this, [this] {
        notices_->expectRun();
        context_.model.trashBigFiles(std::exchange(asked_, {}));
    });
    return sheet_;
}

/// What is asked about is what goes, in the sizes that were seen.
void BigFilesView::requestTrash() {
    asked_ = model_.tickedItems();
    const auto files = static_cast<qint64>(asked_.size());
    const QString size = Formats::byteSize(model_.ticked().bytes);
    Sheet* sheet = confirmation();
    sheet->setTitle(tr("Move %1 files to the Trash?", nullptr, pluralOf(files)).arg(Formats::count(files)));
    //: A file and its size
    const QString what = files == 1 ? tr("%1 (%2)").arg(Formats::fileName(asked_.front().url), size) : size;
    sheet->setMessage(tr("%1 goes to the macOS Trash, not deleted. Each file is checked again first; anything that "
                         "changed is left alone. Put files back from the Recovery Center.")
                          .arg(what));
    sheet->setConfirm(tr("Move %1 files to Trash", nullptr, pluralOf(files)).arg(Formats::count(files)), true);
    sheet->open();
}
