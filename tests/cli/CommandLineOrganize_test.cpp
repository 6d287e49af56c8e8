#include "tests/cli/CommandLine.h"

#include <gmock/gmock.h>

#include <fstream>
#include <iterator>

using namespace ordovan::test;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

TEST(OrganizeCommand, MovesFilesAndSaysWhereTo) {
    const Home home;
    home.write("a.pdf", "1");
    home.write("sub/b.pdf", "2");
    home.write("c.png", "3");
    const Finished run = home.run({"organize", "--yes"});
    EXPECT_EQ(run.out, "Organized 3 files in Downloads\n  Documents  2 files\n  Images  1 file\n");
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(home.read("ordovan+/Documents/b.pdf"), "2");
    EXPECT_FALSE(home.has("sub/b.pdf"));
}

TEST(OrganizeCommand, AndUndoGiveBackTheVeryTree) {
    const Home home;
    for (const char* name : {"a b.pdf", "-rf", "line\nend.txt", "sub/\"quoted\".png", "e\xcc\x81.pdf", "\xc3\xa9.txt",
                             "deep/er/still/x.zip", ".hidden", "no extension", "bad\xff.pdf"}) {
        home.write(name, std::string("content of ") + name);
    }
    home.write(std::string(251, 'n') + ".pdf", "long");
    home.folder.makeLink("Downloads/link.pdf", "a b.pdf");
    ASSERT_EQ(::link(home.download("a b.pdf").c_str(), home.download("second name.doc").c_str()), 0);
    ::chmod(home.download("-rf").c_str(), 0400);
    const auto before = home.tree();
    ASSERT_EQ(home.run({"organize", "--yes"}).status, 1);  // but for the name that is not UTF-8
    EXPECT_NE(home.tree(), before);
    const Finished undo = home.run({"undo", "--yes"});
    EXPECT_EQ(undo.out, "Restored 10 files in Downloads\n");
    EXPECT_EQ(undo.status, 0);
    EXPECT_TRUE(home.tree() == before);
}

TEST(OrganizeCommand, PrintsTheReportOfTheContractAsJson) {
    const Home home;
    home.write("a.pdf", "1");
    const Finished run = home.run({"organize", "--yes", "--json"});
    EXPECT_EQ(run.out, "{\"schema\": 1, \"outcomes\": [\n{\"source\": \"" + home.download("a.pdf") +
                           "\", \"destination\": \"" + home.organized("Documents/a.pdf") +
                           "\", \"status\": \"moved\", \"message\": \"Moved.\"}\n], \"moved\": 1, \"skipped\": 0, "
                           "\"failed\": 0, \"warning\": null, \"needReview\": 0, \"notEvaluated\": 0, "
                           "\"partialScan\": false, \"foldersLeftOut\": 0}\n");
    EXPECT_EQ(run.status, 0);
}

TEST(OrganizeCommand, TellsWhatItDidNotTouchBecauseNoPlaceWasProposedForIt) {
    const Home home;
    home.write("a.pdf", "1");
    home.write("one/x.pdf", "1");
    home.write("two/x.pdf", "2");
    home.write("bad\xff.pdf", "1");
    Finished run = home.run({"organize", "--yes"});
    EXPECT_EQ(run.out,
              "Organized 1 file in Downloads\n  Documents  1 file\nNot organized  1 file\n"
              "  bad\xef\xbf\xbd.pdf: Could not evaluate this file.\n"
              "2 files need review; \"preview\" shows which and why.\n");
    EXPECT_EQ(run.status, 1);
    run = home.run({"organize", "--yes", "--json"});
    EXPECT_EQ(run.json().at("needReview"), 2);
    EXPECT_EQ(run.json().at("notEvaluated"), 1);
    EXPECT_EQ(run.status, 1);
}

