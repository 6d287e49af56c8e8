#include "OrdovanCLI/reference/Reference.h"

#include <algorithm>

namespace ordovan::cli::reference {
namespace {

constexpr std::string_view head =
    R"sh(# What bash completes for ordovan-cli. Written from the program's table of commands and options.

# Proposes the words that begin like the one being typed.
_ordovan_cli_words() {
    local word
    for word in $1; do
        [[ $word == "$2"* ]] && COMPREPLY+=("$word")
    done
}
)sh";

// bash takes "--option=value" apart into three words.
constexpr std::string_view body = R"sh(
_ordovan_cli() {
    local current=${COMP_WORDS[COMP_CWORD]} word command= option= ended=
    local -a arguments=()
    local -i index=1
    COMPREPLY=()
    while ((index < COMP_CWORD)); do
        word=${COMP_WORDS[index]}
        index+=1
        if [[ -n $ended || $word != -?* ]]; then
            if [[ -z $command ]]; then command=$word; else arguments+=("$word"); fi
        elif [[ $word == -- ]]; then
            ended=yes
        elif _ordovan_cli_takes_value "$command $word"; then
            [[ ${COMP_WORDS[index]} == = ]] && index+=1
            index+=1
            ((index > COMP_CWORD)) && option=$word
        fi
    done
    if [[ -n $option ]]; then
        [[ $current == = ]] && current=
        _ordovan_cli_value "$command $option" "$current"
    elif [[ -z $ended && $current == -* ]]; then
        _ordovan_cli_words "$(_ordovan_cli_options "$command")" "$current"
    elif [[ -z $command ]]; then
        _ordovan_cli_words "$(_ordovan_cli_commands)" "$current"
    else
        _ordovan_cli_argument "$command" "$current" "${arguments[@]}"
    fi
}

complete -F _ordovan_cli ordovan-cli
)sh";

/// The patterns of "COMMAND OPTION": an option means the same behind every command that takes it, but for a name with
/// two meanings.
std::vector<std::string> patterns(const OptionSpec& option) {
    const auto sameName = [&](const OptionSpec& other) { return other.name == option.name; };
    if (std::ranges::count_if(optionTable(), sameName) == 1) return {"*' " + std::string(option.name) + "'"};
    std::vector<std::string> found;
    for (const CommandSpec& command : commandTable()) {
        if (!option.commands.test(static_cast<std::size_t>(command.command))) continue;
        found.push_back("'" + std::string(command.name) + " " + std::string(option.name) + "'");
    }
    return found;
}

std::string proposal(const Proposed& proposed) {
    switch (proposed.kind) {
        case Proposal::files:
            return "compopt -o default";
        case Proposal::folders:
            return "compopt -o dirnames";
        case Proposal::words:
            return "_ordovan_cli_words '" + joined(proposed.words, " ") + "' \"$2\"";
        case Proposal::nothing:
            break;
    }
    return {};
}

/// The arms of a case: what to do for each pattern, those with equal deeds in one arm.
class Arms {
public:
    void add(const std::string& pattern, const std::string& deed) {
        const auto known = std::ranges::find(arms_, deed, &Arm::deed);
        if (known == arms_.end()) {
            arms_.push_back({deed, {pattern}});
        } else if (std::ranges::find(known->patterns, pattern) == known->patterns.end()) {
            known->patterns.push_back(pattern);
        }
    }
    [[nodiscard]] std::string text() const {
        std::string out;
        for (const Arm& arm : arms_) {
            const std::vector<std::string_view> patterns(arm.patterns.begin(), arm.patterns.end());
            out += "        " + joined(patterns, " | ") + ")\n            " + arm.deed + " ;;\n";
        }
        return out;
    }

private:
    struct Arm {
        std::string deed;
        std::vector<std::string> patterns;
    };
    std::vector<Arm> arms_;
};

std::string names(const std::vector<const OptionSpec*>& options) {
    std::vector<std::string_view> found;
    found.reserve(options.size());
    for (const OptionSpec* option : options) found.push_back(option->name);
    return joined(found, " ");
}

std::string commandNames() {
    std::string out = "\n_ordovan_cli_commands() {\n    echo '";
    for (const CommandSpec& command : commandTable()) {
        if (&command != &commandTable().front()) out += ' ';
        out += command.name;
    }
    return out + "'\n}\n";
}

std::string optionNames() {
    Arms arms;
    for (const CommandSpec& command : commandTable()) {
        arms.add(std::string(command.name), "echo '" + names(optionsOf(command)) + "'");
    }
    Arms others;
    others.add("*", "echo '" + names(commonOptions()) + "'");
    return "\n# The options that go with a command.\n_ordovan_cli_options() {\n    case $1 in\n" + arms.text() +
           others.text() + "    esac\n}\n";
}

std::string optionValues() {
    Arms takes, values;
    for (const OptionSpec& option : optionTable()) {
        if (!option.takesValue()) continue;
        const Proposed value = proposed(option);
        for (const std::string& pattern : patterns(option)) {
            takes.add(alwaysTakesValue(option.name) ? "*' " + std::string(option.name) + "'" : pattern, "return 0");
            if (value.kind != Proposal::nothing) values.add(pattern, proposal(value));
        }
    }
    return "\n# Takes \"COMMAND OPTION\".\n_ordovan_cli_takes_value() {\n    case $1 in\n" + takes.text() +
           "    esac\n    return 1\n}\n\n# Takes \"COMMAND OPTION\" and the beginning of the value.\n"
           "_ordovan_cli_value() {\n    case $1 in\n" +
           values.text() + "    esac\n}\n";
}

/// What goes at "COMMAND PLACE FIRST": the number of arguments before it, and the first of them.
std::string arguments() {
    Arms arms;
    for (const CommandSpec& command : commandTable()) {
        const std::string name(command.name);
        std::vector<std::string_view> first;
        for (const ActionSpec& action : command.actions) first.push_back(action.name);
        for (const KeySpec& key : command.keys) first.push_back(key.name);
        const Proposed argument = first.empty() ? proposedArgument(command) : Proposed{Proposal::words, first};
        if (argument.kind != Proposal::nothing) arms.add("'" + name + " 0 '", proposal(argument));
        for (const KeySpec& key : command.keys) {
            arms.add("'" + name + " 1 " + std::string(key.name) + "'",
                     proposal({Proposal::words, {key.values.begin(), key.values.end()}}));
        }
    }
    return "\n# Takes the command, the beginning of the argument and the arguments before it.\n"
           "_ordovan_cli_argument() {\n    case \"$1 $(($# - 2)) ${3-}\" in\n" +
           arms.text() + "    esac\n}\n";
}

}  // namespace

std::string bashCompletion() {
    return std::string(head) + commandNames() + optionNames() + optionValues() + arguments() + std::string(body);
}

}  // namespace ordovan::cli::reference
