#pragma once

#include "OrdovanApp/theme/RowsModel.h"

#include <string>
#include <vector>

namespace ordovan::test {

/// A model's rows as lines, for comparisons: "# head | detail", "[x] title | detail | chip | columns", where the mark
/// is
/// "(o)" for a radio button, "::" for a grip and nothing for a row without one; a dimmed row ends with "~".
inline std::vector<std::string> rowTexts(const RowsModel& model) {
    std::vector<std::string> lines;
    for (int row = 0; row < model.rowCount(); ++row) {
        const RowContent content = model.content(row);
        QStringList parts{content.title, content.detail};
        if (content.chip) parts.append(content.chip->text);
        parts += content.columns;
        parts.removeAll(QString());
        QString mark;
        if (model.isHead(row)) mark = QStringLiteral("# ");
        if (content.mark == RowContent::Mark::tick)
            mark = content.marked ? QStringLiteral("[x] ") : QStringLiteral("[ ] ");
        if (content.mark == RowContent::Mark::radio)
            mark = content.marked ? QStringLiteral("(o) ") : QStringLiteral("( ) ");
        if (content.mark == RowContent::Mark::grip) mark = QStringLiteral(":: ");
        const QString end = content.dimmed ? QStringLiteral(" ~") : QString();
        lines.push_back((mark + parts.join(QStringLiteral(" | ")) + end).toStdString());
    }
    return lines;
}

/// The texts of a row's actions, disabled ones in parentheses.
inline std::vector<std::string> actionTexts(const RowsModel& model, int row) {
    std::vector<std::string> texts;
    for (const RowAction& action : model.content(row).actions) {
        texts.push_back(action.enabled ? action.text.toStdString() : "(" + action.text.toStdString() + ")");
    }
    return texts;
}

}  // namespace ordovan::test
