#pragma once

#include "OrdovanCore/Url.h"

#include <expected>
#include <optional>
#include <span>
#include <string>
#include <string_view>

/// What the window's program was asked for on its command line. Pure; any thread.
struct StartOptions {
    enum class Action { open, showHelp, showVersion };

    Action action = Action::open;
    /// The folder to preview at the start: absolute, byte for byte as it was given.
    std::optional<Url> folder;

    /// Reads the arguments behind the program's name. A folder is a path, taken from `currentFolder` where it is
    /// relative, or a file URL. Returns a sentence for the user where they can not be followed.
    [[nodiscard]] static std::expected<StartOptions, std::string> parse(std::span<const char* const> arguments,
                                                                        std::string_view currentFolder);

    /// What `--help` prints.
    [[nodiscard]] static std::string_view help();
};
