#pragma once

#include "OrdovanCLI/Options.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace ordovan::fuzz {

/// What must hold for every command line: each line of the input is one argument. Returns what is wrong with the
/// parser, or an empty text. Nothing is done.
inline std::string commandLine(std::string_view input) {
    std::vector<std::string_view> arguments;
    for (std::size_t begin = 0; begin <= input.size();) {
        const std::size_t end = std::min(input.find('\n', begin), input.size());
        arguments.push_back(input.substr(begin, end - begin));
        begin = end + 1;
    }
    for (const std::string_view argument : arguments) {
        if (cli::wholeNumber(argument, 1, 9).value_or(1) > 9) return "a number lies beyond its bounds";
        if (cli::parsedSize(argument).value_or(0) < 0) return "a size is negative";
    }
    const auto parsed = cli::parse(arguments);
    if (!parsed)
        return parsed.error().ends_with('.') || parsed.error().ends_with('"') ? "" : "a refusal is no sentence";
    const auto isGiven = [&](std::string_view text) {
        return std::ranges::any_of(arguments, [&](std::string_view argument) {
            return argument == text || argument.ends_with("=" + std::string(text));
        });
    };
    for (const auto& [option, value] : parsed->options) {
        if (cli::spec(option).takesValue() ? !isGiven(value) : !value.empty())
            return "an option has a value of its own";
    }
    for (const std::string_view argument : parsed->arguments) {
        if (!isGiven(argument)) return "an argument was not given";
    }
    const bool asks = parsed->has(cli::Option::help) || parsed->has(cli::Option::version);
    if (!parsed->command && !asks) return "there is nothing to do";
    if (!asks) {
        const cli::CommandSpec& command = cli::spec(*parsed->command);
        if (command.actions.empty() && parsed->arguments.size() > command.maxArguments)
            return "there are too many arguments";
        if (command.actions.empty() != parsed->action.empty()) return "the action is not the command's";
        for (const auto& [option, value] : parsed->options) {
            if (!cli::spec(option).commands.test(static_cast<std::size_t>(*parsed->command)))
                return "an option is another's";
        }
    }
    return cli::helpText(parsed->command).ends_with('\n') ? "" : "a help has no end";
}

}  // namespace ordovan::fuzz
