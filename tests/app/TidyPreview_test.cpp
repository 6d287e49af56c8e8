#include "OrdovanApp/controller/SystemEnvironment.h"
#include "tests/support/QtTestMain.h"
#include "tests/support/TempFolder.h"
#include "tests/support/TidyWorld.h"

#include <gmock/gmock.h>

#include <cstddef>
#include <cstdlib>
#include <string>
#include <vector>

using ordovan::test::TempFolder;
using ordovan::testing::build;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::SizeIs;
using ::testing::UnorderedElementsAre;
using Phase = TidyViewModel::Phase;

namespace {

class TidyPreview : public ordovan::test::TidyWorld {};

constexpr const char* unreadableFolder = "We couldn't read that folder. Check permissions and try again.";

TEST_F(TidyPreview, BeginsIdle) {
    const auto model = make();
    EXPECT_EQ(model->phase(), Phase());
    EXPECT_EQ(model->status().pulseSummary(), "No folder selected");
    EXPECT_FALSE(model->rootURL());
    EXPECT_FALSE(model->plan());
}

TEST_F(TidyPreview, ShowsWhereEveryFileWouldGo) {
    tree({"b.pdf = b", "a.jpg = a"});
    const auto model = make();
    model->chooseFolder(Url::file("/r"));
    EXPECT_EQ(model->phase().kind, Phase::Case::scanning);
    EXPECT_FALSE(model->plan());
    tasks.finish();
    EXPECT_EQ(model->phase().kind, Phase::Case::ready);
    EXPECT_THAT(proposed(*model), ElementsAre("b.pdf -> ordovan+/Documents/b.pdf", "a.jpg -> ordovan+/Images/a.jpg"));
    EXPECT_EQ(model->inventory()->fileCount(), 2u);
    EXPECT_EQ(model->status().pulseSummary(), "2 proposed · 0 need review");
}

TEST_F(TidyPreview, CountsConflictsAsInNeedOfReview) {
    tree({"a/x.pdf = 1", "b/x.pdf = 2", "y.pdf = 3"});
    EXPECT_EQ(previewed()->status().pulseSummary(), "1 proposed · 2 need review");
}

TEST_F(TidyPreview, WithoutAChosenFolderDoesNothing) {
    const auto model = make();
    model->preview();
    EXPECT_EQ(tasks.waiting(), 0u);
    EXPECT_EQ(model->phase(), Phase());
}

TEST_F(TidyPreview, ShowsAChosenFolderAtOnceAndItsPathWithoutLinksAsSoonAsThatIsKnown) {
    tree({"real/a.pdf = 1", "link -> real"});
    const auto model = make();
    model->chooseFolder(Url::file("/r/link"));
    EXPECT_EQ(model->rootURL(), Url::file("/r/link"));
    tasks.work();
    tasks.deliver();
    EXPECT_EQ(model->rootURL(), Url::file("/r/real"));
    EXPECT_EQ(model->planRoot(), Url::file("/r/real"));
    EXPECT_THAT(proposed(*model), ElementsAre("real/a.pdf -> real/ordovan+/Documents/a.pdf"));
}

TEST_F(TidyPreview, GivenUpBeforeItsPathIsKnownGoesBackToThePlanThere) {
    tree({"real/a.pdf = 1", "link -> real"});
    const auto model = make();
    model->chooseFolder(Url::file("/r/real"));
    tasks.finish();
    model->chooseFolder(Url::file("/r/link"));
    model->cancelPreview();
    EXPECT_EQ(model->phase().kind, Phase::Case::idle);
    tasks.finish();
    EXPECT_EQ(model->rootURL(), Url::file("/r/real"));
    EXPECT_EQ(model->phase().kind, Phase::Case::ready);
}

TEST_F(TidyPreview, DoesNotFollowALinkThatLaterTakesTheFoldersPlace) {
    tree({"a/x.pdf = 1", "b/y.pdf = 1"});
    const auto model = make();
    model->chooseFolder(Url::file("/r/a"));
    tasks.finish();
    memory.removeTree("/r/a");
    build(memory, "/r", {"a -> b"});
    model->preview();
    tasks.finish();
    EXPECT_EQ(model->rootURL(), Url::file("/r/a"));
}

TEST_F(TidyPreview, KeepsTheObjectsOfAFolderThatHasNotChanged) {
    tree({"a.pdf = 1"});
    const auto model = make({.indexesPlans = true});
    model->chooseFolder(Url::file("/r"));
    tasks.finish();
    const auto plan = model->plan();
    const auto index = model->planIndex();
    ASSERT_NE(index, nullptr);
    model->preview();
    tasks.finish();
    EXPECT_EQ(model->plan(), plan);
    EXPECT_EQ(model->planIndex(), index);
    memory.write("/r/b.pdf", "2");
    model->preview();
    tasks.finish();
    EXPECT_EQ(model->planIndex()->entries, (std::vector<std::uint32_t>{0, 1}));
}

TEST_F(TidyPreview, OfFilesAloneHasAnEmptyPlan) {
    tree({"a.pdf = 1", "b.pdf = 1", "ordovan+/Documents/c.pdf = 2"});
    const auto model = make();
    model->chooseFolder(Url::file("/r"), PreviewDepth::files);
    tasks.finish();
    EXPECT_EQ(model->phase().kind, Phase::Case::ready);
    EXPECT_THAT(model->inventory()->files, SizeIs(2));
    EXPECT_THAT(proposed(*model), IsEmpty());
    EXPECT_FALSE(model->organize());
    EXPECT_TRUE(model->findDuplicates());
    tasks.finish();
    EXPECT_THAT(model->duplicateReport()->groups, SizeIs(1));
}

TEST_F(TidyPreview, OfRecordsAloneDoesNotLookAtTheFolder) {
    tree({"x.pdf = 1", "y.pdf = 2"});
    const auto first = previewed();
    first->organize();
    tasks.finish();
    unreadable = {"/r"};
    const auto model = make();
    model->chooseFolder(Url::file("/r"), PreviewDepth::records);
    EXPECT_EQ(model->phase().kind, Phase::Case::scanning);
    tasks.finish();
    EXPECT_EQ(model->phase(), Phase());
    EXPECT_FALSE(model->inventory());
    EXPECT_THAT(model->recentFolders(), SizeIs(1));
    EXPECT_TRUE(model->undo());
    tasks.finish();
    EXPECT_EQ(memory.read("/r/x.pdf"), "1");
}

TEST_F(TidyPreview, OfRecordsAloneLeavesThePlanOfTheFolder) {
    tree({"x.pdf = 1"});
    const auto model = previewed();
    const auto plan = model->plan();
    model->chooseFolder(Url::file("/r"), PreviewDepth::records);
    tasks.finish();
    EXPECT_EQ(model->phase().kind, Phase::Case::ready);
    EXPECT_EQ(model->plan(), plan);
}

TEST_F(TidyPreview, KeepsTheBytesOfAFolderName) {
    const std::string path = "/caf\xe9 e\xcc\x81\n-rf";
    build(memory, path, {"x.pdf = 1"});
    const auto model = make();
    model->chooseFolder(Url::file(path));
    tasks.finish();
    EXPECT_EQ(model->rootURL()->path(), path);
    EXPECT_EQ(model->recentFolders().front().path(), path);
    EXPECT_EQ(model->inventory()->files.front().url.path(), path + "/x.pdf");
}

TEST_F(TidyPreview, OfASecondFolderWinsOverOneStillScanning) {
    tree({"x.pdf = 1"});
    build(memory, "/s", {"y.pdf = 2"});
    const auto model = make();
    model->chooseFolder(Url::file("/r"));
    model->chooseFolder(Url::file("/s"));
    tasks.work(1);  // the second is done first, then the first arrives late
    tasks.work(0);
    tasks.finish();
    EXPECT_EQ(model->rootURL(), Url::file("/s"));
    EXPECT_EQ(model->inventory()->files.front().url, Url::file("/s/y.pdf"));
    EXPECT_THAT(model->recentFolders(), ElementsAre(Url::file("/s")));
}

TEST_F(TidyPreview, StopsScanningAFolderThatWasGivenUp) {
    tree({"x.pdf = 1"});
    const auto model = make();
    model->chooseFolder(Url::file("/r"));
    model->preview();
    memory.clearLog();
    tasks.work();
    tasks.deliver();
    EXPECT_EQ(model->phase().kind, Phase::Case::scanning);
    EXPECT_THAT(memory.log(), Not(Contains("exists /r/ordovan+")));
}

TEST_F(TidyPreview, OfAnUnreadableFolderFailsAndLeavesTheLastPlan) {
    tree({"x.pdf = 1"});
    build(memory, "/s", {});
    const auto model = previewed();
    const auto plan = model->plan();
    const auto inventory = model->inventory();
    unreadable = {"/s"};
    model->chooseFolder(Url::file("/s"));
    tasks.finish();
    EXPECT_EQ(model->phase(), (Phase{Phase::Case::failed, unreadableFolder}));
    EXPECT_EQ(model->status().pulseSummary(), "Preview unavailable");
    EXPECT_EQ(model->plan(), plan);
    EXPECT_EQ(model->inventory(), inventory);
    EXPECT_THAT(model->recentFolders(), ElementsAre(Url::file("/r")));
}

TEST_F(TidyPreview, OfAFolderThatIsGoneFails) {
    const auto model = make();
    model->chooseFolder(Url::file("/gone"));
    tasks.finish();
    EXPECT_EQ(model->phase(), (Phase{Phase::Case::failed, unreadableFolder}));
}

TEST_F(TidyPreview, NeverOrganizesThePlanOfAnotherFolder) {
    tree({"x.pdf = 1"});
    build(memory, "/s", {"y.pdf = 2"});
    const auto model = previewed();
    model->chooseFolder(Url::file("/s"));
    EXPECT_FALSE(model->organize());
    EXPECT_FALSE(model->isApplying());
}

TEST_F(TidyPreview, DoesNotLookBehindALinkInPlaceOfTheOutputFolder) {
    tree({"x.pdf = 1", "../outside/Documents/x.pdf = theirs", "ordovan+ -> ../outside"});
    const auto model = previewed();
    ASSERT_EQ(model->plan()->proposals.size(), 1u);  // refused when its turn comes
    EXPECT_TRUE(model->plan()->conflicts.empty());
}

TEST_F(TidyPreview, IsPartialAtTheFileLimit) {
    for (std::size_t i = 0; i <= 50'000; ++i) memory.write("/r/" + std::to_string(i) + ".pdf", "");
    const auto model = previewed();
    EXPECT_TRUE(model->partialScan());
    EXPECT_EQ(model->inventory()->fileCount(), 50'000u);
    EXPECT_EQ(model->phase().kind, Phase::Case::ready);
}

TEST_F(TidyPreview, IsPartialWhenTheOutputFolderHoldsMoreThanItsLimit) {
    tree({"x.pdf = 1"});
    const auto model = previewed();
    EXPECT_FALSE(model->partialScan());
    for (std::size_t i = 0; i <= 200'000; ++i) memory.write("/r/ordovan+/Other/" + std::to_string(i), "");
    const ordovan::test::SignalCount changes(*model, &TidyViewModel::partialScanChanged);
    model->preview();
    tasks.finish();
    EXPECT_TRUE(model->partialScan());
    EXPECT_EQ(changes, 1);
}

TEST_F(TidyPreview, FollowsTheVolumesCase) {
    tree({"X.pdf = 1", "sub/x.pdf = 2"});
    EXPECT_THAT(previewed()->plan()->proposals, SizeIs(2));
    caseSensitive = false;
    const auto model = previewed();
    EXPECT_THAT(model->plan()->conflicts, SizeIs(2));
    EXPECT_TRUE(model->caseInsensitive());
}

TEST_F(TidyPreview, TakesAnUnknownVolumeForCaseInsensitive) {
    tree({"X.pdf = 1", "sub/x.pdf = 2"});
    caseSensitive = std::nullopt;
    EXPECT_THAT(previewed()->plan()->conflicts, SizeIs(2));
}

TEST_F(TidyPreview, NeverProposesWhatIsOrganizedAlready) {
    tree({"x.pdf = 1", "ordovan+/Documents/old.pdf = 2", "ordovan+/loose.jpg = 3"});
    EXPECT_THAT(proposed(*previewed()), ElementsAre("x.pdf -> ordovan+/Documents/x.pdf"));
}

TEST_F(TidyPreview, CountsEveryOrganizedFileAsAnOccupiedDestination) {
    tree({"x.pdf = 1", ".y.pdf = 2", "ordovan+/Documents/x.pdf = 3", "ordovan+/Documents/.y.pdf = 4"});
    settings.setIncludeHidden(true);
    const auto model = previewed();
    EXPECT_THAT(model->plan()->proposals, IsEmpty());
    ASSERT_THAT(model->plan()->conflicts, SizeIs(2));
    EXPECT_EQ(model->plan()->conflicts[0].kind, OrdovanPlanConflict::Kind::destinationOccupied);
}

TEST_F(TidyPreview, CountsFoldersLinksAndPackagesAsOccupiedDestinations) {
    tree({"a.pdf = 1", "b.pdf = 2", "c.pdf = 3", "ordovan+/Documents/a.pdf/", "ordovan+/Documents/b.pdf -> nowhere",
          "ordovan+/Documents/c.pdf/"});
    packages = {"/r/ordovan+/Documents/c.pdf"};
    EXPECT_THAT(previewed()->plan()->conflicts, SizeIs(3));
}

TEST_F(TidyPreview, UsesRulesSettingsAndTheTimeZone) {
    tree({"x.dmg = 1", ".hidden.pdf = 2"});
    memory.setModified("/r/x.dmg", 0);
    memory.setModified("/r/.hidden.pdf", 0);
    rules.add("dmg", "Apps");
    settings.setGroupByMonth(true);
    settings.setIncludeHidden(true);
    EXPECT_THAT(proposed(*previewed()), ElementsAre("x.dmg -> ordovan+/Apps/1970-01/x.dmg",
                                                    ".hidden.pdf -> ordovan+/Documents/1970-01/.hidden.pdf"));
}

TEST_F(TidyPreview, TakesUpChangedSettingsAtTheNextPreviewOnly) {
    tree({"x.pdf = 1"});
    const auto model = previewed();
    settings.setGroupByMonth(true);
    EXPECT_FALSE(model->groupByMonth());
    const ordovan::test::SignalCount changes(*model, &TidyViewModel::groupByMonthChanged);
    model->preview();
    EXPECT_TRUE(model->groupByMonth());
    EXPECT_EQ(changes, 1);
}

TEST_F(TidyPreview, CanDifferFromTheSettingsWithoutChangingThem) {
    tree({"x.pdf = 1", ".y.pdf = 2"});
    memory.setModified("/r/x.pdf", 0);
    settings.setIncludeHidden(true);
    const auto model = make();
    model->setSettingOverrides({.groupByMonth = true, .includeHidden = false});
    model->chooseFolder(Url::file("/r"));
    tasks.finish();
    EXPECT_THAT(proposed(*model), ElementsAre("x.pdf -> ordovan+/Documents/1970-01/x.pdf"));
    EXPECT_FALSE(settings.groupByMonth());
    EXPECT_TRUE(settings.includeHidden());
}

TEST_F(TidyPreview, LeavesTheFolderOfAnOlderVersionAloneWhenTheJournalNamesIt) {
    tree({"x.pdf = 1", "Organized/Documents/old.pdf = 2"});
    OrdovanJournal journal;
    journal.entries.emplace_back("/r/old.pdf", "/r/Organized/Documents/old.pdf", true, 1, "", "");
    memory.write(journalPath(), journal.encoded());
    EXPECT_THAT(proposed(*previewed()), ElementsAre("x.pdf -> ordovan+/Documents/x.pdf"));
}

TEST_F(TidyPreview, OrganizesAFolderThatMerelyBearsTheOlderName) {
    tree({"Organized/Documents/mine.pdf = 2"});
    EXPECT_THAT(proposed(*previewed()), ElementsAre("Organized/Documents/mine.pdf -> ordovan+/Documents/mine.pdf"));
}

TEST_F(TidyPreview, NeverLooksIntoTheProgramsOwnRecords) {
    locations.recordsFolder = Url::file("/r/data");
    tree({"x.pdf = 1", "data/history.json = {}"});
    EXPECT_THAT(proposed(*previewed()), ElementsAre("x.pdf -> ordovan+/Documents/x.pdf"));
}

TEST_F(TidyPreview, NeverLooksIntoTheTrashOfAVolumeWithHiddenFilesIncluded) {
    tree({"x.pdf = 1", ".Trash-1000/files/a.pdf = 2", ".Trash/1000/files/b.pdf = 3", ".Trashes/501/c.pdf = 4",
          "stick/.Trash-1000/info/d.pdf = 5", ".Trash-old/e.pdf = 6"});
    auto model = make();
    model->setSettingOverrides({.groupByMonth = {}, .includeHidden = true});
    model->chooseFolder(Url::file("/r"));
    tasks.finish();
    EXPECT_THAT(proposed(*model), UnorderedElementsAre("x.pdf -> ordovan+/Documents/x.pdf",
                                                       ".Trash-old/e.pdf -> ordovan+/Documents/e.pdf"));
}

TEST(SystemEnvironment, PassesOverTheHomeTrash) {
    const TempFolder home;
    home.makeFolder("real/Trash");
    home.makeLink("data", "real");
    ::setenv("XDG_DATA_HOME", home.path("data").c_str(), 1);
    SystemEnvironment environment({.recordsFolder = home.url("records"), .settingsFolder = home.url("settings")});
    const std::vector<Url> folders = environment.ports().ownFolders();
    ::unsetenv("XDG_DATA_HOME");
    EXPECT_THAT(folders, UnorderedElementsAre(home.url("records"), home.url("settings"), home.url("real/Trash")));
}

TEST_F(TidyPreview, GoesOnWithoutAJournalThatCanNotBeRead) {
    tree({"x.pdf = 1"});
    memory.write(journalPath(), "{\"version\": 1");
    const auto model = previewed();
    EXPECT_FALSE(model->recoverableJournal());
    EXPECT_EQ(model->phase().kind, Phase::Case::ready);
    EXPECT_EQ(memory.read(journalPath()), "{\"version\": 1");
}

TEST_F(TidyPreview, SendsNoSignalWhereNothingChanged) {
    tree({"x.pdf = 1"});
    const auto model = previewed();
    const auto plan = model->plan();
    const ordovan::test::SignalCount plans(*model, &TidyViewModel::planChanged);
    const ordovan::test::SignalCount inventories(*model, &TidyViewModel::inventoryChanged);
    const ordovan::test::SignalCount recents(*model, &TidyViewModel::recentFoldersChanged);
    const ordovan::test::SignalCount phases(*model, &TidyViewModel::phaseChanged);
    model->preview();
    tasks.finish();
    EXPECT_EQ(plans + inventories + recents, 0);
    EXPECT_EQ(phases, 2);  // scanning, ready
    EXPECT_EQ(model->plan(), plan);
}

TEST_F(TidyPreview, GivenUpGoesBackToThePlanThereWas) {
    tree({"x.pdf = 1"});
    const auto model = previewed();
    model->preview();
    model->cancelPreview();
    EXPECT_EQ(model->phase().kind, Phase::Case::ready);
    memory.write("/r/y.pdf", "2");
    tasks.finish();
    EXPECT_THAT(model->plan()->proposals, SizeIs(1));
}

TEST_F(TidyPreview, GivenUpWithoutAPlanIsIdle) {
    tree({"x.pdf = 1"});
    const auto model = make();
    model->cancelPreview();
    model->chooseFolder(Url::file("/r"));
    model->cancelPreview();
    tasks.finish();
    EXPECT_EQ(model->phase(), Phase());
    EXPECT_FALSE(model->plan());
}

TEST_F(TidyPreview, ArrivingAfterTheControllerIsGoneDoesNothing) {
    tree({"x.pdf = 1"});
    auto model = make();
    model->chooseFolder(Url::file("/r"));
    tasks.work();
    model.reset();
    tasks.deliver();
    EXPECT_EQ(tasks.waiting(), 0u);
}

TEST_F(TidyPreview, TellsHowManyFilesAndFoldersItHasMet) {
    tree(
        {"a.pdf = 1", ".hidden = 2", "link -> a.pdf", "sub/b.pdf = 3", "sub/c.pdf = 4", "sub/deep/", "ordovan+/d = 5"});
    const auto model = make();
    std::vector<std::pair<quint64, quint64>> told;
    QObject::connect(model.get(), &TidyViewModel::previewProgressed,
                     [&](quint64 files, quint64 folders) { told.emplace_back(files, folders); });
    model->chooseFolder(Url::file("/r"));
    tasks.finish();
    using Pair = std::pair<quint64, quint64>;
    EXPECT_THAT(told, ElementsAre(Pair(1, 2), Pair(3, 2)));  // at the first folder, and at the end
}

TEST_F(TidyPreview, TellsOfItsProgressTenTimesASecondAtMost) {
    tree({"a/x = 1", "b/x = 1", "c/x = 1", "d/x = 1"});
    const auto model = make();
    int told = 0;
    QObject::connect(model.get(), &TidyViewModel::previewProgressed, [&] { ++told; });
    model->chooseFolder(Url::file("/r"));
    tasks.finish();
    EXPECT_EQ(told, 2);
    told = 0;
    clockStep = 0.2;
    model->preview();
    tasks.finish();
    EXPECT_EQ(told, 6);  // the folder, the four in it, and the end
}

TEST_F(TidyPreview, TellsNothingMoreOnceItWasGivenUp) {
    tree({"x.pdf = 1"});
    const auto model = make();
    const ordovan::test::SignalCount told(*model, &TidyViewModel::previewProgressed);
    model->chooseFolder(Url::file("/r"));
    tasks.work();
    model->cancelPreview();
    tasks.finish();
    EXPECT_EQ(told, 0);
}

}  // namespace