TEST(OrganizeCommand, IsDoneWhereFilesOnlyNeedReview) {
    const Home home;
    home.write("one/x.pdf", "1");
    home.write("two/x.pdf", "2");
    const Finished run = home.run({"organize", "--yes"});
    EXPECT_EQ(run.out, "Nothing to organize\n2 files need review; \"preview\" shows which and why.\n");
    EXPECT_EQ(run.status, 0);
}

TEST(OrganizeCommand, TellsThatPartOfTheFolderWasNotSeen) {
    Home home;
    home.write("a.pdf", "1");
    home.write("closed/b.pdf", "1");
    home.write("1/2/3/4/5/6/7/8/9/10/11/12/13/14/15/16/17/c.pdf", "1");
    giveToUnprivileged(home.folder.path());
    ::chmod(home.download("closed").c_str(), 0);
    home.runsUnprivileged = true;
    const Finished run = home.run({"organize", "--yes", "--json"});
    EXPECT_EQ(run.err,
              "warning: 2 folders left out:\n"
              "  1/2/3/4/5/6/7/8/9/10/11/12/13/14/15/16/17: too deep\n  closed: could not be read\n");
    EXPECT_EQ(run.json().at("moved"), 1);
    EXPECT_EQ(run.json().at("foldersLeftOut"), 2);
    EXPECT_EQ(run.status, 1);
}

TEST(OrganizeCommand, MovesOnlyWhatIsSelected) {
    const Home home;
    for (const char* name : {"a.pdf", "b.png", "c.png"}) home.write(name, "1");
    const Finished run =
        home.run({"organize", "--yes", "--json", "--only=Images", "--leave-out", home.download("c.png")});
    EXPECT_THAT(column(run.json().at("outcomes"), "source"), ElementsAre(home.download("b.png")));
    EXPECT_TRUE(home.has("a.pdf"));
    EXPECT_TRUE(home.has("c.png"));
}

TEST(OrganizeCommand, LeavesUnfinishedDownloadsWhereTheyAreUnlessToldOtherwise) {
    const Home home;
    home.write("a.pdf", "1");
    home.write("b.iso.part", "1");
    ASSERT_EQ(home.run({"organize", "--yes"}).status, 0);
    EXPECT_FALSE(home.has("a.pdf"));
    EXPECT_TRUE(home.has("b.iso.part"));
    ASSERT_EQ(home.run({"organize", "--yes", "--include-partial"}).status, 0);
    EXPECT_TRUE(home.has("ordovan+/Other/b.iso.part"));
}

TEST(OrganizeCommand, UsesTheOverridesOfThisRun) {
    const Home home;
    home.write(".a.pdf", "1");
    ASSERT_EQ(home.run({"organize", "--yes", "--group-by-month", "--include-hidden"}).status, 0);
    EXPECT_TRUE(home.has("ordovan+/Documents/2020-09/.a.pdf"));
    EXPECT_EQ(home.run({"settings", "--json"}).out,
              "{\"schema\": 1, \"groupByMonth\": false, \"includeHidden\": false, \"theme\": \"lagoon\"}\n");
}

TEST(OrganizeCommand, WithNothingToDoIsDone) {
    const Home home;
    const Finished text = home.run({"organize", "--yes"});
    EXPECT_EQ(text.out, "Nothing to organize\n");
    EXPECT_EQ(text.status, 0);
    const Finished json = home.run({"organize", "--yes", "--json"});
    EXPECT_EQ(json.out,
              "{\"schema\": 1, \"outcomes\": [], \"moved\": 0, \"skipped\": 0, \"failed\": 0, \"warning\": null, "
              "\"needReview\": 0, \"notEvaluated\": 0, \"partialScan\": false, \"foldersLeftOut\": 0}\n");
    EXPECT_EQ(json.status, 0);
    EXPECT_FALSE(home.has("ordovan+"));
}

