#include "OrdovanApp/screens/SmartInboxView.h"

#include "OrdovanApp/controller/CommandCenter.h"
#include "OrdovanApp/controller/TidyViewModel.h"
#include "OrdovanApp/models/EngineTexts.h"
#include "OrdovanApp/models/Formats.h"
#include "OrdovanApp/screens/CommandAvailability.h"
#include "OrdovanApp/screens/Desktop.h"
#include "OrdovanApp/screens/RunTexts.h"
#include "OrdovanApp/screens/SmartInboxNotices.h"
#include "OrdovanApp/screens/SmartInboxPlan.h"
#include "OrdovanApp/screens/SmartInboxTexts.h"
#include "OrdovanApp/screens/SmartInboxWelcome.h"
#include "OrdovanApp/theme/Buttons.h"
#include "OrdovanApp/theme/EmptyState.h"
#include "OrdovanApp/theme/ProgressStrip.h"
#include "OrdovanApp/theme/ScreenHeader.h"
#include "OrdovanApp/theme/Sheet.h"
#include "OrdovanCore/Categories.h"

#include <QPushButton>
#include <QStackedWidget>

#include <chrono>

using namespace Qt::StringLiterals;
using Case = TidyViewModel::Phase::Case;

namespace {

constexpr std::chrono::milliseconds noticeable{300};  // what takes longer is said to go on

QString outputFolder() {
    return Formats::text(OrdovanOutput::folderName);
}

}  // namespace

SmartInboxView::SmartInboxView(const AppContext& context, QWidget* parent)
    : SectionView(context, tr("Smart Inbox"), parent),
      choose_(Buttons::quiet(tr("Choose Folder…"), this)),
      notices_(new SmartInboxNotices(context, this)) {
    setObjectName(u"smartInbox"_s);
    choose_->setObjectName(u"chooseFolder"_s);
    CommandAvailability::bind(context_, choose_, Commands::chooseFolder);
    header_->addButton(choose_);
    makePages();
    makeRescanning();
    assemble(notices_);
    connectModel();
    refresh();
    refreshRun();
}

void SmartInboxView::makePages() {
    welcome_ = new SmartInboxWelcome(context_, pages_);
    scanning_ = makeScanning();
    plan_ = new SmartInboxPlan(context_, pages_);
    connect(plan_, &SmartInboxPlan::organizeRequested, this, &SmartInboxView::requestOrganize);
    connect(plan_, &SmartInboxPlan::exportRequested, this, &SmartInboxView::requestExport);
    for (QWidget* page : {welcome_, scanning_, makeFailed(), makeNothing(), static_cast<QWidget*>(plan_)}) {
        pages_->addWidget(page);
    }
}

void SmartInboxView::beginScan(ProgressStrip* strip) {
    strip->reset();
    strip->setText(SmartInboxTexts::scanning());
}

/// Has what shows the progress of a scan follow it, and cancel it.
void SmartInboxView::makeScanProgress(QWidget* place, ProgressStrip* strip) {
    place->setAccessibleName(tr("Previewing folder, reading metadata only."));
    connect(strip, &ProgressStrip::cancelled, &context_.model, &TidyViewModel::cancelPreview);
    connect(&context_.model, &TidyViewModel::previewProgressed, strip, [strip](quint64 files, quint64 folders) {
        strip->setText(SmartInboxTexts::scanning());
        strip->setBusy();
        strip->setDetail(SmartInboxTexts::scanned(files, folders));
    });
    connect(&context_.model, &TidyViewModel::recoveryProgressed, strip, [strip](quint64 done, quint64 total) {
        strip->setText(RunTexts::recovering());
        strip->setProgress(static_cast<qint64>(done), static_cast<qint64>(total));
        strip->setDetail(RunTexts::done(done, total));
    });
}

QWidget* SmartInboxView::makeScanning() {
    QWidget* page = makeProgressPage(u"scanningPage"_s, scan_);
    scan_->setObjectName(u"scanProgress"_s);
    makeScanProgress(page, scan_);
    return page;
}

void SmartInboxView::makeRescanning() {
    rescanning_ = makeFoot(u"rescanProgress"_s, rescan_);
    rescanning_->setObjectName(u"rescanning"_s);
    makeScanProgress(rescanning_, rescan_);
    rescanDelay_.setObjectName(u"rescanDelay"_s);
    rescanDelay_.setSingleShot(true);
    rescanDelay_.setInterval(noticeable);
    connect(&rescanDelay_, &QTimer::timeout, this, &SmartInboxView::showRescan);
}

QWidget* SmartInboxView::makeFailed() {
    failed_ = new EmptyState(context_.theme, Glyph::warning, pages_);
    failed_->setObjectName(u"failedPage"_s);
    failed_->setTitle(tr("Couldn't preview this folder"));
    QPushButton* again = Buttons::quiet(tr("Preview Again"));
    again->setObjectName(u"previewAgain"_s);
    CommandAvailability::bind(context_, again, Commands::previewAgain);
    failed_->addButton(again);
    QPushButton* another = Buttons::primary(tr("Try Another Folder"));
    another->setObjectName(u"tryAnotherFolder"_s);
    CommandAvailability::bind(context_, another, Commands::chooseFolder);
    failed_->addButton(another);
    return failed_;
}

QWidget* SmartInboxView::makeNothing() {
    nothing_ = new EmptyState(context_.theme, Glyph::check, pages_);
    nothing_->setObjectName(u"nothingPage"_s);
    nothing_->setTitle(SmartInboxTexts::nothingTitle());
    nothing_->setMessage(SmartInboxTexts::nothingMessage());
    return nothing_;
}

