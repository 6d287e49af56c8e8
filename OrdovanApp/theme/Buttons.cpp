#include "OrdovanApp/theme/Buttons.h"

#include "OrdovanApp/theme/MenuButtonAccessibility.h"
#include "OrdovanApp/theme/ThemeEnvironment.h"

#include <QAccessible>
#include <QMenu>
#include <QPushButton>

using namespace Qt::StringLiterals;

namespace {

constexpr int glyphSize = 16;

QPushButton* make(const QString& kind, const QString& text, QWidget* parent) {
    auto* button = new QPushButton(text, parent);
    button->setProperty("kind", kind);
    button->setAutoDefault(true);  // Return presses the one that has the focus, not only Space
    button->setCursor(Qt::ArrowCursor);
    button->setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
    return button;
}

QColor glyphColor(const ThemeColors& colors, const QString& kind) {
    if (kind == u"primary"_s) return colors.onAccent;
    if (kind == u"destructive"_s) return colors.danger;
    if (kind == u"link"_s) return colors.accentText;
    return kind == u"quiet"_s || kind == u"pill"_s ? colors.text : colors.secondText;
}

void putIcon(const ThemeEnvironment& theme, QPushButton* button, Glyph glyph) {
    button->setIcon(Glyphs::icon(glyph, glyphColor(theme.colors(), button->property("kind").toString())));
    // Beside a text the icon brings room of its own: a style sheet has no gap between the two.
    const int room = button->text().isEmpty() ? 0 : 6;
    button->setIconSize(QSize(theme.scaled(glyphSize + room), theme.scaled(glyphSize)));
}

}  // namespace

QPushButton* Buttons::primary(const QString& text, QWidget* parent) {
    return make(u"primary"_s, text, parent);
}

QPushButton* Buttons::quiet(const QString& text, QWidget* parent) {
    return make(u"quiet"_s, text, parent);
}

QPushButton* Buttons::ghost(const QString& text, QWidget* parent) {
    return make(u"ghost"_s, text, parent);
}

QPushButton* Buttons::link(const QString& text, QWidget* parent) {
    return make(u"link"_s, text, parent);
}

QPushButton* Buttons::pill(const ThemeEnvironment& theme, Glyph glyph, const QString& text, QWidget* parent) {
    QPushButton* button = make(u"pill"_s, text, parent);
    button->setProperty("ringRadius", theme.scaled(15) + 1);
    setGlyph(theme, button, glyph);
    return button;
}

QPushButton* Buttons::glyphOnly(const ThemeEnvironment& theme, Glyph glyph, const QString& name, QWidget* parent) {
    QPushButton* button = make(u"glyph"_s, QString(), parent);
    button->setAccessibleName(name);
    button->setToolTip(name);
    setGlyph(theme, button, glyph);
    return button;
}

void Buttons::setGlyph(const ThemeEnvironment& theme, QPushButton* button, Glyph glyph) {
    const bool first = !button->property("glyph").isValid();
    button->setProperty("glyph", static_cast<int>(glyph));
    putIcon(theme, button, glyph);
    if (!first) return;
    QObject::connect(&theme, &ThemeEnvironment::changed, button, [&theme, button] {
        putIcon(theme, button, static_cast<Glyph>(button->property("glyph").toInt()));
    });
}

void Buttons::setMenu(const ThemeEnvironment& theme, QPushButton* button, QMenu* menu) {
    menu->setParent(button, menu->windowFlags());
    button->setMenu(menu);
    // What assistive technologies were told of the button before knew no menu.
    QAccessible::deleteAccessibleInterface(QAccessible::uniqueId(QAccessible::queryAccessibleInterface(button)));
    MenuButtonAccessibility::use(button);
    button->setLayoutDirection(Qt::RightToLeft);  // the chevron stands behind the text
    setGlyph(theme, button, Glyph::chevronDown);
}

void Buttons::setAvailable(QPushButton* button, const QString& reasonAgainst, const QString& help) {
    button->setEnabled(reasonAgainst.isEmpty());
    button->setToolTip(reasonAgainst.isEmpty() ? help : reasonAgainst);
}
