#pragma once

#include <bitset>
#include <cstddef>
#include <cstdint>
#include <expected>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// The one table of commands and options: parsing, help, the manual page and what shells complete are made from it.
/// Sentences that explain one option or advise another command name them as well.
namespace ordovan::cli {

enum class Command { preview, organize, undo, duplicates, big, recovery, restore, rules, history, settings };
inline constexpr std::size_t commandCount = 10;

enum class Option {
    exportTo,
    only,
    leaveOut,
    olderThan,
    includePartial,
    groupByMonth,
    noGroupByMonth,
    includeHidden,
    noIncludeHidden,
    entry,
    keep,
    trashExtras,
    minSize,
    limit,
    trashFile,
    original,
    kind,
    clear,
    yes,
    json,
    quiet,
    noColor,
    help,
    version,
};
inline constexpr std::size_t optionCount = 24;

/// One of the things a command can be told to do by its first argument ("add" of "rules").
struct ActionSpec {
    std::string_view name;
    std::string_view arguments;  ///< as shown in the help: "EXTENSIONS FOLDER"
    std::size_t argumentCount;
    std::string_view help;
};

/// Something a command's first argument can be, with all that its second can be then.
struct KeySpec {
    std::string_view name;
    std::span<const std::string_view> values;
};

struct CommandSpec {
    Command command;
    std::string_view name;
    std::string_view arguments;           ///< as shown in the help: "[FOLDER]"
    std::size_t maxArguments;             ///< all are optional; only for commands without actions
    std::span<const ActionSpec> actions;  ///< empty for most; the first is what the bare command does
    std::string_view summary;             ///< one line, without a full stop
    std::string_view details;             ///< sentences for the command's own help
    std::span<const KeySpec> keys = {};   ///< where the arguments are a key and a value: every key
};

struct OptionSpec {
    Option option;
    std::string_view name;      ///< with its two dashes; commands may give one name different meanings
    std::string_view argument;  ///< the value's name in the help; empty for an option without a value
    bool repeatable;
    std::bitset<commandCount> commands;  ///< which commands take it; all of them for a global option
    std::optional<Option> contradicts;   ///< another option that makes no sense beside it
    std::string_view help;
    std::span<const std::string_view> values = {};  ///< everything the value can be, where that can be listed

    [[nodiscard]] bool takesValue() const noexcept { return !argument.empty(); }
};

// The exit statuses; `exitStatusTable` tells what they mean.
inline constexpr int exitDone = 0;
inline constexpr int exitFlawed = 1;
inline constexpr int exitUsage = 2;
inline constexpr int exitImpossible = 3;
inline constexpr int exitInterrupted = 130;

struct ExitStatusSpec {
    int status;
    std::string_view meaning;  ///< without a full stop
    std::string_view details;  ///< sentences for the manual page; may be empty
};

/// In the order in which the help shows them.
[[nodiscard]] std::span<const CommandSpec> commandTable();
[[nodiscard]] std::span<const OptionSpec> optionTable();
[[nodiscard]] std::span<const ExitStatusSpec> exitStatusTable();
[[nodiscard]] const CommandSpec& spec(Command command);
[[nodiscard]] const OptionSpec& spec(Option option);

/// A command line that was understood. The texts are those of the arguments it was parsed from.
struct Invocation {
    std::optional<Command> command;                            ///< missing only beside `help` or `version`
    std::string_view action;                                   ///< for a command with actions: always one of them
    std::vector<std::string_view> arguments;                   ///< without the command and the action
    std::vector<std::pair<Option, std::string_view>> options;  ///< in the order given

    [[nodiscard]] bool has(Option option) const;
    /// The value of an option, if it was given.
    [[nodiscard]] std::optional<std::string_view> value(Option option) const;
    /// What a pair of opposite options says; nothing when neither was given.
    [[nodiscard]] std::optional<bool> choice(Option on, Option off) const;
    /// The values of a repeatable option, in the order given.
    [[nodiscard]] std::vector<std::string_view> values(Option option) const;
};

/// Reads a command line (without the program's name). An option's value is either the next argument, whatever it looks
/// like, or what follows "=" in the same one. "--" ends the options. An option that takes a value for one command and
/// none for another must stand behind its command. `--help` and `--version` win over mistakes. The error is one
/// sentence.
[[nodiscard]] std::expected<Invocation, std::string> parse(std::span<const std::string_view> arguments);

/// A whole number without sign, spaces or anything behind it, within bounds; nothing for any other text.
[[nodiscard]] std::optional<std::int64_t> wholeNumber(std::string_view text, std::int64_t lowest, std::int64_t highest);

/// A size in bytes: a whole number alone, or a number, perhaps with a decimal point, and a decimal unit in any case
/// ("500k", "10MB", "1.5 GB"; up to EB). A part of a byte counts as one. Nothing for any other text, and beyond 64
/// bits.
[[nodiscard]] std::optional<std::int64_t> parsedSize(std::string_view text);

/// Texts as alternatives: "a, b or c".
[[nodiscard]] std::string alternatives(std::span<const std::string_view> words, std::string_view last = "or");

/// The help text of the program, or of one command. Ends with a line end.
[[nodiscard]] std::string helpText(std::optional<Command> command);

}  // namespace ordovan::cli
