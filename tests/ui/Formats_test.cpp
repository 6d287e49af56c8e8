#include "OrdovanApp/models/Formats.h"

#include "OrdovanApp/models/Language.h"
#include "tests/support/QtTestMain.h"

#include <ctime>
#include <limits>

using namespace Qt::StringLiterals;

namespace {

/// A locale and a time zone for one test; texts are English.
class Setting {
public:
    explicit Setting(const QLocale& locale, const char* zone = "UTC") {
        QLocale::setDefault(locale);
        ::setenv("TZ", zone, 1);
        ::tzset();
    }
    ~Setting() {
        QLocale::setDefault(QLocale::system());
        ::unsetenv("TZ");
        ::tzset();
    }
    Setting(const Setting&) = delete;
    Setting& operator=(const Setting&) = delete;

private:
    Language texts_{{}};
};

constexpr double november12th = 1'794'441'600;  // 2026-11-12 00:00 UTC

TEST(Formats, ShowSizesInDecimalUnitsWithOneDecimalBelowOneHundred) {
    const Setting english(QLocale::c());
    EXPECT_EQ(Formats::byteSize(0), u"0 bytes"_s);
    EXPECT_EQ(Formats::byteSize(1), u"1 byte"_s);
    EXPECT_EQ(Formats::byteSize(999), u"999 bytes"_s);
    EXPECT_EQ(Formats::byteSize(1000), u"1 KB"_s);
    EXPECT_EQ(Formats::byteSize(842'000), u"842 KB"_s);
    EXPECT_EQ(Formats::byteSize(1'240'000'000), u"1.2 GB"_s);
    EXPECT_EQ(Formats::byteSize(34'560'000), u"34.6 MB"_s);
    EXPECT_EQ(Formats::byteSize(99'960), u"100 KB"_s);
    EXPECT_EQ(Formats::byteSize(999'600), u"1 MB"_s);
    EXPECT_EQ(Formats::byteSize(std::numeric_limits<qint64>::max()), u"9.2 EB"_s);
}

TEST(Formats, GroupTheDigitsOfCounts) {
    const Setting english(QLocale::c());
    EXPECT_EQ(Formats::count(50'000), u"50,000"_s);
    EXPECT_EQ(Formats::files(0), u"0 files"_s);
    EXPECT_EQ(Formats::files(1), u"1 file"_s);
    EXPECT_EQ(Formats::files(1204), u"1,204 files"_s);
}

TEST(Formats, FollowTheLanguageOfNumbersAndDates) {
    const Setting german(QLocale(QLocale::German, QLocale::Germany));
    EXPECT_EQ(Formats::byteSize(1'240'000'000), u"1,2 GB"_s);
    EXPECT_EQ(Formats::count(50'000), u"50.000"_s);
    EXPECT_EQ(Formats::day(november12th), u"12. Nov. 2026"_s);
}

TEST(Formats, ShowDaysWithAShortMonthInEveryOrder) {
    {
        const Setting plain(QLocale::c());
        EXPECT_EQ(Formats::day(november12th), u"12 Nov 2026"_s);
    }
    {
        const Setting american(QLocale(QLocale::English, QLocale::UnitedStates));
        EXPECT_EQ(Formats::day(november12th), u"Nov 12, 2026"_s);
    }
    const Setting japanese(QLocale(QLocale::Japanese, QLocale::Japan));
    EXPECT_EQ(Formats::day(november12th), u"2026年11月12日"_s);
}

TEST(Formats, ShowTheLocalDayOfAnInstant) {
    const Setting west(QLocale::c(), "UTC+5");
    EXPECT_EQ(Formats::day(november12th), u"11 Nov 2026"_s);
    EXPECT_EQ(Formats::time(november12th), u"19:00"_s);
}

TEST(Formats, NameTheYearOfADayOnlyWhenItIsAnother) {
    const Setting plain(QLocale::c());
    EXPECT_EQ(Formats::dayOfWeek(november12th, november12th + 86'400), u"Thursday, 12 November"_s);
    EXPECT_EQ(Formats::dayOfWeek(november12th, november12th + 60 * 86'400), u"Thursday, 12 November 2026"_s);
    const Setting american(QLocale(QLocale::English, QLocale::UnitedStates));
    EXPECT_EQ(Formats::dayOfWeek(november12th, november12th), u"Thursday, November 12"_s);
}

TEST(Formats, ShowNothingForAnInstantThatNoCalendarShows) {
    EXPECT_EQ(Formats::day(std::numeric_limits<double>::quiet_NaN()), QString());
    EXPECT_EQ(Formats::day(1e300), QString());
    EXPECT_EQ(Formats::time(-1e300), QString());
}

TEST(Formats, ShowBytesThatAreNotUtf8AsReplacements) {
    EXPECT_EQ(Formats::fileName(Url::file("/r/caf\xe9.txt")), u"caf\ufffd.txt"_s);
    EXPECT_EQ(Formats::fileName(Url::file("/r/Straße 日本.txt")), u"Straße 日本.txt"_s);
}

TEST(Formats, MakeWhatWouldBreakOrTurnALineVisible) {
    EXPECT_EQ(Formats::text("two\nlines\ttab\x7f"), u"two␊lines␉tab␡"_s);
    EXPECT_EQ(Formats::text("invoice\u202efdp.exe"), u"invoice\ufffdfdp.exe"_s);
    EXPECT_EQ(Formats::text("a\u2028b\u0085c\u2066d"), u"a\ufffdb\ufffdc\ufffdd"_s);
    EXPECT_EQ(Formats::text(std::string_view("nul\0", 4)), u"nul␀"_s);
}

TEST(Formats, CountFoldersFromTheRoot) {
    const Url root = Url::file("/home/ada/Downloads");
    EXPECT_EQ(Formats::folderOf(Url::file("/home/ada/Downloads/a.pdf"), root), u"Downloads"_s);
    EXPECT_EQ(Formats::folderOf(Url::file("/home/ada/Downloads/papers/q 1/a.pdf"), root),
              u"Downloads / papers / q 1"_s);
    EXPECT_EQ(Formats::folderOf(Url::file("/home/ada/Downloads 2/a.pdf"), root), u"/home/ada/Downloads 2"_s);
    EXPECT_EQ(Formats::folderOf(Url::file("/mnt/a.pdf"), Url::file("/")), u"/ / mnt"_s);
}

}  // namespace
