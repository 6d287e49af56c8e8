#include "OrdovanApp/controller/RecoverySurvey.h"

#include "OrdovanCore/testing/MemoryFileSystem.h"
#include "tests/support/QtTestMain.h"

#include <gmock/gmock.h>

#include <memory>
#include <optional>
#include <string>

using ordovan::RecoverySurvey;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using enum RecoverySurvey::State;

namespace {

class RecoverySurveyTest : public ::testing::Test {
protected:
    RecoverySurvey survey(const std::optional<Url>& folder) {
        return RecoverySurvey::of(folder, std::make_shared<const OrdovanJournal>(journal),
                                  std::make_shared<const OrdovanTrashRecord>(trash), memory);
    }
    void organized(const std::string& source, const std::string& destination) {
        journal.entries.emplace_back(source, destination, true, 1, "", "");
    }
    void trashed(const std::string& original, const std::string& place) {
        trash.entries.emplace_back(original, place, 1, "");
    }

    ordovan::testing::MemoryFileSystem memory;
    OrdovanJournal journal;
    OrdovanTrashRecord trash;
    const Url root = Url::file("/r");
};

TEST_F(RecoverySurveyTest, TellsWhichOrganizedFilesAreThere) {
    memory.write("/r/ordovan+/Documents/a.pdf", "1");
    memory.write("/r/Organized/old.pdf", "1");
    memory.makeDirectory("/r/ordovan+/Documents/folder");
    organized("/r/a.pdf", "/r/ordovan+/Documents/a.pdf");
    organized("/r/old.pdf", "/r/Organized/old.pdf");
    organized("/r/folder", "/r/ordovan+/Documents/folder");
    organized("/r/gone.pdf", "/r/ordovan+/Documents/gone.pdf");
    EXPECT_THAT(survey(root).organized, ElementsAre(present, present, missing, missing));
}

TEST_F(RecoverySurveyTest, TellsWhichPlacesUndoWillRefuse) {
    memory.write("/r/ordovan+/a.pdf", "1");
    memory.write("/r/elsewhere/a.pdf", "1");
    memory.link("/r/ordovan+/link", "/r/elsewhere");
    organized("/r/a.pdf", "/r/elsewhere/a.pdf");
    organized("/r/a.pdf", "/r/ordovan+/link/a.pdf");
    organized("/r/../a.pdf", "/r/ordovan+/a.pdf");
    organized("/other/a.pdf", "/r/ordovan+/a.pdf");
    EXPECT_THAT(survey(root).organized, ElementsAre(refused, refused, refused, refused));
}

TEST_F(RecoverySurveyTest, TellsWhichTrashedFilesAreThereAndWhichCameFromElsewhere) {
    memory.write("/t/Trash/files/a.pdf", "1");
    memory.write("/t/a.pdf", "1");
    trashed("/r/a.pdf", "/t/Trash/files/a.pdf");
    trashed("/r/b.pdf", "/t/Trash/files/b.pdf");
    trashed("/r/c.pdf", "/t/a.pdf");
    trashed("/r/d.pdf", "/t/Trash/files/../../a.pdf");
    trashed("/s/e.pdf", "/t/Trash/files/a.pdf");
    EXPECT_THAT(survey(root).trashed, ElementsAre(present, missing, refused, refused, elsewhere));
}

TEST_F(RecoverySurveyTest, WithoutAFolderEverythingIsFromElsewhere) {
    organized("/r/a.pdf", "/r/ordovan+/a.pdf");
    trashed("/r/a.pdf", "/t/Trash/files/a.pdf");
    const RecoverySurvey found = survey(std::nullopt);
    EXPECT_THAT(found.organized, ElementsAre(elsewhere));
    EXPECT_THAT(found.trashed, ElementsAre(elsewhere));
}

TEST_F(RecoverySurveyTest, HasTheNamesFromTheLastToTheFirstWithoutTheFolder) {
    organized("/r/a.pdf", "/r/ordovan+/Documents/a.pdf");
    organized("/r/b.pdf", "/r/ordovan+/Documents/b.pdf");
    trashed("/r/sub/c.mov", "/t/Trash/files/c.mov");
    trashed("/other/r/d.mov", "/t/Trash/files/d.mov");
    const SearchIndex names = RecoverySurvey::namesOf(root, &journal, trash);
    EXPECT_EQ(names.size(), 4U);
    EXPECT_THAT(names.rowsMatching(QStringLiteral("b.pdf")), ElementsAre(0));
    EXPECT_THAT(names.rowsMatching(QStringLiteral("ordovan+/documents")), ElementsAre(0, 1));
    EXPECT_THAT(names.rowsMatching(QStringLiteral("/r/")), ElementsAre(2));
    EXPECT_THAT(names.rowsMatching(QStringLiteral("sub")), ElementsAre(3));
    EXPECT_EQ(RecoverySurvey::namesOf(root, nullptr, {}).size(), 0U);
}

TEST_F(RecoverySurveyTest, OfNoJournalAndAnEmptyRecordIsEmpty) {
    const auto found = RecoverySurvey::of(root, nullptr, std::make_shared<const OrdovanTrashRecord>(trash), memory);
    EXPECT_THAT(found.organized, IsEmpty());
    EXPECT_THAT(found.trashed, IsEmpty());
}

}  // namespace
