#include "OrdovanCLI/reference/Reference.h"

#include <array>
#include <utility>

namespace ordovan::cli::reference {
namespace {

/// Text as roff reads it letter for letter. Every hyphen becomes the one on the keyboard, so that what is copied from
/// the page can be typed.
std::string roff(std::string_view text) {
    std::string out;
    for (const char c : text) {
        if (c == '-') {
            out += "\\-";
        } else if (c == '\\') {
            out += "\\e";
        } else if ((c == '.' || c == '\'') && (out.empty() || out.back() == '\n')) {
            out.append("\\&") += c;
        } else if (c == '\'') {
            out += "\\(aq";
        } else if (c == '~') {
            out += "\\(ti";
        } else {
            out += c;
        }
    }
    return out;
}

std::string bold(std::string_view text) {
    return "\\fB" + roff(text) + "\\fR";
}

/// "EXTENSIONS FOLDER" in italics, brackets and spaces as they are.
std::string placeholders(std::string_view text) {
    std::string out;
    bool isInWord = false;
    for (const char c : text) {
        const bool isWord = c >= 'A' && c <= 'Z';
        if (isWord != isInWord) out += isWord ? "\\fI" : "\\fR";
        isInWord = isWord;
        out += c;
    }
    if (isInWord) out += "\\fR";
    return out;
}

std::string syntax(std::string_view name, std::string_view arguments) {
    return arguments.empty() ? bold(name) : bold(name) + " " + placeholders(arguments);
}

class Page {
public:
    void section(std::string_view title) { out_.append(".SH ").append(title) += '\n'; }
    void subsection(std::string_view title) { out_.append(".SS ").append(title) += '\n'; }
    /// Words on as few lines as they fit: a manual page is read by people, too.
    void text(std::string_view words) {
        constexpr std::size_t width = 72;
        while (words.size() > width) {
            const std::size_t space = words.rfind(' ', width);
            raw(roff(words.substr(0, space)));
            words.remove_prefix(space + 1);
        }
        raw(roff(words));
    }
    void paragraph(std::string_view words) {
        out_ += ".PP\n";
        text(words);
    }
    void raw(std::string_view line) { out_.append(line) += '\n'; }
    void item(std::string_view tag, std::string_view words) {
        out_.append(".TP\n").append(tag) += '\n';
        text(words);
    }
    void options(const std::vector<const OptionSpec*>& options) {
        for (const OptionSpec* option : options) {
            std::string words(option->help);
            words += option->repeatable ? ". Can be given more than once." : ".";
            item(syntax(option->name, option->argument), words);
        }
    }
    [[nodiscard]] std::string take() { return std::move(out_); }

private:
    std::string out_;
};

void writeHead(Page& page, const Edition& edition) {
    page.raw(".\\\" Written from the program's table of commands and options.");
    page.raw(".TH ORDOVAN\\-CLI 1 " + edition.date + " \"ordovan+ " + edition.version + "\" \"User Commands\"");
    page.section("NAME");
    page.raw("ordovan\\-cli \\- careful folder organizing on the command line");
    page.section("SYNOPSIS");
    for (const CommandSpec& command : commandTable()) {
        std::string arguments(command.arguments);
        if (!command.actions.empty()) arguments = "[ACTION]";
        page.raw(".B ordovan\\-cli");
        page.raw(syntax(command.name, arguments) + " [" + placeholders("OPTIONS") + "]");
        page.raw(".br");
    }
    page.raw(".B ordovan\\-cli");
    page.raw("[" + bold("--help") + "|" + bold("--version") + "]");
    page.section("DESCRIPTION");
    page.text(
        "ordovan+ reads the names, sizes and dates of the files in one folder, shows for every file where it would go, "
        "and moves the files into the folder \"ordovan+\" inside that folder once you have agreed. Nothing is ever "
        "overwritten or deleted, and what was done can be undone.");
    page.paragraph(
        "The records are those of the window, ordovan(1): a run made here can be undone there, and the other way "
        "round.");
}

void writeCommands(Page& page) {
    page.section("COMMANDS");
    for (const CommandSpec& command : commandTable()) {
        std::string arguments(command.arguments);
        if (!command.actions.empty()) arguments = "[ACTION]";
        page.subsection(syntax(command.name, arguments));
        page.text(std::string(command.summary) + ".");
        page.text(command.details);
        for (const ActionSpec& action : command.actions) {
            page.item(syntax(action.name, action.arguments), std::string(action.help) + ".");
        }
        std::vector<const OptionSpec*> own = optionsOf(command);
        std::erase_if(own, [](const OptionSpec* option) { return option->commands.all(); });
        page.options(own);
    }
    page.section("OPTIONS OF EVERY COMMAND");
    page.options(commonOptions());
    page.item(bold("--"), "Ends the options: what follows is taken as it is.");
    page.paragraph(
        "The value of an option is the next argument, or what follows an equals sign in the same one. Options may "
        "stand before or behind their command; --trash, which takes a value for one command and none for the other, "
        "only behind it.");
    page.paragraph("FOLDER can be a path or a file:// address.");
}

void writeOutputs(Page& page) {
    page.section("OUTPUT");
    page.text(
        "Results go to standard output; messages, questions and progress to standard error. organize, undo, restore, "
        "--trash and --clear ask before they act, where standard input and standard error are terminals; elsewhere "
        "they "
        "refuse unless --yes is given. Changes of rules and settings are made unasked. Progress and colours appear "
        "only "
        "on a terminal. A reader that does not read to the end, such as head(1), is no failure.");
    page.paragraph(
        "The objects that --json prints are described in /usr/share/doc/ordovan-cli/command-line.md, with recipes for "
        "jq(1) and cron(8).");
    page.section("EXIT STATUS");
    for (const ExitStatusSpec& exit : exitStatusTable()) {
        page.item(bold(std::to_string(exit.status)), std::string(exit.meaning) + ".");
        page.text(exit.details);
    }
}

void writeSurroundings(Page& page) {
    constexpr std::array<std::pair<std::string_view, std::string_view>, 7> variables = {{
        {"NO_COLOR", "Where it is set to anything but nothing, no colours are used."},
        {"TERM", "Where it is not set, or \"dumb\", neither colours nor progress are shown."},
        {"TZ", "The time zone of the dates shown, and of the months that files are grouped by."},
        {"HOME",
         "Your home folder. The Downloads folder is the one that ~/.config/user-dirs.dirs names, see "
         "user-dirs.dirs(5); "
         "~/Downloads where it names none. Where it names your home folder itself, you have none, and FOLDER must be "
         "given."},
        {"XDG_DATA_HOME",
         "Below it, in the folder \"ordovan\", lie the undo records, the history and the record of what "
         "was moved to the Trash; in the folder \"Trash\" lies the Trash of your home's volume. ~/.local/share unless "
         "set."},
        {"XDG_CONFIG_HOME",
         "Below it, in \"ordovan/ordovan.conf\", lie the settings and your rules. ~/.config unless "
         "set."},
        {"LC_ALL, LC_COLLATE, LANG", "By whose customs names are put in order."},
    }};
    page.section("ENVIRONMENT");
    for (const auto& [name, words] : variables) page.item(bold(name), words);
    page.section("FILES");
    page.item("\\fI\\(ti/Downloads/ordovan+\\fR", "What was organized: one folder for each kind of file.");
    page.item("\\fI\\(ti/.local/share/ordovan\\fR",
              "The records. As long as they are there, \"undo\" and \"restore\" put files back.");
    page.item("\\fI\\(ti/.config/ordovan/ordovan.conf\\fR", "The settings and rules.");
}

void writeExamples(Page& page, const Edition& edition) {
    page.section("EXAMPLES");
    for (const Example& example : examples()) {
        if (&example != &examples().front()) page.raw(".PP");
        page.text(std::string(example.title) + ":");
        page.raw(".PP\n.RS 4\n.nf");
        page.raw("ordovan\\-cli " + roff(example.line));
        page.raw(".fi\n.RE");
    }
    page.section("SEE ALSO");
    page.raw(".BR ordovan (1)");
    page.raw(".PP\n" + roff(edition.homepage));
}

}  // namespace

std::string manualPage(const Edition& edition) {
    Page page;
    writeHead(page, edition);
    writeCommands(page);
    writeOutputs(page);
    writeSurroundings(page);
    writeExamples(page, edition);
    return page.take();
}

}  // namespace ordovan::cli::reference
