#include "OrdovanCLI/Options.h"

#include <array>
#include <initializer_list>

namespace ordovan::cli {
namespace {

std::bitset<commandCount> only(std::initializer_list<Command> commands) {
    std::bitset<commandCount> set;
    for (const Command command : commands) set.set(static_cast<std::size_t>(command));
    return set;
}

const std::bitset<commandCount> every = std::bitset<commandCount>().set();
const std::bitset<commandCount> planning = only({Command::preview, Command::organize});
const std::bitset<commandCount> scanning =
    only({Command::preview, Command::organize, Command::duplicates, Command::big});

constexpr std::array<ActionSpec, 4> ruleActions = {{
    {"list", "", 0, "Show the rules in their order (also what \"rules\" alone does)"},
    {"add", "EXTENSIONS FOLDER", 2, "Add a rule at the end: \"rules add 'dmg, pkg' Installers\""},
    {"delete", "N", 1, "Delete rule N of the list"},
    {"move", "N M", 2, "Make rule N the M-th of the list"},
}};

constexpr std::array<std::string_view, 4> keepPolicies = {"oldest", "newest", "shortest", "deepest"};
constexpr std::array<std::string_view, 4> runKinds = {"organize", "undo", "trash", "restoreTrash"};
constexpr std::array<std::string_view, 2> booleans = {"true", "false"};
constexpr std::array<std::string_view, 5> themes = {"lagoon", "sunset", "grape", "forest", "candy"};
constexpr std::array<KeySpec, 3> settingKeys = {
    {{"groupByMonth", booleans}, {"includeHidden", booleans}, {"theme", themes}}};

const std::array<CommandSpec, commandCount> commands = {{
    {Command::preview,
     "preview",
     "[FOLDER]",
     1,
     {},
     "Show where every file of a folder would go",
     "Reads names, sizes and dates only. Nothing is moved. FOLDER is your Downloads folder when it is left out."},
    {Command::organize,
     "organize",
     "[FOLDER]",
     1,
     {},
     "Move the files of a folder into its \"ordovan+\" folder",
     "Shows the preview, asks, and moves the files. Nothing is overwritten, and \"undo\" puts everything back."},
    {Command::undo,
     "undo",
     "[FOLDER]",
     1,
     {},
     "Put organized files back where they came from",
     "A file that changed since it was organized, or whose old place is taken, is left where it is."},
    {Command::duplicates,
     "duplicates",
     "[FOLDER]",
     1,
     {},
     "Find files of equal content, and move the extra copies to the Trash",
     "Compares whole contents, not names. Without --trash nothing is changed. Unless --keep says otherwise, the first "
     "copy of each group by its path is the one to keep. Of the policies, oldest and newest go by the time of the last "
     "change, shortest and deepest by the number of folders in the path; between equals, the shorter path stays. What "
     "lies in the folder's \"ordovan+\" is left out. "
     "\"restore\" "
     "puts trashed files back."},
    {Command::big,
     "big",
     "[FOLDER]",
     1,
     {},
     "List the largest files, and move files to the Trash",
     "Without --trash nothing is changed. --min-size and --limit say what is listed, not what may be moved. "
     "What lies in the folder's \"ordovan+\" is left out. \"restore\" puts trashed files back."},
    {Command::recovery,
     "recovery",
     "[FOLDER]",
     1,
     {},
     "Show what can be put back, and what can not any more",
     "Moves nothing."},
    {Command::restore,
     "restore",
     "[FOLDER]",
     1,
     {},
     "Put files back that duplicates or big moved to the Trash",
     "A file that changed in the Trash, or whose old place is taken, is left in the Trash."},
    {Command::rules, "rules", "", 0, ruleActions, "Show or change your own rules: which file types go to which folder",
     "The first rule that lists a file's extension decides; files without a rule use the built-in folders."},
    {Command::history,
     "history",
     "",
     0,
     {},
     "Show past runs, newest first",
     "Clearing it touches neither your files nor the undo record."},
    {Command::settings,
     "settings",
     "[KEY [VALUE]]",
     2,
     {},
     "Show or change a setting",
     "The keys are groupByMonth (true or false), includeHidden (true or false) and theme (lagoon, sunset, grape, "
     "forest or candy).",
     settingKeys},
}};

const std::array<OptionSpec, optionCount> options = {{
    {Option::exportTo,
     "--export",
     "FILE",
     false,
     only({Command::preview}),
     {},
     "Save the preview as a new file, Markdown (.md) or CSV (.csv)"},
    {Option::only,
     "--only",
     "FOLDERNAME",
     false,
     planning,
     {},
     "Select only files that would go to this folder, such as Images"},
    {Option::leaveOut, "--leave-out", "PATH", true, planning, {}, "Leave a file, or a whole folder, where it is"},
    {Option::olderThan,
     "--older-than",
     "DAYS",
     false,
     planning,
     {},
     "Select only files last changed more than DAYS days ago"},
    {Option::includePartial,
     "--include-partial",
     "",
     false,
     planning,
     {},
     "Select unfinished downloads (such as .part) as well"},
    {Option::groupByMonth, "--group-by-month", "", false, planning, Option::noGroupByMonth,
     "For this run: group files by month, whatever the setting"},
    {Option::noGroupByMonth, "--no-group-by-month", "", false, planning, {}, "For this run: do not group by month"},
    {Option::includeHidden, "--include-hidden", "", false, scanning, Option::noIncludeHidden,
     "For this run: include hidden files, whatever the setting"},
    {Option::noIncludeHidden, "--no-include-hidden", "", false, scanning, {}, "For this run: leave hidden files out"},
    {Option::entry,
     "--entry",
     "DESTINATION",
     true,
     only({Command::undo}),
     {},
     "Put back only this file, named by where it is now"},
    {Option::keep,
     "--keep",
     "POLICY",
     false,
     only({Command::duplicates}),
     {},
     "Which copy of each group to keep: oldest, newest, shortest or deepest",
     keepPolicies},
    {Option::trashExtras,
     "--trash",
     "",
     false,
     only({Command::duplicates}),
     {},
     "Move every copy but the one to keep to the Trash"},
    {Option::minSize,
     "--min-size",
     "SIZE",
     false,
     only({Command::big}),
     {},
     "List only files of this size or more: 500k, 10MB, 1.5GB, or bytes"},
    {Option::limit, "--limit", "N", false, only({Command::big}), {}, "List at most N files (50 unless told)"},
    {Option::trashFile, "--trash", "PATH", true, only({Command::big}), {}, "Move this file to the Trash"},
    {Option::original,
     "--entry",
     "ORIGINAL",
     true,
     only({Command::restore}),
     {},
     "Put back only this file, named by where it was"},
    {Option::kind, "--kind", "KIND", false, only({Command::history}), Option::clear,
     "Show only runs of this kind: organize, undo, trash or restoreTrash", runKinds},
    {Option::clear, "--clear", "", false, only({Command::history}), {}, "Empty the history"},
    {Option::yes, "--yes", "", false, every, {}, "Do not ask before acting"},
    {Option::json, "--json", "", false, every, {}, "Print the result as one JSON object"},
    {Option::quiet, "--quiet", "", false, every, {}, "No progress and no remarks; results, warnings and errors only"},
    {Option::noColor, "--no-color", "", false, every, {}, "No colours (the NO_COLOR variable does the same)"},
    {Option::help, "--help", "", false, every, {}, "Show help, also for one command (so do \"help COMMAND\" and -h)"},
    {Option::version, "--version", "", false, every, {}, "Show the version"},
}};

constexpr std::array<ExitStatusSpec, 5> exitStatuses = {{
    {exitDone, "done", "Also when there was nothing to do, and when the answer was no."},
    {exitFlawed, "done, but some files were skipped or failed",
     "Also when part of the folder could not be looked at (of a preview, this is only told), a file could not be "
     "evaluated, a record could not be read or saved, or the result of a change could not be written. Files that need "
     "review do not count."},
    {exitUsage, "wrong usage", "Nothing was changed."},
    {exitImpossible, "could not be done",
     "There is no such folder, it can not be read or is too broad, there is nothing to undo or to restore, a record "
     "that was to be used can not be read, there is nowhere to save one, another run holds the folder, or the result "
     "could not be written and nothing was changed."},
    {exitInterrupted, "interrupted", "By Ctrl-C, SIGTERM or SIGHUP. What was moved before is recorded."},
}};

}  // namespace

std::span<const CommandSpec> commandTable() {
    return commands;
}
std::span<const OptionSpec> optionTable() {
    return options;
}
std::span<const ExitStatusSpec> exitStatusTable() {
    return exitStatuses;
}

const CommandSpec& spec(Command command) {
    return commands[static_cast<std::size_t>(command)];
}
const OptionSpec& spec(Option option) {
    return options[static_cast<std::size_t>(option)];
}

}  // namespace ordovan::cli
