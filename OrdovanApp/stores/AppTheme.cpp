#include "OrdovanApp/stores/AppTheme.h"

#include <algorithm>

namespace {

constexpr std::array<std::string_view, AppThemes::allCases.size()> names = {"lagoon", "sunset", "grape", "forest",
                                                                            "candy"};

}  // namespace

std::optional<AppTheme> AppThemes::fromRawValue(std::string_view rawValue) {
    const auto* const name = std::ranges::find(names, rawValue);
    if (name == names.end()) return std::nullopt;
    return allCases.at(static_cast<std::size_t>(name - names.begin()));
}

std::string_view rawValue(AppTheme theme) {
    return names.at(static_cast<std::size_t>(theme));
}
