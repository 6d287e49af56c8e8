#include "OrdovanApp/models/BuiltInTypesModel.h"

#include "OrdovanApp/models/Formats.h"
#include "OrdovanApp/models/RulesModel.h"
#include "OrdovanApp/theme/ThemeEnvironment.h"
#include "OrdovanCore/Rules.h"

using namespace Qt::StringLiterals;

BuiltInTypesModel::BuiltInTypesModel(const ThemeEnvironment& theme, QObject* parent)
    : RowsModel(parent), theme_(theme) {
    narrow();
}

void BuiltInTypesModel::setQuery(const QString& query) {
    QString letters = query.trimmed().toLower();
    if (letters.startsWith(u'.')) letters.remove(0, 1);
    if (letters == query_) return;
    beginResetModel();
    query_ = letters;
    narrow();
    endResetModel();
}

void BuiltInTypesModel::narrow() {
    lines_.clear();
    heads_.clear();
    collect(false);
    if (lines_.empty()) collect(true);
}

void BuiltInTypesModel::collect(bool byName) {
    for (const auto& known : OrdovanFileCategories::knownExtensions()) {
        const bool isNamed = byName && Formats::text(rawValue(known.category)).contains(query_, Qt::CaseInsensitive);
        const std::size_t head = lines_.size();
        lines_.push_back({known.category, {}});
        for (const std::string_view extension : known.extensions) {
            if (isNamed || Formats::text(extension).contains(query_)) lines_.push_back({known.category, extension});
        }
        if (lines_.size() == head + 1)
            lines_.pop_back();
        else
            heads_.push_back(static_cast<int>(head));
    }
}

int BuiltInTypesModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(lines_.size());
}

QString BuiltInTypesModel::title(int row) const {
    const Line& line = lines_[static_cast<std::size_t>(row)];
    return line.extension.empty() ? Formats::text(rawValue(line.category)) : u"."_s + Formats::text(line.extension);
}

RowContent BuiltInTypesModel::content(int row) const {
    const Line& line = lines_[static_cast<std::size_t>(row)];
    RowContent content;
    content.title = title(row);
    content.glyph = Glyphs::forCategory(line.category);
    if (line.extension.empty()) return content;
    const QString folder = Formats::text(rawValue(line.category));
    content.glyphColor = theme_.colors().kind(line.category);
    content.columns = {folder};
    content.description = folder;
    return content;
}

QStringList BuiltInTypesModel::folders() {
    QStringList names;
    for (const OrdovanFileCategory category : OrdovanFileCategories::allCases) {
        names.append(Formats::text(rawValue(category)));
    }
    return names;
}

std::optional<QString> BuiltInTypesModel::unknownIn(const QString& typed) {
    const auto extensions = OrdovanRuleSet::parseExtensions(typed.toStdString());
    if (!extensions) return std::nullopt;
    QStringList unknown;
    for (const std::string& extension : *extensions) {
        if (!RulesModel::isBuiltIn(extension)) unknown.append(u"."_s + Formats::text(extension));
    }
    return unknown.join(u", "_s);
}
