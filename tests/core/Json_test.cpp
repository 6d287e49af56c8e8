#include "OrdovanCore/Json.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <random>

namespace json = ordovan::json;

namespace {

constexpr std::array<json::Member, 5> topMembers{{
    {"flag", json::Type::boolean},
    {"name", json::Type::text},
    {"size", json::Type::integer},
    {"tags", json::Type::texts},
    {"time", json::Type::number},
}};
constexpr std::array<json::Member, 2> recordMembers{{{"labels", json::Type::texts}, {"path", json::Type::text}}};
constexpr json::Schema schema{topMembers, "items", recordMembers};

std::string written(const json::Value& value) {
    std::string out;
    if (const auto* text = std::get_if<std::string_view>(&value)) json::appendText(out, *text);
    if (const auto* integer = std::get_if<std::int64_t>(&value)) out += std::to_string(*integer);
    if (const auto* number = std::get_if<double>(&value)) json::appendNumber(out, *number);
    if (const auto* flag = std::get_if<bool>(&value)) out += *flag ? "true" : "false";
    if (const auto* texts = std::get_if<std::span<const std::string>>(&value)) {
        for (const std::string& text : *texts) json::appendText(out, text);
    }
    return out;
}

/// Writes down what it is given, and refuses the member or record it is told to.
class Recorder : public json::Receiver {
public:
    bool member(std::size_t index, const json::Value& value, std::string& error) override {
        seen += std::string(topMembers[index].key) + "=" + written(value) + ";";
        if (index == refusedMember) error = "No such member please.";
        return index != refusedMember;
    }
    bool record(std::span<const json::Value> values, std::string& error) override {
        ++records;
        seen += "[" + written(values[0]) + "," + written(values[1]) + "]";
        if (records == refusedRecord) error = "No such record please.";
        return records != refusedRecord;
    }
    std::string seen;
    std::size_t records = 0;
    std::size_t refusedMember = 99, refusedRecord = 99;
};

/// What the reader makes of a document: what the receiver saw, or "! " and the refusal.
std::string read(std::string_view document, std::size_t pieceSize = 0) {
    Recorder recorder;
    json::Reader reader(schema, recorder);
    const std::size_t step = pieceSize == 0 ? std::max<std::size_t>(document.size(), 1) : pieceSize;
    for (std::size_t at = 0; at < document.size(); at += step) {
        const auto fed = reader.feed(document.substr(at, step));
        if (!fed) {
            EXPECT_EQ(reader.finish(), fed) << document;
        }
    }
    const auto finished = reader.finish();
    return finished ? recorder.seen : "! " + finished.error();
}

/// A document that is right in everything but the value of one member.
std::string withMember(std::string_view key, std::string_view value) {
    std::string document = R"({"flag":true,"items":[],"name":"n","size":1,"tags":[],"time":0})";
    const std::size_t begin = document.find("\"" + std::string(key) + "\":") + key.size() + 3;
    const std::size_t end = document.find_first_of(",}", begin);
    return document.replace(begin, end - begin, value);
}

std::string nested(std::size_t levels) {
    return std::string(levels, '[') + std::string(levels, ']');
}

constexpr std::string_view whole = R"({
  "flag": false, "items": [
    {"path": "/a \"\u00e4\ud83c\udf89\" ü", "labels": ["x", "", "\ty"], "more": {"path": [1, {"labels": null}]}},
    {"labels": [], "path": ""}
  ],
  "unknown": [[{"flag": 1}], -1.5e-7, "text", null, true, 18446744073709551615],
  "time": 1714903200.25, "tags": ["one", "two"], "size": -9223372036854775808, "name": "caf\u0065\/"
})";
constexpr std::string_view wholeSeen =
    "flag=false;[\"x\"\"\"\"\\ty\",\"/a \\\"ä🎉\\\" ü\"][,\"\"]time=1714903200.25;tags=\"one\"\"two\";"
    "size=-9223372036854775808;name=\"cafe/\";";

