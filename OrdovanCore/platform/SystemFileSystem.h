#pragma once

#include "OrdovanCore/FileSystem.h"

#include <cstdint>
#include <string>

/// The real disk. Stateless; nothing is cached between calls; any thread, several at once.
class SystemFileSystem : public OrdovanFileSystem {
public:
    bool exists(const Url& url) override;
    bool isRegularFile(const Url& url) override;
    bool isSymlink(const Url& url) override;
    bool sameVolume(const Url& a, const Url& b) override;
    OrdovanResult<void> createDirectory(const Url& url) override;
    /// renameat2(2) with RENAME_NOREPLACE; where the file system lacks it, link(2) and unlink(2); where it lacks hard
    /// links as well, a name reserved with O_EXCL and renamed over while it is still ours and empty.
    OrdovanResult<void> move(const Url& from, const Url& to) override;
    /// Shares extents where the file system can (FICLONE), else copy_file_range(2), else read and write.
    OrdovanResult<void> copy(const Url& from, const Url& to) override;
    OrdovanResult<void> remove(const Url& url) override;
    OrdovanResult<std::int64_t> fileSize(const Url& url) override;
    OrdovanResult<std::string> contentHash(const Url& url) override;
    OrdovanResult<std::string> fileIdentity(const Url& url) override;
    /// By the freedesktop.org Trash specification 1.0; see `ordovan::moveToTrash`.
    OrdovanResult<Url> trash(const Url& url) override;
};
