#include "OrdovanApp/screens/CommandAvailability.h"

#include "OrdovanApp/controller/CommandCenter.h"
#include "OrdovanApp/controller/TidyViewModel.h"
#include "OrdovanApp/screens/Desktop.h"
#include "OrdovanApp/theme/Buttons.h"

#include <QPushButton>

using namespace Qt::StringLiterals;

namespace CommandAvailability {
namespace {

QString againstPreview(const TidyViewModel& model) {
    using Case = TidyViewModel::Phase::Case;
    if (model.phase().kind == Case::scanning) return u"The preview is not ready yet."_s;
    if (model.phase().kind != Case::ready) return u"Preview a folder first."_s;
    return {};
}

/// Counts, and does not look at each of up to fifty thousand proposals.
QString againstOrganize(const TidyViewModel& model) {
    if (const QString reason = againstPreview(model); !reason.isEmpty()) return reason;
    const std::size_t proposed = model.plan()->proposals.size();
    if (proposed == 0) return u"There is nothing to organize."_s;
    if (model.exclusion().count() >= proposed) return u"Tick at least one file first."_s;
    return {};
}

QString againstUndo(const TidyViewModel& model) {
    const auto& journal = model.recoverableJournal();
    if (!journal || journal->entries.empty()) return u"Nothing was organized in this folder that could be undone."_s;
    return {};
}

QString againstDuplicates(const TidyViewModel& model) {
    if (model.isScanningDuplicates()) return u"The search is going on."_s;
    return againstPreview(model);
}

}  // namespace

QString againstRun(const TidyViewModel& model) {
    if (model.isApplying() || model.isTrashing()) return u"Files are being moved right now."_s;
    return {};
}

QString againstWhileAsking() {
    return u"Answer the question first."_s;
}

QString reasonAgainst(QStringView command, const TidyViewModel& model, const Desktop& desktop) {
    if (command == Commands::showRecovery) return {};
    if (const QString reason = againstRun(model); !reason.isEmpty()) return reason;
    if (command == Commands::previewFolder) {
        return desktop.downloads() ? QString() : u"This account has no Downloads folder."_s;
    }
    if (command == Commands::organize) return againstOrganize(model);
    if (command == Commands::undoOrganize) return againstUndo(model);
    if (command == Commands::findDuplicates) return againstDuplicates(model);
    if (command == Commands::exportPlan) return againstPreview(model);
    return {};
}

void watch(const TidyViewModel& model, QObject* receiver, const std::function<void()>& changed) {
    for (const auto signal :
         {&TidyViewModel::phaseChanged, &TidyViewModel::planChanged, &TidyViewModel::excludedChanged,
          &TidyViewModel::isApplyingChanged, &TidyViewModel::isTrashingChanged,
          &TidyViewModel::recoverableJournalChanged, &TidyViewModel::isScanningDuplicatesChanged}) {
        QObject::connect(&model, signal, receiver, changed);
    }
}

void bind(const AppContext& context, QPushButton* button, QStringView command, const QString& help) {
    QObject::connect(button, &QPushButton::clicked, button,
                     [&commands = context.commands, command] { commands.post(command); });
    const auto refresh = [&model = context.model, &desktop = context.desktop, button, command, help] {
        Buttons::setAvailable(button, reasonAgainst(command, model, desktop), help);
    };
    watch(context.model, button, refresh);
    refresh();
}

}  // namespace CommandAvailability
