#include "OrdovanCore/platform/EmptyFolder.h"

#include "OrdovanCore/platform/Descriptor.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <memory>
#include <optional>

namespace {

constexpr const char* folderSettings = ".DS_Store";  // what a file browser leaves in every folder it has shown
constexpr int folderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW;

struct CloseDirectory {
    void operator()(DIR* directory) const noexcept { ::closedir(directory); }
};

enum class Content { none, folderSettingsOnly, more };

/// What an open folder holds; nothing when it can not be listed.
std::optional<Content> contentOf(int folder) {
    const std::unique_ptr<DIR, CloseDirectory> directory([&]() -> DIR* {
        ordovan::Descriptor own = ordovan::Descriptor::openAt(folder, ".", folderFlags);
        DIR* opened = own ? ::fdopendir(own.get()) : nullptr;
        if (opened != nullptr) (void)own.release();
        return opened;
    }());
    if (!directory) return std::nullopt;
    Content content = Content::none;
    for (;;) {
        errno = 0;
        const ::dirent* entry = ::readdir(directory.get());
        if (entry == nullptr) return errno == 0 ? std::optional(content) : std::nullopt;
        const std::string_view name = entry->d_name;
        if (name == "." || name == "..") continue;
        if (name != folderSettings) return Content::more;
        content = Content::folderSettingsOnly;
    }
}

void removeFolderSettings(int folder) {
    struct ::stat facts;
    if (::fstatat(folder, folderSettings, &facts, AT_SYMLINK_NOFOLLOW) != 0 || !S_ISREG(facts.st_mode)) return;
    (void)::unlinkat(folder, folderSettings, 0);
}

}  // namespace

bool ordovan::removeFolderIfEmpty(const std::string& root, std::string_view relativePath) {
    Descriptor parent;
    Descriptor folder = Descriptor::open(root.c_str(), folderFlags);
    std::string name;
    while (folder && !relativePath.empty()) {
        const std::size_t slash = std::min(relativePath.find('/'), relativePath.size());
        name = relativePath.substr(0, slash);
        relativePath.remove_prefix(std::min(slash + 1, relativePath.size()));
        parent = std::move(folder);
        folder = Descriptor::openAt(parent.get(), name.c_str(), folderFlags);
    }
    if (!folder || !parent) return false;
    const std::optional<Content> content = contentOf(folder.get());
    if (!content || *content == Content::more) return false;
    if (*content == Content::folderSettingsOnly) removeFolderSettings(folder.get());
    return ::unlinkat(parent.get(), name.c_str(), AT_REMOVEDIR) == 0;
}
