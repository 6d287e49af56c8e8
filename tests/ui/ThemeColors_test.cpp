#include "OrdovanApp/theme/ThemeColors.h"

#include "tests/support/QtTestMain.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <tuple>
#include <vector>

namespace {

double channel(int value) {
    const double share = value / 255.0;
    return share <= 0.03928 ? share / 12.92 : std::pow((share + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& color) {
    return 0.2126 * channel(color.red()) + 0.7152 * channel(color.green()) + 0.0722 * channel(color.blue());
}

/// The contrast ratio of WCAG 2.1, 1 to 21.
double contrast(const QColor& first, const QColor& second) {
    const auto [darker, lighter] = std::minmax({luminance(first), luminance(second)});
    return (lighter + 0.05) / (darker + 0.05);
}

struct Named {
    const char* name;
    QColor color;
};

std::vector<Named> surfacesOf(const ThemeColors& colors) {
    return {{"window", colors.window}, {"sidebar", colors.sidebar}, {"sidebarHover", colors.sidebarHover},
            {"card", colors.card},     {"hover", colors.hover},     {"groupHead", colors.groupHead},
            {"tint", colors.tint}};
}

class ThemeColorsTest : public ::testing::TestWithParam<std::tuple<AppTheme, bool>> {
protected:
    void expect(const Named& front, const Named& back, double ratio) const {
        EXPECT_GE(contrast(front.color, back.color), ratio)
            << front.name << ' ' << front.color.name().toStdString() << " on " << back.name << ' '
            << back.color.name().toStdString();
    }
    const ThemeColors colors = ThemeColors::of(std::get<0>(GetParam()), std::get<1>(GetParam()));
};

TEST(Contrast, IsTwentyOneBetweenBlackAndWhite) {
    EXPECT_NEAR(contrast(Qt::black, Qt::white), 21, 0.001);
    EXPECT_NEAR(contrast(QColor(0x777777), Qt::white), 4.48, 0.005);
}

TEST_P(ThemeColorsTest, LetEveryTextBeReadOnEverySurface) {
    for (const Named& back : surfacesOf(colors)) {
        expect({"text", colors.text}, back, 4.5);
        expect({"secondText", colors.secondText}, back, 4.5);
        expect({"faintText", colors.faintText}, back, 4.5);
    }
    for (const Named& front : {Named{"text", colors.text}, Named{"faintText", colors.faintText}}) {
        expect(front, {"pressed", colors.pressed}, 4.5);
    }
}

TEST_P(ThemeColorsTest, LetTheAccentBeReadAsText) {
    for (const Named& back : surfacesOf(colors)) {
        if (back.color != colors.sidebarHover) expect({"accentText", colors.accentText}, back, 4.5);
    }
    expect({"accentText", colors.accentText}, {"sidebarSelected", colors.sidebarSelected}, 4.5);
    expect({"accentText", colors.accentText}, {"tintStrong", colors.tintStrong}, 4.5);
    expect({"text", colors.text}, {"sidebarSelected", colors.sidebarSelected}, 4.5);
    expect({"text", colors.text}, {"tintStrong", colors.tintStrong}, 4.5);
}

TEST_P(ThemeColorsTest, LetTextBeReadOnTheAccent) {
    expect({"onAccent", colors.onAccent}, {"accent", colors.accent}, 4.5);
    expect({"onAccent", colors.onAccent}, {"accentHover", colors.accentHover}, 4.5);
    expect({"onAccent", colors.onAccent}, {"accentPressed", colors.accentPressed}, 4.5);
}

TEST_P(ThemeColorsTest, LetWhatCanBeOperatedBeSeen) {
    for (const Named& back : surfacesOf(colors)) {
        expect({"control", colors.control}, back, 3);
        expect({"accent", colors.accent}, back, 3);
    }
}

TEST_P(ThemeColorsTest, LetEveryKindBeReadOnItsChipAndOnRows) {
    for (const OrdovanFileCategory category : OrdovanFileCategories::allCases) {
        const std::string name(rawValue(category));
        const Named kind{name.c_str(), colors.kind(category)};
        expect(kind, {"its chip", colors.surface(kind.color)}, 4.5);
        expect(kind, {"card", colors.card}, 4.5);
        expect(kind, {"hover", colors.hover}, 4.5);
        expect(kind, {"tint", colors.tint}, 4.5);
    }
}

TEST_P(ThemeColorsTest, LetWarningsAndErrorsBeRead) {
    for (const Named& front : {Named{"warning", colors.warning}, Named{"danger", colors.danger}}) {
        const Named own{"its surface", colors.surface(front.color)};
        expect(front, own, 4.5);
        expect({"text", colors.text}, own, 4.5);
        expect({"secondText", colors.secondText}, own, 4.5);
        for (const Named& back :
             {Named{"window", colors.window}, Named{"card", colors.card}, Named{"hover", colors.hover},
              Named{"tint", colors.tint}, Named{"groupHead", colors.groupHead}}) {
            expect(front, back, 4.5);
        }
    }
    expect({"accentText", colors.accentText}, {"info", colors.surface(colors.accentText)}, 4.5);
    expect({"accentText", colors.accentText}, {"warning surface", colors.surface(colors.warning)}, 4.5);
    expect({"accentText", colors.accentText}, {"danger surface", colors.surface(colors.danger)}, 4.5);
}

TEST_P(ThemeColorsTest, TellTheKindsApart) {
    std::vector<QRgb> all;
    for (const OrdovanFileCategory category : OrdovanFileCategories::allCases)
        all.push_back(colors.kind(category).rgb());
    std::ranges::sort(all);
    EXPECT_EQ(std::ranges::unique(all).begin(), all.end());
}

TEST_P(ThemeColorsTest, KeepTheAccentTheThemesOwn) {
    const std::vector<std::pair<QRgb, QRgb>> accents = {{0xFF0B7A7C, 0xFF3CC7C3},
                                                        {0xFFC2491D, 0xFFFF8A5C},
                                                        {0xFF6C4AB6, 0xFFA58BF0},
                                                        {0xFF2A7347, 0xFF63C08A},
                                                        {0xFFB52C73, 0xFFF27AB4}};
    const auto& [light, dark] = accents[static_cast<std::size_t>(std::get<0>(GetParam()))];
    EXPECT_EQ(colors.accent.rgb(), colors.dark ? dark : light);
}

INSTANTIATE_TEST_SUITE_P(EveryTheme, ThemeColorsTest,
                         ::testing::Combine(::testing::ValuesIn(AppThemes::allCases), ::testing::Bool()),
                         [](const auto& instance) {
                             return std::string(rawValue(std::get<0>(instance.param))) +
                                    (std::get<1>(instance.param) ? "Dark" : "Light");
                         });

}  // namespace
