#include "OrdovanApp/screens/TrashNotices.h"

#include "OrdovanApp/controller/CommandCenter.h"
#include "OrdovanApp/controller/TidyViewModel.h"
#include "OrdovanApp/models/Formats.h"
#include "OrdovanApp/screens/RunTexts.h"
#include "OrdovanApp/theme/Buttons.h"

#include <QPushButton>

#include <utility>

using namespace Qt::StringLiterals;

TrashNotices::TrashNotices(const AppContext& context, const QString& noun, QWidget* parent)
    : RunNotices(context, u"trashResult"_s, u"recordWarning"_s, parent), noun_(noun) {
    QPushButton* recovery = Buttons::quiet(u"Open Recovery Center"_s);
    recovery->setObjectName(u"openRecovery"_s);
    recovery->setToolTip(u"Shows the files that can be put back"_s);
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
        tellResult(summary(*report, noun_), RunTexts::problems(report->outcomes));
    }
    Q_EMIT runChanged();
}

QString TrashNotices::summary(const OrdovanTrashReport& report, const QString& noun) {
    qint64 bytes = 0;
    for (const OrdovanTrashEntry& entry : report.record.entries) bytes += entry.byteSize();
    const QString text = Formats::counted(static_cast<qint64>(report.movedCount()), noun) +
                         u" moved to the Trash · "_s + Formats::byteSize(bytes);
    const QString rest = RunTexts::leftBehind(report.skippedCount(), report.failedCount());
    return rest.isEmpty() ? text : text + u" · "_s + rest;
}