TEST(OrganizeCommand, WithNothingSelectedSaysThatNothingWasMoved) {
    const Home home;
    home.write("a.pdf", "1");
    const Finished run = home.run({"organize", "--yes", "--only", "Images"});
    EXPECT_EQ(run.out, "No file is selected, so nothing was moved.\n");
    EXPECT_EQ(run.status, 0);
    const Finished asked = Terminal(home, {"organize", "--only", "Images"}).finish();
    EXPECT_THAT(asked.out, HasSubstr("1 proposed file left out\r\n"));
    EXPECT_THAT(asked.out, HasSubstr("No file is selected, so nothing was moved.\r\n"));
    EXPECT_TRUE(home.has("a.pdf"));
}

TEST(OrganizeCommand, RefusesAMistakeInTheSelectionBeforeAnythingMoves) {
    const Home home;
    home.write("a.pdf", "1");
    EXPECT_EQ(home.run({"organize", "--yes", "--leave-out", home.download("b.pdf")}).status, 2);
    EXPECT_EQ(home.run({"organize", "--yes", "--only", "Nowhere"}).status, 2);
    EXPECT_TRUE(home.has("a.pdf"));
}

TEST(OrganizeCommand, EndsWithStatus1WhenAFileCouldNotBeMoved) {
    Home home;
    home.write("kept/a.pdf", "1");
    home.write("b.pdf", "2");
    giveToUnprivileged(home.folder.path());
    ::chmod(home.download("kept").c_str(), 0555);
    home.runsUnprivileged = true;
    const Finished run = home.run({"organize", "--yes"});
    EXPECT_THAT(run.out, StartsWith("Organized 1 file in Downloads\n  Documents  1 file\nNot organized  1 file\n"
                                    "  kept/a.pdf: Could not move this file; it was left in place. "));
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(home.has("kept/a.pdf"));
    EXPECT_TRUE(home.has("ordovan+/Documents/b.pdf"));
}

TEST(OrganizeCommand, RefusesAFolderThatAnotherRunHolds) {
    const Home home;
    home.write("a.pdf", "1");
    const Held held(home.downloads());
    const Finished text = home.run({"organize", "--yes"});
    EXPECT_EQ(text.out, "");
    EXPECT_THAT(text.err, ::testing::MatchesRegex("error: [A-Z][^\n]*\\.\n"));
    EXPECT_EQ(text.status, 3);
    const Finished json = home.run({"organize", "--yes", "--json"});
    EXPECT_THAT(keys(json.json()), ElementsAre("schema", "error"));
    EXPECT_EQ(json.status, 3);
    EXPECT_TRUE(home.has("a.pdf"));
}

TEST(OrganizeCommand, TwoAtOnceLoseNoFileAndNoRecord) {
    const Home home;
    for (int number = 0; number < 200; ++number) home.write(std::to_string(number) + ".pdf", std::to_string(number));
    const auto before = home.tree();
    const auto silent = [] {
        const int nothing = ::open("/dev/null", O_RDWR);
        for (const int descriptor : {0, 1, 2}) ::dup2(nothing, descriptor);
    };
    const ::pid_t first = home.start({"organize", "--yes"}, silent);
    const ::pid_t second = home.start({"organize", "--yes"}, silent);
    const int statuses[] = {Home::await(first), Home::await(second)};
    for (const int status : statuses) EXPECT_THAT(status, ::testing::AnyOf(0, 1, 3));
    EXPECT_THAT(statuses, ::testing::Contains(0));
    const auto recorded = home.run({"recovery", "--json"}).json();
    EXPECT_EQ(recorded.at("organized").as_array().size(), 200U);
    ASSERT_EQ(home.run({"undo", "--yes"}).status, 0);
    EXPECT_TRUE(home.tree() == before);
}

TEST(OrganizeCommand, MovesNothingWhereNoRecordCouldBeSaved) {
    const Home home;
    home.write("a.pdf", "1");
    home.folder.write(".local/share/ordovan", "a file where the folder should be");
    const std::string sentence =
        "No record of the run could be saved, so nothing was moved. Check the permissions of \"" + home.records() +
        "\" and the free space there.";
    const Finished run = home.run({"organize", "--yes", "--json"});
    EXPECT_EQ(run.json().at("error"), boost::json::value(sentence));
    EXPECT_EQ(run.err, "warning: The folder of the records, \"" + home.records() +
                           "\", can't be reached.\nerror: " + sentence + "\n");
    EXPECT_EQ(run.status, 3);
    const std::string shown = Terminal(home, {"organize"}).finish().out;
    EXPECT_THAT(shown, HasSubstr(sentence));
    EXPECT_THAT(shown, Not(HasSubstr("[y/N]")));
    EXPECT_TRUE(home.has("a.pdf"));
}

