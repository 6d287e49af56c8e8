#pragma once

#include "OrdovanCore/FileSystem.h"

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace ordovan {

/// What one look at an item tells, without opening it. A value; any thread.
struct FileFacts {
    bool isRegular = false;
    std::int64_t byteSize = 0;
    std::string identity = {};    ///< as `OrdovanFileSystem::fileIdentity` tells it, but of a link itself
    std::int64_t modifiedNs = 0;  ///< nanoseconds since 1970-01-01 UTC
    std::uint64_t names = 1;      ///< how many hard links there are
    bool isPrivate = true;        ///< nobody but its owner may read, write or run it
    friend bool operator==(const FileFacts&, const FileFacts&) = default;
};

/// The device in what identifies a file. A part of `identity`.
[[nodiscard]] inline std::string_view deviceOf(std::string_view identity) {
    return identity.substr(0, identity.find(':'));
}

/// Looks at an item, a final link not followed. ENOENT or ENOTDIR where there is none; any other error means that it
/// can not be told what is there. Any thread, but for one that keeps folders open from call to call: that says so.
using FactsFunction = std::function<OrdovanResult<FileFacts>(const Url& item)>;

}  // namespace ordovan
