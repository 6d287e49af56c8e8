#include "OrdovanCLI/reference/Reference.h"
#include "tests/reference/Shell.h"

#include <gmock/gmock.h>

#include <algorithm>

using namespace ordovan::cli;
using ordovan::test::Shell;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

namespace {

std::string page() {
    return reference::manualPage({.version = "1.2.3", .date = "2026-11-21", .homepage = "https://example.org/a-b"});
}

/// What stands below a section's or subsection's head (the whole line), up to the next one.
std::string below(const std::string& head) {
    const std::string text = page();
    const std::size_t begin = text.find(head);
    if (begin == std::string::npos) return "no " + head;
    const std::size_t end = text.find("\n.S", begin + 1);
    return text.substr(begin + head.size(), end == std::string::npos ? end : end + 1 - begin - head.size());
}

/// "--leave-out PATH" as the page writes it above its explanation.
std::string item(std::string_view name, std::string_view argument) {
    std::string tag = ".TP\n\\fB";
    for (const char c : name) tag.append(c == '-' ? "\\-" : std::string(1, c));
    tag += "\\fR";
    if (!argument.empty()) tag.append(" \\fI").append(argument).append("\\fR");
    return tag + "\n";
}

}  // namespace

TEST(ManualPage, HasEveryCommandWithTheOptionsThatGoWithItAlone) {
    for (const CommandSpec& command : commandTable()) {
        const std::string text = below(".SS \\fB" + std::string(command.name) + "\\fR");
        for (const OptionSpec& option : optionTable()) {
            const bool isOwn =
                !option.commands.all() && option.commands.test(static_cast<std::size_t>(command.command));
            EXPECT_EQ(text.contains(item(option.name, option.argument)), isOwn) << command.name << option.name << text;
        }
        for (const ActionSpec& action : command.actions) {
            EXPECT_THAT(text, HasSubstr(".TP\n\\fB" + std::string(action.name) + "\\fR")) << command.name;
        }
    }
}

TEST(ManualPage, HasTheOptionsOfEveryCommandOnce) {
    const std::string text = below(".SH OPTIONS OF EVERY COMMAND\n");
    for (const OptionSpec& option : optionTable()) {
        EXPECT_EQ(text.contains(item(option.name, option.argument)), option.commands.all()) << option.name;
    }
}

TEST(ManualPage, HasEveryExitStatus) {
    const std::string text = below(".SH EXIT STATUS\n");
    for (const ExitStatusSpec& exit : exitStatusTable()) {
        EXPECT_THAT(text, HasSubstr(item(std::to_string(exit.status), "") + std::string(exit.meaning) + ".\n"));
    }
}

TEST(ManualPage, NamesItsEdition) {
    EXPECT_THAT(page(), HasSubstr("\n.TH ORDOVAN\\-CLI 1 2026-11-21 \"ordovan+ 1.2.3\" \"User Commands\"\n"));
    EXPECT_THAT(below(".SH SEE ALSO\n"), HasSubstr("https://example.org/a\\-b\n"));
}

TEST(ManualPage, ShowsOnlyExamplesThatTheProgramUnderstands) {
    for (const reference::Example& example : reference::examples()) {
        std::vector<std::string_view> words;
        for (std::string_view rest = example.line; !rest.empty();) {
            const std::size_t end = std::min(rest.find(' '), rest.size());
            words.push_back(rest.substr(0, end));
            rest.remove_prefix(std::min(end + 1, rest.size()));
        }
        const auto understood = parse(words);
        EXPECT_TRUE(understood) << example.line << ": " << understood.error();
    }
}

TEST(ManualPage, SatisfiesTheProgramsThatShowIt) {
    const Shell shell;
    shell.folder.write("ordovan-cli.1", page());
    for (const std::string check : {"groff -man -ww -z ordovan-cli.1", "mandoc -T lint ordovan-cli.1"}) {
        if (!Shell::has(check.substr(0, check.find(' ')))) {
            std::fprintf(stderr, "NOT TESTED: %s (not installed)\n", check.c_str());
            continue;
        }
        EXPECT_EQ(shell.run(check), "");
    }
}

TEST(ManualPage, TakesNoWordOfTheTextForACommandOfItsOwn) {
    for (const std::string& line : ordovan::test::lines(page())) {
        if (!line.starts_with('.')) continue;
        EXPECT_THAT(line.substr(1, line.find(' ') - 1),
                    ::testing::AnyOf("\\\"", "TH", "SH", "SS", "TP", "PP", "B", "BR", "br", "RS", "RE", "nf", "fi"));
    }
}
