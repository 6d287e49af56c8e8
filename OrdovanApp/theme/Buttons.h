#pragma once

#include "OrdovanApp/theme/Glyph.h"

#include <QString>

class QMenu;
class QPushButton;
class QWidget;
class ThemeEnvironment;

/// The push buttons of the application. They differ in the property "kind", which the one style sheet knows; the text
/// is the accessible name.
namespace Buttons {

/// In the accent. One a screen: what the screen is for.
[[nodiscard]] QPushButton* primary(const QString& text, QWidget* parent = nullptr);
/// A card of its own, beside a primary one.
[[nodiscard]] QPushButton* quiet(const QString& text, QWidget* parent = nullptr);
/// Text alone until the pointer is over it.
[[nodiscard]] QPushButton* ghost(const QString& text, QWidget* parent = nullptr);
/// Text in the accent, beside a sentence: unfolds or leads somewhere.
[[nodiscard]] QPushButton* link(const QString& text, QWidget* parent = nullptr);
/// Round at both ends, with a glyph: a folder to choose.
[[nodiscard]] QPushButton* pill(const ThemeEnvironment& theme, Glyph glyph, const QString& text,
                                QWidget* parent = nullptr);
/// A glyph alone; `name` is its accessible name and its tool tip.
[[nodiscard]] QPushButton* glyphOnly(const ThemeEnvironment& theme, Glyph glyph, const QString& name,
                                     QWidget* parent = nullptr);

/// Puts a glyph before a button's text, in the color that goes with the button's kind, and keeps it so when the theme
/// changes.
void setGlyph(const ThemeEnvironment& theme, QPushButton* button, Glyph glyph);
/// Makes a button open a menu, with a chevron behind its text. The button takes the menu.
void setMenu(const ThemeEnvironment& theme, QPushButton* button, QMenu* menu);
/// Enables a button, with `help` as its tool tip; or disables it, with the reason why.
void setAvailable(QPushButton* button, const QString& reasonAgainst, const QString& help);

}  // namespace Buttons
