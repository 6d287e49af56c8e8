#include "OrdovanCLI/Options.h"

#include "OrdovanCLI/Format.h"
#include "OrdovanCore/Text.h"

#include <algorithm>
#include <charconv>
#include <functional>

namespace ordovan::cli {
namespace {

constexpr std::string_view hint = " See \"ordovan-cli --help\".";

class Parser {
public:
    explicit Parser(std::span<const std::string_view> arguments) : rest_(arguments) {}

    std::expected<Invocation, std::string> run() {
        while (!rest_.empty()) {
            const std::string_view argument = take();
            if (!optionsEnded_ && argument == "--") {
                optionsEnded_ = true;
            } else if (!optionsEnded_ && argument.size() > 1 && argument.starts_with('-')) {
                option(argument);
            } else {
                plain(argument);
            }
        }
        if (result_.has(Option::help) || result_.has(Option::version)) return std::move(result_);
        check();
        if (!error_.empty()) return std::unexpected(std::move(error_));
        return std::move(result_);
    }

private:
    std::string_view take() {
        const std::string_view first = rest_.front();
        rest_ = rest_.subspan(1);
        return first;
    }

    void askForHelp() { result_.options.emplace_back(Option::help, std::string_view()); }

    /// Only the first mistake is told.
    void fail(std::string sentence) {
        if (error_.empty()) error_ = std::move(sentence);
    }

    void option(std::string_view argument) {
        if (argument == "-h") return askForHelp();
        const std::size_t equals = argument.find('=');
        const std::string_view name = argument.substr(0, equals);
        const OptionSpec* found = named(name);
        if (found == nullptr) return;
        if (!found->takesValue()) {
            if (equals != std::string_view::npos) return fail(std::string(name) + " takes no value.");
            result_.options.emplace_back(found->option, std::string_view());
        } else if (equals != std::string_view::npos) {
            result_.options.emplace_back(found->option, argument.substr(equals + 1));
        } else if (rest_.empty()) {
            fail(std::string(name) + " needs a value: " + std::string(name) + " " + std::string(found->argument) + ".");
        } else {
            result_.options.emplace_back(found->option, take());
        }
    }

    /// The option of a name as the command means it; any of that name while no command is known. Null after a mistake.
    const OptionSpec* named(std::string_view name) {
        const OptionSpec* found = nullptr;
        for (const OptionSpec& option : optionTable()) {
            if (option.name != name) continue;
            if (result_.command && isMeant(option)) return &option;
            if (!result_.command && found != nullptr && found->takesValue() != option.takesValue()) {
                fail(std::string(name) + " must stand behind its command.");
                return nullptr;
            }
            if (found == nullptr) found = &option;
        }
        if (found == nullptr) fail("Unknown option " + inQuotes(name) + "." + std::string(hint));
        return found;
    }

    [[nodiscard]] bool isMeant(const OptionSpec& option) const {
        return option.commands.test(static_cast<std::size_t>(*result_.command));
    }

    void plain(std::string_view argument) {
        if (result_.command) return result_.arguments.push_back(argument);
        if (commandNamed_) return;
        if (argument == "help" && !result_.has(Option::help)) return askForHelp();
        commandNamed_ = true;
        const auto table = commandTable();
        const auto found = std::ranges::find(table, argument, &CommandSpec::name);
        if (found == table.end()) return fail("Unknown command " + inQuotes(argument) + "." + std::string(hint));
        result_.command = found->command;
    }

    void check() {
        if (!result_.command) return fail("Say what to do, for example \"ordovan-cli preview\"." + std::string(hint));
        for (auto given = result_.options.begin(); given != result_.options.end(); ++given) {
            // An option in front of its command may have been taken for another of its name.
            if (const OptionSpec* meant = named(spec(given->first).name)) given->first = meant->option;
            checkOption(given);
        }
        const CommandSpec& command = spec(*result_.command);
        if (!command.actions.empty()) return checkAction(command);
        if (result_.arguments.size() > command.maxArguments) {
            const std::string_view extra = result_.arguments[command.maxArguments];
            fail("Too many arguments for " + std::string(command.name) + ": " + inQuotes(extra) + ".");
        }
    }

