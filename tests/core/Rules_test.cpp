#include "OrdovanCore/Rules.h"

#include "tests/support/StoredText.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using ordovan::Uuid;
using Case = OrdovanRuleError::Case;

const Uuid id = *Uuid::parse("0123ABCD-4567-89AB-CDEF-FEDCBA987654");

/// The parsed extensions separated by bars, or the refusal's message.
std::string parsed(std::string_view text) {
    const auto extensions = OrdovanRuleSet::parseExtensions(text);
    if (!extensions) return extensions.error().message();
    std::string joined;
    for (const std::string& extension : *extensions) joined += (joined.empty() ? "" : "|") + extension;
    return joined;
}

std::string invalid(std::string_view extension) {
    return "\"" + std::string(extension) + "\" isn't a valid extension. Use letters and numbers only, like dmg.";
}

constexpr std::string_view noExtensions = "Add at least one file extension, like dmg or pkg.";
constexpr std::string_view emptyName = "Give the folder a name.";
constexpr std::string_view invalidName =
    "Folder names can't contain / or :, start with a dot, or be longer than 64 characters.";

/// The validated name in angle brackets, or the refusal's message.
std::string validated(std::string_view name) {
    const auto valid = OrdovanRuleSet::validateFolderName(name);
    return valid ? "<" + *valid + ">" : valid.error().message();
}

std::string repeated(std::string_view text, int times) {
    std::string all;
    for (int i = 0; i < times; ++i) all += text;
    return all;
}

TEST(Rules, SplitTypedExtensionsAtCommasSpacesAndSemicolons) {
    EXPECT_EQ(parsed(".DMG, pkg;pkg  iso"), "dmg|pkg|iso");
    EXPECT_EQ(parsed("7z"), "7z");
    EXPECT_EQ(parsed(";; ,MP3,,.mp4 ;"), "mp3|mp4");
}

TEST(Rules, RefuseTypedTextOfOnlySeparatorsAndSpaces) {
    for (const std::string_view text : {"", " ", ",;, ;", "\t", "\n", ", \u00A0 ,\t;"}) {
        EXPECT_EQ(parsed(text), noExtensions) << text;
    }
}

TEST(Rules, DoNotSeparateExtensionsAtALineBreak) {
    EXPECT_EQ(parsed("dmg\npkg"), invalid("dmg\npkg"));
    EXPECT_EQ(parsed("dmg\r\npkg"), invalid("dmg\r\npkg"));
    EXPECT_EQ(parsed("dmg\tpkg"), invalid("dmg\tpkg"));
}

TEST(Rules, TrimWhiteSpaceAroundExtensions) {
    EXPECT_EQ(parsed("dmg,\n\tpkg\n"), "dmg|pkg");
    EXPECT_EQ(parsed("\u00A0dmg\u3000"), "dmg");
}

TEST(Rules, RemoveOneLeadingDotOnly) {
    EXPECT_EQ(parsed(".dmg"), "dmg");
    EXPECT_EQ(parsed("..dmg"), invalid(".dmg"));
    EXPECT_EQ(parsed("."), invalid(""));
    EXPECT_EQ(parsed("dmg."), invalid("dmg."));
}

TEST(Rules, AcceptExtensionsOfSixteenCharactersAtMost) {
    EXPECT_EQ(parsed("." + std::string(16, 'x')), std::string(16, 'x'));
    EXPECT_EQ(parsed(std::string(17, 'x')), invalid(std::string(17, 'x')));
}

TEST(Rules, RefuseExtensionsOfOtherThanAsciiLettersAndDigits) {
    for (const std::string_view text : {"tar.gz", "a+b", "é", "日本", "a/b", "a-b", "a_b", "a:b", "٣", "\"", "ß"}) {
        EXPECT_EQ(parsed(text), invalid(text)) << text;
    }
    EXPECT_EQ(parsed("İ"), invalid("i\u0307"));
    EXPECT_EQ(parsed("a\xFF"), invalid("a\uFFFD"));
    EXPECT_EQ(parsed(std::string_view("a\0b", 3)), invalid(std::string_view("a\0b", 3)));
}

TEST(Rules, StopAtTheFirstBadExtension) {
    EXPECT_EQ(parsed("dmg, a+b, c+d"), invalid("a+b"));
    EXPECT_EQ(parsed(".TAR.GZ, dmg"), invalid("tar.gz"));
}

TEST(Rules, TrimFolderNames) {
    EXPECT_EQ(validated("  Apps "), "<Apps>");
    EXPECT_EQ(validated("\n\tMy Apps\r\n"), "<My Apps>");
    EXPECT_EQ(validated("\u2003Apps\u2028"), "<Apps>");
}

TEST(Rules, RefuseEmptyFolderNames) {
    for (const std::string_view name : {"", "   ", "\n", "\t \u00A0"}) EXPECT_EQ(validated(name), emptyName) << name;
}

