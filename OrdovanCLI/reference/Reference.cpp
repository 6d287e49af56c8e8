#include "OrdovanCLI/reference/Reference.h"

#include "OrdovanCore/Categories.h"

#include <algorithm>
#include <array>

namespace ordovan::cli::reference {
namespace {

constexpr std::array<Example, 8> exampleTable = {{
    {"preview", "See where every file of your Downloads folder would go"},
    {"preview ~/Downloads --export plan.md", "Save that as a report to read before deciding"},
    {"organize ~/Downloads --only Images --older-than 30 --yes", "Organize pictures older than a month, unasked"},
    {"organize --group-by-month --leave-out ~/Downloads/thesis", "Organize by month, but for one project"},
    {"undo ~/Downloads", "Put everything back"},
    {"duplicates ~/Downloads --keep oldest --trash", "Find exact copies and move all but the oldest to the Trash"},
    {"big ~/Downloads --min-size 100MB", "List what takes the most room"},
    {"restore ~/Downloads", "Put trashed files back"},
}};

std::vector<std::string_view> categoryFolders() {
    std::vector<std::string_view> names;
    names.reserve(OrdovanFileCategories::allCases.size());
    for (const OrdovanFileCategory category : OrdovanFileCategories::allCases) names.push_back(rawValue(category));
    return names;
}

Proposed ofWords(std::span<const std::string_view> words) {
    return {Proposal::words, {words.begin(), words.end()}};
}

}  // namespace

std::span<const Example> examples() {
    return exampleTable;
}

Proposed proposed(const OptionSpec& option) {
    if (!option.takesValue()) return {Proposal::nothing, {}};
    if (!option.values.empty()) return ofWords(option.values);
    switch (option.option) {
        case Option::only:
            return ofWords(categoryFolders());
        case Option::exportTo:
        case Option::leaveOut:
        case Option::entry:
        case Option::trashFile:
        case Option::original:
            return {Proposal::files, {}};
        default:
            return {Proposal::nothing, {}};
    }
}

Proposed proposedArgument(const CommandSpec& command) {
    return {command.arguments == "[FOLDER]" ? Proposal::folders : Proposal::nothing, {}};
}

bool alwaysTakesValue(std::string_view optionName) {
    return std::ranges::none_of(
        optionTable(), [&](const OptionSpec& option) { return option.name == optionName && !option.takesValue(); });
}

std::vector<const OptionSpec*> commonOptions() {
    std::vector<const OptionSpec*> found;
    for (const OptionSpec& option : optionTable()) {
        if (option.commands.all()) found.push_back(&option);
    }
    return found;
}

std::vector<const OptionSpec*> optionsOf(const CommandSpec& command) {
    std::vector<const OptionSpec*> found;
    for (const OptionSpec& option : optionTable()) {
        if (option.commands.test(static_cast<std::size_t>(command.command)) && !option.commands.all()) {
            found.push_back(&option);
        }
    }
    std::ranges::copy(commonOptions(), std::back_inserter(found));
    return found;
}

std::string joined(std::span<const std::string_view> words, std::string_view separator) {
    std::string out;
    for (const std::string_view& word : words) {
        if (&word != &words.front()) out += separator;
        out += word;
    }
    return out;
}

std::string shellQuoted(std::string_view text) {
    std::string out = "'";
    for (const char c : text) {
        if (c == '\'') {
            out += "'\\''";
        } else {
            out += c;
        }
    }
    return out + "'";
}

}  // namespace ordovan::cli::reference
