#include "OrdovanApp/theme/RowsPainter.h"

#include "OrdovanApp/theme/Card.h"
#include "OrdovanApp/theme/ThemeStyle.h"

#include <QPainterPath>

#include <algorithm>

namespace {

/// A rectangle whose outline of `width` falls on whole pixels inside it.
QRectF outlined(const QRect& rect, qreal width) {
    return QRectF(rect).adjusted(width / 2, width / 2, -width / 2, -width / 2);
}

}  // namespace

void RowsPainter::paint(QPainter& painter, const RowContent& content, const QRect& row, Head head,
                        const State& state) const {
    const ThemeColors& colors = theme_.colors();
    const Layout layout = this->layout(content, row, head);
    painter.setRenderHint(QPainter::Antialiasing);
    paintSurface(painter, content, row, head, state);
    if (!layout.mark.isEmpty()) paintMark(painter, content, layout.mark);
    const bool tinted = state.selected || (content.mark == RowContent::Mark::radio && content.marked);
    if (!layout.glyph.isEmpty()) paintGlyph(painter, content, layout.glyph, head, tinted);
    for (std::size_t i = 0; i < layout.tags.size(); ++i) {
        paintPill(painter, content.tags[static_cast<qsizetype>(i)], layout.tags[i], tinted);
    }
    if (!layout.moreTags.isEmpty()) {
        const auto shown = static_cast<qsizetype>(layout.tags.size());
        paintPill(painter, moreTags(content.tags.size() - shown), layout.moreTags, tinted);
    }
    const bool quietHead = head == Head::band || head == Head::outside;
    const QColor title = content.dimmed ? colors.faintText : quietHead ? colors.secondText : colors.text;
    paintText(painter, titleType(head), title, layout.title, content.title);
    const QColor detail = content.dimmed || head == Head::card ? colors.faintText : colors.secondText;
    paintText(painter, detail_, detail, layout.detail, content.detail,
              head == Head::none ? Qt::AlignLeft : Qt::AlignRight);
    paintText(painter, strong_, colors.faintText, layout.count, content.count);
    if (content.chip) paintPill(painter, *content.chip, layout.chip, tinted);
    paintColumns(painter, content, layout);
    for (const Button& button : layout.buttons) {
        paintButton(painter, content.actions[button.action], button.rect, state);
    }
    if (state.focused) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(colors.accent, 2));
        painter.drawRoundedRect(outlined(row.adjusted(2, 2, -2, -3), 2), 6, 6);
    }
}

void RowsPainter::fill(QPainter& painter, const QRect& rect, const QColor& color, const QRect& card) const {
    const bool touchesCorner = !card.isEmpty() && (rect.top() <= card.top() + Surfaces::cardRadius ||
                                                   rect.bottom() >= card.bottom() - Surfaces::cardRadius);
    if (!touchesCorner) {
        painter.fillRect(rect, color);
        return;
    }
    QPainterPath inside;
    inside.addRoundedRect(QRectF(card).adjusted(1, 1, -1, -1), Surfaces::cardRadius - 1, Surfaces::cardRadius - 1);
    QPainterPath area;
    area.addRect(rect);
    painter.fillPath(area.intersected(inside), color);
}

void RowsPainter::paintSurface(QPainter& painter, const RowContent& content, const QRect& row, Head head,
                               const State& state) const {
    const ThemeColors& colors = theme_.colors();
    const bool chosen = content.mark == RowContent::Mark::radio && content.marked;
    const int bar = static_cast<int>(std::min(1.0, content.share) * row.width());
    if (head == Head::band) {
        fill(painter, row, colors.groupHead, state.card);
    } else if (head == Head::none) {
        if (bar > 0) fill(painter, QRect(row.left(), row.top(), bar, row.height()), colors.tint, state.card);
        const bool showsSelection = state.selected && content.mark != RowContent::Mark::radio;
        if (chosen || showsSelection) {
            fill(painter, row, content.share > 0 ? colors.tintStrong : colors.tint, state.card);
        } else if (state.hovered && content.share <= 0) {
            fill(painter, row, colors.hover, state.card);
        }
    }
    if (!state.lined) return;
    painter.fillRect(QRect(row.left(), row.bottom(), row.width(), 1), colors.hairline);
    // On dark surfaces the line is no other than the bar.
    if (colors.dark) painter.fillRect(QRect(row.left(), row.bottom(), bar, 1), colors.card);
}