TEST(Rules, AcceptFolderNamesOfSixtyFourCharactersAtMost) {
    EXPECT_EQ(validated(std::string(64, 'n')), "<" + std::string(64, 'n') + ">");
    EXPECT_EQ(validated(std::string(65, 'n')), invalidName);
    EXPECT_EQ(validated(" " + std::string(64, 'n') + " "), "<" + std::string(64, 'n') + ">");
}

TEST(Rules, CountFolderNamesInCharactersThatAUserSees) {
    EXPECT_EQ(validated(repeated("👩‍👩‍👧", 64)), "<" + repeated("👩‍👩‍👧", 64) + ">");
    EXPECT_EQ(validated(repeated("👩‍👩‍👧", 65)), invalidName);
    EXPECT_EQ(validated(repeated("e\u0301", 64)), "<" + repeated("é", 64) + ">");
}

TEST(Rules, RefuseFolderNamesThatAreNoSingleVisibleComponent) {
    for (const std::string_view name :
         {".hidden", " .hidden", "a/b", "a:b", "/", ".", "..", "a\nb", "a\tb", "a\u007Fb", "a\u0085b", "a\xFF"}) {
        EXPECT_EQ(validated(name), invalidName) << name;
    }
    EXPECT_EQ(validated(std::string_view("a\0b", 3)), invalidName);
}

TEST(Rules, AcceptEveryOtherFolderName) {
    for (const std::string_view name : {"a.b", "-rf", "a\\b", "写真 2024", "C++ & more", "a\u200Db"}) {
        EXPECT_EQ(validated(name), "<" + std::string(name) + ">");
    }
}

TEST(Rules, ComposeFolderNames) {
    EXPECT_EQ(validated("Cafe\u0301"), "<Caf\u00E9>");
}

TEST(Rules, AreMadeFromTypedText) {
    EXPECT_EQ(OrdovanRuleSet::make(".DMG pkg", " Installers ", id), (OrdovanRule{id, {"dmg", "pkg"}, "Installers"}));
}

TEST(Rules, MadeFromTwoBadTextsNameTheExtensionFirst) {
    EXPECT_EQ(OrdovanRuleSet::make("", "", id).error().kind, Case::noExtensions);
    EXPECT_EQ(OrdovanRuleSet::make("a+b", "", id).error(), (OrdovanRuleError{Case::invalidExtension, "a+b"}));
    EXPECT_EQ(OrdovanRuleSet::make("dmg", "", id).error().kind, Case::emptyFolderName);
    EXPECT_EQ(OrdovanRuleSet::make("dmg", "a/b", id).error().kind, Case::invalidFolderName);
}

TEST(Rules, FirstThatListsAnExtensionDecides) {
    const OrdovanRuleSet set{{{id, {"dmg"}, "Apps"}, {id, {"dmg", "pkg"}, "Installers"}}};
    EXPECT_EQ(set.folder("dmg"), "Apps");
    EXPECT_EQ(set.folder("pkg"), "Installers");
    EXPECT_EQ(set.folder("DMG"), "Apps");
    EXPECT_EQ(set.folder("zip"), std::nullopt);
    EXPECT_EQ(set.folder(""), std::nullopt);
    EXPECT_EQ(set.folder(".dmg"), std::nullopt);
    EXPECT_EQ(set.folder("dm"), std::nullopt);
    EXPECT_EQ(OrdovanRuleSet().folder("dmg"), std::nullopt);
}

TEST(Rules, LowerTheExtensionAskedForAndNotTheirOwn) {
    const OrdovanRuleSet set{{{id, {"kml"}, "Maps"}, {id, {"ZIP", "é"}, "Odd"}}};
    EXPECT_EQ(set.folder("\u212AML"), "Maps");  // the Kelvin sign lowers to k
    EXPECT_EQ(set.folder("É"), "Odd");
    EXPECT_EQ(set.folder("ZIP"), std::nullopt);
}

const OrdovanRuleSet sample{{{id, {"dmg", "pkg"}, "Pro\"gramme\" ü"}, {Uuid{}, {"iso"}, "Discs"}}};
constexpr std::string_view sampleText = R"({
  "rules": [
    {
      "extensions": [
        "dmg",
        "pkg"
      ],
      "folderName": "Pro\"gramme\" ü",
      "id": "0123ABCD-4567-89AB-CDEF-FEDCBA987654"
    },
    {
      "extensions": [
        "iso"
      ],
      "folderName": "Discs",
      "id": "00000000-0000-0000-0000-000000000000"
    }
  ]
}
)";

std::string refusal(std::string_view text) {
    const auto decoded = OrdovanRuleSet::decoded(text);
    return decoded ? std::string() : decoded.error();
}

std::string altered(std::string_view from, std::string_view to) {
    return ordovan::test::altered(sampleText, from, to);
}

TEST(StoredRules, AreWrittenIndentedWithSortedKeys) {
    EXPECT_EQ(sample.encoded(), sampleText);
    EXPECT_EQ(OrdovanRuleSet().encoded(), "{\n  \"rules\": []\n}\n");
}

