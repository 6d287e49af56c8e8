#include "OrdovanCore/Text.h"

#include <unicode/basictz.h>
#include <unicode/timezone.h>
#include <unicode/tztrans.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <mutex>

namespace ordovan::text {
namespace {

// 0001-01-01 00:00 and 9999-12-31 23:59:59 UTC, in seconds since 1970.
constexpr double earliest = -62'135'596'800.0;
constexpr double latest = 253'402'300'799.0;

std::unique_ptr<icu::TimeZone> zoneNamed(std::string_view name) {
    return std::unique_ptr<icu::TimeZone>(
        icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8({name.data(), static_cast<int>(name.size())})));
}

std::string nameOf(const icu::TimeZone& zone) {
    icu::UnicodeString id;
    std::string name;
    zone.getID(id).toUTF8String(name);
    return name;
}

/// True for a name of the time zone database. ICU also takes offsets, which mean the opposite of what TZ says:
/// "GMT+2" is east of Greenwich here and west of it there.
bool isInDatabase(std::string_view name) {
    icu::UnicodeString canonical;
    UBool isSystemID = 0;
    UErrorCode status = U_ZERO_ERROR;
    icu::TimeZone::getCanonicalID(icu::UnicodeString::fromUTF8({name.data(), static_cast<int>(name.size())}), canonical,
                                  isSystemID, status);
    return U_SUCCESS(status) && isSystemID != 0;
}

/// Held while the C library reads its time zone anew, which ICU makes it do as well: tzset(3) replaces what it
/// remembered. The library has a lock of its own, but one that the thread sanitizer does not see.
std::mutex& readingOfTheZone() {
    static std::mutex mutex;
    return mutex;
}

/// Seconds that the C library's clock is ahead of UTC.
double libraryOffsetAt(double epoch) {
    const auto instant = static_cast<std::time_t>(std::floor(epoch));
    std::tm local{};
    return ::localtime_r(&instant, &local) == nullptr ? 0.0 : static_cast<double>(local.tm_gmtoff);
}

}  // namespace

TimeZone TimeZone::current() {
    if (const char* const set = std::getenv("TZ"); set != nullptr) {
        std::string_view name = set;
        if (name.starts_with(':')) name.remove_prefix(1);
        return isInDatabase(name) ? TimeZone(std::string(name)) : TimeZone(set, true);
    }
    const std::lock_guard lock(readingOfTheZone());
    const std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::detectHostTimeZone());
    return zone == nullptr ? utc() : TimeZone(nameOf(*zone));
}

TimeZone TimeZone::utc() {
    return TimeZone("UTC");
}

std::optional<TimeZone> TimeZone::named(std::string_view name) {
    const std::unique_ptr<icu::TimeZone> zone = zoneNamed(name);
    if (zone == nullptr || *zone == icu::TimeZone::getUnknown()) return std::nullopt;
    return TimeZone(std::string(name));
}

struct Calendar::State {
    std::unique_ptr<icu::TimeZone> zone;  // null when the C library tells the time
    // The offset from UTC last looked up, in seconds, and the instants between which it holds.
    double validFrom = std::numeric_limits<double>::infinity();
    double validUntil = -std::numeric_limits<double>::infinity();
    double offset = 0;

    [[nodiscard]] double offsetAt(double epoch) {
        if (zone == nullptr) return libraryOffsetAt(epoch);
        if (epoch >= validFrom && epoch < validUntil) return offset;
        UErrorCode status = U_ZERO_ERROR;
        std::int32_t raw = 0, daylight = 0;
        zone->getOffset(epoch * 1000.0, 0, raw, daylight, status);
        const std::int32_t seconds = (raw + daylight) / 1000;
        offset = seconds;
        validFrom = validUntil = epoch;  // holds for this instant alone, unless the zone tells more
        if (const auto* const rules = dynamic_cast<const icu::BasicTimeZone*>(zone.get()); rules != nullptr) {
            icu::TimeZoneTransition transition;
            validFrom = rules->getPreviousTransition(epoch * 1000.0, 1, transition) != 0
                            ? transition.getTime() / 1000.0
                            : -std::numeric_limits<double>::infinity();
            validUntil = rules->getNextTransition(epoch * 1000.0, 0, transition) != 0
                             ? transition.getTime() / 1000.0
                             : std::numeric_limits<double>::infinity();
        }
        return offset;
    }
};

Calendar::Calendar(const TimeZone& zone) : state_(std::make_unique<State>()) {
    if (zone.isOfTheLibrary()) {
        const std::lock_guard lock(readingOfTheZone());
        ::tzset();  // localtime_r(3) need not look at TZ by itself
    } else {
        state_->zone = zoneNamed(zone.name());
    }
}
Calendar::~Calendar() = default;

LocalDateTime Calendar::at(double epoch) const {
    using namespace std::chrono;
    if (std::isnan(epoch)) epoch = 0;
    epoch = std::clamp(epoch, earliest, latest);
    const double local = std::clamp(std::floor(epoch) + state_->offsetAt(epoch), earliest, latest);
    const sys_seconds instant{seconds{static_cast<std::int64_t>(local)}};
    const sys_days midnight = floor<days>(instant);
    const year_month_day date{midnight};
    const hh_mm_ss time{instant - midnight};
    return {static_cast<int>(date.year()),
            static_cast<int>(static_cast<unsigned>(date.month())),
            static_cast<int>(static_cast<unsigned>(date.day())),
            static_cast<int>(time.hours().count()),
            static_cast<int>(time.minutes().count()),
            static_cast<int>(time.seconds().count())};
}

}  // namespace ordovan::text
