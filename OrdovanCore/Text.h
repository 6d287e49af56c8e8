#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>

/// The one door to Unicode: every question about characters, order and calendars is answered here, by ICU.
///
/// Text is UTF-8 in `std::string`. File names that are not UTF-8 may be passed to every function; where a function
/// can not work on such bytes, it says what it does with them. All functions may be called from any thread, and
/// values are used on any; of the other classes each says for itself.
namespace ordovan::text {

/// True when the bytes are well-formed UTF-8 (no overlong forms, no surrogates; RFC 3629). NUL is allowed.
[[nodiscard]] bool isUtf8(std::string_view bytes) noexcept;

/// True when every byte is below 0x80.
[[nodiscard]] bool isAscii(std::string_view bytes) noexcept;

/// ASCII letters in lower case, everything else as it is.
[[nodiscard]] constexpr char asciiLowercased(char c) noexcept {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}
[[nodiscard]] std::string asciiLowercased(std::string_view text);

/// Unicode canonical composition (NFC, Unicode Standard Annex 15). Bytes that are not UTF-8 are returned unchanged.
[[nodiscard]] std::string composed(std::string_view utf8);

/// True when `composed` would return the very same bytes; cheaper than composing. True for what is not UTF-8.
[[nodiscard]] bool isComposed(std::string_view utf8);

/// Full Unicode lower-casing without a locale's special rules (SpecialCasing included, so that "İ" becomes two
/// characters). Bytes that are not UTF-8 have only their ASCII letters lowered.
[[nodiscard]] std::string lowercased(std::string_view utf8);

/// User-perceived characters (extended grapheme clusters, Unicode Standard Annex 29).
[[nodiscard]] std::size_t characterCount(std::string_view utf8);

/// The text without white space and line ends (Unicode White_Space) at both ends.
[[nodiscard]] std::string_view trimmed(std::string_view utf8);

/// True when any code point is a control character (general category Cc).
[[nodiscard]] bool hasControlCharacter(std::string_view utf8);

/// The text as valid UTF-8: each maximal ill-formed sequence becomes U+FFFD (Unicode Standard, section 3.9).
[[nodiscard]] std::string withReplacements(std::string_view bytes);

/// The order a file browser shows: by a locale's collation, case ignored (secondary strength), digit runs by value
/// (Unicode Technical Standard 10). Any thread; opening one is dear, so keep it.
class Collation {
public:
    /// The process's own: LC_ALL, LC_COLLATE or LANG, whichever is set first; "C" and "POSIX" mean the root collation.
    static const Collation& system();

    /// A locale's by its name ("de", "sv_SE"); one that ICU does not know gives the root collation.
    explicit Collation(std::string_view locale);
    ~Collation();
    Collation(const Collation&) = delete;
    Collation& operator=(const Collation&) = delete;

    /// Negative, zero or positive. Zero does not mean equal bytes ("a07" and "A7" compare as equal).
    [[nodiscard]] int compare(std::string_view a, std::string_view b) const;

private:
    friend class StandardSorter;
    struct State;
    std::unique_ptr<const State> state_;
};

/// Sorts by a collation, computing one sort key for each text instead of comparing texts again and again. One sorter
/// keeps its memory from call to call; it is not shared between threads.
class StandardSorter {
public:
    explicit StandardSorter(const Collation& collation = Collation::system());
    ~StandardSorter();
    StandardSorter(const StandardSorter&) = delete;
    StandardSorter& operator=(const StandardSorter&) = delete;

    /// The positions of `texts` in standard order. Stable: texts that compare as equal keep their order.
    /// The result stands until the next call. At most 2^32 - 1 texts.
    std::span<const std::uint32_t> order(std::span<const std::string_view> texts);

    /// The same; texts that compare as equal are ordered by the text that `second` gives for their position.
    std::span<const std::uint32_t> order(std::span<const std::string_view> texts,
                                         const std::function<std::string_view(std::size_t position)>& second);

private:
    struct State;
    std::unique_ptr<State> state_;
};

/// A time zone by its IANA name ("Europe/Berlin") or as an offset ("GMT+2"), or the process's own.
class TimeZone {
public:
    /// The process's zone: TZ, else /etc/localtime, else UTC. A TZ that is no IANA name, such as the rules
    /// "CET-1CEST,M3.5.0,M10.5.0" (tzset(3)), is followed as the C library does.
    static TimeZone current();
    static TimeZone utc();
    /// Nothing for a name that the time zone database does not know.
    static std::optional<TimeZone> named(std::string_view name);

    /// What the zone was named by; for a zone of the C library the whole TZ.
    [[nodiscard]] const std::string& name() const noexcept { return name_; }
    /// The C library tells its time.
    [[nodiscard]] bool isOfTheLibrary() const noexcept { return isOfTheLibrary_; }
    friend bool operator==(const TimeZone&, const TimeZone&) = default;

private:
    explicit TimeZone(std::string name, bool isOfTheLibrary = false)
        : name_(std::move(name)), isOfTheLibrary_(isOfTheLibrary) {}
    std::string name_;
    bool isOfTheLibrary_;
};

/// An instant on the wall clock of a time zone, in the Gregorian calendar.
struct LocalDateTime {
    int year = 1970;
    int month = 1;  // 1 to 12
    int day = 1;    // 1 to 31
    int hour = 0, minute = 0, second = 0;
    friend bool operator==(const LocalDateTime&, const LocalDateTime&) = default;
};

/// Turns instants into wall-clock dates of one zone. Opening a calendar is dear, so keep one for many instants; one
/// object is not shared between threads.
class Calendar {
public:
    explicit Calendar(const TimeZone& zone);
    ~Calendar();
    Calendar(const Calendar&) = delete;
    Calendar& operator=(const Calendar&) = delete;

    /// `epoch` is in seconds since 1970-01-01 00:00 UTC. Years before 1 and after 9999 are pinned to those; NaN is
    /// 1970.
    [[nodiscard]] LocalDateTime at(double epoch) const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace ordovan::text
