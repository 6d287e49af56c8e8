#include "OrdovanApp/models/Language.h"

#include "OrdovanApp/models/Formats.h"
#include "tests/support/WidgetTestMain.h"

#include <QDialogButtonBox>
#include <QPushButton>

#include <limits>

using namespace Qt::StringLiterals;

namespace {

/// The variables that name the language, for one test.
class Environment {
public:
    explicit Environment(const std::map<std::string, std::string>& values) {
        for (const char* name : names) ::unsetenv(name);
        for (const auto& [name, value] : values) ::setenv(name.c_str(), value.c_str(), 1);
    }
    ~Environment() {
        for (const char* name : names) ::unsetenv(name);
    }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

private:
    static constexpr std::array names = {"LC_ALL", "LC_MESSAGES", "LANG", "LANGUAGE"};
};

QStringList wanted(const std::map<std::string, std::string>& values) {
    const Environment environment(values);
    return Language::wantedByEnvironment();
}

/// "2 files" in the first of these languages that there is.
QString files(const QStringList& languages) {
    const Language language(languages);
    return Formats::files(2);
}

TEST(Language, IsWantedAsTheEnvironmentNamesIt) {
    EXPECT_EQ(wanted({}), QStringList());
    EXPECT_EQ(wanted({{"LANG", "de_AT.UTF-8"}}), QStringList(u"de_AT"_s));
    EXPECT_EQ(wanted({{"LANG", "fr_FR"}, {"LC_MESSAGES", "de_DE@euro"}}), QStringList(u"de_DE"_s));
    EXPECT_EQ(wanted({{"LANG", "fr_FR"}, {"LC_MESSAGES", "de_DE"}, {"LC_ALL", "it_IT"}}), QStringList(u"it_IT"_s));
    EXPECT_EQ(wanted({{"LC_ALL", ""}, {"LANG", "de"}}), QStringList(u"de"_s));
    EXPECT_EQ(wanted({{"LANG", "en_US.UTF-8"}, {"LANGUAGE", "pt_BR:de"}}),
              (QStringList{u"pt_BR"_s, u"de"_s, u"en_US"_s}));
}

TEST(Language, IsNotAskedForInThePlainLocale) {
    EXPECT_EQ(wanted({{"LANG", "de_DE"}, {"LC_ALL", "C"}, {"LANGUAGE", "de"}}), QStringList());
    EXPECT_EQ(wanted({{"LANG", "POSIX"}, {"LANGUAGE", "de"}}), QStringList());
    EXPECT_EQ(wanted({{"LANG", "C.UTF-8"}, {"LANGUAGE", "de"}}), (QStringList{u"de"_s, u"C"_s}));
}

TEST(Language, IsTheFirstThatThereIsATranslationTo) {
    EXPECT_EQ(files({}), u"2 files"_s);
    EXPECT_EQ(files({u"de"_s}), u"2 Dateien"_s);
    EXPECT_EQ(files({u"de_AT"_s}), u"2 Dateien"_s);
    EXPECT_EQ(files({u"xx"_s, u"de"_s, u"en"_s}), u"2 Dateien"_s);
    EXPECT_EQ(files({u"en_US"_s, u"de"_s}), u"2 files"_s);
    EXPECT_EQ(files({u"xx"_s, u""_s, u"C"_s}), u"2 files"_s);
}

TEST(Language, IsEnglishAgainAfterItsEnd) {
    {
        const Language german({u"de"_s});
    }
    EXPECT_EQ(Formats::files(2), u"2 files"_s);
}

TEST(Language, HasPluralForms) {
    const auto forms = [](const QStringList& languages) {
        const Language language(languages);
        return QStringList{Formats::files(0), Formats::files(1), Formats::files(2), Formats::byteSize(1)};
    };
    EXPECT_EQ(forms({}), (QStringList{u"0 files"_s, u"1 file"_s, u"2 files"_s, u"1 byte"_s}));
    EXPECT_EQ(forms({u"de"_s}), (QStringList{u"0 Dateien"_s, u"1 Datei"_s, u"2 Dateien"_s, u"1 Byte"_s}));
}

TEST(Language, HasThePluralOfNumbersOfAnySize) {
    EXPECT_EQ(pluralOf(1), 1);
    EXPECT_EQ(pluralOf(999'999), 999'999);
    EXPECT_EQ(pluralOf(1'000'001), 1'000'001);
    EXPECT_EQ(pluralOf(5'000'000'011), 1'000'011);
    EXPECT_EQ(pluralOf(std::numeric_limits<qint64>::max()), 1'775'807);
    const Language english({});
    EXPECT_TRUE(Formats::files(5'000'000'001).endsWith(u" files"_s));
}

TEST(Language, IsThatOfTheToolkitsTextsAsWell) {
    const Language german({u"de"_s});
    const QDialogButtonBox box(QDialogButtonBox::Cancel);
    EXPECT_EQ(box.button(QDialogButtonBox::Cancel)->text(), u"Abbrechen"_s);
}

}  // namespace
