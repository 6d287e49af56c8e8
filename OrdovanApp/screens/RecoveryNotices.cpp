#include "OrdovanApp/screens/RecoveryNotices.h"

#include "OrdovanApp/controller/TidyViewModel.h"
#include "OrdovanApp/models/Formats.h"
#include "OrdovanApp/screens/SmartInboxTexts.h"
#include "OrdovanApp/theme/Announcer.h"

#include <QVBoxLayout>

#include <utility>

using namespace Qt::StringLiterals;

RecoveryNotices::RecoveryNotices(const AppContext& context, QWidget* parent) : QWidget(parent), context_(context) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 14);
    layout->setSpacing(8);
    refusal_ = addBanner(Banner::Kind::error, u"refusal"_s);
    result_ = addBanner(Banner::Kind::info, u"recoveryResult"_s);
    warning_ = addBanner(Banner::Kind::warning, u"recordWarning"_s);

    const TidyViewModel* model = &context_.model;
    connect(model, &TidyViewModel::journalWarningChanged, this, &RecoveryNotices::showWarning);
    connect(model, &TidyViewModel::runRefusalChanged, this, &RecoveryNotices::showRefusal);
    connect(model, &TidyViewModel::rootURLChanged, this, [this] {
        result_->hide();
        refreshRoom();
    });
    showWarning();
    showRefusal();
}

Banner* RecoveryNotices::addBanner(Banner::Kind kind, const QString& name) {
    auto* banner = new Banner(context_.theme, kind, this);
    banner->setObjectName(name);
    banner->hide();
    connect(banner, &Banner::closed, this, &RecoveryNotices::refreshRoom);
    layout()->addWidget(banner);
    return banner;
}

/// Takes no room without a line.
void RecoveryNotices::refreshRoom() {
    setVisible(!result_->isHidden() || !warning_->isHidden() || !refusal_->isHidden());
}

void RecoveryNotices::followRun(bool isOwn) {
    const TidyViewModel& model = context_.model;
    if (model.isApplying() || model.isTrashing()) {
        undoes_ = isOwn && model.isApplying();
        restores_ = isOwn && model.isTrashing();
        result_->hide();
    } else if (!model.runRefusal()) {
        showLastReport();
    }
    refreshRoom();
}

void RecoveryNotices::showLastReport() {
    const auto& undone = context_.model.lastReport();
    const auto& restored = context_.model.lastTrashReport();
    if (std::exchange(undoes_, false) && undone) showReport(*undone, SmartInboxTexts::undoSummary(*undone));
    if (std::exchange(restores_, false) && restored) {
        const OrdovanExecutionReport report = restored->asExecutionReport();
        showReport(report, restoreSummary(report));
    }
}

void RecoveryNotices::showReport(const OrdovanExecutionReport& report, const QString& summary) {
    const QStringList problems = SmartInboxTexts::problems(report);
    result_->setKind(problems.isEmpty() ? Banner::Kind::info : Banner::Kind::warning);
    result_->setDetails(problems);
    tell(result_, summary);
}

void RecoveryNotices::tell(Banner* banner, const QString& text) {
    banner->setText(text);
    banner->show();
    refreshRoom();
    if (isVisible()) context_.announcer.say(text);
}

void RecoveryNotices::showWarning() {
    warning_->hide();
    refreshRoom();
    if (const auto& warning = context_.model.journalWarning()) tell(warning_, Formats::text(*warning));
}

void RecoveryNotices::showRefusal() {
    refusal_->hide();
    refreshRoom();
    if (const auto& refusal = context_.model.runRefusal()) tell(refusal_, Formats::text(*refusal));
}

QString RecoveryNotices::restoreSummary(const OrdovanExecutionReport& report) {
    QStringList rest;
    if (const auto skipped = report.skippedCount(); skipped > 0) {
        rest += Formats::count(static_cast<qint64>(skipped)) + u" skipped"_s;
    }
    if (const auto failed = report.failedCount(); failed > 0) {
        rest += Formats::count(static_cast<qint64>(failed)) + u" failed"_s;
    }
    const QString moved = Formats::files(static_cast<qint64>(report.movedCount()));
    return u"Put back "_s + moved + u" from the Trash"_s + (rest.isEmpty() ? QString() : u"; "_s + rest.join(u", "_s)) +
           u'.';
}
