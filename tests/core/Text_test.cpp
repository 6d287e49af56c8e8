#include "OrdovanCore/Text.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace text = ordovan::text;

TEST(Utf8, IsToldFromOtherBytes) {
    EXPECT_TRUE(text::isUtf8(""));
    EXPECT_TRUE(text::isUtf8("plain ascii, long enough for a word"));
    EXPECT_TRUE(text::isUtf8("Ünïcödé 写真 🎉"));
    for (const char* bytes : {"\xff", "\xc3", "\xc0\xaf", "\xed\xa0\x80", "\xf5\x80\x80\x80", "caf\xe9.pdf"}) {
        EXPECT_FALSE(text::isUtf8(bytes)) << bytes;
    }
}

TEST(Utf8, IsRepairedForDisplayOnly) {
    EXPECT_EQ(text::withReplacements("caf\xe9.pdf"), "caf\uFFFD.pdf");
    EXPECT_EQ(text::withReplacements("café"), "café");
}

TEST(Composition, MakesDecomposedAndComposedSpellingsEqual) {
    EXPECT_EQ(text::composed("e\u0301te\u0301"), "\u00e9t\u00e9");
    EXPECT_EQ(text::composed("\u00e9"), "\u00e9");
    EXPECT_FALSE(text::isComposed("e\u0301"));
    EXPECT_TRUE(text::isComposed("\u00e9"));
}

TEST(Composition, LeavesBytesThatAreNotUtf8Alone) {
    EXPECT_EQ(text::composed("\xff"
                             "e\u0301"),
              "\xff"
              "e\u0301");
    EXPECT_TRUE(
        text::isComposed("\xff"
                         "e\u0301"));
}

TEST(LowerCasing, IsFullUnicodeWithoutALocale) {
    EXPECT_EQ(text::lowercased("PDF"), "pdf");
    EXPECT_EQ(text::lowercased("ÀÉÎ ΣΑΣ"), "àéî σας");
    EXPECT_EQ(text::lowercased("İ"), "i\u0307");
    EXPECT_EQ(text::lowercased("A\xff"), "a\xff");
}

TEST(CharacterCount, CountsWhatAPersonSeesAsCharacters) {
    EXPECT_EQ(text::characterCount(""), 0U);
    EXPECT_EQ(text::characterCount("abc"), 3U);
    EXPECT_EQ(text::characterCount("e\u0301"), 1U);
    EXPECT_EQ(text::characterCount("👨‍👩‍👧‍👦🇩🇪"), 2U);
    EXPECT_EQ(text::characterCount("a\r\nb"), 3U);
}

TEST(Trimming, TakesUnicodeWhiteSpaceFromBothEnds) {
    EXPECT_EQ(text::trimmed(" \t\n\u00a0 a b \u2003\r\n"), "a b");
    EXPECT_EQ(text::trimmed(" \n "), "");
    EXPECT_EQ(text::trimmed(""), "");
    EXPECT_EQ(text::trimmed("\xff "), "\xff");
}

TEST(ControlCharacters, AreFound) {
    EXPECT_TRUE(text::hasControlCharacter("a\nb"));
    EXPECT_TRUE(text::hasControlCharacter("\x7f"));
    EXPECT_TRUE(text::hasControlCharacter("\u0085"));
    EXPECT_FALSE(text::hasControlCharacter("a b é"));
}

TEST(Collation, IgnoresCaseAndReadsDigitsByValue) {
    const text::Collation root("");
    EXPECT_LT(root.compare("file9", "File10"), 0);
    EXPECT_EQ(root.compare("A07", "a7"), 0);
    EXPECT_LT(root.compare("a", "b"), 0);
    EXPECT_LT(root.compare("e", "é"), 0);
    EXPECT_GT(root.compare("f", "é"), 0);
}