TEST(OrganizeCommand, MovesNothingWhileAnotherProcessKeepsTheRecordsLocked) {
    const Home home;
    home.write("a.pdf", "1");
    std::filesystem::create_directories(home.records());
    const Held held(home.records());
    const Finished run = home.run({"organize", "--yes"});
    EXPECT_EQ(run.err, "error: Another ordovan+ is saving its records, so nothing was moved. Try again in a moment.\n");
    EXPECT_EQ(run.status, 3);
    EXPECT_TRUE(home.has("a.pdf"));
}

TEST(OrganizeCommand, EndsWithStatus1WhenTheRecordCouldNotBeSavedAllTheSame) {
    Home home;
    for (int number = 0; number < 100; ++number) home.write(std::to_string(number) + ".pdf", "1");
    home.prepare = limitFileSize;
    const Finished run = home.run({"organize", "--yes", "--json"});
    const std::string warning =
        "Files were organized, but the undo record could not be saved to disk. Undo is available until you quit.";
    EXPECT_EQ(run.json().at("warning"), boost::json::value(warning));
    EXPECT_EQ(run.json().at("moved"), 100);
    EXPECT_EQ(run.err, "warning: " + warning + "\n");
    EXPECT_EQ(run.status, 1);
}

TEST(OrganizeCommand, RefusesAnOutputFolderThatIsNone) {
    for (const bool isLink : {false, true}) {
        const Home home;
        home.write("a.pdf", "1");
        home.folder.makeFolder("elsewhere");
        if (isLink)
            home.folder.makeLink("Downloads/ordovan+", home.folder.path("elsewhere"));
        else
            home.write("ordovan+", "a file");
        const auto before = home.tree();
        for (const Home::Arguments& arguments : {Home::Arguments{"organize"}, Home::Arguments{"organize", "--yes"}}) {
            const std::string shown = Terminal(home, arguments).finish().out;
            EXPECT_THAT(shown, HasSubstr("\"" + home.download("ordovan+") + "\" is " +
                                         (isLink ? "a link, not a folder" : "no folder") +
                                         ", so nothing can be organized into it. Rename it or move it away first."));
            EXPECT_THAT(shown, Not(HasSubstr("[y/N]")));
        }
        EXPECT_EQ(home.run({"organize", "--yes", "--json"}).status, 3);
        EXPECT_TRUE(home.tree() == before);
        EXPECT_EQ(home.folder.count("elsewhere"), 0U);
    }
}

TEST(UndoCommand, TellsARecordThatCanNotBeReadFromNone) {
    const Home home;
    home.write("a.pdf", "1");
    ASSERT_EQ(home.run({"organize", "--yes"}).status, 0);
    std::filesystem::resize_file(home.journal(), 20);
    const Finished run = home.run({"undo", "--yes"});
    EXPECT_EQ(run.err, "error: The undo record of this folder couldn't be read.\n");
    EXPECT_EQ(run.status, 3);
    const Finished recovery = home.run({"recovery", "--json"});
    EXPECT_EQ(recovery.out, "{\"schema\": 1, \"organized\": [], \"trashed\": []}\n");
    EXPECT_EQ(recovery.err, "warning: The undo record of this folder couldn't be read.\n");
    EXPECT_EQ(recovery.status, 1);
    EXPECT_EQ(std::filesystem::file_size(home.journal()), 20U);
}

