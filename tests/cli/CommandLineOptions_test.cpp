#include "tests/cli/CommandLine.h"

#include <gmock/gmock.h>

using ordovan::test::Finished;
using ordovan::test::Home;
using ordovan::test::Terminal;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

namespace {

struct Mistake {
    std::string title;
    Home::Arguments arguments;
    std::string sentence;
};

class CommandLineMistake : public ::testing::TestWithParam<Mistake> {};

const std::string see = " See \"ordovan-cli --help\".";

const std::vector<Mistake> mistakes = {
    {"NoCommand", {}, "Say what to do, for example \"ordovan-cli preview\"." + see},
    {"UnknownCommand", {"tidy"}, "Unknown command \"tidy\"." + see},
    {"EmptyCommand", {""}, "Unknown command \"\"." + see},
    {"HostileCommand", {"a\x1b[2Jb\n"}, "Unknown command \"a\\x1b[2Jb\\n\"." + see},
    {"UnknownOption", {"preview", "--nope"}, "Unknown option \"--nope\"." + see},
    {"ShortOption", {"preview", "-y"}, "Unknown option \"-y\"." + see},
    {"UnknownOptionBeforeTheCommand", {"--nope", "preview"}, "Unknown option \"--nope\"." + see},
    {"OptionOfAnotherCommand", {"preview", "--entry", "x"}, "--entry does not go with preview."},
    {"ExportOfOrganize", {"organize", "--export", "a.md"}, "--export does not go with organize."},
    {"MissingValue", {"preview", "--only"}, "--only needs a value: --only FOLDERNAME."},
    {"ValueForNone", {"preview", "--json=yes"}, "--json takes no value."},
    {"GivenTwice", {"preview", "--only", "Images", "--only=Code"}, "--only can be given only once."},
    {"Contradiction",
     {"preview", "--group-by-month", "--no-group-by-month"},
     "--group-by-month and --no-group-by-month do not go together."},
    {"HiddenContradiction",
     {"preview", "--no-include-hidden", "--include-hidden"},
     "--include-hidden and --no-include-hidden do not go together."},
    {"KindAndClear", {"history", "--clear", "--kind=undo"}, "--kind and --clear do not go together."},
    {"TwoFolders", {"preview", "a", "b"}, "Too many arguments for preview: \"b\"."},
    {"HistoryArgument", {"history", "x"}, "Too many arguments for history: \"x\"."},
    {"ThreeSettings", {"settings", "theme", "candy", "x"}, "Too many arguments for settings: \"x\"."},
    {"EmptyFolder", {"preview", ""}, "The folder's name is empty."},
    {"OlderThanWord", {"preview", "--older-than", "week"}, "--older-than takes a whole number of days, not \"week\"."},
    {"OlderThanNegative", {"preview", "--older-than=-1"}, "--older-than takes a whole number of days, not \"-1\"."},
    {"OlderThanSigned", {"preview", "--older-than=+1"}, "--older-than takes a whole number of days, not \"+1\"."},
    {"OlderThanFraction",
     {"preview", "--older-than", "1.5"},
     "--older-than takes a whole number of days, not \"1.5\"."},
    {"OlderThanEmpty", {"preview", "--older-than="}, "--older-than takes a whole number of days, not \"\"."},
    {"OlderThanHuge",
     {"preview", "--older-than", "99999999999999999999"},
     "--older-than takes a whole number of days, not \"99999999999999999999\"."},
    {"ExportFormat",
     {"preview", "--export", "plan.txt"},
     "--export takes a file name that ends in .md or .csv, not \"plan.txt\"."},
    {"ExportNothing", {"preview", "--export="}, "--export takes a file name that ends in .md or .csv, not \"\"."},
    {"TrashOfPreview", {"preview", "--trash"}, "--trash does not go with preview."},
    {"TrashBeforeItsCommand", {"--trash", "duplicates"}, "--trash must stand behind its command."},
    {"TrashOfDuplicatesWithAValue", {"duplicates", "--trash=a.txt"}, "--trash takes no value."},
    {"TrashOfBigWithoutAValue", {"big", "--trash"}, "--trash needs a value: --trash PATH."},
    {"KeepOfBig", {"big", "--keep", "oldest"}, "--keep does not go with big."},
    {"KeepTwice", {"duplicates", "--keep", "oldest", "--keep=newest"}, "--keep can be given only once."},
    {"KeepPolicy",
     {"duplicates", "--keep", "Oldest"},
     "--keep takes oldest, newest, shortest or deepest, not \"Oldest\"."},
    {"KeepNothing", {"duplicates", "--keep="}, "--keep takes oldest, newest, shortest or deepest, not \"\"."},
    {"LimitWord", {"big", "--limit", "all"}, "--limit takes a whole number, not \"all\"."},
    {"LimitNegative", {"big", "--limit=-1"}, "--limit takes a whole number, not \"-1\"."},
    {"LimitHuge",
     {"big", "--limit", "9223372036854775808"},
     "--limit takes a whole number, not \"9223372036854775808\"."},
    {"GroupByMonthOfBig", {"big", "--group-by-month"}, "--group-by-month does not go with big."},
    {"EntryOfRecovery", {"recovery", "--entry", "x"}, "--entry does not go with recovery."},
    {"TwoFoldersOfDuplicates", {"duplicates", "a", "b"}, "Too many arguments for duplicates: \"b\"."},
    {"DuplicatesUnasked",
     {"duplicates", "--trash"},
     "There is nobody to ask here; say --yes to move files to the Trash without a question."},
    {"BigUnasked",
     {"big", "--trash", "a.pdf"},
     "There is nobody to ask here; say --yes to move files to the Trash without a question."},
    {"RestoreUnasked", {"restore"}, "There is nobody to ask here; say --yes to put files back without a question."},
    {"RulesAction", {"rules", "drop"}, "rules can not \"drop\"; say list, add, delete or move."},
    {"RulesAddOne", {"rules", "add", "dmg"}, "Wrong number of arguments; say \"rules add EXTENSIONS FOLDER\"."},
    {"RulesListArgument", {"rules", "list", "x"}, "Wrong number of arguments; say \"rules list\"."},
    {"RulesDeleteNone", {"rules", "delete", "1"}, "There is no rule \"1\"; you have 0 rules."},
    {"RulesExtension",
     {"rules", "add", "tar.gz", "Apps"},
     "\"tar.gz\" isn't a valid extension. Use letters and numbers only, like dmg."},
    {"RulesFolder", {"rules", "add", "dmg", "  "}, "Give the folder a name."},
    {"HistoryKind",
     {"history", "--kind", "Organize"},
     "--kind takes organize, undo, trash or restoreTrash, not \"Organize\"."},
    {"SettingsKey",
     {"settings", "colour"},
     "There is no setting \"colour\"; the keys are groupByMonth, includeHidden and theme."},
    {"SettingsBoolean", {"settings", "groupByMonth", "maybe"}, "groupByMonth is true or false, not \"maybe\"."},
    {"SettingsTheme",
     {"settings", "theme", "Lagoon"},
     "theme is lagoon, sunset, grape, forest or candy, not \"Lagoon\"."},
    {"OrganizeUnasked", {"organize"}, "There is nobody to ask here; say --yes to organize without a question."},
    {"UndoUnasked", {"undo"}, "There is nobody to ask here; say --yes to undo without a question."},
    {"ClearUnasked",
     {"history", "--clear"},
     "There is nobody to ask here; say --yes to clear the history without a question."},
};

}  // namespace

