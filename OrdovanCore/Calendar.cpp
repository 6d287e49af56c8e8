#include "OrdovanCore/Text.h"

#include <unicode/basictz.h>
#include <unicode/timezone.h>
#include <unicode/tztrans.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <limits>

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

}  // namespace

TimeZone TimeZone::current() {
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
    std::unique_ptr<icu::TimeZone> zone;
    // The offset from UTC last looked up, in seconds, and the instants between which it holds.
    double validFrom = std::numeric_limits<double>::infinity();
    double validUntil = -std::numeric_limits<double>::infinity();
    double offset = 0;

    [[nodiscard]] double offsetAt(double epoch) {
        if (epoch >= validFrom && epoch < validUntil) return offset;
        UErrorCode status = U_ZERO_ERROR;
        std::int32_t raw = 0, daylight = 0;
        zone->getOffset(epoch * 1000.0, 0, raw, daylight, status);
        offset = (raw + daylight) / 1000;
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
    state_->zone = zoneNamed(zone.name());
}
Calendar::~Calendar() = default;
Calendar::Calendar(Calendar&&) noexcept = default;
Calendar& Calendar::operator=(Calendar&&) noexcept = default;

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
