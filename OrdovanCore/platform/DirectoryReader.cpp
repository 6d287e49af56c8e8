#include "OrdovanCore/platform/DirectoryReader.h"

#include "OrdovanCore/Text.h"
#include "OrdovanCore/platform/Descriptor.h"
#include "OrdovanCore/platform/RealPath.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <string>
#include <string_view>

namespace {

using ordovan::Descriptor;
using ordovan::SharedText;

/// Folders that another desktop shows as one file, by extension (lower case): applications and their parts, libraries
/// of its photo, music and film programs, and documents that are folders.
constexpr std::array<std::string_view, 36> packageExtensions = {
    "app",       "appex",        "bundle",      "framework",     "plugin",        "kext",
    "prefpane",  "qlgenerator",  "mdimporter",  "component",     "saver",         "wdgt",
    "xpc",       "dsym",         "mpkg",        "pkg",           "photoslibrary", "photolibrary",
    "aplibrary", "musiclibrary", "tvlibrary",   "imovielibrary", "fcpbundle",     "logicx",
    "band",      "rtfd",         "pages",       "numbers",       "key",           "scptd",
    "workflow",  "xcodeproj",    "xcworkspace", "playground",    "sparsebundle",  "graffle",
};

/// Descriptors kept open along the chain of directories; the soft limit of a process is often 1,024.
constexpr std::size_t openDescriptors = 128;

constexpr int openFlags = O_RDONLY | O_DIRECTORY | O_NONBLOCK;

/// Names of one directory, laid out one behind the other.
class NameList {
public:
    void clear() {
        bytes_.clear();
        starts_.clear();
    }
    void add(const char* name) {
        starts_.push_back(bytes_.size());
        bytes_.append(name, std::strlen(name) + 1);
    }
    /// The names in byte order, each followed by a NUL.
    const std::vector<const char*>& sorted() {
        sorted_.clear();
        for (const std::size_t start : starts_) sorted_.push_back(bytes_.data() + start);
        std::sort(sorted_.begin(), sorted_.end(), [](const char* a, const char* b) { return std::strcmp(a, b) < 0; });
        return sorted_;
    }

private:
    std::string bytes_;
    std::vector<std::size_t> starts_;
    std::vector<const char*> sorted_;
};

std::string_view withoutTrailingSlash(std::string_view path) {
    while (path.size() > 1 && path.ends_with('/')) path.remove_suffix(1);
    return path;
}

OrdovanInventoryEntry entryFor(Url url, std::string_view name, const struct stat* status) {
    OrdovanInventoryEntry entry{std::move(url)};
    if (status == nullptr) return entry;
    entry.isDirectory = S_ISDIR(status->st_mode);
    entry.isSymbolicLink = S_ISLNK(status->st_mode);
    entry.isHidden = name.starts_with('.');
    entry.isPackage = entry.isDirectory && ordovan::isPackageName(name);
    entry.byteSize = status->st_size;
    entry.modifiedEpoch =
        static_cast<double>(status->st_mtim.tv_sec) + static_cast<double>(status->st_mtim.tv_nsec) * 1e-9;
    return entry;
}

}  // namespace

bool ordovan::isPackageName(std::string_view folderName) {
    const std::string lowered = text::asciiLowercased(pathExtension(folderName));
    return !lowered.empty() && std::ranges::find(packageExtensions, lowered) != packageExtensions.end();
}

/// The directories from the root of a walk down to the one listed last.
struct FileManagerDirectoryReader::Chain {
    struct Link {
        std::string path;      // without a trailing slash
        std::string resolved;  // with no symbolic links
        Descriptor descriptor;
        dev_t device = 0;
        ino_t inode = 0;
    };
    std::vector<Link> links;
    NameList names;
    std::array<char, 64 * 1024> buffer;

    /// Leaves the chain ending at the directory that holds `path`, or empty.
    void unwindTo(std::string_view path) {
        const std::string_view parent = ordovan::parentPath(path);
        while (!links.empty() && (links.back().path != parent || path == parent)) links.pop_back();
    }

    /// The index of the directory that holds `path`, if it is in the chain.
    [[nodiscard]] const Link* holderOf(std::string_view path) const {
        const std::string_view parent = ordovan::parentPath(path);
        if (path == parent) return nullptr;
        for (auto link = links.rbegin(); link != links.rend(); ++link) {
            if (link->path == parent) return &*link;
        }
        return nullptr;
    }

    static std::string below(const std::string& resolved, std::string_view name) {
        return (resolved == "/" ? "/" : resolved + "/").append(name);
    }