TEST_P(CommandLineMistake, IsOneSentenceOnStandardErrorAndStatus2) {
    const Home home;
    home.write("a.pdf", "a");
    const Finished run = home.run(GetParam().arguments);
    EXPECT_EQ(run.err, "error: " + GetParam().sentence + "\n");
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.status, 2);
    EXPECT_TRUE(home.has("a.pdf"));
}

TEST_P(CommandLineMistake, StaysASentenceWhenJsonIsAskedFor) {
    const Home home;
    Home::Arguments arguments = GetParam().arguments;
    arguments.insert(arguments.begin(), "--json");
    const Finished run = home.run(arguments);
    EXPECT_EQ(run.err, "error: " + GetParam().sentence + "\n");
    EXPECT_EQ(run.out, "");
    EXPECT_EQ(run.status, 2);
}

TEST(CommandLineSize, IsRefusedWhenItIsNone) {
    const Home home;
    for (const char* size : {"",
                             " ",
                             "MB",
                             "x",
                             "-1",
                             "+1",
                             "1.5",
                             "1.",
                             ".5GB",
                             "1,5GB",
                             "10MiB",
                             "1e6",
                             "10 ",
                             "1  MB",
                             "1MBB",
                             "1KBs",
                             "0x10",
                             "1.5.5k",
                             "9223372036854775808",
                             "10EB",
                             "9.3e",
                             "1\n"}) {
        const Finished run = home.run({"big", "--json", "--min-size", size});
        EXPECT_THAT(run.err,
                    StartsWith("error: --min-size takes a size of at most 9.2 EB, such as 500k, 10MB or 1.5GB, not \""))
            << size;
        EXPECT_EQ(run.out, "") << size;
        EXPECT_EQ(run.status, 2) << size;
    }
}