    void checkOption(std::vector<std::pair<Option, std::string_view>>::const_iterator given) {
        const OptionSpec& option = spec(given->first);
        const std::string name(option.name);
        if (!isMeant(option)) {
            fail(name + " does not go with " + std::string(spec(*result_.command).name) + ".");
        }
        const auto isSame = [&](const auto& other) { return other.first == option.option; };
        if (option.takesValue() && !option.repeatable && std::any_of(result_.options.cbegin(), given, isSame)) {
            fail(name + " can be given only once.");
        }
        if (option.contradicts && result_.has(*option.contradicts)) {
            fail(name + " and " + std::string(spec(*option.contradicts).name) + " do not go together.");
        }
    }

    void checkAction(const CommandSpec& command) {
        if (result_.arguments.empty()) {
            result_.action = command.actions.front().name;
            return;
        }
        const auto found = std::ranges::find(command.actions, result_.arguments.front(), &ActionSpec::name);
        if (found == command.actions.end()) {
            std::vector<std::string_view> names;
            for (const ActionSpec& action : command.actions) names.push_back(action.name);
            const std::string what = inQuotes(result_.arguments.front());
            return fail(std::string(command.name) + " can not " + what + "; say " + alternatives(names) + ".");
        }
        result_.action = found->name;
        result_.arguments.erase(result_.arguments.begin());
        if (result_.arguments.size() != found->argumentCount) {
            std::string use = std::string(command.name) + " " + std::string(found->name);
            if (!found->arguments.empty()) use += " " + std::string(found->arguments);
            fail("Wrong number of arguments; say \"" + use + "\".");
        }
    }

