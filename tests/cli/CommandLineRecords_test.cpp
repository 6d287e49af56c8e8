#include "tests/cli/CommandLine.h"

#include <gmock/gmock.h>

using namespace ordovan::test;
using ::testing::ElementsAre;
using ::testing::MatchesRegex;

TEST(RulesCommand, StartsWithoutRules) {
    const Home home;
    const Finished text = home.run({"rules"});
    EXPECT_EQ(text.out, "");
    EXPECT_EQ(text.err, "No rules. Files use the built-in folders (Documents, Images…).\n");
    EXPECT_EQ(text.status, 0);
    EXPECT_EQ(home.run({"rules", "list", "--json"}).out, "{\"schema\": 1, \"rules\": []}\n");
}

TEST(RulesCommand, AddsAtTheEnd) {
    const Home home;
    EXPECT_EQ(home.run({"rules", "add", ".DMG, pkg;pkg", " Apps "}).out, "1  dmg, pkg → Apps\n");
    EXPECT_EQ(home.run({"rules", "add", "txt", "Notes"}).out, "1  dmg, pkg → Apps\n2  txt → Notes\n");
    const auto object = home.run({"rules", "--json"}).json();
    EXPECT_THAT(keys(object.at("rules").at(0).as_object()), ElementsAre("extensions", "folderName", "id"));
    EXPECT_EQ(object.at("rules").at(0).at("extensions"), boost::json::parse(R"(["dmg","pkg"])"));
    EXPECT_THAT(column(object.at("rules"), "folderName"), ElementsAre("Apps", "Notes"));
}

TEST(RulesCommand, DeletesByPosition) {
    const Home home;
    for (const char* folder : {"A", "B", "C"}) static_cast<void>(home.run({"rules", "add", "txt", folder}));
    EXPECT_EQ(home.run({"rules", "delete", "2"}).out, "1  txt → A\n2  txt → C\n");
    EXPECT_EQ(home.run({"rules", "delete", "3"}).err, "error: There is no rule \"3\"; you have 2 rules.\n");
    EXPECT_EQ(home.run({"rules", "delete", "0"}).status, 2);
    EXPECT_EQ(home.run({"rules"}).out, "1  txt → A\n2  txt → C\n");
}

TEST(RulesCommand, MovesByPosition) {
    const Home home;
    for (const char* folder : {"A", "B", "C"}) static_cast<void>(home.run({"rules", "add", "txt", folder}));
    EXPECT_EQ(home.run({"rules", "move", "1", "3"}).out, "1  txt → B\n2  txt → C\n3  txt → A\n");
    EXPECT_EQ(home.run({"rules", "move", "3", "2"}).out, "1  txt → B\n2  txt → A\n3  txt → C\n");
    EXPECT_EQ(home.run({"rules", "move", "2", "2"}).out, "1  txt → B\n2  txt → A\n3  txt → C\n");
    EXPECT_EQ(home.run({"rules", "move", "1", "4"}).status, 2);
    EXPECT_EQ(home.run({"rules", "move", "x", "1"}).status, 2);
}

TEST(RulesCommand, RefusesThe51stRule) {
    const Home home;
    for (int number = 0; number < 50; ++number) static_cast<void>(home.run({"rules", "add", "txt", "A"}));
    const Finished run = home.run({"rules", "add", "txt", "B"});
    EXPECT_EQ(run.err, "error: You can have up to 50 rules.\n");
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(home.run({"rules", "--json"}).json().at("rules").as_array().size(), 50U);
}

TEST(RulesCommand, TellsThatTheyCouldNotBeSaved) {
    Home home;
    home.folder.write(".config", "a file where the folder should be");
    const Finished run = home.run({"rules", "add", "txt", "A"});
    EXPECT_EQ(run.err, "error: That rule couldn't be added. Check the permissions of \"" +
                           home.folder.path(".config/ordovan") + "\" and the free space there.\n");
    EXPECT_EQ(run.status, 3);
}

