#include "OrdovanApp/theme/PointBox.h"

#include "OrdovanApp/theme/Card.h"
#include "OrdovanApp/theme/StyleSheet.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>

PointBox::PointBox(const ThemeEnvironment& theme, Glyph glyph, const QString& text, QWidget* parent)
    : QWidget(parent), theme_(theme), glyph_(glyph), picture_(new QLabel(this)) {
    auto* label = new QLabel(text, this);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setAlignment(Qt::AlignTop | Qt::AlignLeft);
    StyleSheet::setType(label, StyleSheet::LabelType::second);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(14, 13, 14, 13);
    layout->setSpacing(11);
    layout->addWidget(picture_, 0, Qt::AlignTop);
    layout->addWidget(label, 1);
    // Side by side they are of one width, whatever they say.
    QSizePolicy policy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    connect(&theme, &ThemeEnvironment::changed, this, &PointBox::recolor);
    recolor();
}

void PointBox::setOnCard(bool onCard) {
    onCard_ = onCard;
    update();
}

void PointBox::recolor() {
    picture_->setPixmap(Glyphs::pixmap(glyph_, theme_.scaled(18), theme_.colors().accentText, devicePixelRatioF()));
    update();
}

void PointBox::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(onCard_ ? theme_.colors().window : theme_.colors().card);
    painter.drawRoundedRect(rect(), Surfaces::cardRadius, Surfaces::cardRadius);
}
