#include "OrdovanCore/TrashRecord.h"

#include "tests/support/StoredText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <string_view>

namespace {

using Entry = OrdovanTrashEntry;
using enum OrdovanJournalError::Case;
using Status = OrdovanExecutionStatus;

const std::string hash(64, 'a');

Entry entry(std::string_view original, std::string_view trashed) {
    return Entry(original, trashed, 5, hash);
}

OrdovanTrashRecord recordOf(std::vector<Entry> entries) {
    return {1, std::move(entries)};
}

/// The trashed paths of the entries in order.
std::string trashedPaths(const OrdovanTrashRecord& record) {
    std::string all;
    for (const Entry& one : record.entries) all.append(one.trashed()).append(" ");
    return all;
}

OrdovanTrashRecord sample() {
    return recordOf({Entry("/d/b \"x\"\n.pdf", "/h/Trash/files/b 2.pdf", 9'223'372'036'854'775'807, hash),
                     Entry("/d/ä.jpg", "/h/Trash/files/ä.jpg", 2048, std::string(64, '0'))});
}

constexpr std::string_view sampleText = R"({
  "entries": [
    {
      "byteSize": 9223372036854775807,
      "contentHash": "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa",
      "original": "/d/b \"x\"\n.pdf",
      "trashed": "/h/Trash/files/b 2.pdf"
    },
    {
      "byteSize": 2048,
      "contentHash": "0000000000000000000000000000000000000000000000000000000000000000",
      "original": "/d/ä.jpg",
      "trashed": "/h/Trash/files/ä.jpg"
    }
  ],
  "version": 1
}
)";

/// The sample with one stretch replaced by another.
std::string altered(std::string_view from, std::string_view to) {
    return ordovan::test::altered(sampleText, from, to);
}

/// The decoder's sentence about a text; empty when it is accepted or refused for another reason.
std::string sentence(std::string_view text) {
    const auto decoded = OrdovanTrashRecord::decoded(text);
    const auto* words = decoded ? nullptr : std::get_if<std::string>(&decoded.error());
    return words == nullptr ? std::string() : *words;
}

TEST(TrashRecord, EntryKeepsEveryFieldAndIsKnownByItsOriginalPath) {
    const Entry one("/from", "/trash", -3, "hash");
    EXPECT_EQ(one.original(), "/from");
    EXPECT_EQ(one.trashed(), "/trash");
    EXPECT_EQ(one.byteSize(), -3);
    EXPECT_EQ(one.contentHash(), "hash");
    EXPECT_EQ(one.id(), "/from");
}

TEST(TrashRecord, EntriesAreEqualWhenEveryFieldIs) {
    const Entry one("/ab", "/c", 1, "h");
    EXPECT_EQ(one, Entry("/ab", "/c", 1, "h"));
    for (const Entry& other : {Entry("/a", "b/c", 1, "h"), Entry("/ab", "/c", 2, "h"), Entry("/ab", "/ch", 1, ""),
                               Entry("/ab", "/c", 1, "i")}) {
        EXPECT_NE(one, other);
    }
}

TEST(TrashRecord, EntryThatWasMovedFromIsEmpty) {
    Entry one = entry("/a", "/b");
    const Entry taken = std::move(one);
    EXPECT_EQ(taken.original(), "/a");
    EXPECT_EQ(one.original(), "");  // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(one.trashed(), "");
    EXPECT_EQ(one.contentHash(), "");
    EXPECT_EQ(one.byteSize(), 0);
}

TEST(TrashRecord, IsWrittenIndentedWithSortedKeys) {
    EXPECT_EQ(sample().encoded(), sampleText);
    EXPECT_EQ(OrdovanTrashRecord().encoded(), "{\n  \"entries\": [],\n  \"version\": 1\n}\n");
}

TEST(TrashRecord, IsReadBackEqual) {
    EXPECT_EQ(OrdovanTrashRecord::decoded(sampleText), sample());
    EXPECT_EQ(OrdovanTrashRecord::decoded(OrdovanTrashRecord().encoded()), OrdovanTrashRecord());
}

TEST(TrashRecord, OfRandomEntriesIsReadBackEqual) {
    std::mt19937_64 random(7);
    const auto text = [&] {
        constexpr std::string_view pieces[] = {"/", "a b", "\"", "\\", "\n", "é", "e\u0301", "写真", "-rf", "\u0085"};
        std::string made = "/";
        for (std::uint64_t count = random() % 30; count > 0; --count) made += pieces[random() % std::size(pieces)];
        return made;
    };
    for (int round = 0; round < 50; ++round) {
        OrdovanTrashRecord record;
        for (std::uint64_t count = random() % 40; count > 0; --count) {
            record.entries.emplace_back(text(), text(), static_cast<std::int64_t>(random()), text());
        }
        EXPECT_EQ(OrdovanTrashRecord::decoded(record.encoded()), record);
    }
}

