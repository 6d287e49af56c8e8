#include "OrdovanCore/platform/FileFacts.h"

#include "OrdovanCore/platform/SameFile.h"
#include "OrdovanCore/platform/SystemPath.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <limits>

namespace ordovan {

namespace {

/// As many nanoseconds as a number takes; times beyond the year 2262 are pinned to its end.
std::int64_t nanoseconds(const ::timespec& time) {
    constexpr std::int64_t perSecond = 1'000'000'000;
    constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max() / perSecond - 1;
    return std::clamp<std::int64_t>(time.tv_sec, -most, most) * perSecond + time.tv_nsec;
}

}  // namespace

OrdovanResult<FileFacts> factsOf(const Url& item) {
    const SystemPath path(item);
    if (path.error() != 0) return std::unexpected(OrdovanSystemError::posix(path.error()));
    struct ::stat facts;
    if (::lstat(path.text(), &facts) != 0) return std::unexpected(OrdovanSystemError::posix(errno));
    return FileFacts{.isRegular = S_ISREG(facts.st_mode),
                     .byteSize = facts.st_size,
                     .identity = identityText(facts),
                     .modifiedNs = nanoseconds(facts.st_mtim),
                     .names = facts.st_nlink};
}

}  // namespace ordovan
