#pragma once

#include "OrdovanCLI/Options.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

/// The manual page of `ordovan-cli` and what shells complete, written from the table of commands and options. Pure; any
/// thread. Every text ends with a line end.
namespace ordovan::cli::reference {

/// Which release a manual page is of.
struct Edition {
    std::string version;   ///< "1.2.3"
    std::string date;      ///< "2026-11-21"
    std::string homepage;  ///< where to read more
};

/// One thing to type, and what it does. Every example is a command line that the program understands.
struct Example {
    std::string_view line;   ///< without "ordovan-cli "; as typed in a shell, in words without quotes
    std::string_view title;  ///< without a full stop
};
[[nodiscard]] std::span<const Example> examples();

/// The manual page in man(7) macros.
[[nodiscard]] std::string manualPage(const Edition& edition);

/// Completions for bash (4.4 or later; needs no other package), zsh and fish (3.0 or later).
[[nodiscard]] std::string bashCompletion();
[[nodiscard]] std::string zshCompletion();
[[nodiscard]] std::string fishCompletion();

// What the completions have in common.

/// What a shell can propose where a value or an argument is typed.
enum class Proposal { nothing, files, folders, words };
struct Proposed {
    Proposal kind;
    std::vector<std::string_view> words;  ///< for `words`
};
[[nodiscard]] Proposed proposed(const OptionSpec& option);
/// The same for the first argument of a command without actions and keys.
[[nodiscard]] Proposed proposedArgument(const CommandSpec& command);

/// True where the name takes a value, whichever command it stands behind.
[[nodiscard]] bool alwaysTakesValue(std::string_view optionName);
/// The options of one command, the ones of every command last.
[[nodiscard]] std::vector<const OptionSpec*> optionsOf(const CommandSpec& command);
/// The options of every command.
[[nodiscard]] std::vector<const OptionSpec*> commonOptions();

/// Joins texts: "a|b|c".
[[nodiscard]] std::string joined(std::span<const std::string_view> words, std::string_view separator);
/// The text between single quotes, as a POSIX shell and zsh read them.
[[nodiscard]] std::string shellQuoted(std::string_view text);

}  // namespace ordovan::cli::reference
