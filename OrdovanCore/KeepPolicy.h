#pragma once

#include "OrdovanCore/Duplicates.h"

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

/// Which copy of a duplicate group stays when nobody chose one by hand. Every function here may be called from any
/// thread.
enum class OrdovanKeepPolicy {
    oldest,        ///< the earliest modification time
    newest,        ///< the latest
    shortestPath,  ///< the fewest path components
    deepestPath,   ///< the most
};

namespace OrdovanKeepPolicies {

/// Every policy, in the order in which they are offered.
inline constexpr std::array<OrdovanKeepPolicy, 4> allCases = {OrdovanKeepPolicy::oldest, OrdovanKeepPolicy::newest,
                                                              OrdovanKeepPolicy::shortestPath,
                                                              OrdovanKeepPolicy::deepestPath};

/// The policy of exactly this raw value (case-sensitive), or nothing.
[[nodiscard]] std::optional<OrdovanKeepPolicy> fromRawValue(std::string_view rawValue);

/// The file of a group to keep; nothing only for a group without files. `modified`: path to modification time, in
/// seconds since 1970. By date, a file without one loses to every file with one. Files that the policy does not tell
/// apart are told apart by their path: fewer characters (user-perceived), then the byte order of UTF-8, which is the
/// order of code points.
[[nodiscard]] std::optional<Url> keep(OrdovanKeepPolicy policy, const OrdovanDuplicateGroup& in,
                                      const std::unordered_map<std::string, double>& modified);

}  // namespace OrdovanKeepPolicies

/// The name shown for a policy, which is also the one that is stored: "Oldest", "Newest", "Shortest path" or
/// "Deepest path".
[[nodiscard]] std::string_view rawValue(OrdovanKeepPolicy policy);
