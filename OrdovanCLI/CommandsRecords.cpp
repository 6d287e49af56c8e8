#include "OrdovanCLI/Commands.h"

#include "OrdovanCLI/Format.h"

#include <algorithm>
#include <array>

namespace ordovan::cli {
namespace {

/// Why settings or rules could not be stored, as far as that can be told.
Outcome notSaved(Context& context, std::string_view sentence) {
    if (context.session.areSettingsHeldElsewhere()) {
        return Outcome::impossible(std::string(sentence) +
                                   " Another ordovan+ is saving its settings. Try again in a moment.");
    }
    return Outcome::impossible(std::string(sentence) + " Check the permissions of " +
                               inQuotes(context.session.settingsFolder().path()) + " and the free space there.");
}

// Rules.

/// A rule's position, counted from 0, from the number of the list; else how the command ends.
std::expected<std::size_t, Outcome> rulePosition(std::string_view typed, std::size_t ruleCount) {
    const auto number = wholeNumber(typed, 1, static_cast<std::int64_t>(ruleCount));
    if (number) return static_cast<std::size_t>(*number - 1);
    std::string sentence = "There is no rule " + inQuotes(typed) + "; you have ";
    appendCount(sentence, ruleCount, "rule");
    return std::unexpected(Outcome::usage(sentence + "."));
}

std::optional<Outcome> addRule(Context& context) {
    const auto& arguments = context.invocation.arguments;
    auto refusal = context.session.rules().add(arguments[0], arguments[1]);
    if (!refusal) return std::nullopt;
    return *refusal == RuleStore::notAdded ? notSaved(context, *refusal) : Outcome::usage(std::move(*refusal));
}

/// Deletes or moves one rule.
std::optional<Outcome> changeRule(Context& context) {
    RuleStore& rules = context.session.rules();
    const std::size_t count = rules.ruleSet().rules.size();
    std::vector<std::size_t> positions;
    for (const std::string_view argument : context.invocation.arguments) {
        const auto position = rulePosition(argument, count);
        if (!position) return position.error();
        positions.push_back(*position);
    }
    const std::size_t from = positions[0];
    // The store moves in front of a rule, counted before the move.
    const bool isDone = context.invocation.action == "delete"
                            ? rules.remove({from})
                            : rules.move({from}, positions[1] > from ? positions[1] + 1 : positions[1]);
    return isDone ? std::nullopt : std::optional(notSaved(context, "The rules couldn't be saved."));
}

// Settings.

/// One setting: its key, as the table has it, how it reads and how it is changed.
struct Setting {
    std::string_view key;
    bool isBoolean;
    std::string (*read)(const AppSettings&);
    /// Whether it was stored; nothing for a text that is no value of it.
    std::optional<bool> (*write)(AppSettings&, std::string_view text);
};

std::optional<bool> parseBoolean(std::string_view text) {
    if (text == "true" || text == "on" || text == "yes") return true;
    if (text == "false" || text == "off" || text == "no") return false;
    return std::nullopt;
}

std::string booleanText(bool value) {
    return value ? "true" : "false";
}

template <bool (AppSettings::*set)(bool)>
std::optional<bool> writeBoolean(AppSettings& settings, std::string_view text) {
    const auto value = parseBoolean(text);
    return value ? std::optional((settings.*set)(*value)) : std::nullopt;
}

std::optional<bool> writeTheme(AppSettings& settings, std::string_view text) {
    const auto theme = AppThemes::fromRawValue(text);
    return theme ? std::optional(settings.setTheme(*theme)) : std::nullopt;
}

constexpr std::array<Setting, 3> settingTable = {{
    {"groupByMonth", true, [](const AppSettings& s) { return booleanText(s.groupByMonth()); },
     writeBoolean<&AppSettings::setGroupByMonth>},
    {"includeHidden", true, [](const AppSettings& s) { return booleanText(s.includeHidden()); },
     writeBoolean<&AppSettings::setIncludeHidden>},
    {"theme", false, [](const AppSettings& s) { return std::string(rawValue(s.theme())); }, writeTheme},
}};

}  // namespace

Outcome runRules(Context& context) {
    if (auto end = interruptibleFromHere()) return std::move(*end);
    const std::string_view action = context.invocation.action;
    const bool isChange = action != "list";
    if (isChange) {
        if (auto end = action == "add" ? addRule(context) : changeRule(context)) return std::move(*end);
    }
    const OrdovanRuleSet& rules = context.session.rules().ruleSet();
    context.put(rules);
    context.warnOfRecords({Context::Record::settings});
    if (rules.rules.empty()) context.console.remark("No rules. Files use the built-in folders (Documents, Images…).");
    return isChange ? Outcome::changed() : Outcome();
}

Outcome runHistory(Context& context) {
    const Invocation& invocation = context.invocation;
    const auto kindName = invocation.value(Option::kind);
    const auto kind = kindName ? runKindFromRawValue(*kindName) : std::nullopt;
    if (kindName && !kind) {
        return Outcome::usage("--kind takes " + alternatives(spec(Option::kind).values) + ", not " +
                              inQuotes(*kindName) + ".");
    }
    const bool isToClear = invocation.has(Option::clear);
    bool isCleared = false;
    if (isToClear) {
        if (auto refused = context.refusal("clear the history")) return std::move(*refused);
        if (!invocation.has(Option::yes)) {
            context.console.remark("Only this log is cleared. Organized files and Undo stay as they are.");
        }
        const Console::Answer answer = context.consent("Clear the run history?");
        if (answer == Console::Answer::interrupted) return Outcome::interrupted();
        isCleared = answer == Console::Answer::yes;
    }
    if (auto end = interruptibleFromHere()) return std::move(*end);
    HistoryStore& store = context.session.ports().history;
    if (isCleared) {
        auto cleared = store.clear();
        if (!cleared.saved) return Outcome::impossible(std::move(*cleared.warning));
    }
    context.warnOfRecords({Context::Record::history});
    std::vector<OrdovanRunRecord> runs = store.load().records;
    const bool hasAny = !runs.empty();
    if (kind) std::erase_if(runs, [&](const OrdovanRunRecord& run) { return run.kind != *kind; });
    if (!isToClear || context.wantsJson()) context.put(std::span<const OrdovanRunRecord>(runs));
    if (!hasAny && !context.isFlawed)
        context.console.remark("Each time you organize or undo, a summary appears here.");
    else if (hasAny && runs.empty())
        context.console.remark("No run of this kind.");
    return isCleared ? Outcome::changed() : Outcome();
}

Outcome runSettings(Context& context) {
    if (auto end = interruptibleFromHere()) return std::move(*end);
    const auto& arguments = context.invocation.arguments;
    AppSettings& settings = context.session.settings();
    context.warnOfRecords({Context::Record::settings});
    SettingsResult result;
    const auto show = [&](const Setting& setting) {
        result.values.push_back({setting.key, setting.read(settings), setting.isBoolean});
    };
    if (arguments.empty()) {
        std::ranges::for_each(settingTable, show);
        context.put(result);
        return {};
    }
    const auto found = std::ranges::find(settingTable, arguments[0], &Setting::key);
    if (found == settingTable.end()) {
        std::vector<std::string_view> known;
        for (const KeySpec& key : spec(Command::settings).keys) known.push_back(key.name);
        return Outcome::usage("There is no setting " + inQuotes(arguments[0]) + "; the keys are " +
                              alternatives(known, "and") + ".");
    }
    const bool isChange = arguments.size() == 2;
    if (isChange) {
        const auto stored = found->write(settings, arguments[1]);
        if (!stored) {
            const auto key = std::ranges::find(spec(Command::settings).keys, found->key, &KeySpec::name);
            return Outcome::usage(std::string(found->key) + " is " + alternatives(key->values) + ", not " +
                                  inQuotes(arguments[1]) + ".");
        }
        if (!*stored) return notSaved(context, "The setting couldn't be saved.");
    }
    show(*found);
    context.put(result);
    return isChange ? Outcome::changed() : Outcome();
}

}  // namespace ordovan::cli
