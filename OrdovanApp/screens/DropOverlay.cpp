#include "OrdovanApp/screens/DropOverlay.h"

#include "OrdovanApp/theme/Glyph.h"

#include <QLabel>
#include <QPainter>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

constexpr int margin = 16;
constexpr int glyphSize = 40;

}  // namespace

DropOverlay::DropOverlay(const ThemeEnvironment& theme, QWidget* parent)
    : QWidget(parent), theme_(theme), text_(new QLabel(u"Drop a folder to preview it"_s, this)) {
    setObjectName(u"drop-overlay"_s);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    text_->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    auto* layout = new QVBoxLayout(this);
    layout->addStretch(1);
    layout->addSpacing(glyphSize);
    layout->addWidget(text_);
    layout->addStretch(1);
    connect(&theme, &ThemeEnvironment::changed, this, &DropOverlay::recolour);
    recolour();
    hide();
}

void DropOverlay::recolour() {
    text_->setFont(theme_.font(ThemeEnvironment::Type::title));
    QPalette palette = text_->palette();
    palette.setColor(QPalette::WindowText, theme_.colors().accent);
    text_->setPalette(palette);
}

void DropOverlay::paintEvent(QPaintEvent*) {
    const ThemeColors& colors = theme_.colors();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor surface = colors.window;
    surface.setAlphaF(0.94F);
    painter.fillRect(rect(), surface);
    QPen pen(colors.accent, 2, Qt::DashLine);
    painter.setPen(pen);
    painter.setBrush(colors.tint);
    painter.drawRoundedRect(QRectF(rect()).adjusted(margin, margin, -margin, -margin), 12, 12);
    const QRectF place((width() - glyphSize) / 2.0, text_->y() - glyphSize - 12, glyphSize, glyphSize);
    Glyphs::paint(painter, Glyph::drop, place, colors.accent);
}
