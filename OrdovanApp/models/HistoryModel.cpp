#include "OrdovanApp/models/HistoryModel.h"

#include "OrdovanApp/controller/TidyViewModel.h"
#include "OrdovanApp/models/EngineTexts.h"
#include "OrdovanApp/models/Formats.h"
#include "OrdovanApp/models/Language.h"
#include "OrdovanApp/theme/ThemeEnvironment.h"

#include <QDateTime>

using namespace Qt::StringLiterals;

namespace {

Glyph glyphOf(OrdovanRunRecord::Kind kind) {
    switch (kind) {
        case OrdovanRunRecord::Kind::organize:
            return Glyph::inbox;
        case OrdovanRunRecord::Kind::undo:
            return Glyph::undo;
        case OrdovanRunRecord::Kind::trash:
            return Glyph::trash;
        case OrdovanRunRecord::Kind::restoreTrash:
            return Glyph::recovery;
    }
    return Glyph::history;
}

/// "2 skipped", "2 skipped · 1 failed": the counts that are not zero.
QString counts(const OrdovanRunRecord& run) {
    QStringList parts;
    if (run.skipped != 0) {
        parts.append(HistoryModel::tr("%1 skipped", nullptr, pluralOf(run.skipped)).arg(Formats::count(run.skipped)));
    }
    if (run.failed != 0) {
        parts.append(HistoryModel::tr("%1 failed", nullptr, pluralOf(run.failed)).arg(Formats::count(run.failed)));
    }
    return parts.join(u" · "_s);
}

}  // namespace

HistoryModel::HistoryModel(TidyViewModel& model, const ThemeEnvironment& theme, std::function<double()> now,
                           QObject* parent)
    : RowsModel(parent), model_(model), theme_(theme), now_(std::move(now)) {
    connect(&model_, &TidyViewModel::historyChanged, this, &HistoryModel::reload);
    reload();
}

void HistoryModel::setKind(std::optional<OrdovanRunRecord::Kind> kind) {
    if (kind == kind_) return;
    kind_ = kind;
    reload();
}

void HistoryModel::reload() {
    beginResetModel();
    runs_ = model_.history();
    today_ = now_ ? now_() : static_cast<double>(QDateTime::currentMSecsSinceEpoch()) / 1000;
    lines_.clear();
    heads_.clear();
    QString day;
    for (std::size_t record = 0; record < runs_.records.size(); ++record) {
        const OrdovanRunRecord& run = runs_.records[record];
        if (kind_ && run.kind != *kind_) continue;
        const QString runDay = Formats::day(run.epoch);
        if (heads_.empty() || runDay != day) {
            heads_.push_back(static_cast<int>(lines_.size()));
            lines_.push_back({record, true});
            day = runDay;
        }
        lines_.push_back({record, false});
    }
    endResetModel();
}

QString HistoryModel::dayName(double epoch) const {
    if (Formats::day(epoch) == Formats::day(today_)) return tr("Today");
    return Formats::dayOfWeek(epoch, today_);
}

int HistoryModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(lines_.size());
}

QString HistoryModel::title(int row) const {
    const Line& line = lines_[static_cast<std::size_t>(row)];
    const OrdovanRunRecord& run = runs_.records[line.record];
    return line.head ? dayName(run.epoch) : EngineTexts::summary(run);
}

RowContent HistoryModel::content(int row) const {
    const Line& line = lines_[static_cast<std::size_t>(row)];
    const OrdovanRunRecord& run = runs_.records[line.record];
    RowContent content;
    content.title = title(row);
    if (line.head) return content;
    content.glyph = glyphOf(run.kind);
    content.glyphColor = theme_.colors().accentText;
    // Takes room only where there is something to tell.
    if (const QString rest = counts(run); !rest.isEmpty()) content.chip = {rest, QColor()};
    content.columns = {Formats::time(run.epoch)};
    content.toolTip = content.title + u'\n' + Formats::day(run.epoch) + u' ' + Formats::time(run.epoch);
    content.description = Formats::moment(run.epoch);
    return content;
}