TEST(UndoCommand, WithoutARecordIsImpossible) {
    const Home home;
    const Finished run = home.run({"undo", "--yes"});
    EXPECT_EQ(run.err, "error: There is nothing to undo in this folder.\n");
    EXPECT_EQ(run.status, 3);
    EXPECT_EQ(home.run({"undo", "--yes", "--json"}).out,
              "{\"schema\": 1, \"error\": \"There is nothing to undo in this folder.\"}\n");
}

TEST(UndoCommand, PutsSingleFilesBack) {
    Home home;
    for (const char* name : {"a.pdf", "b.pdf", "c.pdf"}) home.write(name, name);
    ASSERT_EQ(home.run({"organize", "--yes"}).status, 0);
    home.workingFolder = home.organized("Documents");
    const Finished run = home.run({"undo", "--yes", "--entry", "a.pdf", "--entry", home.organized("Documents/c.pdf")});
    EXPECT_EQ(run.out, "Restored 2 files in Downloads\n");
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(home.read("a.pdf"), "a.pdf");
    EXPECT_FALSE(home.has("b.pdf"));
    const auto left = home.run({"recovery", "--json"}).json();
    EXPECT_THAT(column(left.at("organized"), "source"), ElementsAre(home.download("b.pdf")));
}

TEST(UndoCommand, RefusesAnEntryThatIsNotRecorded) {
    const Home home;
    home.write("a.pdf", "1");
    ASSERT_EQ(home.run({"organize", "--yes"}).status, 0);
    const Finished run =
        home.run({"undo", "--yes", "--entry", home.organized("Documents/a.pdf"), "--entry", home.download("b.pdf")});
    EXPECT_EQ(run.err, "error: No organized file is recorded at \"" + home.download("b.pdf") + "\".\n");
    EXPECT_EQ(run.status, 2);
    EXPECT_FALSE(home.has("a.pdf"));
    EXPECT_EQ(home.run({"undo", "--yes", "--entry="}).status, 2);
}

TEST(UndoCommand, LeavesAChangedFileAndSaysWhy) {
    const Home home;
    home.write("a.pdf", "1");
    home.write("b.pdf", "2");
    ASSERT_EQ(home.run({"organize", "--yes"}).status, 0);
    home.folder.write("Downloads/ordovan+/Documents/a.pdf", "X");
    const Finished run = home.run({"undo", "--yes"});
    EXPECT_EQ(run.out,
              "Restored 1 file in Downloads\n"
              "Not put back  1 file\n"
              "  ordovan+/Documents/a.pdf: File was modified after organizing; undo skipped to avoid data loss.\n");
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(home.run({"undo", "--yes", "--json"}).json().at("skipped"), 1);
}

TEST(UndoCommand, PrintsTheReportOfTheContractAsJson) {
    const Home home;
    home.write("a.pdf", "1");
    ASSERT_EQ(home.run({"organize", "--yes"}).status, 0);
    const auto object = home.run({"undo", "--yes", "--json"}).json();
    EXPECT_THAT(keys(object), ElementsAre("schema", "outcomes", "moved", "skipped", "failed", "warning"));
    EXPECT_EQ(text(object.at("outcomes").at(0).at("source")), home.download("a.pdf"));
    EXPECT_EQ(text(object.at("outcomes").at(0).at("destination")), home.organized("Documents/a.pdf"));
    EXPECT_EQ(object.at("outcomes").at(0).at("message"), "Restored.");
    EXPECT_EQ(object.at("moved"), 1);
}

TEST(UndoCommand, RefusesAFolderThatAnotherRunHolds) {
    const Home home;
    home.write("a.pdf", "1");
    ASSERT_EQ(home.run({"organize", "--yes"}).status, 0);
    const Held held(home.downloads());
    EXPECT_EQ(home.run({"undo", "--yes"}).status, 3);
    EXPECT_TRUE(home.has("ordovan+/Documents/a.pdf"));
}

