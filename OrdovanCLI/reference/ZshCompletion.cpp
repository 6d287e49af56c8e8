#include "OrdovanCLI/reference/Reference.h"

namespace ordovan::cli::reference {
namespace {

/// Text with a backslash before each of these characters, as zsh's _arguments and _describe want it.
std::string escaped(std::string_view text, std::string_view characters) {
    std::string out;
    for (const char c : text) {
        if (c == '\\' || characters.contains(c)) out += '\\';
        out += c;
    }
    return out;
}

std::string action(const Proposed& proposed) {
    switch (proposed.kind) {
        case Proposal::files:
            return "_files";
        case Proposal::folders:
            return "_directories";
        case Proposal::words:
            return "(" + joined(proposed.words, " ") + ")";
        case Proposal::nothing:
            break;
    }
    return " ";
}

/// Options that make no sense beside this one: "(--a --b)".
std::string excluded(const OptionSpec& option) {
    if (option.option == Option::help || option.option == Option::version) return "(- *)";
    std::string names;
    const auto add = [&](const OptionSpec& other) { names.append(names.empty() ? "" : " ").append(other.name); };
    if (!option.repeatable) add(option);
    for (const OptionSpec& other : optionTable()) {
        if (option.contradicts == other.option || other.contradicts == option.option) add(other);
    }
    return names.empty() ? "" : "(" + names + ")";
}

/// One word for _arguments.
std::string argumentSpec(const OptionSpec& option) {
    std::string out = excluded(option);
    if (option.repeatable) out += "*";
    out += option.name;
    if (option.takesValue()) out += "=";
    out += "[" + escaped(option.help, "[]") + "]";
    if (option.takesValue()) out += ":" + std::string(option.argument) + ":" + action(proposed(option));
    return shellQuoted(out);
}

std::string described(std::string_view name, std::string_view description) {
    return shellQuoted(escaped(name, ":") + ":" + std::string(description));
}

/// What _arguments gets for the arguments of a command.
std::string places(const CommandSpec& command) {
    if (!command.actions.empty()) return " '1:ACTION:->action' '*:: :'";
    if (!command.keys.empty()) return " '1:KEY:->key' '2:VALUE:->value'";
    const Proposed argument = proposedArgument(command);
    return argument.kind == Proposal::nothing ? "" : " '1:FOLDER:" + action(argument) + "'";
}

std::string states(const CommandSpec& command) {
    std::string out;
    if (!command.actions.empty()) {
        out += "            if [[ $state == action ]]; then\n                proposals=(\n";
        for (const ActionSpec& action : command.actions) {
            out += "                    " + described(action.name, action.help) + "\n";
        }
        out += "                )\n                _describe -t actions action proposals && result=0\n            fi\n";
    }
    if (!command.keys.empty()) {
        std::vector<std::string_view> names;
        for (const KeySpec& key : command.keys) names.push_back(key.name);
        out += "            if [[ $state == key ]]; then\n                compadd -- " + joined(names, " ") +
               " && result=0\n            fi\n";
        out += "            if [[ $state == value ]]; then\n                case $line[1] in\n";
        for (const KeySpec& key : command.keys) {
            out += "                (" + std::string(key.name) + ") compadd -- " + joined(key.values, " ") +
                   " && result=0 ;;\n";
        }
        out += "                esac\n            fi\n";
    }
    return out;
}

std::string ofCommand(const CommandSpec& command) {
    std::string out = "        (" + std::string(command.name) + ")\n            _arguments -C -S $every";
    for (const OptionSpec* option : optionsOf(command)) {
        if (!option->commands.all()) out += " \\\n                " + argumentSpec(*option);
    }
    out += places(command) + " && result=0\n";
    return out + states(command) + "            ;;\n";
}

}  // namespace

std::string zshCompletion() {
    std::string out =
        "#compdef ordovan-cli\n"
        "# What zsh completes for ordovan-cli. Written from the program's table of commands and options.\n\n"
        "local curcontext=$curcontext state line result=1\n"
        "typeset -A opt_args\n"
        "local -a every commands proposals\n"
        "every=(\n";
    for (const OptionSpec* option : commonOptions()) out += "    " + argumentSpec(*option) + "\n";
    out += ")\ncommands=(\n";
    for (const CommandSpec& command : commandTable()) out += "    " + described(command.name, command.summary) + "\n";
    out +=
        ")\n\n"
        "_arguments -C -S $every '1:command:->command' '*::argument:->argument' && result=0\n"
        "case $state in\n"
        "(command)\n"
        "    _describe -t commands command commands && result=0\n"
        "    ;;\n"
        "(argument)\n"
        "    curcontext=${curcontext%:*:*}:ordovan-cli-$words[1]:\n"
        "    case $words[1] in\n";
    for (const CommandSpec& command : commandTable()) out += ofCommand(command);
    out += "    esac\n    ;;\nesac\nreturn result\n";
    return out;
}

}  // namespace ordovan::cli::reference