    /// Opens one directory relative to the chain's last and makes it the last; the first of a chain is opened by path.
    OrdovanResult<void> enter(std::string_view path) {
        path = withoutTrailingSlash(path);
        unwindTo(path);
        Link link{std::string(path), {}, Descriptor()};
        if (links.empty()) {
            link.descriptor = Descriptor::open(link.path.c_str(), openFlags);
        } else {
            if (const auto reopened = reopenLast(); !reopened) return reopened;
            const std::string name(ordovan::lastPathComponent(path));
            link.descriptor = Descriptor::openAt(links.back().descriptor.get(), name.c_str(), openFlags | O_NOFOLLOW);
        }
        struct stat status;
        if (!link.descriptor || ::fstat(link.descriptor.get(), &status) != 0) {
            return std::unexpected(OrdovanSystemError::posix(errno));
        }
        link.device = status.st_dev;
        link.inode = status.st_ino;
        link.resolved = links.empty() ? ordovan::realPath(path).value_or(ordovan::normalizedPath(path))
                                      : below(links.back().resolved, ordovan::lastPathComponent(path));
        links.push_back(std::move(link));
        if (links.size() > openDescriptors) links[links.size() - openDescriptors - 1].descriptor = Descriptor();
        return {};
    }

    /// Opens again what `enter` closed to save descriptors, and the directories above it, from the root downwards.
    /// ESTALE when another directory stands there now.
    OrdovanResult<void> reopenLast() {
        if (links.back().descriptor) return {};
        const std::size_t firstKept = links.size() > openDescriptors ? links.size() - openDescriptors : 0;
        Descriptor above = Descriptor::open(links.front().path.c_str(), openFlags);
        for (std::size_t i = 0; i < links.size(); ++i) {
            Link& link = links[i];
            if (i > 0) {
                const std::string name(ordovan::lastPathComponent(link.path));
                above = Descriptor::openAt(above.get(), name.c_str(), openFlags | O_NOFOLLOW);
            }
            struct stat status;
            if (!above || ::fstat(above.get(), &status) != 0) {
                return std::unexpected(OrdovanSystemError::posix(errno));
            }
            if (status.st_dev != link.device || status.st_ino != link.inode) {
                return std::unexpected(OrdovanSystemError::posix(ESTALE));
            }
            if (i >= firstKept) link.descriptor = Descriptor(::fcntl(above.get(), F_DUPFD_CLOEXEC, 0));
        }
        if (!links.back().descriptor) return std::unexpected(OrdovanSystemError::posix(errno));
        return {};
    }

    /// Reads the names in the last directory of the chain.
    OrdovanResult<void> listNames() {
        names.clear();
        const int descriptor = links.back().descriptor.get();
        for (;;) {
            const ssize_t count = ::getdents64(descriptor, buffer.data(), buffer.size());
            if (count < 0) return std::unexpected(OrdovanSystemError::posix(errno));
            if (count == 0) return {};
            for (ssize_t offset = 0; offset < count;) {
                const auto* const item = reinterpret_cast<const dirent64*>(buffer.data() + offset);
                offset += item->d_reclen;
                if (std::strcmp(item->d_name, ".") != 0 && std::strcmp(item->d_name, "..") != 0) {
                    names.add(item->d_name);
                }
            }
        }
    }
};

FileManagerDirectoryReader::FileManagerDirectoryReader() : chain_(std::make_unique<Chain>()) {}
FileManagerDirectoryReader::~FileManagerDirectoryReader() = default;

std::string FileManagerDirectoryReader::resolvedPath(const Url& directory) {
    // A directory inside one that is being listed is opened without following a link, so that its name below the
    // resolved path of that one is its resolved path.
    const std::string_view path = withoutTrailingSlash(directory.path());
    if (const Chain::Link* const holder = chain_->holderOf(path)) {
        return Chain::below(holder->resolved, ordovan::lastPathComponent(path));
    }
    return OrdovanDirectoryReading::resolvedPath(directory);
}

OrdovanResult<std::vector<OrdovanInventoryEntry>> FileManagerDirectoryReader::children(const Url& of) {
    if (of.path().find('\0') != std::string_view::npos) return std::unexpected(OrdovanSystemError::posix(EINVAL));
    if (const auto entered = chain_->enter(of.path()); !entered) return std::unexpected(entered.error());
    if (const auto listed = chain_->listNames(); !listed) return std::unexpected(listed.error());

    const std::vector<const char*>& names = chain_->names.sorted();
    const int descriptor = chain_->links.back().descriptor.get();
    const std::string_view slash = of.path().ends_with('/') ? "" : "/";
    std::vector<OrdovanInventoryEntry> entries;
    entries.reserve(names.size());
    for (const char* const name : names) {
        struct stat status;
        const bool known = ::fstatat(descriptor, name, &status, AT_SYMLINK_NOFOLLOW) == 0;
        entries.push_back(
            entryFor(Url::file(SharedText::joined({of.path(), slash, name})), name, known ? &status : nullptr));
    }
    return entries;
}
