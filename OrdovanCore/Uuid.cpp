#include "OrdovanCore/Uuid.h"

#include "OrdovanCore/Hex.h"

#include <cstdlib>

namespace ordovan {

namespace {

constexpr std::size_t textSize = 36;

/// True at the places of the textual form that hold a hyphen.
constexpr bool isHyphenPlace(std::size_t place) {
    return place == 8 || place == 13 || place == 18 || place == 23;
}

}  // namespace

Uuid Uuid::random() {
    Uuid uuid;
    arc4random_buf(uuid.bytes.data(), uuid.bytes.size());
    uuid.bytes[6] = static_cast<std::uint8_t>((uuid.bytes[6] & 0x0F) | 0x40);  // version 4
    uuid.bytes[8] = static_cast<std::uint8_t>((uuid.bytes[8] & 0x3F) | 0x80);  // the variant of RFC 9562
    return uuid;
}

std::optional<Uuid> Uuid::parse(std::string_view text) {
    if (text.size() != textSize) return std::nullopt;
    Uuid uuid;
    std::size_t digits = 0;
    for (std::size_t place = 0; place < textSize; ++place) {
        if (isHyphenPlace(place)) {
            if (text[place] != '-') return std::nullopt;
            continue;
        }
        const auto digit = hexValue(text[place]);
        if (!digit) return std::nullopt;
        std::uint8_t& byte = uuid.bytes[digits / 2];
        byte = static_cast<std::uint8_t>(byte * 16 + *digit);
        ++digits;
    }
    return uuid;
}

std::string Uuid::text() const {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string out;
    out.reserve(textSize);
    for (const std::uint8_t byte : bytes) {
        if (isHyphenPlace(out.size())) out += '-';
        out += digits[byte / 16];
        out += digits[byte % 16];
    }
    return out;
}

}  // namespace ordovan
