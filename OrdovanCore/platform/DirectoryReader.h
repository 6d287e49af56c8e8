#pragma once

#include "OrdovanCore/Inventory.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// Lists real directories.
///
/// One pass over an open descriptor, the attributes taken relative to it (fstatat(2)), so that no path is resolved
/// twice; a directory listed right after the one that holds it is opened relative to that one and without following a
/// link. Children come in byte order of their names. Modification times keep nanoseconds.
///
/// It remembers the chain of directories it is in, and so serves one walk on one thread.
class FileManagerDirectoryReader final : public OrdovanDirectoryReading {
public:
    FileManagerDirectoryReader();
    ~FileManagerDirectoryReader() override;

    OrdovanResult<std::vector<OrdovanInventoryEntry>> children(const Url& of) override;
    std::string resolvedPath(const Url& directory) override;

private:
    struct Chain;
    std::unique_ptr<Chain> chain_;
};

namespace ordovan {

/// True for the names of folders that another desktop shows as one file ("Photos.photoslibrary", "Mail.app"): taking
/// such a folder apart would destroy it. By extension, case ignored. Any thread.
bool isPackageName(std::string_view folderName);

}  // namespace ordovan
