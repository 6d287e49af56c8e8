#include "OrdovanApp/theme/ThemeColors.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>

namespace {

struct Accents {
    QColor light;
    QColor dark;
};

Accents accentsOf(AppTheme theme) {
    switch (theme) {
        case AppTheme::lagoon:
            return {QColor(0x0B7A7C), QColor(0x3CC7C3)};
        case AppTheme::sunset:
            return {QColor(0xC2491D), QColor(0xFF8A5C)};
        case AppTheme::grape:
            return {QColor(0x6C4AB6), QColor(0xA58BF0)};
        case AppTheme::forest:
            return {QColor(0x2A7347), QColor(0x63C08A)};
        case AppTheme::candy:
            return {QColor(0xB52C73), QColor(0xF27AB4)};
    }
    return {};
}

// The hue of each kind; `legible` finds the lightness.
QColor hueOf(OrdovanFileCategory category) {
    switch (category) {
        case OrdovanFileCategory::documents:
            return QColor(0x2F6FDE);
        case OrdovanFileCategory::spreadsheets:
            return QColor(0x2E8548);
        case OrdovanFileCategory::images:
            return QColor(0xB4549C);
        case OrdovanFileCategory::design:
            return QColor(0x8155D6);
        case OrdovanFileCategory::videos:
            return QColor(0xC2452D);
        case OrdovanFileCategory::audio:
            return QColor(0xC43D68);
        case OrdovanFileCategory::archives:
            return QColor(0xA36A1F);
        case OrdovanFileCategory::installers:
            return QColor(0x5B6B7B);
        case OrdovanFileCategory::code:
            return QColor(0x14808F);
        case OrdovanFileCategory::fonts:
            return QColor(0x5762C9);
        case OrdovanFileCategory::books:
            return QColor(0x8A6244);
        case OrdovanFileCategory::other:
            return QColor(0x6B6F76);
    }
    return {};
}

/// `amount` of one color laid over another.
QColor laid(const QColor& over, double amount, const QColor& under) {
    const auto channel = [amount](int above, int below) {
        return static_cast<int>(std::lround(above * amount + below * (1 - amount)));
    };
    return {channel(over.red(), under.red()), channel(over.green(), under.green()), channel(over.blue(), under.blue())};
}

// Relative luminance and contrast as WCAG 2.1 defines them.
double luminance(const QColor& color) {
    const auto linear = [](double value) {
        return value <= 0.03928 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

double contrast(const QColor& first, const QColor& second) {
    const double a = luminance(first);
    const double b = luminance(second);
    return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05);
}

constexpr double textContrast = 4.55;  // a little above 4.5, so that rounding can not fall below
constexpr double lineContrast = 3.05;

/// The color, moved towards black (in dark: white) until it reaches `ratio` on each surface that `surfacesOf` gives
/// for it.
template <typename Surfaces>
QColor legible(const QColor& color, bool dark, double ratio, Surfaces surfacesOf) {
    const QColor end = dark ? QColor(Qt::white) : QColor(Qt::black);
    for (int step = 0; step < 50; ++step) {
        const QColor moved = laid(end, step / 50.0, color);
        const auto surfaces = surfacesOf(moved);
        if (std::ranges::all_of(surfaces, [&](const QColor& surface) { return contrast(moved, surface) >= ratio; })) {
            return moved;
        }
    }
    return end;
}

ThemeColors neutral(bool dark) {
    ThemeColors colors;
    colors.dark = dark;
    colors.window = QColor(dark ? 0x17191C : 0xF5F6F8);
    colors.sidebar = QColor(dark ? 0x1E2125 : 0xECEEF1);
    colors.card = QColor(dark ? 0x23272C : 0xFFFFFF);
    colors.hover = QColor(dark ? 0x2A2F35 : 0xF1F3F5);
    colors.hairline = QColor(dark ? 0x32373D : 0xDFE3E8);
    colors.text = QColor(dark ? 0xE8EAED : 0x1B1F24);
    colors.secondText = QColor(dark ? 0xA3ABB5 : 0x59636E);
    colors.groupHead = laid(colors.sidebar, 0.55, colors.card);
    colors.pressed = laid(colors.text, 0.09, colors.card);
    colors.sidebarHover = laid(colors.text, 0.05, colors.sidebar);
    colors.scrim = dark ? QColor(0, 0, 0, 140) : QColor(10, 12, 14, 97);
    colors.shadow = dark ? QColor(0, 0, 0, 70) : QColor(20, 25, 30, 15);
    return colors;
}

}  // namespace

ThemeColors ThemeColors::of(AppTheme theme, bool dark) {
    ThemeColors colors = neutral(dark);
    const Accents accents = accentsOf(theme);
    const QColor end = dark ? QColor(Qt::white) : QColor(Qt::black);
    colors.accent = dark ? accents.dark : accents.light;
    colors.onAccent = dark ? QColor(0x101214) : QColor(Qt::white);
    colors.accentHover = laid(end, dark ? 0.14 : 0.10, colors.accent);
    colors.accentPressed = laid(QColor(Qt::black), dark ? 0.12 : 0.20, colors.accent);
    colors.tint = laid(colors.accent, dark ? 0.13 : 0.10, colors.card);
    colors.tintStrong = laid(colors.accent, dark ? 0.20 : 0.17, colors.card);
    colors.sidebarSelected = laid(colors.accent, dark ? 0.15 : 0.12, colors.sidebar);

    const std::array plain = {colors.window, colors.sidebar, colors.card, colors.groupHead,
                              colors.hover,  colors.pressed, colors.tint, colors.sidebarHover};
    const auto onPlain = [&plain](const QColor&) { return plain; };
    const auto onPlainAndItsOwn = [&](const QColor& color) {
        return std::array{colors.window, colors.card,    colors.groupHead,     colors.hover,
                          colors.tint,   colors.sidebar, colors.surface(color)};
    };
    colors.secondText = legible(colors.secondText, dark, textContrast, onPlain);
    colors.faintText = legible(QColor(dark ? 0x7B838C : 0x6B747E), dark, textContrast, onPlain);
    colors.control = legible(QColor(dark ? 0x6C747D : 0x8A939D), dark, lineContrast, onPlain);
    colors.warning = legible(QColor(dark ? 0xE0A84A : 0xA8670F), dark, textContrast, onPlainAndItsOwn);
    colors.danger = legible(QColor(dark ? 0xFF8A80 : 0xC4372B), dark, textContrast, onPlainAndItsOwn);
    colors.accentText = legible(colors.accent, dark, textContrast, [&](const QColor& color) {
        return std::array{colors.window,
                          colors.sidebar,
                          colors.card,
                          colors.hover,
                          colors.groupHead,
                          colors.tint,
                          colors.tintStrong,
                          colors.sidebarSelected,
                          colors.surface(color),
                          colors.surface(colors.warning),
                          colors.surface(colors.danger)};
    });
    for (const OrdovanFileCategory category : OrdovanFileCategories::allCases) {
        colors.kinds_[static_cast<std::size_t>(category)] =
            legible(hueOf(category), dark, textContrast, onPlainAndItsOwn);
    }
    return colors;
}

QColor ThemeColors::kind(OrdovanFileCategory category) const {
    return kinds_[static_cast<std::size_t>(category)];
}

QColor ThemeColors::surface(const QColor& kindColor) const {
    return laid(kindColor, dark ? 0.15 : 0.12, card);
}
