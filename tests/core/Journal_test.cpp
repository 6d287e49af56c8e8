#include "OrdovanCore/Journal.h"

#include "tests/support/StoredText.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace {

using Entry = OrdovanJournalEntry;
using enum OrdovanJournalError::Case;

const std::string hash(64, 'a');

Entry entry(std::string_view source, std::string_view destination) {
    return Entry(source, destination, true, 5, hash, "65024:17");
}

/// The sources of the entries in order.
std::string sources(const OrdovanJournal& journal) {
    std::string all;
    for (const Entry& one : journal.entries) all.append(one.source()).append(" ");
    return all;
}

OrdovanJournal sample() {
    OrdovanJournal journal;
    journal.createdAtEpoch = 1'714'903'200.25;
    journal.entries = {Entry("/d/b \"x\"\n.pdf", "/d/ordovan+/Documents/b.pdf", true, 9'223'372'036'854'775'807, hash,
                             "65024:18446744073709551615"),
                       Entry("/d/ä.jpg", "/d/ordovan+/Images/ä.jpg", false, 0, std::string(64, '0'), "")};
    return journal;
}

constexpr std::string_view sampleText = R"({
  "createdAtEpoch": 1714903200.25,
  "entries": [
    {
      "byteSize": 9223372036854775807,
      "contentHash": "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa",
      "destination": "/d/ordovan+/Documents/b.pdf",
      "fileID": "65024:18446744073709551615",
      "sameVolume": true,
      "source": "/d/b \"x\"\n.pdf"
    },
    {
      "byteSize": 0,
      "contentHash": "0000000000000000000000000000000000000000000000000000000000000000",
      "destination": "/d/ordovan+/Images/ä.jpg",
      "fileID": "",
      "sameVolume": false,
      "source": "/d/ä.jpg"
    }
  ],
  "version": 1
}
)";

/// The refusal of a text, in words; empty when it is accepted.
std::string refusal(std::string_view text) {
    const auto decoded = OrdovanJournal::decoded(text);
    return decoded ? std::string() : describe(decoded.error());
}

/// The sample with one stretch replaced by another.
std::string altered(std::string_view from, std::string_view to) {
    return ordovan::test::altered(sampleText, from, to);
}

TEST(Journal, EntryKeepsEveryField) {
    const Entry one("/from", "/to", false, -3, "hash", "1:2");
    EXPECT_EQ(one.source(), "/from");
    EXPECT_EQ(one.destination(), "/to");
    EXPECT_EQ(one.id(), "/to");
    EXPECT_FALSE(one.sameVolume());
    EXPECT_EQ(one.byteSize(), -3);
    EXPECT_EQ(one.contentHash(), "hash");
    EXPECT_EQ(one.fileID(), "1:2");
}

TEST(Journal, EntriesAreEqualWhenEveryFieldIs) {
    const Entry one("/ab", "/c", true, 1, "h", "i");
    EXPECT_EQ(one, Entry("/ab", "/c", true, 1, "h", "i"));
    for (const Entry& other : {Entry("/a", "b/c", true, 1, "h", "i"), Entry("/ab", "/c", false, 1, "h", "i"),
                               Entry("/ab", "/c", true, 2, "h", "i"), Entry("/ab", "/ch", true, 1, "", "i"),
                               Entry("/ab", "/c", true, 1, "hi", "")}) {
        EXPECT_NE(one, other);
    }
}

TEST(Journal, EntryOfEmptyTextsIsPossible) {
    const Entry one("", "", true, 0, "", "");
    EXPECT_EQ(one.source(), "");
    EXPECT_EQ(one.fileID(), "");
    EXPECT_TRUE(one.sameVolume());
}

TEST(Journal, IsWrittenIndentedWithSortedKeys) {
    EXPECT_EQ(sample().encoded(), sampleText);
}

TEST(Journal, WithoutEntriesIsWrittenWithAnEmptyList) {
    const OrdovanJournal journal{1, 12, {}};
    EXPECT_EQ(journal.encoded(), "{\n  \"createdAtEpoch\": 12,\n  \"entries\": [],\n  \"version\": 1\n}\n");
    EXPECT_EQ(OrdovanJournal::decoded(journal.encoded()), journal);
}

TEST(Journal, IsReadBackEqual) {
    EXPECT_EQ(OrdovanJournal::decoded(sampleText), sample());
    EXPECT_EQ(OrdovanJournal::decoded(sample().encoded()), sample());
}

