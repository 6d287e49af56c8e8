#include "OrdovanApp/theme/ThemeEnvironment.h"

#include "OrdovanApp/theme/DesktopPreferences.h"
#include "OrdovanApp/theme/FocusRing.h"
#include "OrdovanApp/theme/StyleSheet.h"
#include "OrdovanApp/theme/ThemeStyle.h"

#include <QApplication>
#include <QFontDatabase>
#include <QFontInfo>
#include <QPalette>
#include <QScreen>

#include <algorithm>
#include <cmath>

using namespace Qt::StringLiterals;

namespace {

// The desktop's own face, where it names one. An alias that only finds the fallback of last resort names none.
QString systemFamily() {
    const QString asked = QFontDatabase::systemFont(QFontDatabase::GeneralFont).family();
    const QString found = QFontInfo(QFont(asked)).family();
    const QStringList aliases = {u""_s, u"Sans"_s, u"Sans Serif"_s, u"sans-serif"_s};
    const QStringList fallbacks = {u"DejaVu Sans"_s, u"Bitstream Vera Sans"_s, u"Liberation Sans"_s};
    if (!aliases.contains(asked) && !fallbacks.contains(found)) return asked;
    if (!fallbacks.contains(found)) return found;
    for (const QString& preferred : {u"Inter"_s, u"Cantarell"_s, u"Noto Sans"_s}) {
        if (QFontDatabase::hasFamily(preferred)) return preferred;
    }
    return found;
}

double screenTextScale() {
    const QScreen* screen = QGuiApplication::primaryScreen();
    return screen == nullptr ? 1 : screen->logicalDotsPerInchY() / 96;
}

/// What the environment says of light and dark, if anything.
std::optional<bool> forcedScheme() {
    const QString scheme = qEnvironmentVariable("ORDOVAN_COLOR_SCHEME");
    if (scheme == u"dark"_s) return true;
    if (scheme == u"light"_s) return false;
    return std::nullopt;
}

QPalette paletteOf(const ThemeColors& colors) {
    QPalette palette;
    palette.setColor(QPalette::Window, colors.window);
    palette.setColor(QPalette::WindowText, colors.text);
    palette.setColor(QPalette::Base, colors.card);
    palette.setColor(QPalette::AlternateBase, colors.hover);
    palette.setColor(QPalette::Text, colors.text);
    palette.setColor(QPalette::Button, colors.card);
    palette.setColor(QPalette::ButtonText, colors.text);
    palette.setColor(QPalette::BrightText, colors.danger);
    palette.setColor(QPalette::Highlight, colors.accent);
    palette.setColor(QPalette::HighlightedText, colors.onAccent);
    palette.setColor(QPalette::ToolTipBase, colors.card);
    palette.setColor(QPalette::ToolTipText, colors.text);
    palette.setColor(QPalette::PlaceholderText, colors.faintText);
    palette.setColor(QPalette::Link, colors.accentText);
    palette.setColor(QPalette::LinkVisited, colors.accentText);
    palette.setColor(QPalette::Light, colors.card);
    palette.setColor(QPalette::Midlight, colors.hover);
    palette.setColor(QPalette::Mid, colors.hairline);
    palette.setColor(QPalette::Dark, colors.control);
    palette.setColor(QPalette::Shadow, colors.control);
    for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, colors.faintText);
    }
    palette.setColor(QPalette::Disabled, QPalette::Highlight, colors.hairline);
    palette.setColor(QPalette::Disabled, QPalette::HighlightedText, colors.text);
    return palette;
}

}  // namespace

ThemeEnvironment::ThemeEnvironment(AppTheme theme) : ThemeEnvironment(theme, std::make_unique<DesktopPreferences>()) {}

ThemeEnvironment::ThemeEnvironment(AppTheme theme, std::unique_ptr<DesktopPreferences> desktop)
    : theme_(theme),
      family_(systemFamily()),
      textScale_(screenTextScale()),
      desktop_(std::move(desktop)),
      forced_(forcedScheme()),
      platformIsDark_(QGuiApplication::palette().color(QPalette::Window).lightness() < 128) {
    colors_ = ThemeColors::of(theme_, isDark());
    QApplication::setStyle(new ThemeStyle(*this));
    apply();
    ring_ = std::make_unique<FocusRing>(*this);
    connect(desktop_.get(), &DesktopPreferences::changed, this, &ThemeEnvironment::takePreferences);
    desktop_->follow();
}

ThemeEnvironment::~ThemeEnvironment() {
    // Both refer to this theme; the application may outlive it.
    qApp->setStyleSheet(QString());
    QApplication::setStyle(u"Fusion"_s);
}

void ThemeEnvironment::setTheme(AppTheme theme) {
    if (theme == theme_) return;
    theme_ = theme;
    colors_ = ThemeColors::of(theme_, colors_.dark);
    apply();
    Q_EMIT changed();
}

QFont ThemeEnvironment::font(Type type) const {
    struct Look {
        int pixels;
        QFont::Weight weight;
        double spacing;
    };
    const Look look = [type]() -> Look {
        switch (type) {
            case Type::title:
                return {22, QFont::Bold, -0.33};
            case Type::sheetTitle:
                return {18, QFont::Bold, -0.2};
            case Type::figure:
                return {21, QFont::Bold, -0.3};
            case Type::heading:
                return {15, QFont::DemiBold, -0.1};
            case Type::body:
                return {13, QFont::Normal, 0};
            case Type::bodyStrong:
                return {13, QFont::DemiBold, 0};
            case Type::caption:
                return {12, QFont::Normal, 0};
            case Type::captionStrong:
                return {12, QFont::DemiBold, 0};
        }
        return {13, QFont::Normal, 0};
    }();
    QFont font(family_);
    font.setPixelSize(scaled(look.pixels));
    font.setWeight(look.weight);
    if (look.spacing != 0) font.setLetterSpacing(QFont::AbsoluteSpacing, look.spacing * textScale_);
    return font;
}

bool ThemeEnvironment::usesKeyboard() const {
    return ring_->usesKeyboard();
}

int ThemeEnvironment::scaled(int pixels) const {
    return static_cast<int>(std::lround(pixels * textScale_));
}

void ThemeEnvironment::apply() {
    QApplication::setPalette(paletteOf(colors_));
    QApplication::setFont(font(Type::body));
    qApp->setStyleSheet(StyleSheet::of(*this));
}

bool ThemeEnvironment::isDark() const {
    return forced_.value_or(desktop_->dark().value_or(platformIsDark_));
}

void ThemeEnvironment::takePreferences() {
    reducedMotion_ = desktop_->reducedMotion();
    const bool dark = isDark();
    // Elsewhere the text scale is part of the screen's resolution already.
    const bool ownScale = QGuiApplication::platformName() == u"wayland"_s;
    const double scale = ownScale ? desktop_->textScale().value_or(textScale_) : textScale_;
    if (dark == colors_.dark && scale == textScale_) return;
    textScale_ = std::clamp(scale, 0.5, 4.0);
    colors_ = ThemeColors::of(theme_, dark);
    apply();
    Q_EMIT changed();
}
