#include "OrdovanApp/controller/SearchIndex.h"

#include "tests/support/QtTestMain.h"

#include <gmock/gmock.h>

#include <initializer_list>

using namespace Qt::StringLiterals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

SearchIndex indexOf(std::initializer_list<std::string_view> texts) {
    SearchIndex index;
    index.reset(texts.size());
    for (const std::string_view text : texts) index.add(text);
    return index;
}

TEST(SearchIndex, FindsPartsOfNamesAndPathsInAnyCase) {
    const SearchIndex index = indexOf({"work/Lease 2026.pdf", "IMG_2031.HEIC", "leased.txt"});
    EXPECT_THAT(index.rowsMatching(u"LEASE"_s), ElementsAre(0, 2));
    EXPECT_THAT(index.rowsMatching(u"work/le"_s), ElementsAre(0));
    EXPECT_THAT(index.rowsMatching(u"203"_s), ElementsAre(1));
    EXPECT_THAT(index.rowsMatching(u"nothing"_s), IsEmpty());
}

TEST(SearchIndex, FindsEverythingWhereNothingIsAskedFor) {
    const SearchIndex index = indexOf({"a", "b"});
    EXPECT_THAT(index.rowsMatching(QString()), ElementsAre(0, 1));
    EXPECT_THAT(index.rowsMatching(u"  \t "_s), ElementsAre(0, 1));
    EXPECT_THAT(indexOf({}).rowsMatching(u"a"_s), IsEmpty());
}

TEST(SearchIndex, TakesNoNoticeOfAccentsEitherWay) {
    const SearchIndex index = indexOf({"Résumé.pdf", "Re\u0301sume\u0301.txt", "resume.doc", "ÄPFEL.txt"});
    EXPECT_THAT(index.rowsMatching(u"resume"_s), ElementsAre(0, 1, 2));
    EXPECT_THAT(index.rowsMatching(u"RÉSUMÉ"_s), ElementsAre(0, 1, 2));
    EXPECT_THAT(index.rowsMatching(u"äpf"_s), ElementsAre(3));
}

TEST(SearchIndex, FoldsLettersThatHaveSeveralForms) {
    const SearchIndex index = indexOf({"Straße.pdf", "ΣΊΣΥΦΟΣ.txt", "\uff26\uff55\uff4c\uff4c.txt", "\ufb01le"});
    EXPECT_THAT(index.rowsMatching(u"STRASSE"_s), ElementsAre(0));
    EXPECT_THAT(index.rowsMatching(u"σισυφος"_s), ElementsAre(1));
    EXPECT_THAT(index.rowsMatching(u"full"_s), ElementsAre(2));
    EXPECT_THAT(index.rowsMatching(u"file"_s), ElementsAre(3));
}

TEST(SearchIndex, WantsEveryWordInAnyOrder) {
    const SearchIndex index = indexOf({"work/Lease 2026.pdf", "Lease 2025.pdf", "2026/notes.txt"});
    EXPECT_THAT(index.rowsMatching(u"2026 lease"_s), ElementsAre(0));
    EXPECT_THAT(index.rowsMatching(u"pdf  lease"_s), ElementsAre(0, 1));
}

TEST(SearchIndex, NeverFindsAWordAcrossTwoRows) {
    const SearchIndex index = indexOf({"ab", "cd", "abab"});
    EXPECT_THAT(index.rowsMatching(u"bc"_s), IsEmpty());
    EXPECT_THAT(index.rowsMatching(QString(QChar(u'\0'))), ElementsAre(0, 1, 2));
    EXPECT_THAT(index.rowsMatching(u"ab"_s), ElementsAre(0, 2));
}

TEST(SearchIndex, FindsBytesThatAreNotUtf8AsReplacements) {
    const SearchIndex index = indexOf({"caf\xe9.txt", "cafe.txt"});
    EXPECT_THAT(index.rowsMatching(u"caf\ufffd"_s), ElementsAre(0));
}

TEST(SearchIndex, FindsNothingOfTextsThatWereReplaced) {
    SearchIndex index = indexOf({"old"});
    index.reset(1);
    index.add("new");
    EXPECT_THAT(index.rowsMatching(u"old"_s), IsEmpty());
    EXPECT_EQ(index.size(), 1U);
}

}  // namespace
