#include "OrdovanCore/platform/EmptyFolder.h"

#include "OrdovanCore/platform/Descriptor.h"

#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <memory>

namespace {

constexpr const char* folderSettings = ".DS_Store";  // what a file browser leaves in every folder it has shown
constexpr int folderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW;

struct CloseDirectory {
    void operator()(DIR* directory) const noexcept { ::closedir(directory); }
};

/// True when an open folder can be listed and holds nothing, or only the settings.
bool isEmptyButForSettings(int folder) {
    ordovan::Descriptor own = ordovan::Descriptor::openAt(folder, ".", folderFlags);
    const std::unique_ptr<DIR, CloseDirectory> directory(own ? ::fdopendir(own.get()) : nullptr);
    if (!directory) return false;
    (void)own.release();
    for (;;) {
        errno = 0;
        const ::dirent* entry = ::readdir(directory.get());
        if (entry == nullptr) return errno == 0;
        const std::string_view name = entry->d_name;
        if (name != "." && name != ".." && name != folderSettings) return false;
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
    if (!isEmptyButForSettings(folder.get())) return false;
    removeFolderSettings(folder.get());
    return ::unlinkat(parent.get(), name.c_str(), AT_REMOVEDIR) == 0;
}
