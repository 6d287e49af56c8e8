#include "OrdovanApp/theme/ThemeStyle.h"

#include "OrdovanApp/theme/Card.h"
#include "OrdovanApp/theme/Glyph.h"
#include "OrdovanApp/theme/ThemeEnvironment.h"

#include <QPainter>
#include <QStyleOption>

#include <algorithm>
#include <optional>

namespace {

/// The largest square of at most `side` in the middle of a rectangle, on whole pixels.
QRectF middleOf(const QRect& rect, int side) {
    const int size = std::min({side, rect.width(), rect.height()});
    return QRect(rect.x() + (rect.width() - size) / 2, rect.y() + (rect.height() - size) / 2, size, size);
}

std::optional<Glyph> arrowOf(QStyle::PrimitiveElement element) {
    if (element == QStyle::PE_IndicatorArrowDown) return Glyph::chevronDown;
    if (element == QStyle::PE_IndicatorArrowRight) return Glyph::chevronRight;
    return std::nullopt;
}

}  // namespace

ThemeStyle::ThemeStyle(const ThemeEnvironment& theme) : QProxyStyle(QStringLiteral("Fusion")), theme_(theme) {}

void ThemeStyle::paintTick(QPainter& painter, const QRectF& rect, const ThemeEnvironment& theme, bool checked,
                           bool enabled, bool hovered) {
    const ThemeColors& colors = theme.colors();
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const qreal radius = rect.width() * 0.28;
    if (checked) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(!enabled ? colors.control : hovered ? colors.accentHover : colors.accent);
        painter.drawRoundedRect(rect, radius, radius);
        painter.setPen(QPen(enabled ? colors.onAccent : colors.card, rect.width() * 0.125, Qt::SolidLine, Qt::RoundCap,
                            Qt::RoundJoin));
        const auto at = [&rect](qreal x, qreal y) {
            return QPointF(rect.x() + rect.width() * x, rect.y() + rect.height() * y);
        };
        painter.setBrush(Qt::NoBrush);
        const std::array mark = {at(0.25, 0.53), at(0.42, 0.69), at(0.75, 0.34)};
        painter.drawPolyline(mark.data(), static_cast<int>(mark.size()));
    } else {
        painter.setPen(QPen(!enabled ? colors.hairline : hovered ? colors.accent : colors.control, 1.5));
        painter.setBrush(colors.card);
        painter.drawRoundedRect(rect.adjusted(0.75, 0.75, -0.75, -0.75), radius, radius);
    }
    painter.restore();
}

void ThemeStyle::paintRadio(QPainter& painter, const QRectF& rect, const ThemeEnvironment& theme, bool checked,
                            bool enabled, bool hovered) {
    const ThemeColors& colors = theme.colors();
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const qreal width = checked ? rect.width() * 0.31 : 1.5;
    const QColor on = enabled ? colors.accent : colors.control;
    const QColor off = !enabled ? colors.hairline : hovered ? colors.accent : colors.control;
    painter.setPen(QPen(checked ? on : off, width));
    painter.setBrush(colors.card);
    const qreal inset = width / 2;
    painter.drawEllipse(rect.adjusted(inset, inset, -inset, -inset));
    painter.restore();
}

void ThemeStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                               const QWidget* widget) const {
    const ThemeColors& colors = theme_.colors();
    const bool enabled = option->state.testFlag(State_Enabled);
    const bool hovered = option->state.testFlag(State_MouseOver);
    const bool checked = option->state.testFlag(State_On);
    switch (element) {
        case PE_IndicatorCheckBox:
        case PE_IndicatorItemViewItemCheck:
            paintTick(*painter, middleOf(option->rect, 16), theme_, checked, enabled, hovered);
            return;
        case PE_IndicatorRadioButton:
            paintRadio(*painter, middleOf(option->rect, 16), theme_, checked, enabled, hovered);
            return;
        case PE_IndicatorMenuCheckMark:
            if (checked) {
                Glyphs::paint(*painter, Glyph::check, middleOf(option->rect, 16),
                              enabled ? colors.accentText : colors.faintText);
            }
            return;
        case PE_IndicatorArrowDown:
        case PE_IndicatorArrowRight:
            Glyphs::paint(*painter, *arrowOf(element), middleOf(option->rect, 14),
                          enabled ? colors.secondText : colors.faintText);
            return;
        case PE_FrameFocusRect:
            return;  // the focus ring shows it
        default:
            QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
}

void ThemeStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                                    const QWidget* widget) const {
    const auto* combo = qstyleoption_cast<const QStyleOptionComboBox*>(option);
    if (control != CC_ComboBox || combo == nullptr) {
        QProxyStyle::drawComplexControl(control, option, painter, widget);
        return;
    }
    const ThemeColors& colors = theme_.colors();
    const bool enabled = option->state.testFlag(State_Enabled);
    const bool hovered = enabled && option->state.testFlag(State_MouseOver) && !combo->editable;
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(QPen(colors.hairline, 1));
    painter->setBrush(hovered ? colors.hover : colors.card);
    painter->drawRoundedRect(QRectF(option->rect).adjusted(0.5, 0.5, -0.5, -0.5), Surfaces::controlRadius,
                             Surfaces::controlRadius);
    painter->restore();
    const QRect arrow = proxy()->subControlRect(CC_ComboBox, option, SC_ComboBoxArrow, widget);
    Glyphs::paint(*painter, Glyph::chevronDown, middleOf(arrow, 14), enabled ? colors.secondText : colors.faintText);
}

QRect ThemeStyle::subControlRect(ComplexControl control, const QStyleOptionComplex* option, SubControl part,
                                 const QWidget* widget) const {
    const QRect rect = QProxyStyle::subControlRect(control, option, part, widget);
    if (control != CC_ComboBox) return rect;
    const bool mirrored = option->direction == Qt::RightToLeft;
    if (part == SC_ComboBoxEditField) return mirrored ? rect.adjusted(0, 0, -8, 0) : rect.adjusted(8, 0, 0, 0);
    return rect;
}

QIcon ThemeStyle::standardIcon(StandardPixmap icon, const QStyleOption* option, const QWidget* widget) const {
    const ThemeColors& colors = theme_.colors();
    switch (icon) {
        case SP_MessageBoxInformation:
        case SP_MessageBoxQuestion:
            return Glyphs::icon(Glyph::info, colors.accentText);
        case SP_MessageBoxWarning:
            return Glyphs::icon(Glyph::warning, colors.warning);
        case SP_MessageBoxCritical:
            return Glyphs::icon(Glyph::error, colors.danger);
        default:
            return QProxyStyle::standardIcon(icon, option, widget);
    }
}

int ThemeStyle::pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const {
    switch (metric) {
        case PM_IndicatorWidth:
        case PM_IndicatorHeight:
        case PM_ExclusiveIndicatorWidth:
        case PM_ExclusiveIndicatorHeight:
            return theme_.scaled(16);
        case PM_CheckBoxLabelSpacing:
        case PM_RadioButtonLabelSpacing:
            return 8;
        default:
            return QProxyStyle::pixelMetric(metric, option, widget);
    }
}

int ThemeStyle::styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                          QStyleHintReturn* result) const {
    switch (hint) {
        case SH_EtchDisabledText:
        case SH_UnderlineShortcut:
        case SH_DialogButtonBox_ButtonsHaveIcons:
        case SH_ComboBox_Popup:  // a list below the box, not a menu over it
            return 0;
        default:
            return QProxyStyle::styleHint(hint, option, widget, result);
    }
}

QSize ThemeStyle::sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                                   const QWidget* widget) const {
    QSize result = QProxyStyle::sizeFromContents(type, option, size, widget);
    if (type == CT_ComboBox) {
        result.rwidth() += theme_.scaled(12);
        result.setHeight(std::max(result.height(), theme_.scaled(34)));
    }
    return result;
}