TEST(RulesCommand, TellsThatAChangeCouldNotBeSaved) {
    Home home;
    for (const char* folder : {"A", "B"}) ASSERT_EQ(home.run({"rules", "add", "txt", folder}).status, 0);
    giveToUnprivileged(home.folder.path());
    ::chmod(home.folder.path(".config/ordovan").c_str(), 0500);
    home.runsUnprivileged = true;
    for (const Home::Arguments& change : {Home::Arguments{"rules", "delete", "1"}, {"rules", "move", "1", "2"}}) {
        const Finished run = home.run(change);
        EXPECT_THAT(run.err, ::testing::StartsWith("error: The rules couldn't be saved. Check the permissions of "));
        EXPECT_EQ(run.status, 3);
    }
    EXPECT_EQ(home.run({"rules", "list"}).out, "1  txt → A\n2  txt → B\n");
}

TEST(RulesCommand, TellsThatAnotherProcessHoldsThem) {
    Home home;
    ASSERT_EQ(home.run({"rules", "add", "txt", "A"}).status, 0);
    const Held held(home.folder.path(".config/ordovan"));
    home.prepare = [&] { held.forget(); };
    const Finished run = home.run({"rules", "add", "txt", "B"});
    EXPECT_EQ(run.err,
              "error: That rule couldn't be added. Another ordovan+ is saving its settings. Try again in a moment.\n");
    EXPECT_EQ(run.status, 3);
}

TEST(SettingsCommand, ShowsTheDefaults) {
    const Home home;
    EXPECT_EQ(home.run({"settings"}).out, "groupByMonth = false\nincludeHidden = false\ntheme = lagoon\n");
    EXPECT_EQ(home.run({"settings", "theme"}).out, "lagoon\n");
    EXPECT_EQ(home.run({"settings", "includeHidden", "--json"}).out, "{\"schema\": 1, \"includeHidden\": false}\n");
}

TEST(SettingsCommand, ChangesAValueAndKeepsIt) {
    const Home home;
    EXPECT_EQ(home.run({"settings", "theme", "candy"}).out, "candy\n");
    EXPECT_EQ(home.run({"settings", "groupByMonth", "yes"}).out, "true\n");
    EXPECT_EQ(home.run({"settings", "includeHidden", "on"}).out, "true\n");
    EXPECT_EQ(home.run({"settings", "includeHidden", "off"}).out, "false\n");
    EXPECT_EQ(home.run({"settings", "--json"}).out,
              "{\"schema\": 1, \"groupByMonth\": true, \"includeHidden\": false, \"theme\": \"candy\"}\n");
}

TEST(SettingsCommand, LeavesTheValueAloneAfterAMistake) {
    const Home home;
    ASSERT_EQ(home.run({"settings", "theme", "grape"}).status, 0);
    EXPECT_EQ(home.run({"settings", "theme", "beige"}).status, 2);
    EXPECT_EQ(home.run({"settings", "theme"}).out, "grape\n");
}

TEST(SettingsCommand, TellsThatAValueCouldNotBeSaved) {
    const Home home;
    home.folder.write(".config", "a file where the folder should be");
    const Finished run = home.run({"settings", "theme", "candy"});
    EXPECT_EQ(run.err, "error: The setting couldn't be saved. Check the permissions of \"" +
                           home.folder.path(".config/ordovan") + "\" and the free space there.\n");
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.status, 3);
}

TEST(SettingsCommand, FollowsTheXdgVariables) {
    Home home;
    home.environment["XDG_CONFIG_HOME"] = home.folder.path("conf");
    ASSERT_EQ(home.run({"settings", "theme", "candy"}).status, 0);
    EXPECT_TRUE(home.folder.has("conf/ordovan/ordovan.conf"));
    EXPECT_FALSE(home.folder.has(".config"));
}

