#include "OrdovanApp/stores/AppTheme.h"

namespace {

struct Names {
    AppTheme theme;
    std::string_view raw;
    std::string_view shown;
};

constexpr std::array<Names, 5> names = {{
    {AppTheme::lagoon, "lagoon", "Teal"},
    {AppTheme::sunset, "sunset", "Sunset"},
    {AppTheme::grape, "grape", "Grape"},
    {AppTheme::forest, "forest", "Forest"},
    {AppTheme::candy, "candy", "Candy"},
}};

const Names& namesOf(AppTheme theme) {
    for (const Names& row : names) {
        if (row.theme == theme) return row;
    }
    return names.front();
}

}  // namespace

std::optional<AppTheme> AppThemes::fromRawValue(std::string_view rawValue) {
    for (const Names& row : names) {
        if (row.raw == rawValue) return row.theme;
    }
    return std::nullopt;
}

std::string_view rawValue(AppTheme theme) {
    return namesOf(theme).raw;
}

std::string_view shownName(AppTheme theme) {
    return namesOf(theme).shown;
}
