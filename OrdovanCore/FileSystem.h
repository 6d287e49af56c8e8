#pragma once

#include "OrdovanCore/Url.h"

#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>

/// A system's refusal, kept as the system gave it so that `OrdovanExecutor::failureReason` can explain it.
struct OrdovanSystemError {
    enum class Domain {
        posix,  ///< `code` is an errno
        cocoa,  ///< `code` is one of the file-manager codes below
        other,
    };
    Domain domain = Domain::other;
    int code = 0;
    std::optional<int> underlyingPosix = std::nullopt;  ///< the errno below a `cocoa` or `other` error, if any

    static OrdovanSystemError posix(int errnoValue) { return {Domain::posix, errnoValue, std::nullopt}; }
    static OrdovanSystemError cocoa(int code, std::optional<int> underlyingPosix = std::nullopt) {
        return {Domain::cocoa, code, underlyingPosix};
    }

    // File-manager codes of the cocoa domain.
    static constexpr int fileReadNoPermission = 257;
    static constexpr int fileReadNoSuchFile = 260;
    static constexpr int fileWriteUnknown = 512;
    static constexpr int fileWriteNoPermission = 513;
    static constexpr int fileWriteOutOfSpace = 640;
    static constexpr int fileWriteVolumeReadOnly = 642;

    friend bool operator==(const OrdovanSystemError&, const OrdovanSystemError&) = default;
};

/// What an operation of a port yields, or the system's error.
template <class T>
using OrdovanResult = std::expected<T, OrdovanSystemError>;

/// The port through which the engine looks at and changes single files. Twelve operations; whatever implements them,
/// **no call ever replaces or deletes something that exists**, save `remove`, which takes away the one file it names.
///
/// Locations are file URLs with absolute paths. Unless an operation says otherwise, symbolic links among the parent
/// folders are followed and a final one is not. Slashes at the end of a path mean nothing. A location that is no
/// absolute file path or holds a NUL byte is EINVAL. Calls may come from any thread; two calls about the same path
/// from different threads are not coordinated here.
class OrdovanFileSystem {
public:
    virtual ~OrdovanFileSystem() = default;

    /// True when an item exists at the path. A final symbolic link is followed, so a dangling link is false.
    /// Any failure to find out is false.
    virtual bool exists(const Url& url) = 0;

    /// True when the item itself is a regular file (a link to one is not). True implies that the item exists and that
    /// it is no symbolic link, so nobody need ask for these as well. Any failure is false.
    virtual bool isRegularFile(const Url& url) = 0;

    /// True when the item itself is a symbolic link, dangling or not. Any failure is false.
    virtual bool isSymlink(const Url& url) = 0;

    /// True when both are on one device (st_dev, stat(2)). What does not exist is judged by its nearest existing
    /// ancestor, so a destination can be asked about before its folder is made. Any failure is false. True does not
    /// promise that a rename works: two mounts of one device refuse it.
    virtual bool sameVolume(const Url& a, const Url& b) = 0;

    /// Makes the folder and every missing folder above it. An existing folder is no error.
    /// Errors: EEXIST or ENOTDIR where something else is in the way, else the system's.
    virtual OrdovanResult<void> createDirectory(const Url& url) = 0;

    /// Renames an item within its volume; content, times, modes and identity stay. When anything exists at `to` (a
    /// dangling link too) nothing changes and the error is EEXIST, also when it appears at the last instant. Another
    /// device is EXDEV. A missing parent of `to` is ENOENT. Durability: the rename is atomic but not flushed, except
    /// when `from` bears a partial-copy name (`OrdovanPartialName`): then the folder is on disk before the call
    /// returns, so that the caller may remove the original. An item of a Trash that arrives
    /// at the very place that its info file tells is put back, and takes that info file away.
    virtual OrdovanResult<void> move(const Url& from, const Url& to) = 0;

    /// Copies a regular file to a name that must be free (EEXIST otherwise): content, holes, mode, times, extended
    /// attributes and access control lists. Owner and group are kept where the system allows it. When it returns, the
    /// copy is on disk (fsync(2)); when it fails, nothing is left at `to`. Not a regular file: EINVAL; a link: ELOOP;
    /// changed or replaced while it was read: EBUSY.
    virtual OrdovanResult<void> copy(const Url& from, const Url& to) = 0;

    /// Removes a file or a symbolic link (itself). A folder is refused with EISDIR: nothing is removed recursively.
    /// With an item of a Trash that stands again at the place that its info file tells goes, after it, that info file.
    virtual OrdovanResult<void> remove(const Url& url) = 0;

    /// The size in bytes (st_size, lstat(2)): of the link itself for a symbolic link.
    /// Error: `fileReadNoSuchFile` whenever the path can not be examined.
    virtual OrdovanResult<std::int64_t> fileSize(const Url& url) = 0;

    /// SHA-256 (FIPS 180-4) of the whole content as 64 lower-case hexadecimal digits, read in pieces of 1 MiB. Only
    /// regular files are opened: ELOOP for a link, EISDIR for a folder, EINVAL for anything else (a FIFO never blocks).
    virtual OrdovanResult<std::string> contentHash(const Url& url) = 0;

    /// "device:inode" (st_dev as signed 32-bit, st_ino as unsigned 64-bit, both decimal), links followed. Stays with a
    /// file through renames on one volume; a copy has another. Error: `fileReadNoSuchFile` when not to be examined.
    virtual OrdovanResult<std::string> fileIdentity(const Url& url) = 0;

    /// Moves an item to the user's Trash and returns where it lies there; its name may have changed. It never copies
    /// to another volume and never deletes: without a usable Trash on the item's volume the call fails and the item
    /// stays. Error `fileWriteUnknown` when the system claims success but the item is not found there.
    virtual OrdovanResult<Url> trash(const Url& url) = 0;
};

/// The hidden name under which a copy is made before it is verified and renamed into place:
/// ".", the final name, ".ordovan-partial-", a UUID.
namespace OrdovanPartialName {

/// A fresh partial-copy location beside `destination`. The file-name piece is shortened at a character boundary so that
/// the whole name fits in 255 bytes (NAME_MAX).
[[nodiscard]] Url beside(const Url& destination);

/// The hidden name of the same form, beside the original, under which an original is looked at for the last time and
/// removed once its copy is in place. It bears the UUID of the partial copy, so that who knows one name knows both.
[[nodiscard]] Url asideOf(const Url& original, std::string_view partial);

/// True for a path whose last component has that form.
[[nodiscard]] bool isPartial(std::string_view path);

}  // namespace OrdovanPartialName
