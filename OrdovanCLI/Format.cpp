#include "OrdovanCLI/Format.h"

#include "OrdovanCore/Hex.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>

namespace ordovan::cli {
namespace {

/// Printable ASCII that stands for itself.
constexpr bool isPlain(unsigned char byte) {
    return byte >= 0x20 && byte < 0x7f && byte != '\\';
}

/// "\x1b"
void appendNumbered(std::string& out, std::string_view kind, std::uint32_t value, int digits) {
    out += kind;
    appendHex(out, value, digits);
}

void appendEscapedByte(std::string& out, unsigned char byte) {
    switch (byte) {
        case '\\':
            out += "\\\\";
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
            appendNumbered(out, "\\x", byte, 2);
    }
}

/// C1 controls, line and paragraph separator, and the marks, embeddings, overrides and isolates of bidirectional text.
constexpr bool isTreacherous(std::uint32_t codePoint) {
    return (codePoint >= 0x80 && codePoint <= 0x9f) || codePoint == 0x61c || codePoint == 0x200e ||
           codePoint == 0x200f || (codePoint >= 0x2028 && codePoint <= 0x202e) ||
           (codePoint >= 0x2066 && codePoint <= 0x2069);
}

/// The code point of a sequence of two or three bytes in well-formed text; longer ones are none of the treacherous.
std::uint32_t decoded(std::string_view sequence) {
    const auto at = [&](std::size_t index) { return static_cast<unsigned char>(sequence[index]) & 0x3fU; };
    if (sequence.size() == 2) return (static_cast<unsigned char>(sequence[0]) & 0x1fU) << 6 | at(1);
    return (static_cast<unsigned char>(sequence[0]) & 0x0fU) << 12 | at(1) << 6 | at(2);
}

void appendSafeUtf8(std::string& out, std::string_view text) {
    for (std::size_t at = 0; at < text.size();) {
        const auto byte = static_cast<unsigned char>(text[at]);
        if (byte < 0x80) {
            if (isPlain(byte))
                out.push_back(text[at]);
            else
                appendEscapedByte(out, byte);
            ++at;
            continue;
        }
        const std::size_t length = byte < 0xe0 ? 2 : byte < 0xf0 ? 3 : 4;
        const std::string_view sequence = text.substr(at, length);
        const std::uint32_t codePoint = length < 4 ? decoded(sequence) : 0x10000;
        if (isTreacherous(codePoint))
            appendNumbered(out, "\\u", codePoint, 4);
        else
            out += sequence;
        at += length;
    }
}

void appendTwoDigits(std::string& out, unsigned number) {
    out.push_back(static_cast<char>('0' + number / 10));
    out.push_back(static_cast<char>('0' + number % 10));
}

void appendDate(std::string& out, const text::LocalDateTime& date) {
    appendTwoDigits(out, static_cast<unsigned>(date.year) / 100);
    appendTwoDigits(out, static_cast<unsigned>(date.year) % 100);
    out.push_back('-');
    appendTwoDigits(out, static_cast<unsigned>(date.month));
    out.push_back('-');
    appendTwoDigits(out, static_cast<unsigned>(date.day));
    out.push_back(' ');
    appendTwoDigits(out, static_cast<unsigned>(date.hour));
    out.push_back(':');
    appendTwoDigits(out, static_cast<unsigned>(date.minute));
}

constexpr std::int64_t secondsADay = 86'400;

/// The wall clock's reading as seconds since 1970-01-01 00:00 on that same clock.
std::int64_t wallSeconds(const text::LocalDateTime& date) {
    const std::chrono::sys_days day = std::chrono::year(date.year) /
                                      std::chrono::month(static_cast<unsigned>(date.month)) /
                                      std::chrono::day(static_cast<unsigned>(date.day));
    return day.time_since_epoch().count() * secondsADay + std::int64_t{date.hour} * 3600 +
           std::int64_t{date.minute} * 60 + date.second;
}

text::LocalDateTime fromWallSeconds(std::int64_t wall) {
    const std::int64_t days = wall / secondsADay;
    const std::int64_t seconds = wall % secondsADay;
    const std::chrono::year_month_day date{std::chrono::sys_days(std::chrono::days(days))};
    return {static_cast<int>(date.year()),
            static_cast<int>(static_cast<unsigned>(date.month())),
            static_cast<int>(static_cast<unsigned>(date.day())),
            static_cast<int>(seconds / 3600),
            static_cast<int>(seconds / 60 % 60),
            static_cast<int>(seconds % 60)};
}

}  // namespace

void appendSafe(std::string& out, std::string_view text) {
    bool plain = true;
    for (const char c : text) plain &= isPlain(static_cast<unsigned char>(c));
    if (plain)
        out += text;
    else if (text::isUtf8(text))
        appendSafeUtf8(out, text);
    else
        appendSafeUtf8(out, text::withReplacements(text));
}

std::string inQuotes(std::string_view text) {
    std::string out = "\"";
    appendSafe(out, text);
    out.push_back('"');
    return out;
}

std::string inShellQuotes(std::string_view text) {
    constexpr std::string_view harmless = "@%+=:,./_-";
    const auto isHarmless = [&](char c) {
        return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || harmless.contains(c);
    };
    if (!text.empty() && std::ranges::all_of(text, isHarmless)) return std::string(text);
    std::string plain(text), shown;
    std::erase(plain, '\\');  // the one harmless character that is not shown as it is
    appendSafe(shown, plain);
    const bool isPrintable = shown == plain;
    std::string quoted = isPrintable ? "'" : "$'";
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (isPrintable) {
            quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
        } else if (byte >= 0x20 && byte < 0x7f && c != '\'' && c != '\\') {
            quoted += c;
        } else {
            quoted += '\\';
            for (const int shift : {6, 3, 0}) quoted += static_cast<char>('0' + (byte >> shift & 7));
        }
    }
    return quoted + "'";
}

