#include "OrdovanApp/theme/ToolTips.h"

#include <QTextDocument>

QString ToolTips::plain(const QString& text) {
    // A tool tip that does not look like mark-up is shown as it is; escapes in it would be seen.
    if (!Qt::mightBeRichText(text)) return text;
    return QStringLiteral("<p style=\"white-space: pre-wrap\">%1</p>").arg(text.toHtmlEscaped());
}