TEST(TrashRecord, IsWrittenInPiecesAndStopsWhenTheSinkDoes) {
    OrdovanTrashRecord record;
    for (int i = 0; i < 20'000; ++i) record.entries.push_back(entry("/from/" + std::to_string(i), "/to"));
    std::string together;
    std::size_t longest = 0;
    EXPECT_TRUE(record.encode([&](std::string_view piece) {
        together += piece;
        longest = std::max(longest, piece.size());
        return true;
    }));
    EXPECT_EQ(together, record.encoded());
    EXPECT_GT(together.size(), longest * 2);
    EXPECT_LT(longest, (std::size_t{1} << 20) + 1024);
    int pieces = 0;
    EXPECT_FALSE(record.encode([&](std::string_view) { return ++pieces < 2; }));
    EXPECT_EQ(pieces, 2);
}

TEST(TrashRecord, IsReadWithUnknownKeysAndInAnyOrder) {
    const auto decoded = OrdovanTrashRecord::decoded(R"({"version":1,"note":{"version":2,"entries":[1]},"entries":[{
        "trashed":"/t","id":"/x","original":"/o","contentHash":"h","byteSize":-0}]})");
    EXPECT_EQ(decoded, recordOf({Entry("/o", "/t", 0, "h")}));
}

TEST(TrashRecord, CutAnywhereIsRefused) {
    const std::string_view text = sampleText.substr(0, sampleText.size() - 1);  // the line end may be missing
    for (std::size_t size = 0; size < text.size(); ++size) {
        EXPECT_NE(sentence(text.substr(0, size)), "") << size;
    }
}

TEST(TrashRecord, FedInPiecesIsReadTheSame) {
    for (std::size_t step = 1; step < sampleText.size(); ++step) {
        OrdovanTrashRecordDecoder decoder;
        for (std::size_t at = 0; at < sampleText.size(); at += step) {
            EXPECT_TRUE(decoder.feed(sampleText.substr(at, step)));
        }
        EXPECT_EQ(decoder.finish(), sample()) << step;
    }
}

TEST(TrashRecord, DecoderSaysAtOnceThatATextIsRefused) {
    OrdovanTrashRecordDecoder decoder;
    EXPECT_TRUE(decoder.feed("{\"entries\": "));
    EXPECT_FALSE(decoder.feed("17, "));
    EXPECT_FALSE(decoder.feed("\"version\": 1}"));
    EXPECT_EQ(decoder.finish().error(), OrdovanRecordError("\"entries\" is not a list of objects."));
}

TEST(TrashRecord, OfAnotherVersionIsRefusedEvenIfItsEntriesAreFine) {
    for (const std::int64_t version : {0, 2, -1}) {
        const auto decoded =
            OrdovanTrashRecord::decoded(altered("\"version\": 1", "\"version\": " + std::to_string(version)));
        ASSERT_FALSE(decoded);
        EXPECT_EQ(decoded.error(), (OrdovanRecordError(OrdovanJournalError{unsupportedVersion, version})));
    }
}

TEST(TrashRecord, MissingOrRepeatingAKeyIsRefused) {
    for (const std::string key : {"entries", "version"}) {
        EXPECT_EQ(sentence(altered("\"" + key + "\"", "\"other\"")), "\"" + key + "\" is missing.");
    }
    for (const std::string key : {"byteSize", "contentHash", "original", "trashed"}) {
        EXPECT_EQ(sentence(altered("\"" + key + "\"", "\"other\"")), "Record 1: \"" + key + "\" is missing.");
    }
    EXPECT_EQ(sentence(altered("\"version\": 1", "\"version\": 1, \"version\": 1")), "\"version\" stands twice.");
    EXPECT_EQ(sentence(altered("\"trashed\"", "\"trashed\": \"/etc\", \"trashed\"")),
              "Record 1: \"trashed\" stands twice.");
}

TEST(TrashRecord, WithAValueOfAnotherTypeIsRefused) {
    EXPECT_EQ(sentence(altered("\"version\": 1", "\"version\": 1.0")), "\"version\" is not a whole number of 64 bits.");
    EXPECT_EQ(sentence(altered("2048", "2048.5")), "Record 2: \"byteSize\" is not a whole number of 64 bits.");
    EXPECT_EQ(sentence(altered("9223372036854775807", "9223372036854775808")),
              "Record 1: \"byteSize\" is not a whole number of 64 bits.");
    EXPECT_EQ(sentence(altered("\"/d/ä.jpg\"", "[\"/d\"]")), "Record 2: \"original\" is not a text.");
    EXPECT_EQ(sentence(altered("\"/d/ä.jpg\"", "null")), "Record 2: \"original\" is not a text.");
}

