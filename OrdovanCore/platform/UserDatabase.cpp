#include "OrdovanCore/platform/UserDatabase.h"

#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <string_view>
#include <vector>

namespace ordovan {

std::optional<std::string> homeFromUserDatabase() {
    std::vector<char> space(4096);
    for (;;) {
        ::passwd entry{};
        ::passwd* found = nullptr;
        const int error = ::getpwuid_r(::geteuid(), &entry, space.data(), space.size(), &found);
        if (error == ERANGE && space.size() < (1u << 20)) {
            space.resize(space.size() * 2);
            continue;
        }
        if (error != 0 || found == nullptr || found->pw_dir == nullptr) return std::nullopt;
        const std::string_view home = found->pw_dir;
        if (!home.starts_with('/')) return std::nullopt;
        return std::string(home);
    }
}

std::string userDataFolder() {
    const char* set = std::getenv("XDG_DATA_HOME");
    if (set != nullptr && *set == '/') return set;
    const char* home = std::getenv("HOME");
    const auto folder = home != nullptr && *home == '/' ? std::string(home) : homeFromUserDatabase();
    return folder ? *folder + "/.local/share" : std::string();
}

}  // namespace ordovan
