#pragma once

#include "OrdovanCore/platform/Descriptor.h"
#include "OrdovanCore/platform/RegularFile.h"

#include <sys/stat.h>
#include <sys/types.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <expected>
#include <string>
#include <string_view>

namespace ordovan {

/// Folders below a root, entered without following a link on the way and held open, those used last for the next item.
/// What is done relative to an open folder happens in that folder, whatever takes its name meanwhile. Used by one
/// thread. While folders are held their volumes can not be unmounted.
class ConfinedFolders {
public:
    /// How a folder is reached from the root.
    enum class Entering {
        atOnce,  ///< openat2(2) with RESOLVE_BENEATH, RESOLVE_NO_SYMLINKS and RESOLVE_NO_MAGICLINKS; where the
                 ///< kernel or a sandbox knows no such call (ENOSYS, EPERM), or goes on to ask for another try (EAGAIN,
                 ///< after 100), as below
        stepByStep,  ///< openat(2) with O_NOFOLLOW, one piece of the path after the other
    };
    struct Folder {
        std::string path;
        Descriptor descriptor;  ///< opened with O_PATH
        struct ::stat facts{};  ///< of when it was opened
    };
    /// How many folders are held beside the root. A step of a run deals with two; the others are for files that
    /// alternate among a few folders. Far below the limit of open files (RLIMIT_NOFILE, 1,024 by default).
    static constexpr std::size_t capacity = 16;

    /// `root` is an absolute path; links on the way to it are followed. Nothing is opened yet.
    explicit ConfinedFolders(std::string_view root, Entering entering = Entering::atOnce);

    /// True for a path that leads below the root, by its text.
    [[nodiscard]] bool leadsBelow(std::string_view path) const noexcept;

    /// Opens a folder, the root or one that `leadsBelow` it, or takes the one that is held as long as the path leads to
    /// it still. The answer is good until `capacity` others were opened. Errors: ELOOP for a link on the way or at the
    /// end, EXDEV for a ".." that leads out of the root, ENOTDIR, ENOENT, EACCES and the system's other ones.
    [[nodiscard]] std::expected<const Folder*, int> open(std::string_view path);

    /// The same, but entered anew in any case: at this moment no link is on the way from the root. (That the root is
    /// still what its path leads to is not looked at.)
    [[nodiscard]] std::expected<const Folder*, int> openAnew(std::string_view path);

    /// The folder of this path that is held, without a look whether the path leads to it still; null when none is.
    [[nodiscard]] const Folder* held(std::string_view path);

    /// Holds the folder of this path no longer.
    void forget(std::string_view path);

    /// Opens a file that `leadsBelow` the root as `RegularFile::open` does, without following a link on the way. What
    /// is seen not to be a regular file is not even opened (EINVAL): a FIFO would wake whoever waits at its other end,
    /// and a device may do anything. Returns 0 or the errno.
    [[nodiscard]] int openFile(std::string_view path, RegularFile& file);

    /// Makes a folder that `leadsBelow` the root and every missing one above it, with `mode` less the umask. An
    /// existing folder is no error. Where the file system does not `keepsOrder`, each that is made is on the disk when
    /// this comes back. Returns 0 or the errno: EEXIST when something else bears the name, else as for `open`.
    [[nodiscard]] int make(std::string_view path, ::mode_t mode);

private:
    struct Slot {
        Folder folder;
        std::uint64_t usedAt = 0;
    };

    [[nodiscard]] std::string_view behindRoot(std::string_view path) const noexcept;
    Slot* find(std::string_view path);
    [[nodiscard]] bool leadsTo(const Folder& folder) const;
    int openRoot();
    std::expected<const Folder*, int> take(Slot* slot, std::string_view path);
    std::expected<Descriptor, int> enter(std::string_view piecesBehindRoot);
    std::expected<Descriptor, int> enterStepByStep(std::string_view piecesBehindRoot) const;
    int makeOne(std::string_view path, ::mode_t mode);

    std::string prefix_;  // the root with a slash at its end
    Entering entering_;
    Folder root_;
    std::array<Slot, capacity> slots_;
    std::uint64_t uses_ = 0;
};

}  // namespace ordovan