namespace {

std::vector<std::string> inOrder(const std::vector<std::string>& texts, const text::Collation& collation) {
    const std::vector<std::string_view> views(texts.begin(), texts.end());
    text::StandardSorter sorter(collation);
    std::vector<std::string> sorted;
    for (const std::uint32_t position : sorter.order(views)) sorted.push_back(texts[position]);
    return sorted;
}

std::string randomName(std::mt19937& random, bool mixed) {
    static const std::string characters = " !#$%&'()+,-.0001239;=@ABCXYZ[]^_`abcxyz{}~\t";
    static const std::vector<std::string> others = {"é",  "e\u0301", "ß",  "ä", "ö",  "ch", "Ch",
                                                    "１", "ａ",      "写", "ñ", "ll", "cs", "\x01"};
    std::string name;
    for (std::size_t length = random() % 9; length > 0; --length) {
        if (mixed && random() % 6 == 0) {
            name += others[random() % others.size()];
        } else {
            name += characters[random() % characters.size()];
        }
    }
    return name;
}

}  // namespace

TEST(StandardSorter, KeepsTheOrderOfTextsThatCompareAsEqual) {
    const text::Collation root("");
    EXPECT_EQ(inOrder({"b", "a01", "A1", "a1", "A01"}, root),
              (std::vector<std::string>{"a01", "A1", "a1", "A01", "b"}));
}

TEST(StandardSorter, OrdersEqualTextsByTheSecondOnes) {
    const std::vector<std::string_view> first = {"x", "X", "x", "a"};
    const std::vector<std::string_view> second = {"c", "b", "a", "z"};
    text::StandardSorter sorter;
    const auto order = sorter.order(first, [&](std::size_t position) { return second[position]; });
    EXPECT_EQ(std::vector<std::uint32_t>(order.begin(), order.end()), (std::vector<std::uint32_t>{3, 2, 1, 0}));
}

TEST(StandardSorter, AgreesWithComparingInEveryLocale) {
    for (const char* const locale :
         {"", "en_US.UTF-8", "de_DE", "sv_SE", "cs_CZ", "hu_HU", "da_DK", "tr_TR", "th_TH", "zh_CN"}) {
        const text::Collation collation(locale);
        std::mt19937 random(7);
        for (const bool mixed : {false, true}) {
            std::vector<std::string> names;
            for (int i = 0; i < 1500; ++i) names.push_back(randomName(random, mixed));
            std::vector<std::string> expected = names;
            std::ranges::stable_sort(expected,
                                     [&](const auto& a, const auto& b) { return collation.compare(a, b) < 0; });
            EXPECT_EQ(inOrder(names, collation), expected) << locale;
        }
    }
}

TEST(StandardSorter, HandlesNumbersLongerThanAnyFastKey) {
    const std::string nines(300, '9'), zeros(300, '0');
    const text::Collation root("");
    EXPECT_EQ(inOrder({nines + "b", zeros + "7", "8", nines + "a"}, root),
              (std::vector<std::string>{zeros + "7", "8", nines + "a", nines + "b"}));
}

TEST(Calendar, TellsTheWallClockOfItsZone) {
    const text::Calendar utc(text::TimeZone::utc());
    EXPECT_EQ(utc.at(0), (text::LocalDateTime{1970, 1, 1, 0, 0, 0}));
    EXPECT_EQ(utc.at(-0.5), (text::LocalDateTime{1969, 12, 31, 23, 59, 59}));
    const text::Calendar newYork(text::TimeZone::named("America/New_York").value());
    EXPECT_EQ(newYork.at(0), (text::LocalDateTime{1969, 12, 31, 19, 0, 0}));
}

