#include "OrdovanApp/screens/ThemeChoice.h"

#include "OrdovanApp/models/EngineTexts.h"
#include "OrdovanApp/theme/Glyph.h"

#include <QPainter>

using namespace Qt::StringLiterals;

namespace {

constexpr QSize choiceSize(84, 84);
constexpr double diameter = 36;
constexpr double checkSize = 20;
constexpr double top = 12;

}  // namespace

ThemeChoice::ThemeChoice(const ThemeEnvironment& theme, AppTheme offered, QWidget* parent)
    : QRadioButton(parent), theme_(theme), offered_(offered) {
    const std::string_view raw = rawValue(offered);
    setObjectName(u"theme-"_s + QString::fromUtf8(raw.data(), static_cast<qsizetype>(raw.size())));
    setText(EngineTexts::theme(offered));
    setAttribute(Qt::WA_Hover);
    connect(&theme, &ThemeEnvironment::changed, this, qOverload<>(&QWidget::update));
}

QSize ThemeChoice::sizeHint() const {
    return {theme_.scaled(choiceSize.width()), theme_.scaled(choiceSize.height())};
}

void ThemeChoice::paintEvent(QPaintEvent*) {
    const ThemeColors& colors = theme_.colors();
    const ThemeColors offered = ThemeColors::of(offered_, colors.dark);
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    if (isChecked() || underMouse()) {
        painter.setBrush(isChecked() ? colors.tint : colors.hover);
        painter.drawRoundedRect(rect(), 8, 8);
    }
    const QRectF disc((width() - diameter) / 2, top, diameter, diameter);
    painter.setBrush(offered.accent);
    painter.drawEllipse(disc);
    if (isChecked()) {
        const double inset = (diameter - checkSize) / 2;
        Glyphs::paint(painter, Glyph::check, disc.adjusted(inset, inset, -inset, -inset), offered.onAccent);
    }
    painter.setFont(theme_.font(isChecked() ? ThemeEnvironment::Type::bodyStrong : ThemeEnvironment::Type::body));
    painter.setPen(isChecked() ? colors.text : colors.secondText);
    painter.drawText(rect().adjusted(0, static_cast<int>(top + diameter), 0, -4), Qt::AlignCenter, text());
}
