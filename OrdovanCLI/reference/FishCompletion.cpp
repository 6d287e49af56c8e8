#include "OrdovanCLI/reference/Reference.h"

namespace ordovan::cli::reference {
namespace {

constexpr std::string_view head =
    R"sh(# What fish completes for ordovan-cli. Written from the program's table of commands and options.

# The command being typed and the arguments behind it, without options and their values.
function __ordovan_cli_words
    set -l tokens (commandline -opc)
    set -e tokens[1]
    set -l command ''
    set -l skips 0
    set -l ended 0
    for token in $tokens
        if test $skips = 1
            set skips 0
        else if test $ended = 0; and test "$token" = --
            set ended 1
        else if test $ended = 0; and string match -q -- '-?*' $token
            switch "$command $token"
)sh";

constexpr std::string_view body = R"sh(                    set skips 1
            end
        else
            test -z "$command"; and set command $token
            echo -- $token
        end
    end
end

# Whether the command is one of these.
function __ordovan_cli_is
    set -l words (__ordovan_cli_words)
    set -q words[1]; and contains -- $words[1] $argv
end

# Whether what stands before the argument being typed is exactly this.
function __ordovan_cli_behind
    set -l words (__ordovan_cli_words)
    test "$words" = "$argv"
end

complete -c ordovan-cli -f
)sh";

std::string fishQuoted(std::string_view text) {
    std::string out = "'";
    for (const char c : text) {
        if (c == '\'' || c == '\\') out += '\\';
        out += c;
    }
    return out + "'";
}

/// The commands that take an option: "duplicates big".
std::string commandsOf(const OptionSpec& option) {
    std::vector<std::string_view> names;
    for (const CommandSpec& command : commandTable()) {
        if (option.commands.test(static_cast<std::size_t>(command.command))) names.push_back(command.name);
    }
    return joined(names, " ");
}

/// The case patterns of "COMMAND OPTION" that take a value.
std::string valuePatterns() {
    std::string out = "                case";
    const auto add = [&](std::string_view command, std::string_view option) {
        const std::string pattern = " '" + std::string(command) + " " + std::string(option) + "'";
        if (!out.contains(pattern)) out += pattern;
    };
    for (const OptionSpec& option : optionTable()) {
        if (alwaysTakesValue(option.name)) {
            add("*", option.name);
            continue;
        }
        for (const CommandSpec& command : commandTable()) {
            const bool goesWith = option.commands.test(static_cast<std::size_t>(command.command));
            if (option.takesValue() && goesWith) add(command.name, option.name);
        }
    }
    return out + "\n";
}

std::string proposal(const Proposed& proposed) {
    switch (proposed.kind) {
        case Proposal::files:
            return " -F";
        case Proposal::folders:
            return " -a '(__fish_complete_directories (commandline -ct) Folder)'";
        case Proposal::words:
            return " -a " + fishQuoted(joined(proposed.words, " "));
        case Proposal::nothing:
            break;
    }
    return "";
}

std::string line(const std::string& condition, const std::string& what, std::string_view description) {
    std::string out = "complete -c ordovan-cli";
    if (!condition.empty()) out += " -n " + fishQuoted(condition);
    out += what;
    if (!description.empty()) out += " -d " + fishQuoted(description);
    return out + "\n";
}

std::string ofCommand(const CommandSpec& command) {
    const std::string name(command.name);
    std::string out = line("__ordovan_cli_behind", " -a " + name, command.summary);
    for (const ActionSpec& action : command.actions) {
        out += line("__ordovan_cli_behind " + name, " -a " + std::string(action.name), action.help);
    }
    for (const KeySpec& key : command.keys) {
        out += line("__ordovan_cli_behind " + name, " -a " + std::string(key.name), "");
        out += line("__ordovan_cli_behind " + name + " " + std::string(key.name),
                    proposal({Proposal::words, {key.values.begin(), key.values.end()}}), "");
    }
    const Proposed argument = proposedArgument(command);
    if (argument.kind != Proposal::nothing) out += line("__ordovan_cli_behind " + name, proposal(argument), "");
    return out;
}

std::string ofOption(const OptionSpec& option) {
    const std::string condition = option.commands.all() ? "" : "__ordovan_cli_is " + commandsOf(option);
    std::string what = " -l " + std::string(option.name.substr(2));
    if (option.takesValue()) {
        const Proposed value = proposed(option);
        what += (value.kind == Proposal::files ? " -r" : " -x") + proposal(value);
    }
    return line(condition, what, option.help);
}

}  // namespace

std::string fishCompletion() {
    std::string out = std::string(head) + valuePatterns() + std::string(body);
    for (const CommandSpec& command : commandTable()) out += ofCommand(command);
    for (const OptionSpec& option : optionTable()) out += ofOption(option);
    return out;
}

}  // namespace ordovan::cli::reference
