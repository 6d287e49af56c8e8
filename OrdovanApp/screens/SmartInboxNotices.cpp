#include "OrdovanApp/screens/SmartInboxNotices.h"

#include "OrdovanApp/controller/CommandCenter.h"
#include "OrdovanApp/controller/TidyViewModel.h"
#include "OrdovanApp/models/Formats.h"
#include "OrdovanApp/screens/CommandAvailability.h"
#include "OrdovanApp/screens/SmartInboxTexts.h"
#include "OrdovanApp/theme/Announcer.h"
#include "OrdovanApp/theme/Buttons.h"

#include <QPushButton>
#include <QVBoxLayout>

#include <string>
#include <unordered_set>
#include <utility>

using namespace Qt::StringLiterals;

SmartInboxNotices::SmartInboxNotices(const AppContext& context, QWidget* parent) : QWidget(parent), context_(context) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 14);
    layout->setSpacing(8);
    refusal_ = addBanner(Banner::Kind::error, u"refusal"_s);
    run_ = addBanner(Banner::Kind::info, u"runSummary"_s);
    warning_ = addBanner(Banner::Kind::warning, u"journalWarning"_s);
    export_ = addBanner(Banner::Kind::info, u"exportResult"_s);
    undo_ = Buttons::quiet(u"Undo"_s);
    undo_->setObjectName(u"undoRun"_s);
    run_->addButton(undo_);
    connect(undo_, &QPushButton::clicked, this, &SmartInboxNotices::undoRun);

    const TidyViewModel* model = &context_.model;
    connect(model, &TidyViewModel::isApplyingChanged, this, &SmartInboxNotices::followRun);
    connect(model, &TidyViewModel::isTrashingChanged, this, &SmartInboxNotices::refreshUndo);
    connect(model, &TidyViewModel::recoverableJournalChanged, this, &SmartInboxNotices::refreshUndo);
    connect(model, &TidyViewModel::journalWarningChanged, this, &SmartInboxNotices::showWarning);
    connect(model, &TidyViewModel::runRefusalChanged, this, &SmartInboxNotices::showRefusal);
    connect(model, &TidyViewModel::planExported, this, &SmartInboxNotices::showExport);
    connect(model, &TidyViewModel::rootURLChanged, this, [this] {
        run_->hide();
        export_->hide();
        refreshRoom();
    });
    showWarning();
    showRefusal();
}

Banner* SmartInboxNotices::addBanner(Banner::Kind kind, const QString& name) {
    auto* banner = new Banner(context_.theme, kind, this);
    banner->setObjectName(name);
    banner->hide();
    layout()->addWidget(banner);
    connect(banner, &Banner::closed, this, &SmartInboxNotices::refreshRoom);
    return banner;
}

/// Takes no room without a line.
void SmartInboxNotices::refreshRoom() {
    const auto isShown = [](const Banner* banner) { return !banner->isHidden(); };
    setVisible(isShown(run_) || isShown(warning_) || isShown(refusal_) || isShown(export_));
}

void SmartInboxNotices::followRun() {
    if (context_.model.isApplying()) {
        running_ = true;
        run_->hide();
        export_->hide();
    } else if (std::exchange(running_, false)) {
        if (!context_.model.runRefusal()) showReport();
        organizes_ = false;
    }
    refreshUndo();
    refreshRoom();
}

void SmartInboxNotices::showReport() {
    const auto report = context_.model.lastReport();
    if (!report) return;
    const QStringList problems = SmartInboxTexts::problems(*report);
    run_->setKind(problems.isEmpty() ? Banner::Kind::info : Banner::Kind::warning);
    run_->setText(organizes_ ? SmartInboxTexts::organizeSummary(*report) : SmartInboxTexts::undoSummary(*report));
    run_->setDetails(problems);
    offersUndo_ = organizes_ && report->movedCount() > 0;
    run_->show();
    context_.announcer.say(run_->text());
}

/// Takes back what the last run did, and nothing of the runs before it.
void SmartInboxNotices::undoRun() {
    const auto report = context_.model.lastReport();
    if (!report) return;
    std::unordered_set<std::string> entries;
    for (const OrdovanJournalEntry& entry : report->journal.entries) entries.emplace(entry.id());
    context_.model.undo(entries);
}

void SmartInboxNotices::refreshUndo() {
    const auto& journal = context_.model.recoverableJournal();
    undo_->setVisible(offersUndo_ && journal && !journal->entries.empty());
    const QString reason = CommandAvailability::reasonAgainst(Commands::undoOrganize, context_.model, context_.desktop);
    undo_->setEnabled(reason.isEmpty());
    undo_->setToolTip(reason.isEmpty() ? u"Puts the files of this run back where they came from."_s : reason);
}

void SmartInboxNotices::showWarning() {
    const auto& warning = context_.model.journalWarning();
    warning_->setVisible(warning.has_value());
    refreshRoom();
    if (!warning) return;
    warning_->setText(Formats::text(*warning));
    context_.announcer.say(warning_->text());
}

void SmartInboxNotices::showRefusal() {
    const auto& refusal = context_.model.runRefusal();
    refusal_->setVisible(refusal.has_value());
    refreshRoom();
    if (!refusal) return;
    refusal_->setText(Formats::text(*refusal));
    context_.announcer.say(refusal_->text());
}

void SmartInboxNotices::showExport(const QString& error) {
    export_->setKind(error.isEmpty() ? Banner::Kind::info : Banner::Kind::error);
    export_->setText(error.isEmpty() ? u"The plan was saved."_s : error);
    export_->show();
    refreshRoom();
    context_.announcer.say(export_->text());
}
