#include "OrdovanApp/screens/StartOptions.h"

namespace {

std::unexpected<std::string> refused(std::string sentence) {
    return std::unexpected(std::move(sentence) + " See ordovan --help.");
}

std::expected<Url, std::string> folderOf(std::string_view text, std::string_view currentFolder) {
    if (text.empty()) return refused("The folder's name is empty.");
    const Url url = Url::parse(text);
    if (!url.isFile() || url.path().empty()) {
        return refused("Only a folder on this computer can be previewed, not \"" + std::string(text) + "\".");
    }
    if (url.path().starts_with('/')) return url.standardized();
    return Url::file(currentFolder).appending(url.path()).standardized();
}

}  // namespace

std::expected<StartOptions, std::string> StartOptions::parse(std::span<const char* const> arguments,
                                                             std::string_view currentFolder) {
    StartOptions options;
    bool optionsEnded = false;
    for (const std::string_view argument : arguments) {
        if (!optionsEnded && argument.starts_with('-')) {
            if (argument == "--") {
                optionsEnded = true;
            } else if (argument == "--help" || argument == "-h") {
                options.action = Action::showHelp;
                return options;
            } else if (argument == "--version") {
                options.action = Action::showVersion;
                return options;
            } else {
                return refused("There is no option " + std::string(argument) + ".");
            }
            continue;
        }
        if (options.folder) return refused("One folder can be previewed at a time.");
        auto folder = folderOf(argument, currentFolder);
        if (!folder) return std::unexpected(std::move(folder.error()));
        options.folder = *std::move(folder);
    }
    return options;
}

std::string_view StartOptions::help() {
    return "Usage: ordovan [FOLDER]\n"
           "\n"
           "Opens the window of ordovan+. With a FOLDER (a path or a file:// address) it shows at\n"
           "once where every file of that folder would go. Nothing moves until you say so. When\n"
           "ordovan+ is already running, its window comes forward and shows the FOLDER.\n"
           "\n"
           "  -h, --help      show this text\n"
           "      --version   show the version\n"
           "\n"
           "For the command line there is ordovan-cli.\n";
}
