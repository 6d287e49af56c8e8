#include "OrdovanCore/RunRecord.h"

#include "tests/support/StoredText.h"

#include <gmock/gmock.h>

#include <array>
#include <string>
#include <string_view>
#include <vector>

using ordovan::test::altered;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using Kind = OrdovanRunRecord::Kind;
using NoteKind = OrdovanRunNote::Kind;

namespace {

const std::string hashA(64, 'a');
const std::string hashB(64, 'b');
constexpr const char* partial = "/r/ordovan+/Documents/.b.pdf.ordovan-partial-00000000-0000-4000-8000-000000000000";

OrdovanRunItem item(std::string_view source, std::string_view destination) {
    return {.source = source,
            .destination = destination,
            .byteSize = 5,
            .modifiedNs = 1'600'000'000'000'000'001,
            .identity = "40:12",
            .contentHash = {},
            .names = 1};
}

OrdovanRunIntent intent() {
    return {
        .id = *ordovan::Uuid::parse("01234567-89AB-4CDE-8F01-23456789ABCD"),
        .kind = Kind::organize,
        .startedAtEpoch = 1'700'000'000.5,
        .root = Url::file("/r"),
        .rootIdentity = "40:2",
        .outputRoots = {Url::file("/r/ordovan+")},
        .volumes = {Url::file("/r/usb")},
        .unflushable = {},
        .items = {item("/r/a.pdf", "/r/ordovan+/Documents/a.pdf"), item("/r/b.pdf", "/r/ordovan+/Documents/b.pdf")}};
}

std::vector<OrdovanRunNote> notes() {
    return {{.kind = NoteKind::done,
             .item = 0,
             .byteSize = 5,
             .contentHash = hashA,
             .identity = "40:12",
             .sameVolume = true,
             .path = {}},
            {.kind = NoteKind::begun,
             .item = 1,
             .byteSize = 6,
             .contentHash = hashB,
             .identity = "40:13",
             .sameVolume = false,
             .path = partial},
            {.kind = NoteKind::done,
             .item = 1,
             .byteSize = 6,
             .contentHash = hashB,
             .identity = "40:13",
             .sameVolume = false,
             .path = {}}};
}

std::string encoded(const OrdovanRunIntent& intent, const std::vector<OrdovanRunNote>& notes = {}) {
    std::string text;
    intent.encode([&](std::string_view piece) {
        text += piece;
        return true;
    });
    for (const OrdovanRunNote& note : notes) note.appendTo(text, intent);
    return text;
}

/// Why a record is refused.
std::string refusal(std::string_view text) {
    const auto run = OrdovanUnfinishedRun::decoded(text);
    return run ? "read" : describe(run.error());
}

TEST(RunRecord, ReadsBackWhatWasWritten) {
    const auto run = OrdovanUnfinishedRun::decoded(encoded(intent(), notes()));
    ASSERT_TRUE(run) << describe(run.error());
    EXPECT_EQ(run->intent, intent());
    EXPECT_EQ(run->notes, notes());
}

TEST(RunRecord, IsAnObjectALineWithSortedKeysAndPathsBelowTheFolder) {
    OrdovanRunIntent one = intent();
    one.items.pop_back();
    OrdovanRunNote other = notes().front();
    other.identity = "40:99";
    EXPECT_EQ(encoded(one, {notes().front(), other}),
              "{\"id\":\"01234567-89AB-4CDE-8F01-23456789ABCD\",\"items\":1,\"kind\":\"organize\","
              "\"outputRoots\":[\"/r/ordovan+\"],\"root\":\"/r\",\"rootIdentity\":\"40:2\","
              "\"startedAtEpoch\":1700000000.5,\"unflushable\":[],\"version\":1,\"volumes\":[\"/r/usb\"]}\n"
              "{\"bytes\":5,\"from\":\"a.pdf\",\"hash\":\"\",\"identity\":\"40:12\",\"modified\":1600000000000000001,"
              "\"names\":1,\"to\":\"ordovan+/Documents/a.pdf\"}\n"
              "{\"end\":1}\n"
              "{\"bytes\":5,\"hash\":\"" +
                  hashA +
                  "\",\"renamed\":0}\n"
                  "{\"bytes\":5,\"hash\":\"" +
                  hashA +
                  "\",\"identity\":\"40:99\",\"item\":0,\"note\":\"done\",\"path\":\"\","
                  "\"sameVolume\":true}\n");
}

TEST(RunRecord, CanBeOfSomeOfItsItemsAndWhatWasNotedOfThem) {
    OrdovanUnfinishedRun run{.intent = intent(), .notes = notes()};
    run.intent.unflushable = {Url::file("/r/usb")};
    ASSERT_GE(run.intent.items.size(), 2U);
    const OrdovanUnfinishedRun second = run.only(std::vector<std::size_t>{1});
    ASSERT_EQ(second.intent.items.size(), 1U);
    EXPECT_EQ(second.intent.items[0], run.intent.items[1]);
    std::size_t count = 0;
    for (const OrdovanRunNote& note : run.notes) count += note.item == 1 ? 1 : 0;
    EXPECT_EQ(second.notes.size(), count);
    EXPECT_LT(count, run.notes.size());
    for (const OrdovanRunNote& note : second.notes) EXPECT_EQ(note.item, 0U);
    EXPECT_EQ(run.only(std::vector<std::size_t>{0, 1}), run);
    std::string text;
    EXPECT_TRUE(second.encode([&](std::string_view piece) { return text += piece, true; }));
    EXPECT_EQ(OrdovanUnfinishedRun::decoded(text), second);
}

TEST(RunRecord, KeepsPathsOutsideTheFolderAndOddOnesByteForByte) {
    OrdovanRunIntent trash = intent();
    trash.kind = Kind::restoreTrash;
    trash.items = {item("/home/user/.local/share/Trash/files/a", "/r//odd"), item("/rs/x", "/r"),
                   item("/r/new\nline \"quoted\" \u00e9", "/r/sub/x")};
    const auto run = OrdovanUnfinishedRun::decoded(encoded(trash));
    ASSERT_TRUE(run) << describe(run.error());
    EXPECT_EQ(run->intent.items, trash.items);
}

TEST(RunRecord, ReadsItInPiecesOfAnySize) {
    const std::string text = encoded(intent(), notes());
    for (const std::size_t size : {1U, 2U, 7U, 64U}) {
        OrdovanRunRecordDecoder decoder;
        for (std::size_t at = 0; at < text.size(); at += size) EXPECT_TRUE(decoder.feed(text.substr(at, size)));
        const auto run = decoder.finish();
        ASSERT_TRUE(run);
        EXPECT_EQ(run->notes, notes());
    }
}

// Cut off.

TEST(RunRecord, CutAnywhereInItsIntentItIsRefused) {
    const std::string text = encoded(intent());
    for (std::size_t size = 0; size < text.size(); ++size) {
        EXPECT_FALSE(OrdovanUnfinishedRun::decoded(text.substr(0, size))) << size;
    }
    EXPECT_EQ(refusal(text.substr(0, text.size() - 1)), "The run record ends too early.");
    EXPECT_EQ(refusal(text), "read");
}

TEST(RunRecord, CutAnywhereInItsNotesItLosesOnlyThoseThatAreNotWhole) {
    const std::string head = encoded(intent());
    std::string text = head;
    std::vector<std::size_t> ends;
    for (const OrdovanRunNote& note : notes()) {
        note.appendTo(text, intent());
        ends.push_back(text.size());
    }
    for (std::size_t size = head.size(); size <= text.size(); ++size) {
        const auto run = OrdovanUnfinishedRun::decoded(text.substr(0, size));
        ASSERT_TRUE(run) << size;
        std::vector<OrdovanRunNote> whole = notes();
        whole.resize(
            static_cast<std::size_t>(std::ranges::count_if(ends, [&](std::size_t end) { return end <= size; })));
        EXPECT_EQ(run->notes, whole) << size;
    }
}

TEST(RunRecord, AnyChangedByteOfTheIntentIsRefusedOrReadAsSomethingElse) {
    const std::string text = encoded(intent());
    for (std::size_t at = 0; at < text.size(); ++at) {
        std::string changed = text;
        changed[at] = '\x01';
        EXPECT_FALSE(OrdovanUnfinishedRun::decoded(changed)) << at;
    }
}

// Refused.

TEST(RunRecord, RefusesAnotherVersion) {
    const std::string text = encoded(intent());
    for (const auto& [version, number] : {std::pair{"0", 0}, std::pair{"2", 2}}) {
        const auto run =
            OrdovanUnfinishedRun::decoded(altered(text, "\"version\":1", std::string("\"version\":") + version));
        ASSERT_FALSE(run);
        EXPECT_EQ(std::get<OrdovanJournalError>(run.error()),
                  (OrdovanJournalError{OrdovanJournalError::Case::unsupportedVersion, number}));
    }
    EXPECT_THAT(refusal("{\"version\":2,\"unheard of\":[]}\n"), HasSubstr("format version 2"));
}

TEST(RunRecord, RefusesMoreItemsThanItMayHave) {
    const auto run = OrdovanUnfinishedRun::decoded(altered(encoded(intent()), "\"items\":2", "\"items\":1000001"));
    ASSERT_FALSE(run);
    EXPECT_EQ(std::get<OrdovanJournalError>(run.error()),
              (OrdovanJournalError{OrdovanJournalError::Case::tooLarge, 1'000'001}));
}

TEST(RunRecord, RefusesAnIntentThatContradictsItself) {
    const std::string text = encoded(intent());
    constexpr std::string_view value = "A value of the run record can not be.";
    constexpr std::string_view outside = "An output folder lies outside the folder of the run.";
    constexpr std::string_view destination = "An item of the run record has no destination, or one too many.";
    for (const auto& [from, to, reason] : std::vector<std::array<std::string_view, 3>>{
             {"\"items\":2", "\"items\":1", "\"end\" is missing."},
             {"\"items\":2", "\"items\":3", "\"bytes\" is missing."},
             {"\"items\":2", "\"items\":-1", value},
             {"{\"end\":2}", "{\"end\":1}", "The run record ends with another number of items than it begins with."},
             {"\"organize\"", "\"tidy\"", value},
             {"\"organize\"", "\"trash\"", destination},
             {"\"root\":\"/r\"", "\"root\":\"/\"", value},
             {"\"root\":\"/r\"", "\"root\":\"/r/../s\"", value},
             {"\"root\":\"/r\"", "\"root\":\"r\"", value},
             {"[\"/r/ordovan+\"]", "[\"/s/ordovan+\"]", outside},
             {"[\"/r/ordovan+\"]", "[\"/r/../s\"]", outside},
             {"[\"/r/ordovan+\"]", "[\"/r\"]", outside},
             {"[\"/r/usb\"]", "[\"/media/usb\"]", "A volume lies outside the folder of the run."},
             {"[\"/r/usb\"]", "[\"/r\"]", "A volume lies outside the folder of the run."},
             {"\"from\":\"a.pdf\"", "\"from\":\"\"", value},
             {"\"to\":\"ordovan+/Documents/a.pdf\"", "\"to\":\"\"", destination},
             {"\"bytes\":5", "\"bytes\":-2", value},
             {"\"names\":1", "\"names\":-1", value},
             {"\"hash\":\"\"", "\"hash\":\"ABC\"", value},
             {"01234567-89AB", "01234567-89AX", value},
         }) {
        EXPECT_EQ(refusal(altered(text, from, to)), reason) << from << " -> " << to;
    }
}

TEST(RunRecord, RefusesALineThatIsTooLongToBeItsOwn) {
    EXPECT_EQ(refusal(std::string(70'000, ' ')), "A line of the run record is too long.");
}

// Notes.

TEST(RunRecord, EndsItsNotesAtTheFirstThatCanNotBe) {
    const std::string head = encoded(intent());
    std::string good;
    notes()[0].appendTo(good, intent());
    std::string bad;
    notes()[1].appendTo(bad, intent());
    for (const auto& [from, to] : std::vector<std::pair<std::string_view, std::string_view>>{
             {"\"item\":1", "\"item\":2"},
             {"\"item\":1", "\"item\":-1"},
             {"\"begun\"", "\"gone\""},
             {"\"begun\"", "\"done\""},  // only the Trash chooses a place
             {"\"bytes\":6", "\"bytes\":-6"},
             {"\"bytes\":6", "\"bytes\":\"6\""},
             {hashB, "bb"},
             {"ordovan+/Documents/.b.pdf", "ordovan+/.b.pdf"},  // not beside the destination
             {".ordovan-partial-", ".ordovan-"},
             {"{", ""},
         }) {
        const auto run = OrdovanUnfinishedRun::decoded(head + good + altered(bad, from, to) + good);
        ASSERT_TRUE(run) << from;
        EXPECT_THAT(run->notes, ElementsAre(notes()[0])) << from << " -> " << to;
    }
}

TEST(RunRecord, TellsOfAClaimWithAHiddenNameBesideTheSourceOrNone) {
    OrdovanRunNote claim = notes()[1];
    claim.kind = NoteKind::claimed;
    claim.path = {};
    EXPECT_THAT(OrdovanUnfinishedRun::decoded(encoded(intent(), {claim}))->notes, ElementsAre(claim));
    const Url hidden = OrdovanPartialName::beside(Url::file(intent().items[claim.item].source));
    claim.path = hidden.sharedPath();
    EXPECT_THAT(OrdovanUnfinishedRun::decoded(encoded(intent(), {claim}))->notes, ElementsAre(claim));
    claim.path = Url::file(intent().items[claim.item].source).sharedPath();
    EXPECT_THAT(OrdovanUnfinishedRun::decoded(encoded(intent(), {claim}))->notes, IsEmpty()) << "not hidden";
    claim.path = notes()[1].path;
    EXPECT_THAT(OrdovanUnfinishedRun::decoded(encoded(intent(), {claim}))->notes, IsEmpty());
}

TEST(RunRecord, EndsItsNotesAtARenameThatCanNotBe) {
    const std::string head = encoded(intent(), {notes()[0]});
    for (const char* line : {"{\"bytes\":5,\"hash\":\"aa\",\"renamed\":1}\n", "{\"bytes\":5,\"renamed\":1}\n"}) {
        const auto run = OrdovanUnfinishedRun::decoded(head + line + head);
        ASSERT_TRUE(run);
        EXPECT_THAT(run->notes, SizeIs(1)) << line;
    }
    for (const char* item : {"2", "-1", "\"0\"", "0.5"}) {
        const auto run =
            OrdovanUnfinishedRun::decoded(head + "{\"bytes\":5,\"hash\":\"" + hashA + "\",\"renamed\":" + item + "}\n");
        ASSERT_TRUE(run);
        EXPECT_THAT(run->notes, SizeIs(1)) << item;
    }
}

TEST(RunRecord, DoesNotTakeANameForARename) {
    OrdovanRunIntent odd = intent();
    odd.items[0].destination = "/r/ordovan+/\"renamed\"/a.pdf";
    OrdovanRunNote begun = notes()[1];
    begun.item = 0;
    begun.path = "/r/ordovan+/\"renamed\"/.a.pdf.ordovan-partial-00000000-0000-4000-8000-000000000000";
    const auto run = OrdovanUnfinishedRun::decoded(encoded(odd, {begun}));
    ASSERT_TRUE(run);
    EXPECT_THAT(run->notes, ElementsAre(begun));
}

TEST(RunRecord, EndsItsNotesWhereAPowerCutLeftZeros) {
    const std::string zeros(4096, '\0');
    const std::string text = encoded(intent(), notes());
    for (const std::string& tail : {zeros, zeros + "\n", zeros + text.substr(text.rfind('{'))}) {
        const auto run = OrdovanUnfinishedRun::decoded(text + tail);
        ASSERT_TRUE(run);
        EXPECT_EQ(run->notes, notes());
    }
}

TEST(RunRecord, EndsItsNotesAtALineThatIsTooLong) {
    const std::string head = encoded(intent(), {notes()[0]});
    const auto run = OrdovanUnfinishedRun::decoded(head + std::string(70'000, ' ') + "\n" + encoded(intent()));
    ASSERT_TRUE(run);
    EXPECT_THAT(run->notes, SizeIs(1));
}

TEST(RunRecord, TellsOfPlacesInTheTrash) {
    OrdovanRunIntent trash = intent();
    trash.kind = Kind::trash;
    trash.outputRoots.clear();
    trash.items = {item("/r/a.pdf", "")};
    OrdovanRunNote done = notes()[0];
    done.path = "/home/user/.local/share/Trash/files/a.pdf";
    const auto run = OrdovanUnfinishedRun::decoded(encoded(trash, {done, notes()[0]}));
    ASSERT_TRUE(run);
    EXPECT_EQ(run->intent, trash);
    EXPECT_THAT(run->notes, ElementsAre(done));
    done.path = "/home/user/Documents/a.pdf";
    const auto elsewhere = OrdovanUnfinishedRun::decoded(encoded(trash, {done}));
    ASSERT_TRUE(elsewhere);
    EXPECT_THAT(elsewhere->notes, IsEmpty());
}

TEST(RunRecord, OfNothingIsReadAsSuch) {
    OrdovanRunIntent none = intent();
    none.items.clear();
    const auto run = OrdovanUnfinishedRun::decoded(encoded(none));
    ASSERT_TRUE(run);
    EXPECT_THAT(run->intent.items, IsEmpty());
}

TEST(RunRecord, StopsWritingWhenItIsToldTo) {
    int pieces = 0;
    EXPECT_FALSE(intent().encode([&](std::string_view) { return ++pieces < 1; }));
    EXPECT_EQ(pieces, 1);
}

TEST(RunRecord, IsWrittenInPiecesAndStopsAtEachWhenItIsToldTo) {
    OrdovanRunIntent large = intent();
    for (int i = 0; i < 10'000; ++i) large.items.push_back(large.items.front());
    const auto piecesUntil = [&](int last) {
        int pieces = 0;
        const bool isWhole = large.encode([&](std::string_view) { return ++pieces < last; });
        EXPECT_EQ(isWhole, pieces < last);
        return pieces;
    };
    const int all = piecesUntil(1'000'000);
    EXPECT_GT(all, 1);
    for (int last = 1; last <= all; ++last) EXPECT_EQ(piecesUntil(last), last);
    const auto run = OrdovanUnfinishedRun::decoded(encoded(large));
    ASSERT_TRUE(run);
    EXPECT_EQ(run->intent, large);
}

}  // namespace
