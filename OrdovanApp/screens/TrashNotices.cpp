#include "OrdovanApp/screens/TrashNotices.h"

#include "OrdovanApp/controller/CommandCenter.h"
#include "OrdovanApp/controller/TidyViewModel.h"
#include "OrdovanApp/models/Formats.h"
#include "OrdovanApp/theme/Announcer.h"
#include "OrdovanApp/theme/Buttons.h"

#include <QPushButton>
#include <QVBoxLayout>

#include <utility>

using namespace Qt::StringLiterals;

namespace {

QStringList problems(const OrdovanTrashReport& report) {
    QStringList lines;
    for (const OrdovanExecutionOutcome& outcome : report.outcomes) {
        if (outcome.status == OrdovanExecutionStatus::moved) continue;
        lines += Formats::fileName(outcome.source) + u" — "_s + Formats::text(outcome.message);
    }
    return lines;
}

}  // namespace

TrashNotices::TrashNotices(const AppContext& context, const QString& noun, QWidget* parent)
    : QWidget(parent), context_(context), noun_(noun) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 14);
    layout->setSpacing(8);
    refusal_ = addBanner(Banner::Kind::error, u"refusal"_s);
    result_ = addBanner(Banner::Kind::info, u"trashResult"_s);
    warning_ = addBanner(Banner::Kind::warning, u"recordWarning"_s);
    QPushButton* recovery = Buttons::quiet(u"Open Recovery Center"_s);
    recovery->setObjectName(u"openRecovery"_s);
    recovery->setToolTip(u"Shows the files that can be put back"_s);
    connect(recovery, &QPushButton::clicked, this, [this] { context_.commands.post(Commands::showRecovery); });
    result_->addButton(recovery);

    const TidyViewModel* model = &context_.model;
    connect(model, &TidyViewModel::isTrashingChanged, this, &TrashNotices::followRun);
    connect(model, &TidyViewModel::journalWarningChanged, this, &TrashNotices::showWarning);
    connect(model, &TidyViewModel::runRefusalChanged, this, &TrashNotices::showRefusal);
    connect(model, &TidyViewModel::rootURLChanged, this, [this] {
        result_->hide();
        refreshRoom();
    });
    showWarning();
    showRefusal();
}

Banner* TrashNotices::addBanner(Banner::Kind kind, const QString& name) {
    auto* banner = new Banner(context_.theme, kind, this);
    banner->setObjectName(name);
    banner->hide();
    connect(banner, &Banner::closed, this, &TrashNotices::refreshRoom);
    layout()->addWidget(banner);
    return banner;
}

/// Takes no room without a line.
void TrashNotices::refreshRoom() {
    setVisible(!result_->isHidden() || !warning_->isHidden() || !refusal_->isHidden());
}

void TrashNotices::followRun() {
    if (context_.model.isTrashing()) {
        own_ = std::exchange(expected_, false);
        result_->hide();
    } else if (std::exchange(own_, false) && !context_.model.runRefusal()) {
        showReport();
    }
    refreshRoom();
    Q_EMIT runChanged();
}

void TrashNotices::showReport() {
    const auto report = context_.model.lastTrashReport();
    if (!report) return;
    const QStringList lines = problems(*report);
    result_->setKind(lines.isEmpty() ? Banner::Kind::info : Banner::Kind::warning);
    result_->setText(summary(*report, noun_));
    result_->setDetails(lines);
    result_->show();
    context_.announcer.say(result_->text());
}

void TrashNotices::showWarning() {
    const auto& warning = context_.model.journalWarning();
    warning_->setVisible(warning.has_value());
    if (warning) warning_->setText(Formats::text(*warning));
    refreshRoom();
    if (warning && isVisible()) context_.announcer.say(warning_->text());
}

void TrashNotices::showRefusal() {
    const auto& refusal = context_.model.runRefusal();
    refusal_->setVisible(refusal.has_value());
    if (refusal) refusal_->setText(Formats::text(*refusal));
    refreshRoom();
    if (refusal && isVisible()) context_.announcer.say(refusal_->text());
}

QString TrashNotices::summary(const OrdovanTrashReport& report, const QString& noun) {
    qint64 bytes = 0;
    for (const OrdovanTrashEntry& entry : report.record.entries) bytes += entry.byteSize();
    QString text = Formats::counted(static_cast<qint64>(report.movedCount()), noun) + u" moved to the Trash · "_s +
                   Formats::byteSize(bytes);
    QStringList rest;
    if (const std::size_t skipped = report.skippedCount(); skipped > 0) {
        rest += Formats::count(static_cast<qint64>(skipped)) + u" skipped"_s;
    }
    if (const std::size_t failed = report.failedCount(); failed > 0) {
        rest += Formats::count(static_cast<qint64>(failed)) + u" failed"_s;
    }
    if (!rest.isEmpty()) text += u" · "_s + rest.join(u", "_s);
    return text;
}
