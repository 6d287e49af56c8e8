#pragma once

#include "OrdovanCore/Categories.h"

#include <QColor>
#include <QIcon>
#include <QPixmap>

class QPainter;
class QRectF;

/// The application's own icons: drawn as SVG on a 24-unit square with one stroke weight, in one color.
enum class Glyph {
    // Sections.
    inbox,
    duplicates,
    bigFiles,
    recovery,
    rules,
    history,
    // Kinds of files, one for each category, and a folder named by a rule.
    documents,
    spreadsheets,
    images,
    design,
    videos,
    audio,
    archives,
    installers,
    code,
    fonts,
    books,
    other,
    ruleFolder,
    // Things and states.
    folder,
    folderGear,
    search,
    check,
    warning,
    error,
    info,
    eye,
    undo,
    trash,
    reveal,
    close,
    chevronDown,
    chevronRight,
    grip,
    plus,
    settings,
    exportPlan,
    filter,
    calendar,
    drop,
};

namespace Glyphs {

/// Draws a glyph into a rectangle, sharp at any scale.
void paint(QPainter& painter, Glyph glyph, const QRectF& rect, const QColor& color);
/// The same as a pixmap of `size` logical pixels.
[[nodiscard]] QPixmap pixmap(Glyph glyph, int size, const QColor& color, qreal devicePixelRatio);
/// An icon that is rendered when asked, at the size asked.
[[nodiscard]] QIcon icon(Glyph glyph, const QColor& color);
/// The glyph of a category.
[[nodiscard]] Glyph forCategory(OrdovanFileCategory category);
/// The application's icon, in its own colors.
[[nodiscard]] QIcon application();

}  // namespace Glyphs