TEST(Calendar, FollowsDaylightSavingInEitherDirection) {
    const text::Calendar berlin(text::TimeZone::named("Europe/Berlin").value());
    const double change = 1'711'846'800;  // 2024-03-31 01:00 UTC
    EXPECT_EQ(berlin.at(change - 1), (text::LocalDateTime{2024, 3, 31, 1, 59, 59}));
    EXPECT_EQ(berlin.at(change), (text::LocalDateTime{2024, 3, 31, 3, 0, 0}));
    EXPECT_EQ(berlin.at(change - 1), (text::LocalDateTime{2024, 3, 31, 1, 59, 59}));
    EXPECT_EQ(berlin.at(change + 86'400.0 * 250), (text::LocalDateTime{2024, 12, 6, 2, 0, 0}));
}

TEST(Calendar, PinsWhatNoDateCanHold) {
    const text::Calendar utc(text::TimeZone::utc());
    EXPECT_EQ(utc.at(1e300).year, 9999);
    EXPECT_EQ(utc.at(-std::numeric_limits<double>::infinity()).year, 1);
    EXPECT_EQ(utc.at(std::nan("")).year, 1970);
}

namespace {

/// TZ set to a text while this lives.
class ZoneVariable {
public:
    explicit ZoneVariable(const char* value) {
        if (const char* const set = ::getenv("TZ")) before_ = set;
        ::setenv("TZ", value, 1);
    }
    ~ZoneVariable() {
        if (before_)
            ::setenv("TZ", before_->c_str(), 1);
        else
            ::unsetenv("TZ");
        ::tzset();
    }
    ZoneVariable(const ZoneVariable&) = delete;
    ZoneVariable& operator=(const ZoneVariable&) = delete;

private:
    std::optional<std::string> before_;
};

/// The hour that the process's clock shows at an instant when TZ is this.
int hourIn(const char* zone, double epoch) {
    const ZoneVariable variable(zone);
    return text::Calendar(text::TimeZone::current()).at(epoch).hour;
}

constexpr double winterNoon = 1'705'320'000;  // 2024-01-15 12:00 UTC
constexpr double summerNoon = 1'721'044'800;  // 2024-07-15 12:00 UTC

}  // namespace

TEST(TimeZone, OfTheProcessIsTheOneNamedByTZ) {
    for (const char* zone : {"Europe/Berlin", ":Europe/Berlin"}) {
        EXPECT_EQ(hourIn(zone, winterNoon), 13) << zone;
        EXPECT_EQ(hourIn(zone, summerNoon), 14) << zone;
    }
    const ZoneVariable variable("Europe/Berlin");
    EXPECT_EQ(text::TimeZone::current(), text::TimeZone::named("Europe/Berlin"));
}

TEST(TimeZone, OfTheProcessMayBeRulesInsteadOfAName) {
    EXPECT_EQ(hourIn("CET-1CEST,M3.5.0,M10.5.0", winterNoon), 13);
    EXPECT_EQ(hourIn("CET-1CEST,M3.5.0,M10.5.0", summerNoon), 14);
    EXPECT_EQ(hourIn("<+0530>-5:30", winterNoon), 17);
    EXPECT_EQ(hourIn("GMT+2", winterNoon), 10);
    EXPECT_EQ(hourIn("UTC0", winterNoon), 12);
}

TEST(TimeZone, OfTheProcessIsUtcWhereTZMeansNothing) {
    for (const char* zone : {"", ":", "Nowhere/At_All", "\xff"}) EXPECT_EQ(hourIn(zone, summerNoon), 12) << zone;
}

TEST(TimeZone, OfRulesHoldsForFarTimesAsWell) {
    const ZoneVariable variable("CET-1");
    const text::Calendar calendar(text::TimeZone::current());
    EXPECT_EQ(calendar.at(-1e300), (text::LocalDateTime{1, 1, 1, 1, 0, 0}));
    EXPECT_EQ(calendar.at(1e300), (text::LocalDateTime{9999, 12, 31, 23, 59, 59}));
    EXPECT_EQ(calendar.at(-1), (text::LocalDateTime{1970, 1, 1, 0, 59, 59}));
}

TEST(TimeZone, IsRefusedWhenTheDatabaseDoesNotKnowIt) {
    EXPECT_FALSE(text::TimeZone::named("Nowhere/At_All").has_value());
    EXPECT_TRUE(text::TimeZone::named("GMT+2").has_value());
}
