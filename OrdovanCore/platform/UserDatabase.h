#pragma once

#include <optional>
#include <string>

namespace ordovan {

/// The home folder that the user database gives the effective user (getpwuid_r(3)); nothing for a user it does not
/// know, or one without an absolute home. Any thread.
std::optional<std::string> homeFromUserDatabase();

}  // namespace ordovan
