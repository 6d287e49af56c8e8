#include "OrdovanCLI/reference/Reference.h"
#include "OrdovanCore/Categories.h"
#include "tests/reference/Shell.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <functional>
#include <ostream>

using namespace ordovan::cli;
using ordovan::test::Shell;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAreArray;

namespace {

/// A shell, and how to have it complete.
struct Dialect {
    std::string shell;
    /// What is proposed where a line ends, each once, in byte order. Files and folders are those of the Shell.
    std::function<std::vector<std::string>(const Shell&, const std::string& line)> complete;
    std::function<std::string()> script;
    std::string fileName;
};

/// For bash, the completion is called as bash does: the words of the line, with "=" a word of its own. What it leaves
/// to bash itself ("complete files here") is answered in its place.
constexpr const char* bashHarness = R"sh(
. ./ordovan-cli.bash
compopt() { case $2 in default) kind=file ;; dirnames) kind=directory ;; esac; }
line=$1 kind=
read -ra COMP_WORDS <<<"${line//=/ = }"
[[ $line == *' ' || $line == *= ]] && COMP_WORDS+=('')
COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
$(complete -p ordovan-cli | sed 's/.* -F \([^ ]*\) .*/\1/')
if [[ -n $kind ]]; then compgen -A $kind -- "${COMP_WORDS[COMP_CWORD]}"; else printf '%s\n' "${COMPREPLY[@]}"; fi
)sh";

std::vector<std::string> sorted(std::vector<std::string> words) {
    // A shell may mark a folder, leave out the folder that was typed, and say "--option=value" for a value.
    for (std::string& word : words) {
        if (word.ends_with('/')) word.pop_back();
        word.erase(0, word.find_last_of("/=") + 1);
    }
    std::ranges::sort(words);
    words.erase(std::ranges::unique(words).begin(), words.end());
    std::erase(words, "");
    return words;
}

const std::vector<Dialect> dialects = {
    {"bash",
     [](const Shell& shell, const std::string& line) {
         shell.folder.write(".harness", bashHarness);
         return sorted(ordovan::test::lines(shell.run("bash .harness '" + line + "'")));
     },
     reference::bashCompletion, "ordovan-cli.bash"},
    {"zsh",
     [](const Shell& shell, const std::string& line) {
         return sorted(ordovan::test::lines(
             shell.run("zsh -f " ORDOVAN_SOURCE_DIR "/tests/reference/complete.zsh . '" + line + "'")));
     },
     reference::zshCompletion, "_ordovan-cli"},
    {"fish",
     [](const Shell& shell, const std::string& line) {
         return sorted(ordovan::test::lines(
             shell.run("fish --no-config -c 'source ordovan-cli.fish; complete -C \"" + line + "\"' | cut -f1")));
     },
     reference::fishCompletion, "ordovan-cli.fish"},
};

void PrintTo(const Dialect& dialect, std::ostream* out) {
    *out << dialect.shell;
}

class Completion : public ::testing::TestWithParam<Dialect> {
protected:
    void SetUp() override {
        if (!Shell::has(GetParam().shell)) GTEST_SKIP() << "NOT TESTED: " << GetParam().shell << " is not installed";
        shell.folder.write(GetParam().fileName, GetParam().script());
        shell.folder.write("place/plan.md", "");
        shell.folder.makeFolder("place/folder");
    }
    [[nodiscard]] std::vector<std::string> at(const std::string& line) const {
        return GetParam().complete(shell, "ordovan-cli " + line);
    }
    /// zsh proposes options where nothing else can stand.
    [[nodiscard]] std::vector<std::string> butOptionsAt(const std::string& line) const {
        std::vector<std::string> words = at(line);
        std::erase_if(words, [](const std::string& word) { return word.starts_with("--"); });
        return words;
    }
    static std::vector<std::string> optionNames(const CommandSpec& command) {
        std::vector<std::string> names;
        for (const OptionSpec* option : reference::optionsOf(command)) names.emplace_back(option->name);
        return names;
    }

    Shell shell;
};

std::vector<std::string> strings(std::span<const std::string_view> words) {
    return {words.begin(), words.end()};
}

}  // namespace

TEST_P(Completion, ProposesEveryCommand) {
    std::vector<std::string> names;
    for (const CommandSpec& command : commandTable()) names.emplace_back(command.name);
    EXPECT_THAT(at(""), UnorderedElementsAreArray(names));
    EXPECT_THAT(at("--json pre"), ElementsAre("preview"));
}

