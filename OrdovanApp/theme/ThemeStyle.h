#pragma once

#include <QProxyStyle>

class ThemeEnvironment;

/// What a style sheet can not draw well: tick boxes, radio buttons, check marks and arrows of menus, combo boxes. Sharp
/// at any scale, in the theme's colors.
class ThemeStyle : public QProxyStyle {
    Q_OBJECT

public:
    explicit ThemeStyle(const ThemeEnvironment& theme);

    /// A tick box, for views that draw their own.
    static void paintTick(QPainter& painter, const QRectF& rect, const ThemeEnvironment& theme, bool checked,
                          bool enabled, bool hovered);
    /// A radio button.
    static void paintRadio(QPainter& painter, const QRectF& rect, const ThemeEnvironment& theme, bool checked,
                           bool enabled, bool hovered);

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                            const QWidget* widget) const override;
    [[nodiscard]] QRect subControlRect(ComplexControl control, const QStyleOptionComplex* option, SubControl part,
                                       const QWidget* widget) const override;
    [[nodiscard]] QIcon standardIcon(StandardPixmap icon, const QStyleOption* option,
                                     const QWidget* widget) const override;
    [[nodiscard]] int pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const override;
    [[nodiscard]] int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                                QStyleHintReturn* result) const override;
    [[nodiscard]] QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& size,
                                         const QWidget* widget) const override;

private:
    const ThemeEnvironment& theme_;
};
