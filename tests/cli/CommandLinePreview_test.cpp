#include "tests/cli/CommandLine.h"

#include <gmock/gmock.h>

using namespace ordovan::test;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

TEST(PreviewText, GroupsFilesByDestinationFolder) {
    const Home home;
    home.write("notes.txt", "12345");
    home.write("old/report.pdf", std::string(1'234'567, 'x'), 0);
    home.write("pic.png", "1");
    const Finished run = home.run({"preview"});
    EXPECT_EQ(run.out, home.organized("").substr(0, home.organized("").size() - 1) +
                           "\n\n"
                           "Documents  2 files, 1.2 MB\n"
                           "    5 bytes  2020-09-13 12:26  notes.txt\n"
                           "     1.2 MB  1970-01-01 00:00  report.pdf  from old\n"
                           "\n"
                           "Images  1 file, 1 byte\n"
                           "     1 byte  2020-09-13 12:26  pic.png\n"
                           "\n"
                           "3 proposed · 0 need review\n");
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.status, 0);
}

TEST(PreviewText, TellsWhatNeedsReviewWhatIsSkippedAndWhatWasNotScanned) {
    const Home home;
    home.write("a/x.pdf", "1");
    home.write("b/x.pdf", "2");
    home.write(".secret", "3");
    home.write("bad\xff.pdf", "4");
    home.folder.makeLink("Downloads/link", "a/x.pdf");
    const Finished run = home.run({"preview"});
    EXPECT_EQ(run.out,
              "Needs review  2 files\n"
              "  a/x.pdf → Documents/x.pdf\n"
              "    Another file would be organized to the same location. Needs your decision; left untouched.\n"
              "  b/x.pdf → Documents/x.pdf\n"
              "    Another file would be organized to the same location. Needs your decision; left untouched.\n"
              "\n"
              "Skipped  1 file\n"
              "  bad\xef\xbf\xbd.pdf: Could not evaluate this file.\n"
              "\n"
              "Not scanned\n"
              "  1 hidden item\n"
              "  1 symbolic link, not followed\n"
              "\n"
              "Nothing to organize\n"
              "0 proposed · 2 need review\n");
    EXPECT_EQ(run.status, 0);
}

TEST(PreviewText, CountsWhatWasNotScanned) {
    const Home home;
    std::string deep = "a";
    for (int i = 0; i < 20; ++i) deep += "/a";
    home.write(deep + "/too deep.pdf", "1");
    for (const char* name : {"1", "2"}) {
        home.write(std::string(".") + name, "1");
        home.write(std::string(name) + ".app/x", "1");
        home.folder.makeLink(std::string("Downloads/link") + name, "a");
    }
    const std::string counts =
        "Not scanned\n  2 hidden items\n  2 symbolic links, not followed\n  2 packages, kept whole\n";
    EXPECT_THAT(home.run({"preview"}).out, HasSubstr(counts + "  1 folder too deep\n"));
    deep.replace(0, 1, "b");
    home.write(deep + "/too deep.pdf", "1");
    EXPECT_THAT(home.run({"preview"}).out, HasSubstr(counts + "  2 folders too deep\n"));
    std::filesystem::remove_all(home.download("2.app"));
    EXPECT_THAT(home.run({"preview"}).out, HasSubstr("  1 package, kept whole\n"));
}

TEST(PreviewText, NamesFoldersThatCouldNotBeRead) {
    Home home;
    home.write("closed/a.pdf", "1");
    giveToUnprivileged(home.folder.path());
    ::chmod(home.download("closed").c_str(), 0);
    home.runsUnprivileged = true;
    const Finished run = home.run({"preview"});
    EXPECT_EQ(run.out, "Not scanned\n  closed: could not be read\n\nNothing to organize\n0 proposed · 0 need review\n");
    EXPECT_EQ(run.status, 0);
}

TEST(PreviewText, KeepsHostileNamesOnTheirLine) {
    const Home home;
    home.write("a\nb\x1b[2J\t\\\x7f.pdf", "1");
    home.write(
        "\xe2\x80\xae"
        "fdp.exe",
        "1");
    home.write(
        "\xc2\x9b"
        "31m",
        "1");
    const Finished run = home.run({"preview"});
    EXPECT_THAT(run.out, HasSubstr("  a\\nb\\x1b[2J\\t\\\\\\x7f.pdf\n"));
    EXPECT_THAT(run.out, HasSubstr("  \\u202efdp.exe\n"));
    EXPECT_THAT(run.out, HasSubstr("  \\u009b31m\n"));
}