void SmartInboxView::connectModel() {
    const TidyViewModel* model = &context_.model;
    connect(model, &TidyViewModel::phaseChanged, this, &SmartInboxView::refresh);
    connect(model, &TidyViewModel::rootURLChanged, this, &SmartInboxView::refresh);
    connect(model, &TidyViewModel::isApplyingChanged, this, &SmartInboxView::refreshRun);
    connect(model, &TidyViewModel::isTrashingChanged, this, &SmartInboxView::refreshRun);
    connect(model, &TidyViewModel::runProgressed, this,
            [this](quint64 done, quint64 total) { showRunProgress(RunTexts::done(done, total), done, total); });
}

/// The plan at hand is that of the chosen folder, not of the one before it.
bool SmartInboxView::showsPlanOfFolder() const {
    return context_.model.plan() && context_.model.planRoot() == context_.model.rootURL();
}

QWidget* SmartInboxView::page() const {
    switch (context_.model.phase().kind) {
        case Case::idle:
            return welcome_;
        case Case::failed:
            return failed_;
        case Case::scanning:
            if (!showsPlanOfFolder()) return scanning_;
            break;
        case Case::ready:
            break;
    }
    const bool hasRows = plan_->rows() > 0;
    return hasRows ? static_cast<QWidget*>(plan_) : nothing_;
}

void SmartInboxView::refresh() {
    const TidyViewModel::Phase& phase = context_.model.phase();
    if (phase.kind == Case::failed) {
        failed_->setMessage(EngineTexts::sentence(phase.message));
        failed_->setFootnote(
            tr("“%1” is gone, is no folder, or may not be read.").arg(Formats::path(*context_.model.rootURL())));
    }
    if (phase.kind == Case::ready) plan_->reload();
    if (page() == scanning_ && pages_->currentWidget() != scanning_) beginScan(scan_);
    pages_->setCurrentWidget(page());
    refreshHeader();
    refreshFoot();
    plan_->refreshActions();
}

void SmartInboxView::refreshHeader() {
    const Case phase = context_.model.phase().kind;
    const auto& root = context_.model.rootURL();
    const bool hasFolder = root && phase != Case::idle;
    header_->setFolder(hasFolder ? std::optional(Formats::path(*root)) : std::nullopt);
    choose_->setVisible(hasFolder && phase != Case::failed);
    QString lede;
    if (phase == Case::ready) {
        lede = tr("ordovan+ previews this folder read-only. Nothing changes until you apply.");
        if (context_.model.partialScan()) lede += u' ' + tr("Scan reached its limit; results are partial.");
    } else if (page() == plan_ || page() == nothing_) {
        lede = SmartInboxTexts::scanning();
    }
    header_->setLede(lede);
}

/// Follows the beginning and the end of runs.
void SmartInboxView::refreshRun() {
    const bool isApplying = context_.model.isApplying();
    showRun(isApplying, organizes_ ? tr("Organizing files…") : tr("Putting files back…"));
    if (!isApplying) organizes_ = false;
    refreshFoot();
    plan_->refreshActions();
}

/// In place of the bar: how far a run is, or a new scan of the folder whose plan is in sight.
void SmartInboxView::refreshFoot() {
    const bool isApplying = context_.model.isApplying();
    const bool isRescan = !isApplying && context_.model.phase().kind == Case::scanning && page() != scanning_;
    if (!isRescan) {
        rescanning_->hide();
        rescanDelay_.stop();
    } else if (rescanning_->isHidden() && !rescanDelay_.isActive()) {
        beginScan(rescan_);
        rescanDelay_.start();
    }
    plan_->setBarShown(!isApplying && rescanning_->isHidden());
}

/// Most folders are scanned before anybody could read this: the bar would only flicker.
void SmartInboxView::showRescan() {
    rescanning_->show();
    refreshFoot();
}

// Commands.

void SmartInboxView::requestOrganize() {
    if (!CommandAvailability::reasonAgainst(Commands::organize, context_.model, context_.desktop).isEmpty()) return;
    confirmation()->setConfirm(SmartInboxTexts::organizeConfirm(plan_->tickedFiles()));
    confirmation()->open();
}

Sheet* SmartInboxView::confirmation() {
    if (sheet_) return sheet_;
    sheet_ = makeSheet(u"organizeSheet"_s);
    sheet_->setTitle(tr("Organize these files?"));
    sheet_->setMessage(tr("Files move into the %1 folder inside this folder. Nothing is copied or deleted, and you can "
                          "undo this from the Recovery Center.")
                           .arg(outputFolder()));
    sheet_->addPoint(Glyph::undo, tr("Applying is explicit and reversible"));
    sheet_->addPoint(Glyph::check, tr("Cross-volume moves are copy-verified before removal"));
    connect(sheet_, &Sheet::confirmed, this, &SmartInboxView::organize);
    return sheet_;
}

void SmartInboxView::organize() {
    organizes_ = true;
    notices_->expectOrganize();
    context_.model.organize();
}

void SmartInboxView::requestExport() {
    if (!CommandAvailability::reasonAgainst(Commands::exportPlan, context_.model, context_.desktop).isEmpty()) return;
    const QString folder = Formats::fileName(*context_.model.planRoot()).replace(u'/', u'-');
    context_.desktop.choosePlanFile(this, tr("A report of the preview. Nothing is moved."),
                                    tr("ordovan+ plan – %1").arg(folder),
                                    [self = QPointer(this)](const Url& file, OrdovanPlanExportFormat format) {
                                        if (self) self->context_.model.exportPlan(file, format);
                                    });
}
