#pragma once

#include <optional>
#include <string>

namespace ordovan {

/// The home folder that the user database gives the effective user (getpwuid_r(3)); nothing for a user it does not
/// know, or one without an absolute home. Any thread.
std::optional<std::string> homeFromUserDatabase();

/// The folder of the user's data, which holds the home Trash: `$XDG_DATA_HOME` where that is absolute (XDG Base
/// Directory Specification 0.8: a relative path is to be ignored), else ".local/share" in the home folder; empty where
/// the user has no home. Any thread, as long as none changes the environment.
std::string userDataFolder();

}  // namespace ordovan
