#include "tests/cli/CommandLine.h"

#include <gmock/gmock.h>

#include <ctime>

using namespace ordovan::test;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

namespace {

::time_t daysAgo(int days) {
    return ::time(nullptr) - days * 86'400;
}

}  // namespace

TEST(PreviewSettings, GroupByMonthIsSetForThisRunAlone) {
    const Home home;
    home.write("a.pdf", "1");
    const auto grouped = home.run({"preview", "--json", "--group-by-month"}).json();
    EXPECT_EQ(text(grouped.at("proposals").at(0).at("destination")), home.organized("Documents/2020-09/a.pdf"));
    EXPECT_THAT(home.run({"preview", "--group-by-month"}).out, HasSubstr("\nDocuments/2020-09  1 file, 1 byte\n"));
    EXPECT_EQ(home.run({"settings", "groupByMonth"}).out, "false\n");
    ASSERT_EQ(home.run({"settings", "groupByMonth", "true"}).status, 0);
    EXPECT_THAT(home.run({"preview"}).out, HasSubstr("\nDocuments/2020-09  1 file"));
    EXPECT_THAT(home.run({"preview", "--no-group-by-month"}).out, HasSubstr("\nDocuments  1 file"));
}

TEST(PreviewSettings, IncludeHiddenIsSetForThisRunAlone) {
    const Home home;
    home.write(".a.pdf", "1");
    EXPECT_THAT(home.run({"preview"}).out, EndsWith("0 proposed · 0 need review\n"));
    EXPECT_THAT(home.run({"preview", "--include-hidden"}).out, EndsWith("1 proposed · 0 need review\n"));
    ASSERT_EQ(home.run({"settings", "includeHidden", "on"}).status, 0);
    EXPECT_THAT(home.run({"preview"}).out, EndsWith("1 proposed · 0 need review\n"));
    EXPECT_THAT(home.run({"preview", "--no-include-hidden"}).out, EndsWith("0 proposed · 0 need review\n"));
}

TEST(PreviewSelection, OnlyTakesOneFolder) {
    const Home home;
    for (const char* name : {"a.pdf", "b.png", "c.png"}) home.write(name, "1");
    EXPECT_THAT(selectedSources(home, home.run({"preview", "--json", "--only", "Images"})),
                ElementsAre("b.png", "c.png"));
    EXPECT_THAT(selectedSources(home, home.run({"preview", "--json", "--only=Fonts"})), IsEmpty());
    const Finished text = home.run({"preview", "--only", "Images"});
    EXPECT_THAT(text.out, Not(HasSubstr("a.pdf")));
    EXPECT_THAT(text.out, EndsWith("1 proposed file left out\n3 proposed · 0 need review\n"));
}

TEST(PreviewSelection, OnlyTakesTheFolderOfARule) {
    const Home home;
    home.write("a.dmg", "1");
    home.write("b.pdf", "1");
    ASSERT_EQ(home.run({"rules", "add", "dmg", "Äpfel"}).status, 0);
    EXPECT_THAT(selectedSources(home, home.run({"preview", "--json", "--only", "A\xcc\x88pfel"})),
                ElementsAre("a.dmg"));
}

TEST(PreviewSelection, OnlyRefusesAFolderThatNothingCouldGoTo) {
    const Home home;
    home.write("a.pdf", "1");
    const Finished run = home.run({"preview", "--only", "documents"});
    EXPECT_EQ(run.err,
              "error: There is no folder named \"documents\": --only takes a built-in folder such as Images, or "
              "the folder of one of your rules.\n");
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.status, 2);
}

TEST(PreviewSelection, LeavesOutFilesAndWholeFolders) {
    Home home;
    for (const char* name : {"a.pdf", "b.pdf", "sub/c.pdf", "sub/deep/d.pdf", "subway/e.pdf"}) home.write(name, "1");
    home.workingFolder = home.download("sub");
    EXPECT_THAT(selectedSources(home, home.run({"preview", "--json", "--leave-out", home.download("a.pdf")})),
                ElementsAre("b.pdf", "sub/c.pdf", "sub/deep/d.pdf", "subway/e.pdf"));
    EXPECT_THAT(selectedSources(home, home.run({"preview", "--json", "--leave-out", home.download("sub/")})),
                ElementsAre("a.pdf", "b.pdf", "subway/e.pdf"));
    EXPECT_THAT(selectedSources(home, home.run({"preview", "--json", "--leave-out", "deep", "--leave-out=../b.pdf"})),
                ElementsAre("a.pdf", "sub/c.pdf", "subway/e.pdf"));
    EXPECT_THAT(selectedSources(home, home.run({"preview", "--json", "--leave-out", ".."})), IsEmpty());
}

