#pragma once

#include "OrdovanCore/FileSystem.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>

namespace ordovan {

/// What a file was when it was last examined. A value; any thread.
struct Fingerprint {
    std::int64_t byteSize = 0;
    std::string contentHash;  ///< SHA-256, 64 lower-case hexadecimal digits
    std::string identity;     ///< as `OrdovanFileSystem::fileIdentity` tells it; empty where it could not be told
};

/// How far a relocation came, and what stopped it.
struct Relocation {
    enum class End {
        done,                ///< the file lies at its new place and nowhere else
        folderFailed,        ///< the new folder could not be made
        moveFailed,          ///< the rename failed
        didNotLand,          ///< the rename claimed success, but no regular file is at the new place
        copyFailed,          ///< no copy came about
        verificationFailed,  ///< the copy differs, or the original changed meanwhile; the copy was removed
        publishFailed,       ///< the verified copy could not be renamed into place, and was removed
        originalStays,       ///< the original could not be removed after the copy, which was therefore removed; where
                             ///< it can not be told whether the original is still there, the copy stays as well
    };
    End end;
    bool sameVolume = false;        ///< whether the file was renamed, and not copied
    OrdovanSystemError error = {};  ///< for the ends that a system error caused
};

/// How a port answers that it does not remove an original because what has its name is not what was copied any more.
/// Every other error of a removal says nothing about that.
inline constexpr OrdovanSystemError originalChanged{OrdovanSystemError::Domain::other, 0, std::nullopt};

/// True when a file that was seen with this identity is certainly not at its place any more: the system says that
/// nothing is there, or a link is, and the folder is one of the volume on which the file was seen. A volume that is not
/// there, or answers nothing, proves nothing. On the calling thread, which is one that may call `fs`.
[[nodiscard]] bool isGone(const Url& file, std::string_view identity, OrdovanFileSystem& fs);

/// Moves single files to free places, within a volume by a rename, across volumes by copy, verify, rename, remove; so
/// too where one volume refuses the rename as if it were two (EXDEV: bind mounts, subvolumes, overlays).
/// One object serves one run on one thread: it remembers the folders that it made.
///
/// A reply is not trusted blindly: the answer to a rename or removal may be lost on its way (network file systems), so
/// after an error both ends are looked at, and what in fact happened counts. A rollback removes only copies made here,
/// and only while the original is seen in its place: when in doubt a file exists twice, never not at all.
class Relocator {
public:
    explicit Relocator(OrdovanFileSystem& fs) : fs_(fs) {}

    /// Takes the file that `was` describes from one place to another, making the folder where needed. Never overwrites.
    /// A folder that vanishes after it was made is made anew and the step tried once more, if `mayTryAgain`, which
    /// asks the caller's checks of both places again, says so; without it there is no second try.
    [[nodiscard]] Relocation relocate(const Url& from, const Url& to, const Fingerprint& was,
                                      const std::function<bool()>& mayTryAgain = {});

private:
    template <class Operation>
    OrdovanResult<void> inFolder(const Url& folder, const std::function<bool()>& mayTryAgain,
                                 const Operation& operation);
    OrdovanResult<void> makeFolder(const Url& folder);

    Relocation rename(const Url& from, const Url& to, const Fingerprint& was, const std::function<bool()>& mayTryAgain);
    Relocation carry(const Url& from, const Url& to, const Fingerprint& was, const std::function<bool()>& mayTryAgain);
    Relocation replaceOriginal(const Url& from, const Url& to, const std::string& copyIdentity, const Fingerprint& was);
    std::optional<std::string> identityOfLanded(const Url& partial, const Url& to, const std::string& copyIdentity,
                                                const Fingerprint& was);

    /// Seen to be there, beyond doubt: reason enough to remove something else.
    bool isThere(const Url& url, const std::string& identity);
    /// A regular file is there, and its identity says nothing against its being this one.
    bool mayBeThere(const Url& url, const std::string& identity);
    bool wasRenamed(const Url& from, const Url& to, const std::string& identity);
    bool isEmptyFile(const Url& url);
    void discardPartial(const Url& partial, const Url& original);
    void discardPublished(const Url& to, const std::string& copyIdentity);

    OrdovanFileSystem& fs_;
    std::unordered_set<std::string> madeFolders_;
    std::string lastFolder_;  // the folder made or used last, which is the next file's folder as a rule
};

}  // namespace ordovan
