#include "tests/cli/CommandLine.h"

#include <gtest/gtest.h>

#include <string>

using namespace ordovan::test;

TEST(PreviewExport, WritesMarkdownWithTheSelection) {
    const Home home;
    home.write("a.pdf", "1");
    home.write("b.png", "1");
    const std::string file = home.folder.path("plan.md");
    const Finished run = home.run({"preview", "--only=Images", "--export", file});
    EXPECT_EQ(home.folder.read("plan.md"),
              "# ordovan+ plan — Downloads\n\n- Proposed: 2 (selected: 1)\n- Need review: 0\n- Skipped: 0\n\n"
              "Preview only — nothing has been moved.\n\n| Selected | File | Goes to |\n|---|---|---|\n"
              "| no | a.pdf | ordovan+/Documents |\n| yes | b.png | ordovan+/Images |\n\n");
    EXPECT_EQ(run.err, "Saved the preview in \"" + file + "\".\n");
    EXPECT_EQ(run.status, 0);
}

TEST(PreviewExport, WritesCsvAndStillPrintsTheResult) {
    const Home home;
    home.write("a.pdf", "1");
    const Finished run = home.run({"preview", "--json", "--quiet", "--export", home.folder.path("plan.CSV")});
    EXPECT_EQ(home.folder.read("plan.CSV"),
              "selected,file,destination_folder,status\r\nyes,\"a.pdf\",\"Documents\",proposed\r\n");
    EXPECT_EQ(run.json().at("status"), "1 proposed · 0 need review");
    EXPECT_EQ(run.err, "");
}

TEST(PreviewExport, NeverReplacesAFile) {
    const Home home;
    home.folder.write("plan.md", "mine");
    home.folder.makeLink("dangling.md", "nowhere");
    for (const char* name : {"plan.md", "dangling.md"}) {
        const Finished run = home.run({"preview", "--export", home.folder.path(name)});
        EXPECT_EQ(run.err, "error: \"" + home.folder.path(name) + "\" exists already and was left as it is.\n");
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(run.status, 3);
    }
    EXPECT_EQ(home.folder.read("plan.md"), "mine");
    EXPECT_FALSE(home.folder.has("nowhere"));
}

TEST(PreviewExport, TellsThatItCouldNotBeSaved) {
    const Home home;
    const Finished run = home.run({"preview", "--json", "--export", home.folder.path("none/plan.md")});
    const std::string sentence =
        "\"" + home.folder.path("none/plan.md") + "\" couldn't be made: No such file or directory.";
    EXPECT_EQ(text(run.json().at("error")), sentence);
    EXPECT_EQ(run.err, "error: " + sentence + "\n");
    EXPECT_EQ(run.status, 3);
}