TEST(Json, HandsOverMembersInTheOrderOfTheDocumentAndRecordsInTheOrderOfTheSchema) {
    EXPECT_EQ(read(whole), wholeSeen);
}

TEST(Json, ReadsPiecesOfEverySizeAlike) {
    for (std::size_t size = 1; size < whole.size(); ++size) EXPECT_EQ(read(whole, size), wholeSeen) << size;
}

TEST(Json, ReadsOverWhiteSpaceAroundTheDocument) {
    EXPECT_EQ(read(" \t\r\n" + std::string(whole) + " \t\r\n"), wholeSeen);
    EXPECT_EQ(read(" \t\r\n" + std::string(whole) + " \t\r\n", 1), wholeSeen);
}

TEST(Json, RefusesADocumentCutAnywhere) {
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const std::string refusal = read(whole.substr(0, size));
        EXPECT_TRUE(refusal.starts_with("! ")) << size;
        EXPECT_EQ(read(whole.substr(0, size), 1), refusal) << size;
    }
}

TEST(Json, SaysThatADocumentEndsTooEarly) {
    for (const std::string_view document : {"", " \n", "{", "{\"flag\"", "{\"flag\":true", "{\"name\":\"te"}) {
        EXPECT_EQ(read(document), "! The document ends too early.") << document;
    }
}

TEST(Json, RefusesWhatFollowsTheDocument) {
    for (const std::string_view tail : {"x", "}", "{}", ",", "\n\n[]", "\0"}) {
        const std::string document = std::string(whole) + (tail.empty() ? std::string(1, '\0') : std::string(tail));
        EXPECT_EQ(read(document), "! Something follows the document.") << tail;
        EXPECT_EQ(read(document, 1), "! Something follows the document.") << tail;
    }
}

TEST(Json, RefusesAByteOrderMark) {
    EXPECT_TRUE(read("\xEF\xBB\xBF" + std::string(whole)).starts_with("! The document is not well-formed JSON"));
}

TEST(Json, RefusesWhatIsNotStrictJson) {
    for (const std::string_view document :
         {"{'flag':true}",     "{flag:true}",         "{\"flag\":true,}", "{\"x\":[1,]}",     "{\"x\":01}",
          "{\"x\":+1}",        "{\"x\":.5}",          "{\"x\":1.}",       "{\"x\":1e}",       "{\"x\":-}",
          "{\"x\":NaN}",       "{\"x\":Infinity}",    "{\"x\":True}",     "{\"x\":0x10}",     "{\"x\" 1}",
          "{\"x\":1 \"y\":2}", "// note\n{}",         "{/**/}",           "{\"x\":\"\x01\"}", "{\"x\":\"a\nb\"}",
          "{\"x\":\"\\x\"}",   "{\"x\":\"\\u12g4\"}", "{\"x\":nul}",      "{\"x\":[1}",       "}",
          "{\"x\":1]"}) {
        EXPECT_TRUE(read(document).starts_with("! The document is not well-formed JSON (")) << document;
        EXPECT_TRUE(read(document, 1).starts_with("! The document is not well-formed JSON (")) << document;
    }
}

TEST(Json, RefusesTextThatIsNotUtf8WhereverItStands) {
    for (const std::string_view bad : {"\x80", "\xC3(", "\xC0\x80", "\xE0\x80\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80",
                                       "\xF8\x88\x80\x80\x80", "\xFF", "\xE2\x82"}) {
        const std::string text = "\"a" + std::string(bad) + "b\"";
        for (const std::string& document :
             {withMember("name", text), "{" + text + ":1}", "{\"x\":" + text + "}", "{\"x\":[{" + text + ":1}]}"}) {
            EXPECT_TRUE(read(document).starts_with("! The document is not well-formed JSON (")) << document;
            EXPECT_TRUE(read(document, 1).starts_with("! The document is not well-formed JSON (")) << document;
        }
    }
}

