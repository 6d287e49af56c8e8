#include "OrdovanCore/platform/FileFacts.h"

#include "OrdovanCore/platform/Descriptor.h"
#include "OrdovanCore/platform/Failure.h"
#include "OrdovanCore/platform/SameFile.h"
#include "OrdovanCore/platform/SystemPath.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <memory>
#include <string>
#include <string_view>

namespace ordovan {

namespace {

/// As many nanoseconds as a number takes; times beyond the year 2262 are pinned to its end.
std::int64_t nanoseconds(const ::timespec& time) {
    constexpr std::int64_t perSecond = 1'000'000'000;
    constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max() / perSecond - 1;
    return std::clamp<std::int64_t>(time.tv_sec, -most, most) * perSecond + time.tv_nsec;
}

FileFacts told(const struct ::stat& facts) {
    return {.isRegular = S_ISREG(facts.st_mode),
            .byteSize = facts.st_size,
            .identity = identityText(facts),
            .modifiedNs = nanoseconds(facts.st_mtim),
            .names = facts.st_nlink,
            .isPrivate = (facts.st_mode & (S_IRWXG | S_IRWXO)) == 0};
}

/// Looks at one item after the other from the folder that holds them.
class FolderFacts {
public:
    OrdovanResult<FileFacts> look(const Url& item) {
        const std::string_view folder = parentPath(item.path());
        const std::string_view name = item.lastPathComponent();
        // A name that is no name, and the root, are for the whole path to tell.
        if (folder.empty() || name.empty() || name == "." || name == ".." || name.contains('/') ||
            item.path().back() == '/' || item.path().contains('\0') || !item.isFile()) {
            return factsOf(item);
        }
        if (folder != path_) {
            // Opening it is worth while for more than one item.
            path_ = folder;
            opened_ = {};
            return factsOf(item);
        }
        if (!opened_) opened_ = Descriptor::open(path_.c_str(), O_PATH | O_DIRECTORY);
        if (!opened_) return factsOf(item);
        name_ = name;
        struct ::stat facts;
        if (::fstatat(opened_.get(), name_.c_str(), &facts, AT_SYMLINK_NOFOLLOW) != 0) return failure(errno);
        return told(facts);
    }

private:
    std::string path_;
    std::string name_;
    Descriptor opened_;
};

}  // namespace

OrdovanResult<FileFacts> factsOf(const Url& item) {
    const SystemPath path(item);
    if (path.error() != 0) return failure(path.error());
    struct ::stat facts;
    if (::lstat(path.text(), &facts) != 0) return failure(errno);
    return told(facts);
}

FactsFunction factsOfMany() {
    return [looking = std::make_shared<FolderFacts>()](const Url& item) { return looking->look(item); };
}

}  // namespace ordovan