TEST(CommandLineSize, IsReadInDecimalUnitsOfAnyCase) {
    const Home home;
    home.write("a.bin", std::string(1'500, 'a'));
    for (const char* size : {"0", "1500", "1500b", "1500 B", "1k", "1K", "1kb", "1.5kB", "1.5 KB", "0.0015M",
                             "0.0015mb", "0.0000015g", "0.0000000015TB", "0.000000000001p", "0e", "01500"}) {
        EXPECT_EQ(home.run({"big", "--json", "--min-size", size}).json().at("files").as_array().size(), 1U) << size;
    }
    for (const char* size : {"1501", "1.501k", "1.5000000001k", "1m", "9.2e", "9223372036854775807"}) {
        EXPECT_EQ(home.run({"big", "--json", "--min-size", size}).json().at("files").as_array().size(), 0U) << size;
    }
}

INSTANTIATE_TEST_SUITE_P(Table, CommandLineMistake, ::testing::ValuesIn(mistakes),
                         [](const auto& mistake) { return mistake.param.title; });

TEST(CommandLineHelp, ListsTheCommands) {
    const Finished run = Home().run({"--help"});
    EXPECT_THAT(run.out,
                StartsWith("Usage: ordovan-cli COMMAND [ARGUMENTS] [OPTIONS]\n\nCommands:\n  preview [FOLDER]"));
    for (const char* command : {"organize", "undo", "duplicates", "big", "recovery", "restore", "rules", "history",
                                "settings", "--json", "--yes"}) {
        EXPECT_THAT(run.out, HasSubstr("\n  " + std::string(command)));
    }
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.status, 0);
}

TEST(CommandLineHelp, OfACommandShowsItsOwnOptions) {
    const Finished run = Home().run({"organize", "--help"});
    EXPECT_THAT(run.out, StartsWith("Usage: ordovan-cli organize [FOLDER] [OPTIONS]\n"));
    EXPECT_THAT(run.out, HasSubstr("\n  --leave-out PATH           Leave a file, or a whole folder, where it is "
                                   "(repeatable)\n"));
    EXPECT_THAT(run.out,
                HasSubstr("\n  --include-partial          Select unfinished downloads (such as .part) as well\n"));
    EXPECT_THAT(run.out, Not(HasSubstr("--export")));
    EXPECT_EQ(run.status, 0);
}

TEST(CommandLineHelp, ShowsTheMeaningThatAnOptionHasForTheCommand) {
    const std::string duplicates = Home().run({"duplicates", "--help"}).out;
    EXPECT_THAT(duplicates, HasSubstr("\n  --trash                    Move every copy but the one to keep"));
    EXPECT_THAT(duplicates, Not(HasSubstr("--trash PATH")));
    EXPECT_THAT(Home().run({"big", "--help"}).out, HasSubstr("\n  --trash PATH               Move this file"));
}

TEST(CommandLineOptions, OfTwoMeaningsMayStandInFrontOfTheCommandWhereBothTakeAValue) {
    EXPECT_EQ(Home().run({"--entry", "x", "restore", "--yes"}).err,
              "error: There is nothing to put back from the Trash in this folder.\n");
    EXPECT_EQ(Home().run({"--entry=x", "undo", "--yes"}).err, "error: There is nothing to undo in this folder.\n");
    EXPECT_EQ(Home().run({"restore", "--entry"}).err, "error: --entry needs a value: --entry ORIGINAL.\n");
}

TEST(CommandLineHelp, CanBeAskedForInSeveralWays) {
    const std::string all = Home().run({"--help"}).out, preview = Home().run({"preview", "--help"}).out;
    EXPECT_EQ(Home().run({"-h"}).out, all);
    EXPECT_EQ(Home().run({"help"}).out, all);
    EXPECT_EQ(Home().run({"preview", "-h"}).out, preview);
    EXPECT_EQ(Home().run({"help", "preview"}).out, preview);
}

TEST(CommandLineHelp, AndTheVersionAreOneObjectAsJson) {
    EXPECT_EQ(ordovan::test::text(Home().run({"preview", "--help", "--json"}).json().at("help")),
              Home().run({"preview", "--help"}).out);
    const Finished version = Home().run({"--version", "--json"});
    EXPECT_THAT(ordovan::test::keys(version.json()), ::testing::ElementsAre("schema", "version"));
    EXPECT_EQ("ordovan-cli " + ordovan::test::text(version.json().at("version")) + "\n", Home().run({"--version"}).out);
}

TEST(CommandLineHelp, ListsTheActionsOfRules) {
    const Finished run = Home().run({"rules", "--help"});
    EXPECT_THAT(run.out, HasSubstr("\nActions:\n  list  "));
    EXPECT_THAT(run.out, HasSubstr("\n  move N M  "));
}

TEST(CommandLineHelp, WinsOverMistakes) {
    EXPECT_EQ(Home().run({"preview", "--nope", "--help"}).status, 0);
    EXPECT_EQ(Home().run({"--help", "tidy"}).status, 0);
}

TEST(CommandLineHelp, FitsOnATerminal) {
    for (const char* command :
         {"preview", "organize", "undo", "duplicates", "big", "recovery", "restore", "rules", "history", "settings"}) {
        const std::string help = Home().run({command, "--help"}).out;
        for (std::size_t begin = 0; begin < help.size(); begin = help.find('\n', begin) + 1) {
            EXPECT_LE(help.find('\n', begin) - begin, 100U) << command;
        }
    }
}

TEST(CommandLineVersion, IsOneLine) {
    const Finished run = Home().run({"--version"});
    EXPECT_THAT(run.out, ::testing::MatchesRegex("ordovan-cli [0-9]+\\.[0-9]+\\.[0-9]+\n"));
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.status, 0);
}

