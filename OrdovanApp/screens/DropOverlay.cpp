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
    : QWidget(parent), theme_(theme), text_(new QLabel(this)) {
    setObjectName(u"drop-overlay"_s);
    setAttribute(Qt::WA_TransparentForMouseEvents);
    text_->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    auto* layout = new QVBoxLayout(this);
    layout->addStretch(1);
    layout->addSpacing(glyphSize);
    layout->addWidget(text_);
    layout->addStretch(1);
    connect(&theme, &ThemeEnvironment::changed, this, &DropOverlay::recolor);
    setRefusal({});
    hide();
}

void DropOverlay::setRefusal(const QString& reason) {
    refuses_ = !reason.isEmpty();
    text_->setText(refuses_ ? reason : tr("Drop a folder to preview it"));
    recolor();
    update();
}

void DropOverlay::recolor() {
    text_->setFont(theme_.font(ThemeEnvironment::Type::title));
    QPalette palette = text_->palette();
    palette.setColor(QPalette::WindowText, refuses_ ? theme_.colors().secondText : theme_.colors().accentText);
    text_->setPalette(palette);
}

void DropOverlay::paintEvent(QPaintEvent*) {
    const ThemeColors& colors = theme_.colors();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor surface = colors.window;
    surface.setAlphaF(0.94F);
    painter.fillRect(rect(), surface);
    const QColor color = refuses_ ? colors.secondText : colors.accentText;
    painter.setPen(QPen(color, 2, Qt::DashLine));
    painter.setBrush(refuses_ ? colors.card : colors.tint);
    painter.drawRoundedRect(QRectF(rect()).adjusted(margin, margin, -margin, -margin), 12, 12);
    const QRectF place((width() - glyphSize) / 2.0, text_->y() - glyphSize - 12, glyphSize, glyphSize);
    Glyphs::paint(painter, refuses_ ? Glyph::warning : Glyph::drop, place, color);
}
