#include "OrdovanApp/screens/CommandAvailability.h"

#include "OrdovanApp/controller/CommandCenter.h"
#include "OrdovanApp/controller/TidyViewModel.h"
#include "OrdovanApp/screens/Desktop.h"
#include "OrdovanApp/theme/Buttons.h"

#include <QCoreApplication>
#include <QPushButton>

using namespace Qt::StringLiterals;

namespace CommandAvailability {
namespace {

struct Said {
    Q_DECLARE_TR_FUNCTIONS(CommandAvailability)
};

QString againstPreview(const TidyViewModel& model) {
    using Case = TidyViewModel::Phase::Case;
    if (model.phase().kind == Case::scanning) return Said::tr("The preview is not ready yet.");
    if (model.phase().kind != Case::ready) return Said::tr("Preview a folder first.");
    return {};
}

/// A preview that failed or was given up can be tried again.
QString againstAgain(const TidyViewModel& model) {
    const bool isScanning = model.phase().kind == TidyViewModel::Phase::Case::scanning;
    return model.rootURL() && !isScanning ? QString() : againstPreview(model);
}

/// Counts, and does not look at each of up to fifty thousand proposals.
QString againstOrganize(const TidyViewModel& model) {
    if (const QString reason = againstPreview(model); !reason.isEmpty()) return reason;
    const std::size_t proposed = model.plan()->proposals.size();
    if (proposed == 0) return Said::tr("There is nothing to organize.");
    if (model.exclusion().count() >= proposed) return Said::tr("Tick at least one file first.");
    return {};
}

QString againstUndo(const TidyViewModel& model) {
    const auto& journal = model.recoverableJournal();
    if (!journal || journal->entries.empty())
        return Said::tr("Nothing was organized in this folder that could be undone.");
    return {};
}

QString againstDuplicates(const TidyViewModel& model) {
    if (model.isScanningDuplicates()) return Said::tr("The search is going on.");
    return againstPreview(model);
}

}  // namespace

QString againstRun(const TidyViewModel& model) {
    if (model.isApplying() || model.isTrashing()) return Said::tr("Files are being moved right now.");
    return {};
}

QString againstWhileAsking() {
    return Said::tr("Answer the question first.");
}

QString reasonAgainst(QStringView command, const TidyViewModel& model, const Desktop& desktop) {
    if (command == Commands::showRecovery) return {};
    if (const QString reason = againstRun(model); !reason.isEmpty()) return reason;
    if (command == Commands::previewFolder) {
        return desktop.downloads() ? QString() : Said::tr("This account has no Downloads folder.");
    }
    if (command == Commands::previewAgain) return againstAgain(model);
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