    std::span<const std::string_view> rest_;
    Invocation result_;
    std::string error_;
    bool optionsEnded_ = false;
    bool commandNamed_ = false;
};

/// Two columns: what to type, and what it does.
void appendRow(std::string& out, std::string_view left, std::string_view right) {
    constexpr std::size_t column = 27;
    out.append("  ").append(left);
    out.append(left.size() < column ? column - left.size() : 1, ' ');
    out.append(right).push_back('\n');
}

/// Words on as few lines as they fit.
void appendParagraph(std::string& out, std::string_view words) {
    constexpr std::size_t width = 80;
    while (words.size() > width) {
        const std::size_t space = words.rfind(' ', width);
        out.append(words.substr(0, space)).push_back('\n');
        words.remove_prefix(space + 1);
    }
    out.append(words).push_back('\n');
}

void appendOptions(std::string& out, const std::function<bool(const OptionSpec&)>& isShown) {
    for (const OptionSpec& option : optionTable()) {
        if (!isShown(option)) continue;
        std::string left(option.name);
        if (option.takesValue()) left.append(" ").append(option.argument);
        appendRow(out, left, std::string(option.help) + (option.repeatable ? " (repeatable)" : ""));
    }
}

std::string programHelp() {
    std::string out = "Usage: ordovan-cli COMMAND [ARGUMENTS] [OPTIONS]\n\nCommands:\n";
    for (const CommandSpec& command : commandTable()) {
        std::string left(command.name);
        if (!command.arguments.empty()) left.append(" ").append(command.arguments);
        appendRow(out, left, command.summary);
    }
    out += "\nOptions of every command:\n";
    appendOptions(out, [](const OptionSpec& option) { return option.commands.all(); });
    out += "\n\"ordovan-cli COMMAND --help\" shows the options of one command. \"--\" ends the options.\n";
    std::string statuses = "Exit status:";
    for (const ExitStatusSpec& exit : exitStatusTable()) {
        statuses.append(" ").append(std::to_string(exit.status)).append(" ").append(exit.meaning).append(";");
    }
    statuses.back() = '.';
    appendParagraph(out, statuses);
    return out;
}

std::string commandHelp(const CommandSpec& command) {
    std::string out = "Usage: ordovan-cli " + std::string(command.name);
    if (!command.actions.empty()) out += " [ACTION]";
    if (!command.arguments.empty()) out.append(" ").append(command.arguments);
    out.append(" [OPTIONS]\n\n").append(command.summary).append(".\n\n");
    appendParagraph(out, command.details);
    if (!command.actions.empty()) out += "\nActions:\n";
    for (const ActionSpec& action : command.actions) {
        std::string left(action.name);
        if (!action.arguments.empty()) left.append(" ").append(action.arguments);
        appendRow(out, left, action.help);
    }
    out += "\nOptions:\n";
    const auto index = static_cast<std::size_t>(command.command);
    appendOptions(out, [&](const OptionSpec& option) { return option.commands.test(index) && !option.commands.all(); });
    appendOptions(out, [](const OptionSpec& option) { return option.commands.all(); });
    return out;
}

constexpr std::string_view digits = "0123456789";

/// The bytes of a decimal unit, written as "k", "kB", "KB" and so on; of no unit or "B" alone, 1.
std::optional<std::int64_t> unitSize(std::string_view unit) {
    constexpr std::string_view letters = "kmgtpe";
    if (!unit.empty() && (unit.back() == 'b' || unit.back() == 'B')) unit.remove_suffix(1);
    if (unit.empty()) return 1;
    const std::size_t position = letters.find(text::asciiLowercased(unit[0]));
    if (unit.size() > 1 || position == std::string_view::npos) return std::nullopt;
    std::int64_t size = 1;
    for (std::size_t power = 0; power <= position; ++power) size *= 1000;
    return size;
}

/// "0." and these digits, times the unit (a power of ten), rounded up.
std::int64_t scaledUp(std::string_view fraction, std::int64_t unit) {
    std::int64_t bytes = 0;
    bool isCut = false;
    for (const char digit : fraction) {
        unit /= 10;
        bytes += (digit - '0') * unit;
        isCut |= unit == 0 && digit != '0';
    }
    return bytes + (isCut ? 1 : 0);
}

}  // namespace

bool Invocation::has(Option option) const {
    return std::ranges::any_of(options, [&](const auto& given) { return given.first == option; });
}

std::optional<std::string_view> Invocation::value(Option option) const {
    const auto found = std::ranges::find(options, option, &std::pair<Option, std::string_view>::first);
    return found == options.end() ? std::nullopt : std::optional(found->second);
}

std::optional<bool> Invocation::choice(Option on, Option off) const {
    if (has(on)) return true;
    return has(off) ? std::optional(false) : std::nullopt;
}

std::vector<std::string_view> Invocation::values(Option option) const {
    std::vector<std::string_view> values;
    for (const auto& [given, value] : options) {
        if (given == option) values.push_back(value);
    }
    return values;
}

std::expected<Invocation, std::string> parse(std::span<const std::string_view> arguments) {
    return Parser(arguments).run();
}

std::optional<std::int64_t> wholeNumber(std::string_view text, std::int64_t lowest, std::int64_t highest) {
    std::int64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (text.starts_with('-') || error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number < lowest || number > highest ? std::nullopt : std::optional(number);
}

std::optional<std::int64_t> parsedSize(std::string_view text) {
    const std::size_t wholeEnd = std::min(text.find_first_not_of(digits), text.size());
    const auto whole = wholeNumber(text.substr(0, wholeEnd), 0, INT64_MAX);
    if (!whole) return std::nullopt;
    text.remove_prefix(wholeEnd);
    std::string_view fraction;
    if (text.starts_with('.')) {
        text.remove_prefix(1);
        fraction = text.substr(0, text.find_first_not_of(digits));
        if (fraction.empty()) return std::nullopt;
        text.remove_prefix(fraction.size());
    }
    if (text.size() > 1 && text.starts_with(' ')) text.remove_prefix(1);
    const auto unit = unitSize(text);
    // A fraction of bytes is no size.
    if (!unit || (*unit == 1 && !fraction.empty())) return std::nullopt;
    std::int64_t bytes = 0, sum = 0;
    if (__builtin_mul_overflow(*whole, *unit, &bytes)) return std::nullopt;
    if (__builtin_add_overflow(bytes, scaledUp(fraction, *unit), &sum)) return std::nullopt;
    return sum;
}

std::string alternatives(std::span<const std::string_view> words, std::string_view last) {
    std::string text;
    for (const std::string_view& word : words) {
        if (!text.empty()) text += &word == &words.back() ? " " + std::string(last) + " " : ", ";
        text += word;
    }
    return text;
}

std::string helpText(std::optional<Command> command) {
    return command ? commandHelp(spec(*command)) : programHelp();
}

}  // namespace ordovan::cli
