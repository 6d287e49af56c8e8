#pragma once

#include <array>
#include <optional>
#include <string_view>

/// The color themes. Every function may be called from any thread.
enum class AppTheme { lagoon, sunset, grape, forest, candy };

namespace AppThemes {

/// Every theme, in the order of choice.
inline constexpr std::array<AppTheme, 5> allCases = {AppTheme::lagoon, AppTheme::sunset, AppTheme::grape,
                                                     AppTheme::forest, AppTheme::candy};

/// The theme stored under exactly this name, or nothing.
[[nodiscard]] std::optional<AppTheme> fromRawValue(std::string_view rawValue);

}  // namespace AppThemes

/// The stored name: the case name.
[[nodiscard]] std::string_view rawValue(AppTheme theme);