TEST(HistoryCommand, IsEmptyAtFirst) {
    const Home home;
    const Finished text = home.run({"history"});
    EXPECT_EQ(text.out, "");
    EXPECT_EQ(text.err, "Each time you organize or undo, a summary appears here.\n");
    EXPECT_EQ(text.status, 0);
    EXPECT_EQ(home.run({"history", "--json"}).out, "{\"schema\": 1, \"records\": []}\n");
    EXPECT_EQ(home.run({"history", "--quiet"}).err, "");
}

TEST(HistoryCommand, ListsRunsNewestFirst) {
    const Home home;
    home.write("a.pdf", "1");
    home.write("b.pdf", "1");
    ASSERT_EQ(home.run({"organize", "--yes"}).status, 0);
    home.folder.write("Downloads/ordovan+/Documents/a.pdf", "X");
    ASSERT_EQ(home.run({"undo", "--yes"}).status, 1);
    EXPECT_THAT(home.run({"history"}).out, MatchesRegex("[0-9-]+ [0-9:]+  Restored 1 file in Downloads, 1 skipped\n"
                                                        "[0-9-]+ [0-9:]+  Organized 2 files in Downloads\n"));
    const auto object = home.run({"history", "--json"}).json();
    EXPECT_THAT(keys(object.at("records").at(0).as_object()),
                ElementsAre("epoch", "failed", "folderName", "id", "kind", "moved", "skipped", "summary"));
    EXPECT_THAT(column(object.at("records"), "kind"), ElementsAre("undo", "organize"));
    EXPECT_THAT(column(object.at("records"), "summary"),
                ElementsAre("Restored 1 file in Downloads", "Organized 2 files in Downloads"));
}

TEST(HistoryCommand, CanBeNarrowedToAKind) {
    const Home home;
    home.write("a.pdf", "1");
    ASSERT_EQ(home.run({"organize", "--yes"}).status, 0);
    ASSERT_EQ(home.run({"undo", "--yes"}).status, 0);
    EXPECT_THAT(column(home.run({"history", "--json", "--kind=undo"}).json().at("records"), "kind"),
                ElementsAre("undo"));
    EXPECT_EQ(home.run({"history", "--json", "--kind", "restoreTrash"}).out, "{\"schema\": 1, \"records\": []}\n");
}

TEST(HistoryCommand, OfAKindThatNeverRanIsToldFromAnEmptyOne) {
    const Home home;
    EXPECT_EQ(home.run({"history", "--kind=undo"}).err, "Each time you organize or undo, a summary appears here.\n");
    home.write("a.pdf", "1");
    ASSERT_EQ(home.run({"organize", "--yes"}).status, 0);
    EXPECT_EQ(home.run({"history", "--kind=undo"}).err, "No run of this kind.\n");
}

TEST(HistoryCommand, ClearsOnlyTheLog) {
    const Home home;
    home.write("a.pdf", "1");
    ASSERT_EQ(home.run({"organize", "--yes"}).status, 0);
    EXPECT_EQ(home.run({"history", "--clear"}).status, 2);
    EXPECT_EQ(home.run({"history", "--json"}).json().at("records").as_array().size(), 1U);
    const Finished cleared = home.run({"history", "--clear", "--yes", "--json"});
    EXPECT_EQ(cleared.out, "{\"schema\": 1, \"records\": []}\n");
    EXPECT_EQ(cleared.status, 0);
    EXPECT_EQ(home.run({"undo", "--yes"}).status, 0);
    EXPECT_EQ(home.read("a.pdf"), "1");
}

TEST(HistoryCommand, KeepsAHostileFolderNameOnItsLine) {
    const Home home;
    home.folder.write("new\nline\x1b[2J/a.pdf", "1");
    ASSERT_EQ(home.run({"organize", "--yes", home.folder.path("new\nline\x1b[2J")}).status, 0);
    EXPECT_THAT(home.run({"history"}).out, ::testing::EndsWith("  Organized 1 file in new\\nline\\x1b[2J\n"));
}