void RowsPainter::paintMark(QPainter& painter, const RowContent& content, const QRect& rect) const {
    const ThemeColors& colors = theme_.colors();
    switch (content.mark) {
        case RowContent::Mark::none:
            return;
        case RowContent::Mark::tick:
            ThemeStyle::paintTick(painter, rect, theme_, content.marked, content.enabled, false);
            return;
        case RowContent::Mark::radio:
            ThemeStyle::paintRadio(painter, rect, theme_, content.marked, content.enabled, false);
            return;
        case RowContent::Mark::warning:
            Glyphs::paint(painter, Glyph::warning, rect, colors.warning);
            return;
        case RowContent::Mark::grip:
            Glyphs::paint(painter, Glyph::grip, rect, colors.faintText);
            return;
    }
}

QColor RowsPainter::surfaceOf(const QColor& color, bool tinted) const {
    const ThemeColors& colors = theme_.colors();
    if (!tinted) return colors.surface(color);
    // A surface of its own color would all but vanish on the tint.
    return color == colors.accentText ? colors.tintStrong : colors.card;
}

void RowsPainter::paintGlyph(QPainter& painter, const RowContent& content, const QRect& rect, Head head,
                             bool tinted) const {
    const ThemeColors& colors = theme_.colors();
    const QColor color = content.glyphColor.isValid() ? content.glyphColor : colors.secondText;
    if (head == Head::band || head == Head::outside) {
        Glyphs::paint(painter, *content.glyph, rect, color);
        return;
    }
    painter.setPen(Qt::NoPen);
    painter.setBrush(surfaceOf(color, tinted));
    painter.drawRoundedRect(rect, 8, 8);
    const int size = theme_.scaled(head == Head::card ? 16 : 18);
    const QRectF inner(rect.left() + (rect.width() - size) / 2.0, rect.top() + (rect.height() - size) / 2.0, size,
                       size);
    Glyphs::paint(painter, *content.glyph, inner, color);
}

void RowsPainter::paintPill(QPainter& painter, const RowContent::Chip& chip, const QRect& rect, bool tinted) const {
    const ThemeColors& colors = theme_.colors();
    const bool quiet = !chip.color.isValid();
    if (!quiet) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(surfaceOf(chip.color, tinted));
        painter.drawRoundedRect(rect, rect.height() / 2.0, rect.height() / 2.0);
    }
    paintText(painter, quiet ? detail_ : strong_, quiet ? colors.faintText : chip.color,
              quiet ? rect : rect.adjusted(8, 0, -8, 0), chip.text, Qt::AlignHCenter);
}

void RowsPainter::paintColumns(QPainter& painter, const RowContent& content, const Layout& layout) const {
    const ThemeColors& colors = theme_.colors();
    for (std::size_t i = 0; i < layout.columns.size(); ++i) {
        const bool measured = content.share > 0 && i == 0;
        const QColor color = content.dimmed ? colors.faintText : measured ? colors.text : colors.secondText;
        paintText(painter, measured ? strong_ : detail_, color, layout.columns[i],
                  content.columns[static_cast<qsizetype>(i)], Qt::AlignRight);
    }
}

void RowsPainter::paintButton(QPainter& painter, const RowAction& action, const QRect& rect, const State& state) const {
    const ThemeColors& colors = theme_.colors();
    const bool hovered = action.enabled && state.hoveredAction == action.id;
    const bool pressed = action.enabled && state.pressedAction == action.id;
    const bool glyphOnly = action.glyphOnly && action.glyph;
    const QColor ink = !action.enabled ? colors.faintText : hovered || !glyphOnly ? colors.text : colors.secondText;
    if (!glyphOnly || hovered || pressed) {
        painter.setPen(QPen(colors.hairline, 1));
        painter.setBrush(pressed ? colors.tintStrong : hovered ? colors.hover : colors.card);
        painter.drawRoundedRect(outlined(rect, 1), 7, 7);
    }
    if (glyphOnly) {
        Glyphs::paint(painter, *action.glyph, QRectF(rect).adjusted(6, 6, -6, -6), ink);
        return;
    }
    QRect text = rect.adjusted(12, 0, -12, 0);
    if (action.glyph) {
        const int side = theme_.scaled(16);
        Glyphs::paint(painter, *action.glyph,
                      QRectF(text.left(), rect.top() + (rect.height() - side) / 2.0, side, side), ink);
        text.adjust(side + 8, 0, 0, 0);
    }
    paintText(painter, strong_, ink, text, action.text, Qt::AlignHCenter);
}

void RowsPainter::paintText(QPainter& painter, const Type& type, const QColor& color, const QRect& rect,
                            const QString& text, Qt::Alignment alignment) const {
    if (rect.isEmpty() || text.isEmpty()) return;
    painter.setFont(type.font);
    painter.setPen(color);
    painter.drawText(rect, static_cast<int>(alignment | Qt::AlignVCenter) | Qt::TextSingleLine,
                     type.metrics.elidedText(text, Qt::ElideMiddle, rect.width() + 0.5));
}
