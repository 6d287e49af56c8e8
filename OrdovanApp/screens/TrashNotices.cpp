#include "OrdovanApp/screens/TrashNotices.h"

#include "OrdovanApp/controller/CommandCenter.h"
#include "OrdovanApp/controller/TidyViewModel.h"
#include "OrdovanApp/models/Formats.h"
#include "OrdovanApp/models/Language.h"
#include "OrdovanApp/screens/RunTexts.h"
#include "OrdovanApp/theme/Buttons.h"

#include <QPushButton>

#include <utility>

using namespace Qt::StringLiterals;

TrashNotices::TrashNotices(const AppContext& context, What what, QWidget* parent)
    : RunNotices(context, u"trashResult"_s, u"recordWarning"_s, parent), what_(what) {
    QPushButton* recovery = Buttons::quiet(tr("Open Recovery Center"));
    recovery->setObjectName(u"openRecovery"_s);
    recovery->setToolTip(tr("Shows the files that can be put back"));
    connect(recovery, &QPushButton::clicked, this, [this] { context_.commands.post(Commands::showRecovery); });
    result()->addButton(recovery);
    connect(&context_.model, &TidyViewModel::isTrashingChanged, this, &TrashNotices::followRun);
}

void TrashNotices::followRun() {
    const auto& report = context_.model.lastTrashReport();
    if (context_.model.isTrashing()) {
        own_ = std::exchange(expected_, false);
        dismiss(result());
    } else if (std::exchange(own_, false) && !context_.model.runRefusal() && report) {
        tellResult(summary(*report, what_), RunTexts::problems(report->outcomes));
    }
    Q_EMIT runChanged();
}

QString TrashNotices::summary(const OrdovanTrashReport& report, What what) {
    qint64 bytes = 0;
    for (const OrdovanTrashEntry& entry : report.record.entries) bytes += entry.byteSize();
    const auto moved = static_cast<qint64>(report.movedCount());
    const QString pattern = what == What::files ? tr("%1 files moved to the Trash · %2", nullptr, pluralOf(moved))
                                                : tr("%1 extras moved to the Trash · %2", nullptr, pluralOf(moved));
    const QString text = pattern.arg(Formats::count(moved), Formats::byteSize(bytes));
    const QString rest = RunTexts::leftBehind(report.skippedCount(), report.failedCount());
    return rest.isEmpty() ? text : text + u" · "_s + rest;
}