TEST(CommandLineVersion, LeavesNoTraceOnTheDisk) {
    const Home home;
    static_cast<void>(home.run({"--version"}));
    EXPECT_EQ(home.folder.count(), 1U);
}

TEST(CommandLineOptions, MayStandBeforeAndBehindTheCommand) {
    const Home home;
    EXPECT_EQ(home.run({"--json", "preview"}).json().at("schema"), 1);
    EXPECT_EQ(home.run({"preview", "--json"}).json().at("schema"), 1);
}

TEST(CommandLineOptions, EndAtTwoDashes) {
    Home home;
    home.folder.write("--json/-rf.pdf", "x");
    home.workingFolder = home.folder.path();
    const Finished run = home.run({"preview", "--", "--json"});
    EXPECT_THAT(run.out, EndsWith("1 proposed · 0 need review\n"));
    EXPECT_EQ(run.status, 0);
}

TEST(CommandLineOptions, TakeAValueThatLooksLikeAnOption) {
    Home home;
    home.write("-rf", "x");
    home.workingFolder = home.downloads();
    const Finished run = home.run({"preview", "--json", "--leave-out", "-rf"});
    EXPECT_EQ(run.json().at("proposals").at(0).at("selected"), false);
}

TEST(CommandLineOptions, ResultIsWrittenOnceAndFailuresToWriteAreTold) {
    const Home home;
    home.write("a.pdf", "a");
    const int full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
    const Finished run = home.run({"preview"}, full);
    ::close(full);
    EXPECT_EQ(run.err, "error: The result couldn't be written: No space left on device.\n");
    EXPECT_EQ(run.status, 3);
}

