#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ordovan {

/// A universally unique identifier (RFC 9562).
struct Uuid {
    std::array<std::uint8_t, 16> bytes{};

    /// A version 4 identifier from the system's random source. Any thread.
    static Uuid random();

    /// From the 36-character form, upper or lower case; nothing for any other text.
    static std::optional<Uuid> parse(std::string_view text);

    /// 36 upper-case characters: 8-4-4-4-12 hexadecimal digits.
    [[nodiscard]] std::string text() const;

    friend auto operator<=>(const Uuid&, const Uuid&) = default;
};

}  // namespace ordovan