TEST(TrashRecord, WithANulCharacterInAPathIsRefused) {
    EXPECT_EQ(sentence(altered("/d/ä.jpg", "/d/a\\u0000.jpg")), "Record 2: \"original\" holds a NUL character.");
    EXPECT_EQ(sentence(altered("files/b", "files\\u0000/b")), "Record 1: \"trashed\" holds a NUL character.");
}

TEST(TrashRecord, PathsAreTakenAsTheyStandAndLeftToRestoringToJudge) {
    EXPECT_EQ(OrdovanTrashRecord::decoded(altered("/d/ä.jpg", "../../etc/passwd"))->entries[1].original(),
              "../../etc/passwd");
}

/// Feeds a record of `count` equal small entries.
std::expected<OrdovanTrashRecord, OrdovanRecordError> decodedOf(std::size_t count, std::string_view version) {
    constexpr std::string_view one = R"({"byteSize":1,"contentHash":"","original":"/o","trashed":"/t"})";
    OrdovanTrashRecordDecoder decoder;
    decoder.feed(R"({"entries":[)");
    for (std::size_t i = 0; i < count; ++i) decoder.feed(std::string(i > 0 ? "," : "").append(one));
    decoder.feed("],\"version\":" + std::string(version) + "}");
    return decoder.finish();
}

TEST(TrashRecord, OfAHundredThousandEntriesIsReadAndOfOneMoreIsRefused) {
    const auto full = decodedOf(100'000, "1");
    ASSERT_TRUE(full);
    EXPECT_EQ(full->entries.size(), 100'000U);
    EXPECT_EQ(full->entries.back(), Entry("/o", "/t", 1, ""));
    const auto over = decodedOf(100'001, "1");
    ASSERT_FALSE(over);
    EXPECT_EQ(over.error(), (OrdovanRecordError(OrdovanJournalError{tooLarge, 100'001})));
    EXPECT_EQ(describe(over.error()), "The record has 100001 entries, which is more than can be read.");
}

TEST(TrashRecord, OfAnotherVersionIsRefusedForThatEvenIfItIsTooLarge) {
    const auto decoded = decodedOf(100'001, "2");
    ASSERT_FALSE(decoded);
    EXPECT_EQ(decoded.error(), (OrdovanRecordError(OrdovanJournalError{unsupportedVersion, 2})));
}

TEST(TrashRecord, AppendingReplacesAnEntryOfTheSameOriginalPath) {
    const auto three = recordOf({entry("/a", "/1"), entry("/b", "/2"), entry("/c", "/3")});
    EXPECT_EQ(trashedPaths(three.appending(recordOf({entry("/a", "/4")}))), "/2 /3 /4 ");
}

TEST(TrashRecord, AppendingComparesOriginalPathsAsExactTexts) {
    const auto first = recordOf({entry("/é", "/1"), entry("/X", "/2")});
    EXPECT_EQ(trashedPaths(first.appending(recordOf({entry("/e\u0301", "/3"), entry("/x", "/4")}))), "/1 /2 /3 /4 ");
}

TEST(TrashRecord, AppendingAnEmptyOneOrToAnEmptyOneChangesNothing) {
    EXPECT_EQ(sample().appending({}), sample());
    EXPECT_EQ(OrdovanTrashRecord().appending(sample()), sample());
}

TEST(TrashRecord, AppendingKeepsTheFirstOnesVersionAndRepeatsWithinTheLaterOne) {
    const auto second = recordOf({entry("/a", "/1"), entry("/a", "/2")});
    EXPECT_EQ((OrdovanTrashRecord{7, {}}.appending(second)), (OrdovanTrashRecord{7, second.entries}));
}

TEST(TrashRecord, AppendingDoesNotApplyTheLimit) {
    OrdovanTrashRecord first;
    first.entries.assign(OrdovanTrashRecord::maxEntries, entry("/a", "/1"));
    EXPECT_EQ(first.appending(recordOf({entry("/b", "/2")})).entries.size(), OrdovanTrashRecord::maxEntries + 1);
}

TEST(TrashReport, CountsItsOutcomesAndShowsThemAsAnExecution) {
    const auto outcome = [](const char* path, Status status) {
        return OrdovanExecutionOutcome{Url::file(path), Url::file("/t"), status, "Why."};
    };
    const OrdovanTrashReport report{{outcome("/a", Status::moved), outcome("/b", Status::skippedRevalidation),
                                     outcome("/c", Status::moved), outcome("/d", Status::failed)},
                                    sample()};
    EXPECT_EQ(report.movedCount(), 2U);
    EXPECT_EQ(report.skippedCount(), 1U);
    EXPECT_EQ(report.failedCount(), 1U);
    EXPECT_EQ(report.asExecutionReport(), (OrdovanExecutionReport{report.outcomes, OrdovanJournal{1, 0, {}}}));
}

}  // namespace