void appendInteger(std::string& out, std::int64_t number) {
    std::array<char, 20> digits;
    out.append(digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr);
}

void appendCount(std::string& out, std::size_t count, std::string_view noun) {
    appendInteger(out, static_cast<std::int64_t>(count));
    out.append(" ").append(noun);
    if (count != 1) out.push_back('s');
}

void appendSize(std::string& out, std::int64_t bytes) {
    if (bytes < 1000) return appendCount(out, static_cast<std::size_t>(bytes), "byte");
    static constexpr std::array<std::string_view, 6> units = {" KB", " MB", " GB", " TB", " PB", " EB"};
    const auto size = static_cast<std::uint64_t>(bytes);
    std::uint64_t unit = 1000;
    std::size_t index = 0;
    const auto tenths = [&] { return size / unit * 10 + (size % unit * 10 + unit / 2) / unit; };
    while (tenths() >= 10'000) {
        unit *= 1000;
        ++index;
    }
    appendInteger(out, static_cast<std::int64_t>(tenths() / 10));
    out.push_back('.');
    out.push_back(static_cast<char>('0' + tenths() % 10));
    out += units[index];
}

void appendBase64(std::string& out, std::string_view bytes) {
    constexpr std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (std::size_t at = 0; at < bytes.size(); at += 3) {
        const std::string_view group = bytes.substr(at, 3);
        std::uint32_t bits = 0;
        for (std::size_t index = 0; index < 3; ++index) {
            bits = bits << 8 | (index < group.size() ? static_cast<unsigned char>(group[index]) : 0U);
        }
        for (std::size_t index = 0; index < 4; ++index) {
            out.push_back(index <= group.size() ? alphabet[bits >> (18 - 6 * index) & 0x3f] : '=');
        }
    }
}

DateFormatter::DateFormatter(const text::TimeZone& zone) : calendar_(zone), days_(rememberedDays) {}

const DateFormatter::Day& DateFormatter::day(std::int64_t number) {
    std::optional<Day>& remembered = days_[static_cast<std::size_t>(number) % rememberedDays];
    if (!remembered || remembered->number != number) {
        const std::int64_t first = number * secondsADay;
        const std::int64_t last = first + secondsADay - 1;
        const std::int64_t offset = wallSeconds(calendar_.at(static_cast<double>(first))) - first;
        const bool isSteady = wallSeconds(calendar_.at(static_cast<double>(last))) - last == offset;
        remembered = {number, isSteady ? std::optional(offset) : std::nullopt};
    }
    return *remembered;
}

void DateFormatter::append(std::string& out, double epoch) {
    // Between 1970-01-02 and the year 9999 the arithmetic below is that of the calendar.
    constexpr double lowest = secondsADay;
    constexpr double highest = 253'370'000'000.0;
    if (!(epoch >= lowest && epoch < highest)) return appendDate(out, calendar_.at(epoch));
    const auto seconds = static_cast<std::int64_t>(std::floor(epoch));
    const Day& its = day(seconds / secondsADay);
    if (!its.offset) return appendDate(out, calendar_.at(epoch));
    appendDate(out, fromWallSeconds(seconds + *its.offset));
}

}  // namespace ordovan::cli
