#include "OrdovanCore/platform/Volumes.h"

#include "OrdovanCore/platform/CaseProbe.h"
#include "OrdovanCore/platform/Descriptor.h"
#include "OrdovanCore/platform/SystemPath.h"

#include <dirent.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/statfs.h>

#include <string_view>

namespace ordovan {

namespace {

/// The names of a folder on disk.
class ListedNames final : public FolderNames {
public:
    explicit ListedNames(Descriptor folder) : listing_(::fdopendir(folder.get())) {
        if (listing_ != nullptr) static_cast<void>(folder.release());
    }
    ~ListedNames() override {
        if (listing_ != nullptr) ::closedir(listing_);
    }
    ListedNames(const ListedNames&) = delete;
    ListedNames& operator=(const ListedNames&) = delete;

    std::optional<std::string> next() override {
        while (const ::dirent* entry = listing_ == nullptr ? nullptr : ::readdir(listing_)) {
            const std::string_view name = entry->d_name;
            if (name != "." && name != "..") return std::string(name);
        }
        return std::nullopt;
    }
    void rewind() override { ::rewinddir(listing_); }
    Lookup lookUp(const std::string& name) override {
        struct ::stat facts;
        if (::fstatat(::dirfd(listing_), name.c_str(), &facts, AT_SYMLINK_NOFOLLOW) == 0) return Lookup::found;
        return errno == ENOENT ? Lookup::missing : Lookup::unknown;
    }

private:
    ::DIR* listing_;
};

std::optional<bool> probe(Descriptor folder) {
    ListedNames names(std::move(folder));
    return namesDifferByCase(names);
}

bool onOneDevice(int a, int b) {
    struct ::stat first, second;
    return ::fstat(a, &first) == 0 && ::fstat(b, &second) == 0 && first.st_dev == second.st_dev;
}

}  // namespace

std::optional<bool> supportsCaseSensitiveNames(const Url& folder) {
    const SystemPath path(folder);
    if (path.error() != 0) return std::nullopt;
    Descriptor opened = Descriptor::open(path.text(), O_RDONLY | O_DIRECTORY | O_NONBLOCK);
    if (!opened) return std::nullopt;

    int flags = 0;
    if (::ioctl(opened.get(), FS_IOC_GETFLAGS, &flags) == 0 && (flags & FS_CASEFOLD_FL) != 0) return false;
    struct ::statfs volume;
    if (::fstatfs(opened.get(), &volume) != 0) return std::nullopt;
    // The field is signed on some machines and must not drag its sign along.
    const CaseRule rule = caseRuleOfType(static_cast<unsigned long>(volume.f_type) & 0xffffffff);
    if (rule != CaseRule::ask) return rule == CaseRule::sensitive;

    // An empty folder tells nothing, but on its volume the one above is as good.
    Descriptor above = Descriptor::openAt(opened.get(), "..", O_RDONLY | O_DIRECTORY);
    const bool usable = above && onOneDevice(above.get(), opened.get());
    const std::optional<bool> answer = probe(std::move(opened));
    return answer.has_value() || !usable ? answer : probe(std::move(above));
}

}  // namespace ordovan
