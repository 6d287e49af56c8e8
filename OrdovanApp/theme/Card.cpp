#include "OrdovanApp/theme/Card.h"

#include <QPainter>

#include <algorithm>

void Surfaces::paintShadow(QPainter& painter, const QRectF& rect, qreal radius, int reach, const QColor& color) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    // Dropped a little, as light comes from above. Rings that fade from within the shape outwards, half faded at its
    // edge, as a blurred shape does; what is further inside lies under the card.
    const qreal drop = reach / 4.0;
    painter.setBrush(Qt::NoBrush);
    for (int ring = 0; ring < reach; ++ring) {
        const qreal out = ring + 0.5 - reach / 2.0;
        const qreal way = out / reach + 0.5;
        QColor shade = color;
        shade.setAlphaF(color.alphaF() * static_cast<float>(1 - way * way * (3 - 2 * way)));
        painter.setPen(QPen(shade, 1));
        const qreal round = std::max(qreal{0}, radius + out);
        painter.drawRoundedRect(rect.adjusted(-out, -out + drop, out, out + drop), round, round);
    }
    painter.restore();
}

void Surfaces::paintCard(QPainter& painter, const QRectF& rect, const ThemeColors& colors) {
    if (!colors.dark) paintShadow(painter, rect, cardRadius, 4, colors.shadow);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(colors.hairline, 1));
    painter.setBrush(colors.card);
    painter.drawRoundedRect(rect.adjusted(0.5, 0.5, -0.5, -0.5), cardRadius, cardRadius);
    painter.restore();
}

Card::Card(const ThemeEnvironment& theme, QWidget* parent) : QWidget(parent), theme_(theme) {
    setContentsMargins(0, 0, 0, Surfaces::shadowReach);
    connect(&theme, &ThemeEnvironment::changed, this, qOverload<>(&QWidget::update));
}

void Card::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    Surfaces::paintCard(painter, QRectF(rect().marginsRemoved(contentsMargins())), theme_.colors());
}
