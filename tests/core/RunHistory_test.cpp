#include "OrdovanCore/RunHistory.h"

#include "tests/support/StoredText.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace {

using Kind = OrdovanRunRecord::Kind;
using ordovan::Uuid;

const Uuid id = *Uuid::parse("0123ABCD-4567-89AB-CDEF-FEDCBA987654");

OrdovanRunRecord record(Kind kind, std::int64_t moved) {
    return {id, kind, 100, "Downloads", moved, 0, 0};
}

/// Records told apart by how many files they moved: `count` of them, the first `newest`, each next one less.
OrdovanRunHistory historyOf(std::size_t count, std::int64_t newest) {
    OrdovanRunHistory history;
    for (std::size_t i = 0; i < count; ++i) history.records.push_back(record(Kind::organize, newest--));
    return history;
}

TEST(RunRecord, KindsHaveTheirNamesAsRawValues) {
    const std::vector<std::pair<Kind, std::string_view>> names{{Kind::organize, "organize"},
                                                               {Kind::undo, "undo"},
                                                               {Kind::trash, "trash"},
                                                               {Kind::restoreTrash, "restoreTrash"}};
    for (const auto& [kind, name] : names) {
        EXPECT_EQ(rawValue(kind), name);
        EXPECT_EQ(runKindFromRawValue(name), kind);
    }
    for (const std::string_view other : {"", "Organize", "restore", "trash ", "restoretrash"}) {
        EXPECT_EQ(runKindFromRawValue(other), std::nullopt);
    }
}

TEST(RunRecord, SummarizesEachKind) {
    EXPECT_EQ(record(Kind::organize, 12).summary(), "Organized 12 files in Downloads");
    EXPECT_EQ(record(Kind::undo, 12).summary(), "Restored 12 files in Downloads");
    EXPECT_EQ(record(Kind::trash, 12).summary(), "Moved 12 duplicate files to the Trash in Downloads");
    EXPECT_EQ(record(Kind::restoreTrash, 12).summary(), "Put back 12 files from the Trash in Downloads");
}

TEST(RunRecord, SaysFileForOneAndFilesForNone) {
    EXPECT_EQ(record(Kind::organize, 1).summary(), "Organized 1 file in Downloads");
    EXPECT_EQ(record(Kind::trash, 1).summary(), "Moved 1 duplicate file to the Trash in Downloads");
    EXPECT_EQ(record(Kind::undo, 0).summary(), "Restored 0 files in Downloads");
    EXPECT_EQ(record(Kind::restoreTrash, -1).summary(), "Put back -1 files from the Trash in Downloads");
}

TEST(RunRecord, IsMadeFromAReport) {
    const auto outcome = [](OrdovanExecutionStatus status) {
        return OrdovanExecutionOutcome{Url::file("/a"), Url::file("/b"), status, "Said."};
    };
    using enum OrdovanExecutionStatus;
    const OrdovanExecutionReport report{{outcome(moved), outcome(failed), outcome(moved), outcome(skippedRevalidation),
                                         outcome(moved), outcome(failed)},
                                        {}};
    const auto made = OrdovanRunRecord::make(Kind::undo, report, Url::file("/home/me/My Files/"), 12.5);
    EXPECT_EQ(made, (OrdovanRunRecord{made.id, Kind::undo, 12.5, "My Files", 3, 1, 2}));
    EXPECT_NE(made.id, OrdovanRunRecord::make(Kind::undo, report, Url::file("/home"), 12.5).id);
}

TEST(RunHistory, PutsANewRecordInFront) {
    const OrdovanRunHistory history = historyOf(2, 5).adding(record(Kind::undo, 9));
    EXPECT_EQ(history.records,
              (std::vector{record(Kind::undo, 9), record(Kind::organize, 5), record(Kind::organize, 4)}));
    EXPECT_EQ(OrdovanRunHistory().adding(record(Kind::undo, 9)).records, std::vector{record(Kind::undo, 9)});
}

