#include "OrdovanCore/testing/TreeBuilder.h"

#include "OrdovanCore/Url.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace ordovan::testing {

namespace {

/// Ends the process: a test built a tree that can not be.
[[noreturn]] void buildFailed(const std::string& path) {
    static_cast<void>(
        std::fprintf(stderr, "TreeBuilder: can not build '%s': %s\n", path.c_str(), std::strerror(errno)));
    std::abort();
}

void require(bool done, const std::string& path) {
    if (!done) buildFailed(path);
}

void makeFoldersOnDisk(const std::string& path) {
    struct stat status{};
    if (path.empty() || stat(path.c_str(), &status) == 0) return;
    makeFoldersOnDisk(std::string(parentPath(path)));
    require(mkdir(path.c_str(), 0755) == 0 && chmod(path.c_str(), 0755) == 0, path);
}

void writeOnDisk(const std::string& path, std::string_view content) {
    const int descriptor = open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    require(descriptor >= 0 && fchmod(descriptor, 0644) == 0, path);
    while (!content.empty()) {
        const ssize_t written = ::write(descriptor, content.data(), content.size());
        require(written > 0, path);
        content.remove_prefix(static_cast<std::size_t>(written));
    }
    require(close(descriptor) == 0, path);
}

struct ReadContent {
    int error = 0;
    std::string bytes;
};

ReadContent readOnDisk(const std::string& path) {
    const int descriptor = open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) return {errno, {}};
    ReadContent content;
    std::string piece(std::size_t{1} << 16U, '\0');
    ssize_t got = 0;
    while ((got = ::read(descriptor, piece.data(), piece.size())) > 0) {
        content.bytes.append(piece, 0, static_cast<std::size_t>(got));
    }
    if (got < 0) content.error = errno;
    close(descriptor);
    return content;
}

std::string octal(std::uint32_t mode) {
    std::array<char, 16> text{};
    static_cast<void>(std::snprintf(text.data(), text.size(), "%04o", mode));
    return text.data();
}

std::string shownContent(std::string_view content) {
    constexpr std::size_t longestShown = 64;
    bool printable = content.size() <= longestShown;
    for (const char c : content) printable = printable && c >= ' ' && c <= '~';
    return printable ? std::string(content) : "sha256 " + digestOf(content);
}

std::string describeOnDisk(const std::string& path) {
    struct stat status{};
    if (lstat(path.c_str(), &status) != 0) return std::string("errno ") + std::strerror(errno);
    MemoryItem item{.name = {},
                    .type = ItemType::file,
                    .byteSize = status.st_size,
                    .modifiedNs = std::int64_t{status.st_mtim.tv_sec} * 1'000'000'000 + status.st_mtim.tv_nsec,
                    .mode = status.st_mode & 07777U,
                    .inode = status.st_ino,
                    .links = static_cast<std::uint32_t>(status.st_nlink),
                    .content = {}};
    switch (status.st_mode & S_IFMT) {
        case S_IFDIR:
            item.type = ItemType::directory;
            break;
        case S_IFIFO:
            item.type = ItemType::fifo;
            break;
        case S_IFSOCK:
            return "socket " + octal(item.mode);
        case S_IFCHR:
        case S_IFBLK:
            return "device " + octal(item.mode);
        case S_IFLNK: {
            item.type = ItemType::link;
            std::array<char, 4096> target{};
            const ssize_t length = readlink(path.c_str(), target.data(), target.size());
            if (length < 0) return std::string("link, errno ") + std::strerror(errno);
            item.content.assign(target.data(), static_cast<std::size_t>(length));
            break;
        }
        default: {
            ReadContent content = readOnDisk(path);
            if (content.error != 0) {
                return describe(item) + "(" + std::to_string(item.byteSize) + " bytes, " +
                       std::strerror(content.error) + ")";
            }
            item.content = std::move(content.bytes);
        }
    }
    return describe(item);
}

void describeBelow(const std::string& folder, const std::string& prefix, std::map<std::string, std::string>& into) {
    DIR* listing = opendir(folder.c_str());
    if (listing == nullptr) {
        into[prefix + "*"] = std::string("not listed, ") + std::strerror(errno);
        return;
    }
    std::vector<std::string> subfolders;
    while (const dirent* entry = readdir(listing)) {
        const std::string name = static_cast<const char*>(entry->d_name);
        if (name == "." || name == "..") continue;
        std::string described = describeOnDisk(folder + '/' + name);
        if (described.starts_with("folder")) subfolders.push_back(name);
        into[prefix + name] = std::move(described);
    }
    closedir(listing);
    for (const std::string& name : subfolders) describeBelow(folder + '/' + name, prefix + name + '/', into);
}

}  // namespace

