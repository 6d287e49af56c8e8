#pragma once

#include "OrdovanApp/theme/ThemeEnvironment.h"

#include <QWidget>

/// The surfaces that things lie on. Painted: no effect, nothing off-screen.
namespace Surfaces {

/// The radius of cards, logical pixels.
inline constexpr int cardRadius = 10;
/// The radius of fields and buttons.
inline constexpr int controlRadius = 8;
/// How far a card's shadow reaches: leave this much room below and beside it where it is to be seen.
inline constexpr int shadowReach = 6;

/// A soft shadow below a rounded rectangle, as far as `reach` around it.
void paintShadow(QPainter& painter, const QRectF& rect, qreal radius, int reach, const QColor& color);
/// A card: its shadow, its surface and its hairline. `rect` is the card without its shadow.
void paintCard(QPainter& painter, const QRectF& rect, const ThemeColors& colors);

}  // namespace Surfaces

/// A widget on a card. Its contents margins leave room for the shadow.
class Card : public QWidget {
    Q_OBJECT

public:
    explicit Card(const ThemeEnvironment& theme, QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;

    const ThemeEnvironment& theme_;
};