TEST(RunHistory, KeepsTwoHundredRecords) {
    EXPECT_EQ(historyOf(199, 199).adding(record(Kind::organize, 200)), historyOf(200, 200));
    EXPECT_EQ(historyOf(200, 200).adding(record(Kind::organize, 201)), historyOf(200, 201));
    EXPECT_EQ(historyOf(250, 250).adding(record(Kind::organize, 251)), historyOf(200, 251));
}

TEST(RunHistory, CountsWhatOrganizeRunsMoved) {
    const OrdovanRunHistory history{{record(Kind::organize, 5), record(Kind::undo, 5), record(Kind::organize, 7),
                                     record(Kind::trash, 100), record(Kind::restoreTrash, 100)}};
    EXPECT_EQ(history.totalOrganized(), 12);
    EXPECT_EQ(OrdovanRunHistory().totalOrganized(), 0);
}

TEST(RunHistory, PinsATotalBeyond64Bits) {
    constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();
    EXPECT_EQ((OrdovanRunHistory{{record(Kind::organize, most), record(Kind::organize, 1)}}).totalOrganized(), most);
    EXPECT_EQ((OrdovanRunHistory{{record(Kind::organize, -most), record(Kind::organize, -2)}}).totalOrganized(),
              -most - 1);
}

const OrdovanRunHistory sample{{{id, Kind::restoreTrash, 1'714'903'200.5, "Fo\"to\"s ü", 3, 2, 1},
                                {Uuid{}, Kind::organize, 0, "", 9'223'372'036'854'775'807, 0, -1}}};
constexpr std::string_view sampleText = R"({
  "records": [
    {
      "epoch": 1714903200.5,
      "failed": 1,
      "folderName": "Fo\"to\"s ü",
      "id": "0123ABCD-4567-89AB-CDEF-FEDCBA987654",
      "kind": "restoreTrash",
      "moved": 3,
      "skipped": 2
    },
    {
      "epoch": 0,
      "failed": -1,
      "folderName": "",
      "id": "00000000-0000-0000-0000-000000000000",
      "kind": "organize",
      "moved": 9223372036854775807,
      "skipped": 0
    }
  ]
}
)";

std::string refusal(std::string_view text) {
    const auto decoded = OrdovanRunHistory::decoded(text);
    return decoded ? std::string() : decoded.error();
}

std::string altered(std::string_view from, std::string_view to) {
    return ordovan::test::altered(sampleText, from, to);
}

TEST(StoredHistory, IsWrittenIndentedWithSortedKeys) {
    EXPECT_EQ(sample.encoded(), sampleText);
    EXPECT_EQ(OrdovanRunHistory().encoded(), "{\n  \"records\": []\n}\n");
}

TEST(StoredHistory, IsReadBackEqual) {
    EXPECT_EQ(OrdovanRunHistory::decoded(sampleText), sample);
    EXPECT_EQ(OrdovanRunHistory::decoded(OrdovanRunHistory().encoded()), OrdovanRunHistory());
}

TEST(StoredHistory, OfRandomRecordsIsReadBackEqual) {
    std::mt19937_64 random(5);
    for (int round = 0; round < 100; ++round) {
        OrdovanRunHistory history;
        for (std::uint64_t count = random() % 200; count > 0; --count) {
            const auto number = [&] { return static_cast<std::int64_t>(random()); };
            history.records.push_back({Uuid::random(), static_cast<Kind>(random() % 4),
                                       static_cast<double>(number()) / 1e9, std::string(random() % 20, '\n') + "é",
                                       number(), number(), number()});
        }
        EXPECT_EQ(OrdovanRunHistory::decoded(history.encoded()), history);
    }
}

TEST(StoredHistory, LongerThanTwoHundredIsCutToItsFirst) {
    EXPECT_EQ(OrdovanRunHistory::decoded(historyOf(250, 250).encoded()), historyOf(200, 250));
}

TEST(StoredHistory, IsCheckedBeyondItsFirstTwoHundred) {
    OrdovanRunHistory history = historyOf(250, 250);
    std::string text = history.encoded();
    text.replace(text.rfind("organize"), 8, "Organize");
    EXPECT_EQ(refusal(text), "Record 250: \"kind\" is not a kind of run.");
}

