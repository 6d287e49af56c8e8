#pragma once

#include "tests/support/TempFolder.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace ordovan::test {

/// A folder to work in, and programs run in it as somebody with an empty home would.
class Shell {
public:
    TempFolder folder;

    /// What a command prints, on both outputs.
    [[nodiscard]] std::string run(const std::string& command) const {
        const std::string whole = "cd '" + folder.path() + "' && export HOME='" + folder.path() +
                                  "' LC_ALL=C.UTF-8 && unset XDG_CONFIG_HOME XDG_DATA_HOME && { " + command +
                                  "\n} 2>&1";
        std::FILE* pipe = ::popen(whole.c_str(), "r");
        if (pipe == nullptr) throw std::runtime_error("no shell");
        std::string out;
        char piece[4096];
        while (const std::size_t got = std::fread(piece, 1, sizeof piece, pipe)) out.append(piece, got);
        ::pclose(pipe);
        return out;
    }

    [[nodiscard]] static bool has(std::string_view program) {
        return std::system(("command -v " + std::string(program) + " >/dev/null 2>&1").c_str()) == 0;
    }
};

/// The lines of a text; an empty one at the end is none.
inline std::vector<std::string> lines(std::string_view text) {
    std::vector<std::string> found;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        found.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return found;
}

}  // namespace ordovan::test
