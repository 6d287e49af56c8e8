#include "OrdovanApp/screens/SmartInboxNotices.h"

#include "OrdovanApp/controller/CommandCenter.h"
#include "OrdovanApp/controller/TidyViewModel.h"
#include "OrdovanApp/models/EngineTexts.h"
#include "OrdovanApp/screens/CommandAvailability.h"
#include "OrdovanApp/screens/RunTexts.h"
#include "OrdovanApp/screens/SmartInboxTexts.h"
#include "OrdovanApp/theme/Buttons.h"

#include <QPushButton>

#include <string>
#include <unordered_set>
#include <utility>

using namespace Qt::StringLiterals;

SmartInboxNotices::SmartInboxNotices(const AppContext& context, QWidget* parent)
    : RunNotices(context, u"runSummary"_s, u"journalWarning"_s, parent),
      export_(addBanner(Banner::Kind::info, u"exportResult"_s)),
      undo_(Buttons::quiet(tr("Undo"))) {
    undo_->setObjectName(u"undoRun"_s);
    result()->addButton(undo_);
    connect(undo_, &QPushButton::clicked, this, &SmartInboxNotices::undoRun);

    const TidyViewModel* model = &context_.model;
    connect(model, &TidyViewModel::isApplyingChanged, this, &SmartInboxNotices::followRun);
    connect(model, &TidyViewModel::isTrashingChanged, this, &SmartInboxNotices::refreshUndo);
    connect(model, &TidyViewModel::recoverableJournalChanged, this, &SmartInboxNotices::refreshUndo);
    connect(model, &TidyViewModel::planExported, this, &SmartInboxNotices::showExport);
    connect(model, &TidyViewModel::rootURLChanged, this, [this] { dismiss(export_); });
}

void SmartInboxNotices::followRun() {
    if (context_.model.isApplying()) {
        running_ = true;
        dismiss(result());
        dismiss(export_);
    } else if (std::exchange(running_, false)) {
        if (!context_.model.runRefusal()) showReport();
        organizes_ = false;
    }
    refreshUndo();
}

void SmartInboxNotices::showReport() {
    const auto report = context_.model.lastReport();
    if (!report) return;
    offersUndo_ = organizes_ && report->movedCount() > 0;
    tellResult(organizes_ ? SmartInboxTexts::organizeSummary(*report) : SmartInboxTexts::undoSummary(*report),
               RunTexts::problems(report->outcomes));
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
    Buttons::setAvailable(undo_,
                          CommandAvailability::reasonAgainst(Commands::undoOrganize, context_.model, context_.desktop),
                          tr("Puts the files of this run back where they came from."));
}

void SmartInboxNotices::showExport(const QString& error) {
    export_->setKind(error.isEmpty() ? Banner::Kind::info : Banner::Kind::error);
    tell(export_, error.isEmpty() ? tr("The plan was saved.") : EngineTexts::sentence(error.toStdString()));
}