TEST(Json, RefusesLoneSurrogates) {
    for (const std::string_view text :
         {R"("\ud83c")", R"("\udf89")", R"("\ud83c\ud83c")", R"("\ud83cx")", R"("\ud83c\n")", R"("\udf89\ud83c")"}) {
        EXPECT_TRUE(read(withMember("name", text)).starts_with("! The document is not well-formed JSON (")) << text;
    }
}

TEST(Json, RefusesNestingDeeperThan32) {
    // The document and the member's own list take two of the levels.
    EXPECT_EQ(read(withMember("flag", "true,\"x\":" + nested(31))), read(withMember("flag", "true")));
    EXPECT_EQ(read(withMember("flag", "true,\"x\":" + nested(32))), "! The document is nested too deep.");
    for (const std::string_view open : {"[", "{\"a\":", "{\"x\":["}) {
        std::string bomb = "{\"x\":";
        for (int i = 0; i < 100'000; ++i) bomb += open;
        EXPECT_EQ(read(bomb), "! The document is nested too deep.");
    }
    EXPECT_EQ(read(std::string(100'000, '[')), "! The document is not an object.");
}

TEST(Json, RefusesEveryTopValueButAnObject) {
    for (const std::string_view document : {"[]", "1", "\"text\"", "true", "null", "1.5", "-0"}) {
        EXPECT_EQ(read(document), "! The document is not an object.") << document;
    }
}

TEST(Json, RefusesAMissingMember) {
    const std::string full = withMember("flag", "true");
    for (const std::string_view key : {"flag", "items", "name", "size", "tags", "time"}) {
        std::string document = full;
        document.insert(document.find("\"" + std::string(key) + "\":") + 1, "x");
        EXPECT_EQ(read(document), "! \"" + std::string(key) + "\" is missing.");
    }
    EXPECT_EQ(read("{}"), "! \"flag\" is missing.");
}

TEST(Json, RefusesAMemberMissingFromARecord) {
    EXPECT_EQ(read(R"({"items":[{"labels":[],"path":""},{"labels":[]}]})"), "! Record 2: \"path\" is missing.");
    EXPECT_EQ(read(R"({"items":[{}]})"), "! Record 1: \"labels\" is missing.");
}

TEST(Json, RefusesARepeatedMemberHoweverItIsSpelled) {
    EXPECT_EQ(read(R"({"flag":true,"flag":true})"), "! \"flag\" stands twice.");
    EXPECT_EQ(read(R"({"flag":true,"fl\u0061g":true})"), "! \"flag\" stands twice.");
    EXPECT_EQ(read(R"({"items":[],"name":"","items":[]})"), "! \"items\" stands twice.");
    EXPECT_EQ(read(R"({"items":[{"path":"","path":""}]})"), "! Record 1: \"path\" stands twice.");
}

TEST(Json, LeavesRepeatedUnknownMembersAlone) {
    EXPECT_EQ(read(withMember("flag", R"(true,"x":1,"x":2,"Flag":null,"":0,"":0)")), read(withMember("flag", "true")));
}

TEST(Json, TakesALongKeyForAnUnknownOne) {
    const std::string key(100'000, 'f');
    EXPECT_EQ(read(withMember("flag", "true,\"" + key + "\":1")), read(withMember("flag", "true")));
    EXPECT_EQ(read(withMember("flag", "true,\"flag" + key + "\":1"), 3), read(withMember("flag", "true")));
}

TEST(Json, RefusesEveryOtherType) {
    const std::array<std::string_view, 9> values{"true", "\"t\"", "1", "1.5", "[\"t\"]", "[]", "null", "{}", "[1]"};
    const auto check = [&](std::string_view key, std::string_view good, const std::string& refusal) {
        for (const std::string_view value : values) {
            const bool allowed = good.find("|" + std::string(value) + "|") != std::string_view::npos;
            const std::string got = read(withMember(key, value));
            EXPECT_EQ(got.starts_with("!"), !allowed) << key << " " << value << " " << got;
            if (allowed) continue;
            EXPECT_EQ(got, "! \"" + std::string(key) + "\" is not " + refusal) << value;
        }
    };
    check("flag", "|true|", "true or false.");
    check("name", "|\"t\"|", "a text.");
    check("size", "|1|", "a whole number of 64 bits.");
    check("tags", "|[\"t\"]|[]|", "a list of texts.");
    check("time", "|1|1.5|", "a number.");
    check("items", "|[]|", "a list of objects.");
}

TEST(Json, RefusesAListInAListOfTexts) {
    EXPECT_EQ(read(withMember("tags", "[[]]")), "! \"tags\" is not a list of texts.");
    EXPECT_EQ(read(withMember("tags", "[\"a\",{}]")), "! \"tags\" is not a list of texts.");
    EXPECT_EQ(read(withMember("tags", "[\"a\",null]")), "! \"tags\" is not a list of texts.");
    EXPECT_EQ(read(R"({"items":[{"labels":[true]}]})"), "! Record 1: \"labels\" is not a list of texts.");
}

TEST(Json, RefusesRecordsThatAreNotObjects) {
    for (const std::string_view record : {"1", "\"x\"", "[]", "true", "null", "1.5"}) {
        EXPECT_EQ(read("{\"items\":[" + std::string(record) + "]}"), "! \"items\" is not a list of objects.") << record;
    }
}

TEST(Json, RefusesIntegersWithFractionsExponentsOrMoreThan64Bits) {
    for (const std::string_view number :
         {"1.0", "1e3", "1E0", "0.5", "-0.0", "9223372036854775808", "18446744073709551615", "18446744073709551616",
          "-9223372036854775809", "99999999999999999999999999999999999999999"}) {
        EXPECT_EQ(read(withMember("size", number)), "! \"size\" is not a whole number of 64 bits.") << number;
        EXPECT_EQ(read(withMember("size", number), 1), "! \"size\" is not a whole number of 64 bits.") << number;
    }
    for (const std::string_view number :
         {"0", "9223372036854775807", "-9223372036854775808", "-1", "1000000000000000"}) {
        const std::string expected = "size=" + std::string(number) + ";";
        EXPECT_NE(read(withMember("size", number)).find(expected), std::string::npos) << number;
        EXPECT_NE(read(withMember("size", number), 1).find(expected), std::string::npos) << number;
    }
}

TEST(Json, ReadsTheDoubleNextToANumber) {
    for (const auto& [text, number] : std::initializer_list<std::pair<std::string_view, std::string_view>>{
             {"0.1", "0.1"},
             {"1714903200.123456", "1714903200.123456"},
             {"1e3", "1000"},
             {"-2.5E+2", "-250"},
             {"18446744073709551615", "18446744073709551616"},
             {"5e-324", "5e-324"},
             {"1e-400", "0"},
             {"1.7976931348623157e308", "1.7976931348623157e+308"},
             {"9007199254740993", "9007199254740992"},
             {"0.30000000000000004441", "0.30000000000000004"}}) {
        const std::string expected = "time=" + std::string(number) + ";";
        EXPECT_NE(read(withMember("time", text)).find(expected), std::string::npos) << text;
        EXPECT_NE(read(withMember("time", text), 1).find(expected), std::string::npos) << text;
    }
}

TEST(Json, RefusesNumbersThatAreNotFinite) {
    EXPECT_EQ(read(withMember("time", "1e400")), "! \"time\" is too large a number.");
    EXPECT_EQ(read(withMember("time", "-1e309"), 1), "! \"time\" is too large a number.");
}

TEST(Json, RefusesNumbersWithoutEnd) {
    const std::string digits(1024, '7');
    EXPECT_EQ(read(withMember("flag", "true,\"x\":" + digits)), read(withMember("flag", "true")));
    EXPECT_EQ(read(withMember("flag", "true,\"x\":" + digits + "7")), "! A number is too long.");
    EXPECT_EQ(read(withMember("flag", "true,\"x\":" + digits + "7"), 7), "! A number is too long.");
    EXPECT_TRUE(read(withMember("flag", "true,\"x\":1e9999999999")).starts_with("!"));
}

TEST(Json, RefusesTextsOverOneMebibyte) {
    const std::string text(std::size_t{1} << 20, 'a');
    EXPECT_FALSE(read(withMember("name", "\"" + text + "\"")).starts_with("!"));
    EXPECT_EQ(read(withMember("name", "\"" + text + "a\"")), "! \"name\" is too long.");
    EXPECT_EQ(read(withMember("name", "\"" + text + "a\""), 1000), "! \"name\" is too long.");
    EXPECT_EQ(read(withMember("tags", "[\"" + text + "a\"]")), "! \"tags\" is too long.");
    EXPECT_FALSE(read(withMember("flag", "true,\"x\":\"" + text + "a\"")).starts_with("!"));
}

TEST(Json, RefusesNulCharactersInKnownTexts) {
    EXPECT_EQ(read(withMember("name", R"("a\u0000b")")), "! \"name\" holds a NUL character.");
    EXPECT_EQ(read(withMember("name", R"("a\u0000b")"), 1), "! \"name\" holds a NUL character.");
    EXPECT_EQ(read(withMember("tags", R"(["","\u0000"])")), "! \"tags\" holds a NUL character.");
    EXPECT_FALSE(read(withMember("flag", R"(true,"x":"\u0000")")).starts_with("!"));
}

TEST(Json, RefusesWhatTheReceiverRefuses) {
    Recorder member;
    member.refusedMember = 1;
    EXPECT_EQ(json::read(whole, schema, member).error(), "No such member please.");
    Recorder record;
    record.refusedRecord = 2;
    EXPECT_EQ(json::read(whole, schema, record).error(), "Record 2: No such record please.");
    EXPECT_EQ(record.seen, "flag=false;[\"x\"\"\"\"\\ty\",\"/a \\\"ä🎉\\\" ü\"][,\"\"]");
}

TEST(Json, KeepsToItsFirstError) {
    Recorder recorder;
    json::Reader reader(schema, recorder);
    const auto first = reader.feed("[");
    ASSERT_FALSE(first);
    EXPECT_EQ(reader.feed(whole), first);
    EXPECT_EQ(reader.finish(), first);
    EXPECT_EQ(recorder.seen, "");
}

std::string textOf(std::string_view text) {
    std::string out = "<";
    json::appendText(out, text);
    return out;
}

TEST(JsonWriting, EscapesQuotesBackslashesAndControlCharacters) {
    EXPECT_EQ(textOf(""), "<\"\"");
    EXPECT_EQ(textOf("/a/b c~"), "<\"/a/b c~\"");
    EXPECT_EQ(textOf("a\"b\\c"), "<\"a\\\"b\\\\c\"");
    EXPECT_EQ(textOf("\b\f\n\r\t"), "<\"\\b\\f\\n\\r\\t\"");
    EXPECT_EQ(textOf(std::string_view("\0\x1F\x7F", 3)), "<\"\\u0000\\u001f\\u007f\"");
    EXPECT_EQ(textOf("\u0080x\u009B\u009F"), "<\"\\u0080x\\u009b\\u009f\"");
}

TEST(JsonWriting, LeavesEverythingElseAsItStands) {
    EXPECT_EQ(textOf("\u00A0ü\u2028写真🎉e\u0301"), "<\"\u00A0ü\u2028写真🎉e\u0301\"");
}

TEST(JsonWriting, ReplacesBytesThatAreNotUtf8) {
    EXPECT_EQ(textOf("a\xFFz\n"), "<\"a\uFFFDz\\n\"");
    EXPECT_EQ(textOf("\xC2"), "<\"\uFFFD\"");
    EXPECT_EQ(textOf("end\xE2\x82"), "<\"end\uFFFD\"");
}

TEST(JsonWriting, EscapesEachAsciiCharacterThatMustBe) {
    for (int byte = 0; byte < 0x80; ++byte) {
        const char c = static_cast<char>(byte);
        const bool plain = byte >= 0x20 && byte < 0x7F && c != '"' && c != '\\';
        const std::string written = textOf(std::string("a") + c + "z");
        EXPECT_EQ(written == std::string("<\"a") + c + "z\"", plain) << byte;
        EXPECT_EQ(written[3] == '\\', !plain) << byte;
    }
}

TEST(JsonWriting, EscapesTheSameAtEveryPlaceOfALongText) {
    const std::string plain(40, 'p');
    for (std::size_t place = 0; place < plain.size(); ++place) {
        std::string text = plain;
        text[place] = '\n';
        std::string expected = plain;
        expected.replace(place, 1, "\\n");
        EXPECT_EQ(textOf(text), "<\"" + expected + "\"");
    }
}

std::string numberOf(double number) {
    std::string out;
    json::appendNumber(out, number);
    return out;
}

TEST(JsonWriting, WritesWholeNumbersAsTheirDigits) {
    EXPECT_EQ(numberOf(0), "0");
    EXPECT_EQ(numberOf(-17), "-17");
    EXPECT_EQ(numberOf(1'700'000'000), "1700000000");
    EXPECT_EQ(numberOf(1e20), "100000000000000000000");
    EXPECT_EQ(numberOf(1e21), "1e+21");
}

TEST(JsonWriting, WritesTheShortestDecimalThatReadsBack) {
    EXPECT_EQ(numberOf(0.1), "0.1");
    EXPECT_EQ(numberOf(1'714'903'200.25), "1714903200.25");
    EXPECT_EQ(numberOf(-1e-9), "-1e-09");
}

TEST(JsonWriting, WritesZeroForWhatJsonLacks) {
    EXPECT_EQ(numberOf(std::numeric_limits<double>::infinity()), "0");
    EXPECT_EQ(numberOf(-std::numeric_limits<double>::infinity()), "0");
    EXPECT_EQ(numberOf(std::nan("")), "0");
}

/// Keeps the values of the two members it knows.
struct Echo : json::Receiver {
    bool member(std::size_t index, const json::Value& value, std::string&) override {
        if (index == 0) number = std::get<double>(value);
        if (index == 1) text = std::get<std::string_view>(value);
        return true;
    }
    bool record(std::span<const json::Value>, std::string&) override { return false; }
    double number = 0;
    std::string text;
};

TEST(JsonWriting, IsReadBackTheSame) {
    constexpr std::array<json::Member, 2> members{{{"n", json::Type::number}, {"t", json::Type::text}}};
    std::mt19937_64 random(7);
    for (int round = 0; round < 5000; ++round) {
        double number = std::bit_cast<double>(random());
        if (!std::isfinite(number)) number = static_cast<double>(random());
        std::string text;
        for (std::uint64_t length = random() % 40; length > 0; --length) {
            constexpr std::string_view pieces[] = {"a",      "/", "\"", "\\", "\n", "\u007F",
                                                   "\u0085", "é", "写", "🎉", " "};
            text += pieces[random() % std::size(pieces)];
        }
        std::string document = "{\"n\":";
        json::appendNumber(document, number);
        document += ",\"t\":";
        json::appendText(document, text);
        document += "}";
        Echo echo;
        ASSERT_EQ(json::read(document, {members, {}, {}}, echo), (std::expected<void, std::string>())) << document;
        EXPECT_EQ(echo.number, number) << document;
        EXPECT_EQ(echo.text, text) << document;
    }
}

}  // namespace