TEST(Journal, OfRandomEntriesIsReadBackEqual) {
    std::mt19937_64 random(11);
    const auto text = [&] {
        constexpr std::string_view pieces[] = {"/",       "a b",  "\"", "\\",  "\n",    "é",
                                               "e\u0301", "写真", "🎉", "-rf", "\u0085"};
        std::string made = "/";
        for (std::uint64_t count = random() % 30; count > 0; --count) made += pieces[random() % std::size(pieces)];
        return made;
    };
    for (int round = 0; round < 50; ++round) {
        OrdovanJournal journal;
        journal.createdAtEpoch = static_cast<double>(random()) / 1e9;
        for (std::uint64_t count = random() % 40; count > 0; --count) {
            journal.entries.emplace_back(text(), text(), random() % 2 == 0, static_cast<std::int64_t>(random()), text(),
                                         text());
        }
        EXPECT_EQ(OrdovanJournal::decoded(journal.encoded()), journal);
    }
}

TEST(Journal, IsWrittenInPiecesOfAboutOneMebibyte) {
    OrdovanJournal journal;
    for (int i = 0; i < 20'000; ++i) journal.entries.push_back(entry("/from/" + std::to_string(i), "/to"));
    std::string together;
    std::size_t longest = 0;
    EXPECT_TRUE(journal.encode([&](std::string_view piece) {
        together += piece;
        longest = std::max(longest, piece.size());
        return true;
    }));
    EXPECT_EQ(together, journal.encoded());
    EXPECT_GT(together.size(), longest * 3);
    EXPECT_LT(longest, (std::size_t{1} << 20) + 1024);
}

TEST(Journal, StopsWritingWhenTheSinkDoes) {
    OrdovanJournal journal;
    for (int i = 0; i < 20'000; ++i) journal.entries.push_back(entry("/from/" + std::to_string(i), "/to"));
    int pieces = 0;
    EXPECT_FALSE(journal.encode([&](std::string_view) { return ++pieces < 2; }));
    EXPECT_EQ(pieces, 2);
    EXPECT_FALSE(OrdovanJournal().encode([](std::string_view) { return false; }));
}

TEST(Journal, OfPathsThatAreNotUtf8IsStillWrittenAsValidJson) {
    const OrdovanJournal journal{1, 0, {entry("/a\xFF", "/b\xC3")}};
    const auto decoded = OrdovanJournal::decoded(journal.encoded());
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->entries, std::vector{entry("/a\uFFFD", "/b\uFFFD")});
}

TEST(Journal, OfATimeThatJsonLacksIsStillWrittenAsValidJson) {
    const OrdovanJournal journal{1, std::nan(""), {}};
    EXPECT_EQ(OrdovanJournal::decoded(journal.encoded()), (OrdovanJournal{1, 0, {}}));
}

TEST(Journal, IsReadWithUnknownKeysAndInAnyOrder) {
    const auto decoded = OrdovanJournal::decoded(R"({"version":1,"note":{"version":2,"entries":[1]},"entries":[{
        "source":"/s","fileID":"","x":[{}],"sameVolume":true,"destination":"/d","contentHash":"h","byteSize":-0}],
        "createdAtEpoch":17e8})");
    ASSERT_TRUE(decoded);
    EXPECT_EQ(*decoded, (OrdovanJournal{1, 1.7e9, {Entry("/s", "/d", true, 0, "h", "")}}));
}

TEST(Journal, CutAnywhereIsRefused) {
    const std::string_view text = sampleText.substr(0, sampleText.size() - 1);  // the line end may be missing
    for (std::size_t size = 0; size < text.size(); ++size) {
        const auto decoded = OrdovanJournal::decoded(text.substr(0, size));
        ASSERT_FALSE(decoded) << size;
        EXPECT_TRUE(std::holds_alternative<std::string>(decoded.error())) << size;
    }
}

TEST(Journal, FedInPiecesIsReadTheSame) {
    for (std::size_t step = 1; step < sampleText.size(); ++step) {
        OrdovanJournalDecoder decoder;
        for (std::size_t at = 0; at < sampleText.size(); at += step) {
            EXPECT_TRUE(decoder.feed(sampleText.substr(at, step)));
        }
        EXPECT_EQ(decoder.finish(), sample()) << step;
    }
}

TEST(Journal, DecoderSaysAtOnceThatATextIsRefused) {
    OrdovanJournalDecoder decoder;
    EXPECT_TRUE(decoder.feed("{\"entries\": "));
    EXPECT_FALSE(decoder.feed("17, "));
    EXPECT_FALSE(decoder.feed("\"version\": 1}"));
    EXPECT_EQ(describe(decoder.finish().error()), "\"entries\" is not a list of objects.");
}

