#include "OrdovanCore/Hex.h"
#include "OrdovanCore/Json.h"
#include "OrdovanCore/Text.h"

#include <array>
#include <charconv>
#include <cmath>

namespace ordovan::json {

namespace {

/// True when the bytes are ASCII and may all stand in a JSON string as they are. There is no early way out and bytes
/// are combined with bytes, so that the compiler looks at sixteen at once; nearly all texts are plain.
bool isPlain(std::string_view text) {
    constexpr unsigned char printable = 0x7F - 0x20;
    unsigned char special = 0;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        const auto fromSpace = static_cast<unsigned char>(byte - 0x20);
        special |= static_cast<unsigned char>((fromSpace >= printable) | (byte == '"') | (byte == '\\'));
    }
    return special == 0;
}

void appendEscape(std::string& out, unsigned codePoint) {
    switch (codePoint) {
        case '"':
            out += "\\\"";
            return;
        case '\\':
            out += "\\\\";
            return;
        case '\b':
            out += "\\b";
            return;
        case '\f':
            out += "\\f";
            return;
        case '\n':
            out += "\\n";
            return;
        case '\r':
            out += "\\r";
            return;
        case '\t':
            out += "\\t";
            return;
        default:
            break;
    }
    out += "\\u";
    appendHex(out, codePoint, 4);
}

/// The bytes with which something begins that may have to be escaped; 0xC2 leads U+0080 to U+00BF.
constexpr std::array<bool, 256> suspects = [] {
    std::array<bool, 256> found{};
    for (std::size_t byte = 0; byte < 0x20; ++byte) found[byte] = true;
    for (const std::size_t byte : {0x22, 0x5C, 0x7F, 0xC2}) found[byte] = true;
    return found;
}();

/// Appends UTF-8 with what must not stand as it is escaped.
void appendEscaped(std::string& out, std::string_view utf8) {
    std::size_t done = 0;
    for (std::size_t at = 0; at < utf8.size(); ++at) {
        unsigned codePoint = static_cast<unsigned char>(utf8[at]);
        if (!suspects[codePoint]) continue;
        const std::size_t begin = at;
        if (codePoint == 0xC2) {
            codePoint = static_cast<unsigned char>(utf8[++at]);
            if (codePoint >= 0xA0) continue;  // no longer a control character
        }
        out += utf8.substr(done, begin - done);
        appendEscape(out, codePoint);
        done = at + 1;
    }
    out += utf8.substr(done);
}

}  // namespace

void appendText(std::string& out, std::string_view text) {
    out += '"';
    if (isPlain(text)) {
        out += text;
    } else if (ordovan::text::isUtf8(text)) {
        appendEscaped(out, text);
    } else {
        appendEscaped(out, ordovan::text::withReplacements(text));
    }
    out += '"';
}

void appendInteger(std::string& out, std::int64_t number) {
    char digits[24];
    out.append(digits, std::to_chars(digits, digits + sizeof digits, number).ptr);
}

void appendNumber(std::string& out, double number) {
    constexpr double plainLimit = 1e21;  // whole numbers up to here are written with all their digits
    char buffer[32];
    std::to_chars_result result{};
    if (!std::isfinite(number)) number = 0;
    if (std::abs(number) < plainLimit && std::trunc(number) == number) {
        result = std::to_chars(buffer, buffer + sizeof buffer, number, std::chars_format::fixed);
    } else {
        result = std::to_chars(buffer, buffer + sizeof buffer, number);
    }
    out.append(buffer, result.ptr);
}

}  // namespace ordovan::json