TEST(StoredHistory, IsReadInAnyOrderWithUnknownKeysAndLowerCaseIds) {
    EXPECT_EQ(OrdovanRunHistory::decoded(R"({"x":{},"records":[{"skipped":0,"moved":4,"kind":"organize","y":[0.5],
        "id":"0123abcd-4567-89ab-cdef-fedcba987654","folderName":"Downloads","failed":0,"epoch":1e2}]})"),
              (OrdovanRunHistory{{record(Kind::organize, 4)}}));
}

TEST(StoredHistory, WithATimeThatJsonLacksIsStillReadable) {
    OrdovanRunHistory history{{record(Kind::organize, 4)}};
    history.records[0].epoch = std::nan("");
    EXPECT_EQ(OrdovanRunHistory::decoded(history.encoded())->records[0].epoch, 0);
}

TEST(StoredHistory, CutAnywhereIsRefused) {
    const std::string_view text = sampleText.substr(0, sampleText.size() - 1);
    for (std::size_t size = 0; size < text.size(); ++size) {
        EXPECT_FALSE(OrdovanRunHistory::decoded(text.substr(0, size))) << size;
    }
}

TEST(StoredHistory, OfAnotherShapeIsRefused) {
    EXPECT_EQ(refusal("{}"), "\"records\" is missing.");
    EXPECT_EQ(refusal("null"), "The document is not an object.");
    EXPECT_EQ(refusal("{\"records\":null}"), "\"records\" is not a list of objects.");
    EXPECT_EQ(refusal("{\"records\":[[]]}"), "\"records\" is not a list of objects.");
    EXPECT_EQ(refusal("{\"records\":[],\"records\":[]}"), "\"records\" stands twice.");
    for (const std::string key : {"epoch", "failed", "folderName", "id", "kind", "moved", "skipped"}) {
        EXPECT_EQ(refusal(altered("\"" + key + "\"", "\"x\"")), "Record 1: \"" + key + "\" is missing.");
        EXPECT_EQ(refusal(altered("\"" + key + "\"", "\"" + key + "\": [], \"x\"")).substr(0, 12 + key.size()),
                  "Record 1: \"" + key + "\"");
    }
    EXPECT_EQ(refusal(altered("\"moved\": 3", "\"moved\": 3.0")),
              "Record 1: \"moved\" is not a whole number of 64 bits.");
    EXPECT_EQ(refusal(altered("\"moved\": 3", "\"moved\": 3e1")),
              "Record 1: \"moved\" is not a whole number of 64 bits.");
    EXPECT_EQ(refusal(altered("9223372036854775807", "9223372036854775808")),
              "Record 2: \"moved\" is not a whole number of 64 bits.");
    EXPECT_EQ(refusal(altered("1714903200.5", "\"2024-05-05\"")), "Record 1: \"epoch\" is not a number.");
    EXPECT_EQ(refusal(altered("1714903200.5", "-1e400")), "Record 1: \"epoch\" is too large a number.");
    EXPECT_EQ(refusal(altered("restoreTrash", "restore")), "Record 1: \"kind\" is not a kind of run.");
    EXPECT_EQ(refusal(altered("0123ABCD", "123ABCD")), "Record 1: \"id\" is not a UUID.");
    EXPECT_EQ(refusal(altered("ü", "\\u0000")), "Record 1: \"folderName\" holds a NUL character.");
}

TEST(StoredHistory, ThatIsNotStrictJsonIsRefused) {
    for (const std::string& text :
         {altered("\"skipped\": 2", "\"skipped\": 2,"), altered("ü", "\xFC"), altered("ü", "\\ud83d"),
          "\xEF\xBB\xBF" + std::string(sampleText), std::string(sampleText) + "[]", std::string(100'000, '{'),
          altered("\"epoch\"", "\"x\": " + std::string(100'000, '['))}) {
        EXPECT_FALSE(OrdovanRunHistory::decoded(text)) << text.substr(0, 200);
    }
}

}  // namespace