TEST(Journal, OfAnotherVersionIsRefusedEvenIfItsEntriesAreFine) {
    for (const std::int64_t version : {0, 2, -1, 1'000'000}) {
        const auto decoded =
            OrdovanJournal::decoded(altered("\"version\": 1", "\"version\": " + std::to_string(version)));
        ASSERT_FALSE(decoded);
        EXPECT_EQ(decoded.error(), (OrdovanRecordError(OrdovanJournalError{unsupportedVersion, version})));
    }
    EXPECT_EQ(refusal(altered("\"version\": 1", "\"version\": 2")),
              "The record has format version 2; only version 1 can be read.");
}

TEST(Journal, MissingAKeyIsRefused) {
    for (const std::string key : {"createdAtEpoch", "entries", "version"}) {
        EXPECT_EQ(refusal(altered("\"" + key + "\"", "\"other\"")), "\"" + key + "\" is missing.");
    }
    for (const std::string key : {"byteSize", "contentHash", "destination", "fileID", "sameVolume", "source"}) {
        EXPECT_EQ(refusal(altered("\"" + key + "\"", "\"other\"")), "Record 1: \"" + key + "\" is missing.");
    }
}

TEST(Journal, RepeatingAKeyIsRefused) {
    EXPECT_EQ(refusal(altered("\"version\": 1", "\"version\": 1, \"version\": 1")), "\"version\" stands twice.");
    EXPECT_EQ(refusal(altered("\"entries\"", "\"entries\": [], \"entries\"")), "\"entries\" stands twice.");
    EXPECT_EQ(refusal(altered("\"source\"", "\"source\": \"/etc\", \"source\"")), "Record 1: \"source\" stands twice.");
}

TEST(Journal, WithAValueOfAnotherTypeIsRefused) {
    EXPECT_EQ(refusal(altered("\"version\": 1", "\"version\": 1.0")), "\"version\" is not a whole number of 64 bits.");
    EXPECT_EQ(refusal(altered("\"version\": 1", "\"version\": \"1\"")),
              "\"version\" is not a whole number of 64 bits.");
    EXPECT_EQ(refusal(altered("1714903200.25", "null")), "\"createdAtEpoch\" is not a number.");
    EXPECT_EQ(refusal(altered("1714903200.25", "1e999")), "\"createdAtEpoch\" is too large a number.");
    EXPECT_EQ(refusal(altered("9223372036854775807", "9223372036854775808")),
              "Record 1: \"byteSize\" is not a whole number of 64 bits.");
    EXPECT_EQ(refusal(altered("9223372036854775807", "5e2")),
              "Record 1: \"byteSize\" is not a whole number of 64 bits.");
    EXPECT_EQ(refusal(altered("false", "0")), "Record 2: \"sameVolume\" is not true or false.");
    EXPECT_EQ(refusal(altered("\"/d/ä.jpg\"", "[\"/d\"]")), "Record 2: \"source\" is not a text.");
    EXPECT_EQ(refusal(altered("\"fileID\": \"\"", "\"fileID\": null")), "Record 2: \"fileID\" is not a text.");
}

TEST(Journal, WithANulCharacterInAPathIsRefused) {
    EXPECT_EQ(refusal(altered("/d/ä.jpg", "/d/a\\u0000.jpg")), "Record 2: \"source\" holds a NUL character.");
    EXPECT_EQ(refusal(altered("Images/", "Images\\u0000/")), "Record 2: \"destination\" holds a NUL character.");
}

