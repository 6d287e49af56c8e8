#include "tests/cli/CommandLine.h"

#include <gmock/gmock.h>

using ordovan::test::Finished;
using ordovan::test::Home;
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
    {"Duplicates", {"duplicates"}, "Unknown command \"duplicates\"." + see},
    {"Big", {"big"}, "Unknown command \"big\"." + see},
    {"Restore", {"restore"}, "Unknown command \"restore\"." + see},
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

INSTANTIATE_TEST_SUITE_P(Table, CommandLineMistake, ::testing::ValuesIn(mistakes),
                         [](const auto& mistake) { return mistake.param.title; });

TEST(CommandLineHelp, ListsTheCommandsThatExistAndNoOthers) {
    const Finished run = Home().run({"--help"});
    EXPECT_THAT(run.out,
                StartsWith("Usage: ordovan-cli COMMAND [ARGUMENTS] [OPTIONS]\n\nCommands:\n  preview [FOLDER]"));
    for (const char* command : {"organize", "undo", "recovery", "rules", "history", "settings", "--json", "--yes"}) {
        EXPECT_THAT(run.out, HasSubstr("\n  " + std::string(command)));
    }
    for (const char* command : {"duplicates", "big", "restore "}) {
        EXPECT_THAT(run.out, Not(HasSubstr("\n  " + std::string(command))));
    }
    EXPECT_EQ(run.err, "");
    EXPECT_EQ(run.status, 0);
}

TEST(CommandLineHelp, OfACommandShowsItsOwnOptions) {
    const Finished run = Home().run({"organize", "--help"});
    EXPECT_THAT(run.out, StartsWith("Usage: ordovan-cli organize [FOLDER] [OPTIONS]\n"));
    EXPECT_THAT(run.out, HasSubstr("\n  --leave-out PATH           Leave a file, or a whole folder, where it is "
                                   "(repeatable)\n"));
    EXPECT_THAT(run.out, Not(HasSubstr("--export")));
    EXPECT_EQ(run.status, 0);
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
    for (const char* command : {"preview", "organize", "undo", "recovery", "rules", "history", "settings"}) {
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
    EXPECT_EQ(Home::await(child), 3);
    EXPECT_EQ(home.read("ordovan+/Documents/a.pdf"), "a");
    EXPECT_EQ(home.run({"undo", "--yes"}).status, 0);
    EXPECT_EQ(home.read("a.pdf"), "a");
}
