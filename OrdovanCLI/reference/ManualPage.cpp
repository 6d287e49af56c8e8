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
        "stand "
        "before or behind their command.");
}

void writeOutputs(Page& page) {
    page.section("OUTPUT");
    page.text(
        "Results go to standard output; messages, questions and progress to standard error. Questions are asked only "
        "where standard input is a terminal; elsewhere a command that would change something refuses unless --yes is "
        "given. Progress and colours appear only on a terminal.");
    page.section("EXIT STATUS");
    for (const ExitStatusSpec& exit : exitStatusTable()) {
        page.item(bold(std::to_string(exit.status)), std::string(exit.meaning) + ".");
    }
}

void writeSurroundings(Page& page) {
    constexpr std::array<std::pair<std::string_view, std::string_view>, 4> variables = {{
        {"NO_COLOR", "Where it is set, no colours are used."},
        {"XDG_DATA_HOME",
         "Below it, in the folder \"ordovan\", lie the undo records, the history and the record of what "
         "was moved to the Trash. ~/.local/share unless set."},
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