TreeItem treeItem(std::string_view text) {
    const auto split = [text](std::string_view separator, TreeItem::Kind kind) {
        const std::size_t at = text.find(separator);
        return TreeItem{std::string(text.substr(0, at)), kind, std::string(text.substr(at + separator.size()))};
    };
    if (text.contains(" = ")) return split(" = ", TreeItem::Kind::file);
    if (text.contains(" -> ")) return split(" -> ", TreeItem::Kind::link);
    if (text.contains(" == ")) return split(" == ", TreeItem::Kind::hardLink);
    if (text.ends_with('/')) return {std::string(text.substr(0, text.size() - 1)), TreeItem::Kind::directory};
    if (text.ends_with('|')) return {std::string(text.substr(0, text.size() - 1)), TreeItem::Kind::fifo};
    return {std::string(text)};
}

std::vector<TreeItem> tree(std::initializer_list<std::string_view> items) {
    std::vector<TreeItem> parsed;
    for (const std::string_view item : items) parsed.push_back(treeItem(item));
    return parsed;
}

void build(MemoryFileSystem& fs, std::string_view below, std::span<const TreeItem> items) {
    const std::string folder = std::string(below) + '/';
    fs.makeDirectory(below);
    for (const TreeItem& item : items) {
        const std::string path = folder + item.path;
        switch (item.kind) {
            case TreeItem::Kind::file:
                fs.write(path, item.content);
                break;
            case TreeItem::Kind::directory:
                fs.makeDirectory(path);
                break;
            case TreeItem::Kind::link:
                fs.link(path, item.content);
                break;
            case TreeItem::Kind::hardLink:
                fs.hardLink(path, folder + item.content);
                break;
            case TreeItem::Kind::fifo:
                fs.fifo(path);
                break;
        }
    }
}

void build(MemoryFileSystem& fs, std::string_view below, std::initializer_list<std::string_view> items) {
    build(fs, below, tree(items));
}

void buildOnDisk(std::string_view below, std::span<const TreeItem> items) {
    const std::string folder = std::string(below) + '/';
    makeFoldersOnDisk(std::string(below));
    for (const TreeItem& item : items) {
        const std::string path = folder + item.path;
        makeFoldersOnDisk(std::string(parentPath(path)));
        switch (item.kind) {
            case TreeItem::Kind::file:
                writeOnDisk(path, item.content);
                break;
            case TreeItem::Kind::directory:
                makeFoldersOnDisk(path);
                break;
            case TreeItem::Kind::link:
                require(symlink(item.content.c_str(), path.c_str()) == 0, path);
                break;
            case TreeItem::Kind::hardLink:
                require(::link((folder + item.content).c_str(), path.c_str()) == 0, path);
                break;
            case TreeItem::Kind::fifo:
                require(mkfifo(path.c_str(), 0644) == 0 && chmod(path.c_str(), 0644) == 0, path);
                break;
        }
    }
}

void buildOnDisk(std::string_view below, std::initializer_list<std::string_view> items) {
    buildOnDisk(below, tree(items));
}

std::string describe(const MemoryItem& item) {
    switch (item.type) {
        case ItemType::directory:
            return "folder " + octal(item.mode);
        case ItemType::fifo:
            return "fifo " + octal(item.mode);
        case ItemType::link:
            return "link -> " + item.content;
        case ItemType::file:
            break;
    }
    std::array<char, 48> time{};
    static_cast<void>(std::snprintf(time.data(), time.size(), "%lld.%09lld",
                                    static_cast<long long>(item.modifiedNs / 1'000'000'000),
                                    static_cast<long long>(item.modifiedNs % 1'000'000'000)));
    return "file " + octal(item.mode) + ' ' + time.data() + " x" + std::to_string(item.links) + " = " +
           shownContent(item.content);
}

std::map<std::string, std::string> describeTree(std::string_view below) {
    std::map<std::string, std::string> descriptions;
    describeBelow(std::string(below), {}, descriptions);
    return descriptions;
}

}  // namespace ordovan::testing