TEST(RecoveryCommand, OfAnUntouchedFolderIsEmpty) {
    const Home home;
    EXPECT_EQ(home.run({"recovery"}).out, "Nothing to recover\n");
    const Finished json = home.run({"recovery", "--json"});
    EXPECT_EQ(json.out, "{\"schema\": 1, \"organized\": [], \"trashed\": []}\n");
    EXPECT_EQ(json.status, 0);
}

TEST(RecoveryCommand, TellsWhatCanGoBackAndWhatIsMissing) {
    const Home home;
    home.write("a.pdf", "1");
    home.write("old/b.pdf", "2");
    ASSERT_EQ(home.run({"organize", "--yes"}).status, 0);
    std::filesystem::remove(home.organized("Documents/b.pdf"));
    EXPECT_EQ(home.run({"recovery"}).out,
              "1 organized file can go back to where they came from.\n"
              "  ordovan+/Documents/a.pdf → a.pdf\n"
              "  ordovan+/Documents/b.pdf → old/b.pdf\n"
              "    Missing: deleted or moved since organizing. Undo will skip it.\n");
    const auto object = home.run({"recovery", "--json"}).json();
    EXPECT_THAT(keys(object), ElementsAre("schema", "organized", "trashed"));
    EXPECT_THAT(keys(object.at("organized").at(0).as_object()), ElementsAre("source", "destination", "present"));
    EXPECT_EQ(object.at("organized").at(0).at("present"), true);
    EXPECT_EQ(object.at("organized").at(1).at("present"), false);
    EXPECT_THAT(object.at("trashed").as_array(), IsEmpty());
}

TEST(RecoveryCommand, TellsWhatUndoWillRefuse) {
    const Home home;
    home.write("a.pdf", "1");
    home.write("b.pdf", "2");
    home.write("c.png", "3");
    ASSERT_EQ(home.run({"organize", "--yes"}).status, 0);
    home.folder.write("passwd", "3");
    std::string record = std::string();
    {
        std::ifstream in(home.journal());
        record.assign(std::istreambuf_iterator<char>(in), {});
    }
    const std::string image = home.organized("Images/c.png");
    record.replace(record.find(image), image.size(), home.folder.path("passwd"));
    std::ofstream(home.journal()) << record;
    std::filesystem::rename(home.organized("Documents"), home.folder.path("Documents"));
    home.folder.makeLink("Downloads/ordovan+/Documents", home.folder.path("Documents"));
    const std::string refused =
        "    The record names a place outside this folder or behind a link. Undo will refuse it.\n";
    EXPECT_EQ(home.run({"recovery"}).out,
              "0 organized files can go back to where they came from.\n"
              "  ordovan+/Documents/a.pdf → a.pdf\n" +
                  refused + "  ordovan+/Documents/b.pdf → b.pdf\n" + refused + "  " + home.folder.path("passwd") +
                  " → c.png\n" + refused);
    const auto organized = home.run({"recovery", "--json"}).json().at("organized").as_array();
    for (const auto& entry : organized) EXPECT_EQ(entry.at("present"), false);
    EXPECT_EQ(home.run({"undo", "--yes", "--json"}).json().at("skipped"), 3);
}

TEST(RecoveryCommand, OfAFolderThatCanNotBeReadIsImpossible) {
    Home home;
    giveToUnprivileged(home.folder.path());
    ::chmod(home.downloads().c_str(), 0);
    home.runsUnprivileged = true;
    const Finished run = home.run({"recovery"});
    EXPECT_EQ(run.err, "error: We couldn't read that folder. Check permissions and try again.\n");
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.status, 3);
}

TEST(RecoveryCommand, FindsAFolderByAnyNameOfIt) {
    const Home home;
    home.write("a.pdf", "1");
    home.folder.makeLink("way", "Downloads");
    ASSERT_EQ(home.run({"organize", "--yes", home.folder.path("way")}).status, 0);
    EXPECT_EQ(home.run({"recovery", "--json", home.downloads()}).json().at("organized").as_array().size(), 1U);
    EXPECT_EQ(home.run({"recovery", "--json", home.folder.path("way/")}).json().at("organized").as_array().size(), 1U);
}
