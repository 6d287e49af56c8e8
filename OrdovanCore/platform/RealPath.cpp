#include "OrdovanCore/platform/RealPath.h"

#include <cstdlib>
#include <memory>

namespace ordovan {

std::optional<std::string> realPath(std::string_view path) {
    if (path.find('\0') != std::string_view::npos) return std::nullopt;
    const std::unique_ptr<char, decltype(&std::free)> resolved(::realpath(std::string(path).c_str(), nullptr),
                                                               std::free);
    if (resolved == nullptr) return std::nullopt;
    return std::string(resolved.get());
}

}  // namespace ordovan