TEST(Journal, ThatIsNotStrictJsonIsRefused) {
    for (const std::string& text :
         {altered("true,", "true"), altered("\n  ],", ",\n  ],"), altered("Images", "Im\xFFges"),
          altered("Images", "\\ud800"), altered("false", "False"), "\xEF\xBB\xBF" + std::string(sampleText),
          std::string(sampleText) + "}", std::string(sampleText) + "{}", std::string(sampleText) + '\0',
          std::string("[]"), std::string(), std::string(100'000, '['), std::string(100'000, '{'),
          altered("\"version\"", "\"x\": " + std::string(100'000, '[')), std::string(1000, '\0')}) {
        const auto decoded = OrdovanJournal::decoded(text);
        ASSERT_FALSE(decoded) << text.substr(0, 200);
        EXPECT_TRUE(std::holds_alternative<std::string>(decoded.error()));
    }
}

TEST(Journal, PathsAreTakenAsTheyStandAndLeftToUndoToJudge) {
    const auto decoded = OrdovanJournal::decoded(altered("/d/ä.jpg", "../../etc/passwd"));
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->entries[1].source(), "../../etc/passwd");
}

/// Feeds a journal of `count` equal small entries.
std::expected<OrdovanJournal, OrdovanRecordError> decodedOf(std::size_t count, std::string_view version) {
    constexpr std::string_view one =
        R"({"byteSize":1,"contentHash":"","destination":"/d","fileID":"","sameVolume":true,"source":"/s"},)";
    constexpr std::size_t atOnce = 1000;
    std::string many;
    for (std::size_t i = 0; i < atOnce; ++i) many += one;
    OrdovanJournalDecoder decoder;
    decoder.feed(R"({"createdAtEpoch":0,"entries":[)");
    for (std::size_t left = count - 1; left > 0;) {
        const std::size_t now = std::min(left, atOnce);
        decoder.feed(std::string_view(many).substr(0, now * one.size()));
        left -= now;
    }
    decoder.feed(one.substr(0, one.size() - 1));
    decoder.feed("],\"version\":" + std::string(version) + "}");
    return decoder.finish();
}

TEST(Journal, OfAMillionEntriesIsReadAndOfOneMoreIsRefused) {
    const auto full = decodedOf(1'000'000, "1");
    ASSERT_TRUE(full);
    EXPECT_EQ(full->entries.size(), 1'000'000U);
    EXPECT_EQ(full->entries.back(), Entry("/s", "/d", true, 1, "", ""));
    const auto over = decodedOf(1'000'001, "1");
    ASSERT_FALSE(over);
    EXPECT_EQ(over.error(), (OrdovanRecordError(OrdovanJournalError{tooLarge, 1'000'001})));
    EXPECT_EQ(describe(over.error()), "The record has 1000001 entries, which is more than can be read.");
}

TEST(Journal, OfAnotherVersionIsRefusedForThatEvenIfItIsTooLarge) {
    const auto decoded = decodedOf(1'000'001, "2");
    ASSERT_FALSE(decoded);
    EXPECT_EQ(decoded.error(), (OrdovanRecordError(OrdovanJournalError{unsupportedVersion, 2})));
}

TEST(Journal, AppendingKeepsBothInTheirOrder) {
    const OrdovanJournal first{1, 10, {entry("/a", "/1"), entry("/b", "/2")}};
    const OrdovanJournal second{1, 20, {entry("/c", "/3")}};
    const OrdovanJournal joined = first.appending(second);
    EXPECT_EQ(sources(joined), "/a /b /c ");
    EXPECT_EQ(joined.createdAtEpoch, 20);
}

TEST(Journal, AppendingReplacesAnEntryOfTheSameDestination) {
    const OrdovanJournal first{1, 10, {entry("/a", "/1"), entry("/b", "/2"), entry("/a2", "/1")}};
    const OrdovanJournal second{1, 20, {entry("/c", "/3"), entry("/d", "/1")}};
    EXPECT_EQ(sources(first.appending(second)), "/b /c /d ");
}

TEST(Journal, AppendingComparesDestinationsAsExactTexts) {
    const OrdovanJournal first{1, 10, {entry("/a", "/é"), entry("/b", "/X")}};
    const OrdovanJournal second{1, 20, {entry("/c", "/e\u0301"), entry("/d", "/x")}};
    EXPECT_EQ(sources(first.appending(second)), "/a /b /c /d ");
}

TEST(Journal, AppendingAnEmptyOneKeepsAllEntriesAndTakesItsTime) {
    const OrdovanJournal first{1, 10, {entry("/a", "/1"), entry("/b", "/2")}};
    EXPECT_EQ(first.appending({1, 20, {}}), (OrdovanJournal{1, 20, first.entries}));
}

TEST(Journal, AppendingKeepsTheFirstOnesVersionAndRepeatsWithinTheLaterOne) {
    const OrdovanJournal first{7, 10, {}};
    const OrdovanJournal second{1, 20, {entry("/a", "/1"), entry("/b", "/1")}};
    EXPECT_EQ(first.appending(second), (OrdovanJournal{7, 20, second.entries}));
}

TEST(Journal, AppendingDoesNotApplyTheLimit) {
    OrdovanJournal first{1, 10, {}};
    first.entries.assign(OrdovanJournal::maxEntries, entry("/a", "/1"));
    EXPECT_EQ(first.appending({1, 20, {entry("/b", "/2")}}).entries.size(), OrdovanJournal::maxEntries + 1);
}

}  // namespace