TEST_P(Completion, ProposesTheOptionsOfEachCommandAndNoOther) {
    for (const CommandSpec& command : commandTable()) {
        EXPECT_THAT(at(std::string(command.name) + " --"), UnorderedElementsAreArray(optionNames(command)))
            << command.name;
    }
}

TEST_P(Completion, ProposesTheOptionsOfEveryCommandInFrontOfIt) {
    std::vector<std::string> names;
    for (const OptionSpec* option : reference::commonOptions()) names.emplace_back(option->name);
    EXPECT_THAT(at("--"), UnorderedElementsAreArray(names));
}

TEST_P(Completion, ProposesTheValuesOfEveryOptionThatHasAFewOnly) {
    for (const CommandSpec& command : commandTable()) {
        for (const OptionSpec* option : reference::optionsOf(command)) {
            if (option->values.empty()) continue;
            const std::string typed = std::string(command.name) + " " + std::string(option->name);
            EXPECT_THAT(at(typed + " "), UnorderedElementsAreArray(strings(option->values))) << typed;
            EXPECT_THAT(at(typed + "="), UnorderedElementsAreArray(strings(option->values))) << typed;
        }
    }
    EXPECT_THAT(at("duplicates --keep=o"), ElementsAre("oldest"));
}

TEST_P(Completion, ProposesTheBuiltInFolders) {
    std::vector<std::string> names;
    for (const auto category : OrdovanFileCategories::allCases) names.emplace_back(rawValue(category));
    EXPECT_THAT(at("organize --only "), UnorderedElementsAreArray(names));
}

TEST_P(Completion, ProposesFoldersForACommandAndFilesForAnOption) {
    EXPECT_THAT(at("preview place/"), ElementsAre("folder"));
    for (const char* typed : {"preview --export ", "organize --leave-out ", "undo --entry ", "big --trash "}) {
        EXPECT_THAT(at(typed + std::string("place/")), ElementsAre("folder", "plan.md")) << typed;
    }
    EXPECT_THAT(at("duplicates --trash place/"), ElementsAre("folder"));
    EXPECT_THAT(butOptionsAt("big --limit "), IsEmpty());
}

TEST_P(Completion, ProposesActionsAndSettings) {
    for (const CommandSpec& command : commandTable()) {
        std::vector<std::string> first;
        for (const ActionSpec& action : command.actions) first.emplace_back(action.name);
        for (const KeySpec& key : command.keys) {
            first.emplace_back(key.name);
            const std::string typed = std::string(command.name) + " " + std::string(key.name) + " ";
            EXPECT_THAT(at(typed), UnorderedElementsAreArray(strings(key.values))) << typed;
        }
        if (first.empty()) continue;
        EXPECT_THAT(at(std::string(command.name) + " "), UnorderedElementsAreArray(first));
    }
    EXPECT_THAT(butOptionsAt("settings theme candy "), IsEmpty());
    EXPECT_THAT(butOptionsAt("rules delete "), IsEmpty());
}

TEST_P(Completion, TakesNoValueForACommand) {
    EXPECT_THAT(at("history --kind undo --"), ::testing::Not(Contains("--entry")));
    EXPECT_THAT(at("preview --only rules place/"), ElementsAre("folder"));
}

TEST_P(Completion, ProposesNoOptionBehindTwoDashes) {
    EXPECT_THAT(at("preview -- --"), IsEmpty());
}

TEST(CompletionTable, ListsOnlyValuesThatTheProgramTakes) {
    const Shell shell;
    const auto status = [&](const std::string& line) {
        return shell.run(ORDOVAN_CLI " " + line + " >output 2>&1; echo $?");
    };
    shell.folder.makeFolder("Downloads");
    for (const CommandSpec& command : commandTable()) {
        const std::string name(command.name);
        for (const OptionSpec* option : reference::optionsOf(command)) {
            for (const std::string_view value : option->values) {
                const std::string line = name + " " + std::string(option->name) + " " + std::string(value);
                EXPECT_EQ(status(line), "0\n") << line;
            }
        }
        for (const KeySpec& key : command.keys) {
            for (const std::string_view value : key.values) {
                const std::string line = name + " " + std::string(key.name) + " " + std::string(value);
                EXPECT_EQ(status(line), "0\n") << line;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Shells, Completion, ::testing::ValuesIn(dialects),
                         [](const auto& dialect) { return dialect.param.shell; });
