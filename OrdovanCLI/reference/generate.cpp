#include "OrdovanCLI/reference/Reference.h"

#include <cstdio>
#include <fstream>
#include <span>
#include <string>

/// Writes the manual page and the completions of `ordovan-cli` into a folder, under the names by which the manual and
/// the shells look for them.
///     ordovan-cli-docs FOLDER VERSION DATE HOMEPAGE
int main(int argc, char** argv) {
    namespace reference = ordovan::cli::reference;
    const std::span<char*> arguments(argv, static_cast<std::size_t>(argc));
    if (arguments.size() != 5) {
        static_cast<void>(std::fputs("usage: ordovan-cli-docs FOLDER VERSION DATE HOMEPAGE\n", stderr));
        return 2;
    }
    const std::string folder = arguments[1];
    bool isWritten = true;
    const auto write = [&](const char* name, const std::string& text) {
        std::ofstream file(folder + "/" + name, std::ios::binary | std::ios::trunc);
        file << text;
        file.close();
        if (file) return;
        static_cast<void>(std::fprintf(stderr, "ordovan-cli-docs: can not write %s/%s\n", folder.c_str(), name));
        isWritten = false;
    };
    write("ordovan-cli.1",
          reference::manualPage({.version = arguments[2], .date = arguments[3], .homepage = arguments[4]}));
    write("ordovan-cli.bash", reference::bashCompletion());
    write("_ordovan-cli", reference::zshCompletion());
    write("ordovan-cli.fish", reference::fishCompletion());
    return isWritten ? 0 : 1;
}