TEST(PreviewText, ShowsOrdinaryUnicodeAsItIs) {
    const Home home;
    home.write("Übersicht 数据 😀 e\xcc\x81.pdf", "1");
    EXPECT_THAT(home.run({"preview"}).out, HasSubstr("  Übersicht 数据 😀 e\xcc\x81.pdf\n"));
}

TEST(PreviewText, ShowsDatesOfTheLocalTimeZone) {
    Home home;
    home.write("winter.pdf", "1", 1'711'846'799);  // the second before the clocks went forward
    home.write("summer.pdf", "1", 1'711'846'800);
    home.write("early.pdf", "1", -86'400);
    for (const char* zone : {"Europe/Berlin", "CET-1CEST,M3.5.0,M10.5.0/3"}) {
        home.environment["TZ"] = zone;
        const std::string out = home.run({"preview"}).out;
        EXPECT_THAT(out, HasSubstr("2024-03-31 01:59  winter.pdf"));
        EXPECT_THAT(out, HasSubstr("2024-03-31 03:00  summer.pdf"));
        EXPECT_THAT(out, HasSubstr("1969-12-31 01:00  early.pdf"));
    }
}

TEST(PreviewText, HasNoColorsThroughAPipe) {
    const Home home;
    home.write("a.pdf", "1");
    EXPECT_THAT(home.run({"preview"}).out, Not(HasSubstr("\x1b")));
}

TEST(PreviewText, RoundsSizesToOneDecimal) {
    const Home home;
    home.write("a.pdf", std::string(999, 'x'));
    home.write("b.pdf", std::string(1000, 'x'));
    home.write("c.pdf", std::string(999'949, 'x'));
    home.write("d.pdf", std::string(999'950, 'x'));
    home.write("e.pdf", "");
    const std::string out = home.run({"preview"}).out;
    EXPECT_THAT(out, HasSubstr("  999 bytes  2020-09-13 12:26  a.pdf\n"));
    EXPECT_THAT(out, HasSubstr("     1.0 KB  2020-09-13 12:26  b.pdf\n"));
    EXPECT_THAT(out, HasSubstr("   999.9 KB  2020-09-13 12:26  c.pdf\n"));
    EXPECT_THAT(out, HasSubstr("     1.0 MB  2020-09-13 12:26  d.pdf\n"));
    EXPECT_THAT(out, HasSubstr("    0 bytes  2020-09-13 12:26  e.pdf\n"));
}

TEST(PreviewJson, HasTheMembersOfTheContractInTheirOrder) {
    const Home home;
    home.write("a/x.pdf", "12");
    home.write("b/x.pdf", "2");
    home.write("c.png", "345");
    home.write("bad\xff", "4");
    home.write(".hidden", "4");
    const auto object = home.run({"preview", "--json"}).json();
    EXPECT_THAT(keys(object), ElementsAre("schema", "root", "outputRoot", "caseInsensitive", "partialScan", "status",
                                          "scan", "proposals", "conflicts", "skipped"));
    EXPECT_THAT(keys(object.at("scan").as_object()), ElementsAre("files", "directories", "totalByteSize", "skipped"));
    EXPECT_THAT(keys(object.at("scan").at("skipped").at(0).as_object()), ElementsAre("path", "reason"));
    EXPECT_THAT(keys(object.at("proposals").at(0).as_object()),
                ElementsAre("id", "source", "destination", "category", "ruleFolder", "folderName", "explanation",
                            "byteSize", "modifiedEpoch", "selected"));
    EXPECT_THAT(keys(object.at("conflicts").at(0).as_object()),
                ElementsAre("id", "source", "destination", "kind", "message"));
    EXPECT_THAT(keys(object.at("skipped").at(0).as_object()), ElementsAre("source", "pathBase64", "reason"));
}

TEST(PreviewJson, CarriesTheWholePlan) {
    const Home home;
    home.write("a/x.pdf", "12");
    home.write("b/x.pdf", "2");
    home.write("c.png", "345");
    const auto object = home.run({"preview", "--json"}).json();
    EXPECT_EQ(object.at("schema"), 1);
    EXPECT_EQ(text(object.at("root")), home.downloads());
    EXPECT_EQ(text(object.at("outputRoot")), home.download("ordovan+"));
    EXPECT_EQ(object.at("caseInsensitive"), false);
    EXPECT_EQ(object.at("partialScan"), false);
    EXPECT_EQ(object.at("status"), "1 proposed · 2 need review");
    EXPECT_EQ(object.at("scan"), boost::json::parse(R"({"files":3,"directories":2,"totalByteSize":6,"skipped":[]})"));
    const auto& proposal = object.at("proposals").at(0);
    EXPECT_EQ(text(proposal.at("id")), home.download("c.png") + " -> " + home.organized("Images/c.png"));
    EXPECT_EQ(text(proposal.at("source")), home.download("c.png"));
    EXPECT_EQ(text(proposal.at("destination")), home.organized("Images/c.png"));
    EXPECT_EQ(proposal.at("category"), "Images");
    EXPECT_TRUE(proposal.at("ruleFolder").is_null());
    EXPECT_EQ(proposal.at("folderName"), "Images");
    EXPECT_EQ(proposal.at("explanation"), "File type .png grouped as Images. Preview only.");
    EXPECT_EQ(proposal.at("byteSize"), 3);
    EXPECT_EQ(proposal.at("modifiedEpoch"), 1'600'000'000);
    EXPECT_EQ(proposal.at("selected"), true);
    const auto& conflict = object.at("conflicts").at(1);
    EXPECT_EQ(text(conflict.at("id")), home.download("b/x.pdf") + "#duplicateDestination");
    EXPECT_EQ(conflict.at("kind"), "duplicateDestination");
}

TEST(PreviewJson, KeepsFractionsOfSeconds) {
    const Home home;
    home.write("a.pdf", "1");
    const ::timespec times[2] = {{1'600'000'000, 0}, {1'600'000'000, 250'000'000}};
    ::utimensat(AT_FDCWD, home.download("a.pdf").c_str(), times, 0);
    const auto object = home.run({"preview", "--json"}).json();
    EXPECT_EQ(object.at("proposals").at(0).at("modifiedEpoch"), 1'600'000'000.25);
}

TEST(PreviewJson, GivesTheBytesOfPathsThatAreNotUtf8) {
    const Home home;
    const std::vector<std::string> names = {"b\xff.pdf", "ba\xff.pdf",
                                            "bad\xff.pdf"};  // each another remainder by three
    for (const std::string& name : names) home.write(name, "4");
    const auto skipped = home.run({"preview", "--json"}).json().at("skipped").as_array();
    EXPECT_THAT(column(skipped, "source"), ::testing::Contains(home.download("bad\xef\xbf\xbd.pdf")));
    EXPECT_EQ(skipped.at(0).at("reason"), "Could not evaluate this file.");
    std::vector<std::string> decoded;
    for (const std::string& encoded : column(skipped, "pathBase64")) {
        home.folder.write("encoded", encoded);
        const std::string command = "base64 -d " + home.folder.path("encoded") + " > " + home.folder.path("decoded");
        ASSERT_EQ(std::system(command.c_str()), 0);
        decoded.push_back(home.folder.read("decoded"));
    }
    EXPECT_THAT(decoded, ::testing::UnorderedElementsAre(home.download(names[0]), home.download(names[1]),
                                                         home.download(names[2])));
}

TEST(PreviewJson, GivesTheBytesOfARootThatIsNotUtf8) {
    const Home home;
    home.folder.write("bad\xff/a.pdf", "1");
    const auto object = home.run({"preview", "--json", home.folder.path("bad\xff")}).json();
    EXPECT_THAT(keys(object),
                ElementsAre("schema", "root", "pathBase64", "outputRoot", "outputRootBase64", "caseInsensitive",
                            "partialScan", "status", "scan", "proposals", "conflicts", "skipped"));
    EXPECT_EQ(text(object.at("outputRoot")), home.folder.path("bad\xef\xbf\xbd/ordovan+"));
    home.folder.write("encoded", text(object.at("outputRootBase64")));
    const std::string command = "base64 -d " + home.folder.path("encoded") + " > " + home.folder.path("decoded");
    ASSERT_EQ(std::system(command.c_str()), 0);
    EXPECT_EQ(home.folder.read("decoded"), home.folder.path("bad\xff/ordovan+"));
}

TEST(PreviewJson, EscapesWhatJsonCanNotHold) {
    const Home home;
    home.write("a\"\\\n\x01.pdf", "1");
    EXPECT_EQ(text(home.run({"preview", "--json"}).json().at("proposals").at(0).at("source")),
              home.download("a\"\\\n\x01.pdf"));
}

TEST(PreviewJson, NamesTheRuleThatDecided) {
    const Home home;
    home.write("Setup.DMG", "1");
    ASSERT_EQ(home.run({"rules", "add", "dmg", "Apps"}).status, 0);
    const auto proposal = home.run({"preview", "--json"}).json().at("proposals").at(0);
    EXPECT_EQ(proposal.at("category"), "Installers");
    EXPECT_EQ(proposal.at("ruleFolder"), "Apps");
    EXPECT_EQ(proposal.at("folderName"), "Apps");
}

TEST(PreviewJson, ListsAreInPlanOrder) {
    const Home home;
    for (const char* name : {"file10.pdf", "File2.pdf", "file1.pdf", "b.png"}) home.write(name, "1");
    EXPECT_THAT(selectedSources(home, home.run({"preview", "--json"})),
                ElementsAre("file1.pdf", "File2.pdf", "file10.pdf", "b.png"));
}

TEST(PreviewFolder, IsTheUsersDownloadsByDefault) {
    Home home;
    home.write("a.pdf", "1");
    EXPECT_EQ(text(home.run({"preview", "--json"}).json().at("root")), home.downloads());
    home.folder.write("Geladen/b.pdf", "1");
    home.folder.write(".config/user-dirs.dirs", "XDG_DOWNLOAD_DIR=\"$HOME/Geladen\"\n");
    EXPECT_EQ(text(home.run({"preview", "--json"}).json().at("root")), home.folder.path("Geladen"));
}

TEST(PreviewFolder, HasToBeNamedWhereThereIsNoHome) {
    Home home;
    home.write("a.pdf", "1");
    for (const char* value : {"", "relative"}) {
        home.environment["HOME"] = value;
        const Finished run = home.run({"preview"});
        EXPECT_EQ(run.err,
                  "error: There is no telling where your Downloads folder is: the variable HOME holds no folder. "
                  "Name the folder.\n");
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(run.status, 3);
    }
}

TEST(PreviewFolder, HasToBeNamedWhereDownloadsIsSwitchedOff) {
    Home home;
    home.folder.write("letter.pdf", "1");
    home.folder.makeLink("way", ".");
    for (const char* place : {"$HOME/", "$HOME", "$HOME/way"}) {
        home.folder.write(".config/user-dirs.dirs", "XDG_DOWNLOAD_DIR=\"" + std::string(place) + "\"\n");
        const Finished run = home.run({"organize", "--yes"});
        EXPECT_EQ(run.err, "error: You have no Downloads folder; name the folder.\n") << place;
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(run.status, 3);
    }
    EXPECT_TRUE(home.folder.has("letter.pdf"));
}

TEST(PreviewFolder, IsFoundInAHomeWhoseNameIsNotUtf8) {
    Home home;
    home.folder.write("h\xff/Downloads/a.pdf", "1");
    home.environment["HOME"] = home.folder.path("h\xff");
    const Finished run = home.run({"preview", "--json"});
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(run.json().contains("pathBase64"));
}

TEST(PreviewFolder, MayBeRelativeAndReachedThroughALink) {
    Home home;
    home.write("a.pdf", "1");
    home.folder.makeLink("way", "Downloads");
    home.workingFolder = home.folder.path();
    EXPECT_EQ(text(home.run({"preview", "way/../way", "--json"}).json().at("root")), home.downloads());
}

TEST(PreviewFolder, MayBeAFileAddress) {
    const Home home;
    home.folder.write("a b/c.pdf", "1");
    EXPECT_EQ(text(home.run({"preview", "file://" + home.folder.path("a%20b"), "--json"}).json().at("root")),
              home.folder.path("a b"));
}

TEST(PreviewFolder, OfACurrentFolderThatIsGoneIsNotThere) {
    Home home;
    home.folder.makeFolder("gone");
    home.prepare = [&] {
        ::dup2(::open(home.folder.path("gone").c_str(), O_RDONLY | O_DIRECTORY), 20);
        ::rmdir(home.folder.path("gone").c_str());
    };
    home.workingFolder = "/proc/self/fd/20";
    const Finished run = home.run({"preview", "."});
    EXPECT_EQ(run.err, "error: There is no folder \".\": the current folder is gone.\n");
    EXPECT_EQ(run.status, 3);
}

TEST(PreviewFolder, ThatDoesNotExistIsToldAsTextAndAsJson) {
    const Home home;
    const Finished text = home.run({"preview", "/nowhere/at\nall"});
    EXPECT_EQ(text.out, "");
    EXPECT_EQ(text.err, "error: There is no folder \"/nowhere/at\\nall\".\n");
    EXPECT_EQ(text.status, 3);
    const Finished json = home.run({"preview", "/nowhere", "--json"});
    EXPECT_EQ(json.out, "{\"schema\": 1, \"error\": \"There is no folder \\\"/nowhere\\\".\"}\n");
    EXPECT_EQ(json.status, 3);
}

TEST(PreviewFolder, WarnsWhenNothingCouldBeOrganizedIntoIt) {
    const Home home;
    home.write("a.pdf", "1");
    home.write("ordovan+", "a file");
    const Finished run = home.run({"preview"});
    EXPECT_EQ(run.err, "warning: \"" + home.download("ordovan+") +
                           "\" is no folder, so nothing can be organized into it. Rename it or move it away first.\n");
    EXPECT_EQ(run.status, 0);
    std::filesystem::remove(home.download("ordovan+"));
    home.folder.makeLink("Downloads/ordovan+", home.folder.path());
    EXPECT_EQ(
        home.run({"preview"}).err,
        "warning: \"" + home.download("ordovan+") +
            "\" is a link, not a folder, so nothing can be organized into it. Rename it or move it away first.\n");
}

TEST(PreviewFolder, ThatIsAFileIsRefused) {
    const Home home;
    home.write("a.pdf", "1");
    const Finished run = home.run({"preview", home.download("a.pdf")});
    EXPECT_EQ(run.err, "error: \"" + home.download("a.pdf") + "\" is not a folder.\n");
    EXPECT_EQ(run.status, 3);
    EXPECT_EQ(home.run({"preview", home.download("a.pdf/b")}).status, 3);
}

TEST(PreviewFolder, ThatCanNotBeReadIsRefused) {
    Home home;
    giveToUnprivileged(home.folder.path());
    ::chmod(home.downloads().c_str(), 0);
    home.runsUnprivileged = true;
    for (const std::string& folder : {home.downloads(), home.download("below")}) {
        const Finished run = home.run({"preview", folder});
        EXPECT_EQ(run.err, "error: We couldn't read that folder. Check permissions and try again.\n");
        EXPECT_EQ(run.out, "");
        EXPECT_EQ(run.status, 3);
    }
}

TEST(PreviewFolder, ThatIsTooBroadIsRefusedBeforeItIsScanned) {
    Home home;
    home.folder.makeLink("root", "/");
    for (const std::string& folder : {std::string("/"), std::string("/home"), std::string("/usr/.."), std::string("//"),
                                      home.folder.path("root")}) {
        for (const char* command : {"preview", "organize", "undo", "recovery"}) {
            const Finished run = home.run({command, folder, "--yes"});
            EXPECT_EQ(run.err, "error: The chosen folder is too broad to organize safely.\n") << command << folder;
            EXPECT_EQ(run.out, "");
            EXPECT_EQ(run.status, 3);
        }
    }
}

TEST(Preview, IsAmongTheRecentFoldersWhenTheProgramHasEnded) {
    const Home home;
    for (int number = 0; number < 20; ++number) {
        const std::string name = "folder" + std::to_string(number);
        home.folder.makeFolder(name);
        ASSERT_EQ(home.run({"preview", home.folder.path(name)}).status, 0);
        EXPECT_THAT(home.folder.read(".config/ordovan/ordovan.conf"), HasSubstr("/" + name + ")"));
    }
    const std::filesystem::directory_iterator first(home.folder.path(".config/ordovan"));
    EXPECT_EQ(std::distance(first, std::filesystem::directory_iterator()), 1);
}

TEST(Preview, ChangesNothing) {
    const Home home;
    home.write("a.pdf", "1");
    home.write("sub/b.png", "1");
    ::mkfifo(home.download("fifo").c_str(), 0644);
    const auto before = home.tree();
    ASSERT_EQ(home.run({"preview"}).status, 0);
    EXPECT_TRUE(home.tree() == before);
    EXPECT_EQ(home.run({"history", "--json"}).json().at("records").as_array().size(), 0U);
}