TEST(CommandLineOptions, AResultThatCouldNotBeWrittenDoesNotHideThatFilesWereMoved) {
    const Home home;
    home.write("a.pdf", "a");
    const int full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
    const std::string sentence = "error: It was done, but the result couldn't be written: No space left on device.\n";
    for (const Home::Arguments& arguments :
         {Home::Arguments{"organize", "--yes"}, Home::Arguments{"undo", "--yes", "--json"},
          Home::Arguments{"rules", "add", "dmg", "Apps"}, Home::Arguments{"settings", "theme", "candy"},
          Home::Arguments{"history", "--clear", "--yes", "--json"}}) {
        const Finished run = home.run(arguments, full);
        EXPECT_THAT(run.err, EndsWith(sentence)) << arguments.front();
        EXPECT_EQ(run.status, 1) << arguments.front();
    }
    EXPECT_EQ(home.run({"undo", "--yes"}, full).status, 3);
    ::close(full);
    EXPECT_EQ(home.read("a.pdf"), "a");
}

TEST(CommandLineOptions, NobodyIsAskedAboutAPlanThatCouldNotBeShown) {
    Home home;
    home.write("a.pdf", "a");
    home.prepare = [] { ::dup2(::open("/dev/full", O_WRONLY), STDOUT_FILENO); };
    const Finished run = Terminal(home, {"organize", "--no-color"}).finish();
    EXPECT_EQ(run.status, 3);
    EXPECT_THAT(run.out, EndsWith("error: The result couldn't be written: No space left on device.\r\n"));
    EXPECT_THAT(run.out, Not(HasSubstr("[y/N]")));
    EXPECT_TRUE(home.has("a.pdf"));
}

TEST(CommandLineOptions, AReaderThatGoesAwayIsNoFailure) {
    const Home home;
    for (int number = 0; number < 300; ++number) home.write(std::to_string(number) + ".pdf", "a");
    int ends[2];
    Home::makePipe(ends);
    ::close(ends[0]);
    const Finished run = home.run({"preview", "--json"}, ends[1]);
    ::close(ends[1]);
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.status, 0);
}

TEST(CommandLineOptions, AClosedStandardOutputNeverBecomesAnotherFile) {
    const Home home;
    home.write("a.pdf", "a");
    const ::pid_t child = home.start({"organize", "--yes"}, [] {
        ::close(STDIN_FILENO);
        ::close(STDOUT_FILENO);
        ::close(STDERR_FILENO);
    });
    EXPECT_EQ(Home::await(child), 1);
    EXPECT_EQ(home.read("ordovan+/Documents/a.pdf"), "a");
    EXPECT_EQ(home.run({"undo", "--yes"}).status, 0);
    EXPECT_EQ(home.read("a.pdf"), "a");
}