TEST(StoredRules, AreReadBackEqual) {
    EXPECT_EQ(OrdovanRuleSet::decoded(sampleText), sample);
    EXPECT_EQ(OrdovanRuleSet::decoded(OrdovanRuleSet().encoded()), OrdovanRuleSet());
    const OrdovanRuleSet withoutExtensions{{{id, {}, "Apps"}}};
    EXPECT_EQ(OrdovanRuleSet::decoded(withoutExtensions.encoded()), withoutExtensions);
}

TEST(StoredRules, OfRandomTextAreReadBackEqual) {
    std::mt19937_64 random(3);
    for (int round = 0; round < 100; ++round) {
        OrdovanRuleSet set;
        for (std::uint64_t count = random() % 60; count > 0; --count) {
            OrdovanRule rule{Uuid::random(), {}, repeated("ü\"\\\n🎉", static_cast<int>(random() % 5))};
            for (std::uint64_t some = random() % 5; some > 0; --some)
                rule.extensions.push_back(std::to_string(random()));
            set.rules.push_back(std::move(rule));
        }
        EXPECT_EQ(OrdovanRuleSet::decoded(set.encoded()), set);
    }
}

TEST(StoredRules, AreReadInAnyOrderWithUnknownKeysAndLowerCaseIds) {
    EXPECT_EQ(OrdovanRuleSet::decoded(R"({"v":1,"rules":[{"id":"0123abcd-4567-89ab-cdef-fedcba987654","x":null,
        "folderName":"Apps","extensions":["dmg"]}]})"),
              (OrdovanRuleSet{{{id, {"dmg"}, "Apps"}}}));
}

TEST(StoredRules, BeyondFiftyAreAllRead) {
    OrdovanRuleSet set;
    set.rules.assign(OrdovanRuleSet::maxRules + 10, sample.rules[0]);
    EXPECT_EQ(OrdovanRuleSet::decoded(set.encoded()), set);
}

TEST(StoredRules, AreNeverRepaired) {
    EXPECT_EQ(OrdovanRuleSet::decoded(altered("\"iso\"", "\".ISO\""))->rules[1].extensions,
              std::vector<std::string>{".ISO"});
    EXPECT_EQ(OrdovanRuleSet::decoded(altered("Discs", " a/b "))->rules[1].folderName, " a/b ");
}

TEST(StoredRules, CutAnywhereAreRefused) {
    const std::string_view text = sampleText.substr(0, sampleText.size() - 1);
    for (std::size_t size = 0; size < text.size(); ++size) {
        EXPECT_FALSE(OrdovanRuleSet::decoded(text.substr(0, size))) << size;
    }
}

TEST(StoredRules, OfAnotherShapeAreRefused) {
    EXPECT_EQ(refusal("{}"), "\"rules\" is missing.");
    EXPECT_EQ(refusal("[]"), "The document is not an object.");
    EXPECT_EQ(refusal("{\"rules\":{}}"), "\"rules\" is not a list of objects.");
    EXPECT_EQ(refusal("{\"rules\":[\"dmg\"]}"), "\"rules\" is not a list of objects.");
    EXPECT_EQ(refusal("{\"rules\":[],\"rules\":[]}"), "\"rules\" stands twice.");
    EXPECT_EQ(refusal(altered("\"id\"", "\"ID\"")), "Record 1: \"id\" is missing.");
    EXPECT_EQ(refusal(altered("\"folderName\"", "\"folder\"")), "Record 1: \"folderName\" is missing.");
    EXPECT_EQ(refusal(altered("\"extensions\"", "\"id\"")), "Record 1: \"id\" is not a text.");
    EXPECT_EQ(refusal(altered("\"iso\"", "17")), "Record 2: \"extensions\" is not a list of texts.");
    EXPECT_EQ(refusal(altered("\"Discs\"", "null")), "Record 2: \"folderName\" is not a text.");
    EXPECT_EQ(refusal(altered("Discs", "a\\u0000b")), "Record 2: \"folderName\" holds a NUL character.");
    EXPECT_EQ(refusal(altered("0123ABCD", "0123ABCG")), "Record 1: \"id\" is not a UUID.");
    EXPECT_EQ(refusal(altered("0123ABCD-", "0123ABCD")), "Record 1: \"id\" is not a UUID.");
}

TEST(StoredRules, ThatAreNotStrictJsonAreRefused) {
    for (const std::string& text :
         {altered("\"pkg\"\n", "\"pkg\",\n"), altered("Discs", "D\xC3scs"), altered("Discs", "\\udc00"),
          "\xEF\xBB\xBF" + std::string(sampleText), std::string(sampleText) + ",", std::string(100'000, '['),
          "{\"rules\":[{\"x\":" + std::string(100'000, '[')}) {
        EXPECT_FALSE(OrdovanRuleSet::decoded(text)) << text.substr(0, 200);
    }
}

}  // namespace
