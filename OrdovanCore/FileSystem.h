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
/// **no call ever replaces anything**, and the only file of the user's that a call takes away is the one that `remove`
/// names. (Beside it a Trash's own info file goes when its item is put back: see `move` and `remove`.)
///
/// Locations are file URLs with absolute paths. Unless an operation says otherwise, symbolic links among the parent
/// folders are followed and a final one is not. Slashes at the end of a path mean nothing.
///
/// Threads: the real disk (`SystemFileSystem`) may be called from any, several at once. A port that was made for one
/// run belongs to one thread, as its class says. Two calls about the same path from different threads are not
/// coordinated here.
///
/// Errors are the system's, unchanged; each operation names those that callers can rely on. From every one that can
/// fail, but for `fileSize` and `fileIdentity`, there may also come
/// - EINVAL for a location that is no absolute file path or holds a NUL byte, ENAMETOOLONG for a path of PATH_MAX bytes
///   (4,096, limits.h(0p)) or more;
/// - from a port that is confined to a folder, for what lies below it: ELOOP for a link on the way and for a link in
///   place of a folder to be made, EINVAL for a path with a ".." piece;
/// - from a port that keeps a run to what it told beforehand: EPERM for a change that it did not tell of.
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

    /// True when both are on one device (st_dev, stat(2)), final links followed. What does not exist is judged by its
    /// nearest existing ancestor, so a destination can be asked about before its folder is made. Any failure is false.
    /// True does not promise that a rename works: two mounts of one device refuse it.
    virtual bool sameVolume(const Url& a, const Url& b) = 0;

    /// Makes the folder and every missing folder above it, each with mode 0777 less the umask. An existing folder, or a
    /// link to one, is no error and keeps its mode. Where it fails, the folders above that were made by then stay.
    /// Durability: nothing is flushed, but by the port of a run on a file system that does not bring changes to the
    /// disk in their order (FAT): there each folder that was made is on disk before the call returns. Errors: EEXIST
    /// where something else bears the name, EEXIST or ENOTDIR where something else is in the way.
    virtual OrdovanResult<void> createDirectory(const Url& url) = 0;

    /// Renames an item (a file, a folder, a link itself) within its volume; content, times, modes and identity stay.
    /// When anything exists at `to` (a dangling link too) nothing changes and the error is EEXIST, also when it appears
    /// at the last instant. Another device, or another mount of the same one, is EXDEV; a missing item, or a missing
    /// parent of `to`, is ENOENT. From the port of a run: EBUSY when the file is not the one that the run has hashed.
    ///
    /// Durability: the rename is atomic where the file system has an exclusive one, and not flushed, except when `from`
    /// bears a partial-copy name (`OrdovanPartialName`): then the new name is on disk before the call returns, so that
    /// the caller may remove the original; where it can not be put there, the item goes back to its old name, unless
    /// that was taken meanwhile, and the error is that of the flush.
    ///
    /// An item of a Trash that arrives at the very place that its info file tells is put back, and takes that info file
    /// away.
    virtual OrdovanResult<void> move(const Url& from, const Url& to) = 0;

    /// Copies a regular file, also to another device, to a name that must be free (EEXIST otherwise, for a dangling
    /// link too): content, holes, mode, times, extended attributes and access control lists. Owner and group are kept
    /// where the system allows it, and what the target's file system can not hold is left out.
    ///
    /// Durability: when it returns, the copy and its name are on disk (fsync(2) on the file and on its folder). When it
    /// fails, nothing is left at `to`. Errors: ENOENT for a missing file or a missing parent of `to` (no folder is
    /// made); EINVAL for what is not a regular file; ELOOP for a link; EBUSY when the file changed or was replaced
    /// while it was read or another program holds a lease on it (fcntl(2)), and from the port of a run also when it is
    /// not the one that was hashed or another program has it open for writing.
    virtual OrdovanResult<void> copy(const Url& from, const Url& to) = 0;

    /// Removes a file or a symbolic link (itself); of a file with several names this one. A folder is refused with
    /// EISDIR: nothing is removed recursively. ENOENT where nothing is; from the port of a run EBUSY when the file is
    /// not the one that was hashed, and `ordovan::originalChanged` for an original that is not what was copied any
    /// more. Durability: none; after a power cut the file may be there again.
    ///
    /// An item of a Trash that stands again at the place that its info file tells is followed by that info file.
    virtual OrdovanResult<void> remove(const Url& url) = 0;

    /// The size in bytes (st_size, lstat(2)): of the link itself for a symbolic link.
    /// Error: `fileReadNoSuchFile` whenever the path can not be examined.
    virtual OrdovanResult<std::int64_t> fileSize(const Url& url) = 0;

    /// SHA-256 (FIPS 180-4) of the whole content as 64 lower-case hexadecimal digits, read in pieces of 1 MiB. Only
    /// regular files are opened: ELOOP for a link, EISDIR for a folder, EINVAL for anything else (a FIFO never blocks).
    /// EACCES for a file that may not be read, EBUSY when another program holds a lease on it (fcntl(2)), ENOTSUP where
    /// no SHA-256 can be computed. From the port of a run also EBUSY when another program has the file open for writing
    /// or the file changed while it was read, and ECANCELED when the run is to stop.
    virtual OrdovanResult<std::string> contentHash(const Url& url) = 0;

    /// "device:inode" (st_dev as signed 32-bit, st_ino as unsigned 64-bit, both decimal), links followed. Stays with a
    /// file through renames on one volume; a copy has another. Error: `fileReadNoSuchFile` when not to be examined.
    virtual OrdovanResult<std::string> fileIdentity(const Url& url) = 0;

    /// Moves an item (a file, a folder, a link itself) to the user's Trash and returns where it lies there; its name
    /// may have changed. What is there already is never replaced. It never copies to another volume and never deletes:
    /// without a usable Trash on the item's volume the call fails and the item stays.
    ///
    /// Durability: the rename is not flushed; the info file, which tells the item's old place, is there before it.
    /// Errors: ENOENT where nothing is; EBUSY for "/" and for a path that ends in "." or "..", and from the port of a
    /// run when the file is not the one that was hashed; EPERM for a Trash that is not the user's own; EEXIST when
    /// every name tried is taken; `fileWriteUnknown` when the system claims success but the item is not found there.
    virtual OrdovanResult<Url> trash(const Url& url) = 0;
};

/// The hidden name under which a copy is made before it is verified and renamed into place:
/// ".", the final name, ".ordovan-partial-", a UUID. Nothing here touches the disk; any thread.
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