TEST(PreviewSelection, LeavesOutAFileNamedThroughALink) {
    const Home home;
    home.write("a.pdf", "1");
    home.write("b.pdf", "1");
    home.folder.makeLink("way", "Downloads");
    EXPECT_THAT(selectedSources(home, home.run({"preview", "--json", "--leave-out", home.folder.path("way/a.pdf")})),
                ElementsAre("b.pdf"));
}

TEST(PreviewSelection, TellsComposedAndDecomposedNamesApart) {
    const Home home;
    home.write("e\xcc\x81.pdf", "1");
    home.write("\xc3\xa9.png", "1");
    EXPECT_THAT(selectedSources(home, home.run({"preview", "--json", "--leave-out", home.download("\xc3\xa9.png")})),
                ElementsAre("e\xcc\x81.pdf"));
    EXPECT_EQ(home.run({"preview", "--leave-out", home.download("\xc3\xa9.pdf")}).status, 2);
}

TEST(PreviewSelection, RefusesToLeaveOutWhatIsNotThere) {
    Home home;
    home.write("a.pdf", "1");
    home.folder.makeFolder("elsewhere");
    for (const char* path : {"nothing.pdf", "Downloads/a.pd", "elsewhere", ""}) {
        const Finished run = home.run({"preview", "--leave-out", path});
        EXPECT_EQ(run.err, "error: Nothing to leave out at \"" + std::string(path) +
                               "\": no file or folder of that name lies in the previewed folder.\n");
        EXPECT_EQ(run.status, 2);
    }
}

TEST(PreviewSelection, AcceptsLeavingOutAFileThatStaysAnyway) {
    const Home home;
    home.write("a/x.pdf", "1");
    home.write("b/x.pdf", "1");
    EXPECT_EQ(home.run({"preview", "--leave-out", home.download("a/x.pdf")}).status, 0);
}

TEST(PreviewSelection, AcceptsLeavingOutWhatWasNotScanned) {
    const Home home;
    home.write("a.pdf", "1");
    home.write(".hidden", "1");
    home.folder.makeFolder("Downloads/empty");
    home.folder.makeLink("Downloads/link", "nowhere");
    for (const char* name : {"empty", ".hidden", "link", ""}) {
        EXPECT_EQ(home.run({"preview", "--leave-out", home.download(name)}).status, 0) << name;
    }
}

TEST(PreviewSelection, OlderThanCountsDaysSinceTheLastChange) {
    const Home home;
    home.write("new.pdf", "1", daysAgo(0));
    home.write("week.pdf", "1", daysAgo(8));
    home.write("year.pdf", "1", daysAgo(400));
    EXPECT_THAT(selectedSources(home, home.run({"preview", "--json", "--older-than", "7"})),
                ElementsAre("week.pdf", "year.pdf"));
    EXPECT_THAT(selectedSources(home, home.run({"preview", "--json", "--older-than=30"})), ElementsAre("year.pdf"));
    EXPECT_THAT(selectedSources(home, home.run({"preview", "--json", "--older-than=9000"})), IsEmpty());
}

TEST(PreviewSelection, EveryOptionNarrowsIt) {
    const Home home;
    home.write("old.pdf", "1", daysAgo(90));
    home.write("old.png", "1", daysAgo(90));
    home.write("older.png", "1", daysAgo(90));
    home.write("new.png", "1", daysAgo(1));
    EXPECT_THAT(selectedSources(home, home.run({"preview", "--json", "--older-than=30", "--only=Images", "--leave-out",
                                                home.download("old.png")})),
                ElementsAre("older.png"));
}

TEST(PreviewSelection, LeavesUnfinishedDownloadsOutUnlessToldOtherwise) {
    const Home home;
    for (const char* name : {"a.pdf", "b.iso.part", "c.CrDownload"}) home.write(name, "1", daysAgo(90));
    EXPECT_THAT(selectedSources(home, home.run({"preview", "--json"})), ElementsAre("a.pdf"));
    EXPECT_THAT(selectedSources(home, home.run({"preview", "--json", "--older-than=30"})), ElementsAre("a.pdf"));
    EXPECT_THAT(selectedSources(home, home.run({"preview", "--json", "--include-partial"})),
                UnorderedElementsAre("a.pdf", "b.iso.part", "c.CrDownload"));
    EXPECT_THAT(home.run({"preview"}).out, HasSubstr("2 proposed files left out\n"
                                                     "2 unfinished downloads among them; --include-partial selects "
                                                     "them\n"));
}
