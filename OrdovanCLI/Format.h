#pragma once

#include "OrdovanCore/Text.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// How single values look in the program's output.
namespace ordovan::cli {

/// Appends text so that it stays on its line and can not drive a terminal. Control characters, line and paragraph
/// separators and the characters that change the direction of writing are shown as "\n", "\t", "\r" or by their
/// number ("\x1b", "\u202e"), a backslash is doubled, and bytes that are not UTF-8 become U+FFFD.
void appendSafe(std::string& out, std::string_view text);

/// The text made safe, between double quotes.
[[nodiscard]] std::string inQuotes(std::string_view text);

/// The text as one word of a POSIX shell's command line, quoted where it has to be. What could drive a terminal is
/// written in octal within $'...', which bash, zsh and ksh read.
[[nodiscard]] std::string inShellQuotes(std::string_view text);

/// Appends a number in decimal.
void appendInteger(std::string& out, std::int64_t number);

/// Appends "1 file", "12 files" and so on: `noun` with an "s" for every number but one.
void appendCount(std::string& out, std::size_t count, std::string_view noun);

/// Appends a size in decimal units: "1 byte", "999 bytes", "1.2 KB", "34.0 GB".
void appendSize(std::string& out, std::int64_t bytes);

/// Appends bytes in base64 (RFC 4648, section 4, with padding).
void appendBase64(std::string& out, std::string_view bytes);

/// Appends instants as local dates, "2024-03-05 14:22". Asks the calendar once for a day of instants, not for each.
class DateFormatter {
public:
    static constexpr std::size_t width = 16;

    explicit DateFormatter(const text::TimeZone& zone);
    /// `epoch` is in seconds since 1970-01-01 00:00 UTC.
    void append(std::string& out, double epoch);

private:
    /// The difference between the wall clock and UTC over one UTC day, in seconds; nothing where it changes that day.
    struct Day {
        std::int64_t number;
        std::optional<std::int64_t> offset;
    };
    [[nodiscard]] const Day& day(std::int64_t number);

    static constexpr std::size_t rememberedDays = 4096;
    text::Calendar calendar_;
    std::vector<std::optional<Day>> days_;
};

}  // namespace ordovan::cli
