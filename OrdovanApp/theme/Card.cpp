#include "OrdovanApp/theme/Card.h"

#include <QPainter>

void Surfaces::paintShadow(QPainter& painter, const QRectF& rect, qreal radius, int reach, const QColor& color) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    // Dropped a little, as light comes from above: the whole shape, then rings that fade outwards.
    const qreal drop = reach / 4.0;
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawRoundedRect(rect.translated(0, drop), radius, radius);
    painter.setBrush(Qt::NoBrush);
    for (int ring = reach; ring >= 1; --ring) {
        const qreal fade = 1.0 - (ring - 0.5) / reach;
        QColor shade = color;
        shade.setAlphaF(color.alphaF() * static_cast<float>(fade * fade));
        painter.setPen(QPen(shade, 1.2));
        const qreal out = ring - 0.5;
        painter.drawRoundedRect(rect.adjusted(-out, -out + drop, out, out + drop), radius + out, radius + out);
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
