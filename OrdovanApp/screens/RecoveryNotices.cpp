#include "OrdovanApp/screens/RecoveryNotices.h"

#include "OrdovanApp/controller/TidyViewModel.h"
#include "OrdovanApp/models/Formats.h"
#include "OrdovanApp/screens/RunTexts.h"
#include "OrdovanApp/screens/SmartInboxTexts.h"

#include <utility>

using namespace Qt::StringLiterals;

RecoveryNotices::RecoveryNotices(const AppContext& context, QWidget* parent)
    : RunNotices(context, u"recoveryResult"_s, u"recordWarning"_s, parent) {}

void RecoveryNotices::followRun(bool isOwn) {
    const TidyViewModel& model = context_.model;
    if (model.isApplying() || model.isTrashing()) {
        undoes_ = isOwn && model.isApplying();
        restores_ = isOwn && model.isTrashing();
        dismiss(result());
    } else if (!model.runRefusal()) {
        showLastReport();
    }
}

void RecoveryNotices::showLastReport() {
    const auto& undone = context_.model.lastReport();
    const auto& restored = context_.model.lastTrashReport();
    if (std::exchange(undoes_, false) && undone) {
        tellResult(SmartInboxTexts::undoSummary(*undone), RunTexts::problems(undone->outcomes));
    }
    if (std::exchange(restores_, false) && restored) {
        tellResult(restoreSummary(restored->asExecutionReport()), RunTexts::problems(restored->outcomes));
    }
}

QString RecoveryNotices::restoreSummary(const OrdovanExecutionReport& report) {
    return RunTexts::summary(report, QT_TRANSLATE_N_NOOP("RunTexts", "Put back %1 files from the Trash."),
                             QT_TRANSLATE_N_NOOP("RunTexts", "Put back %1 files from the Trash; %2."));
}
