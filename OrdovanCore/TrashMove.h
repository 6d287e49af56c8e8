#pragma once

#include "OrdovanCore/ExecutionScope.h"
#include "OrdovanCore/FileSystem.h"
#include "OrdovanCore/Relocator.h"

#include <functional>
#include <string>

namespace ordovan {

/// The folder from which files may be trashed and to which they may be put back. Immutable; any thread that may call
/// the file system it is given. Making one reads the disk, to judge whether the folder is too broad.
class TrashScope {
public:
    explicit TrashScope(const Url& authorizedRoot);

    /// The folder is no single person's to tidy, so nothing lies within the scope.
    [[nodiscard]] bool isTooBroad() const noexcept { return tooBroad_; }

    /// True when the place lies in the folder, no folder on the way is a symbolic link, and it is not in a Trash.
    /// Asked anew for each file, at the moment of acting.
    [[nodiscard]] bool holds(const Url& place, OrdovanFileSystem& fs) const;

private:
    Boundary boundary_;
    bool tooBroad_;
};

/// Where a file is after the attempt to move it to the Trash.
struct TrashMove {
    enum class End {
        inTrash,  ///< it lies at `trashed`
        inPlace,  ///< it is, or was put back, where it was
        gone,     ///< it is neither there nor known to be anywhere
    };
    End end;
    Url trashed = {};
    Fingerprint what = {};          ///< for `inTrash`: what lies there; the identity is the one from before
    OrdovanSystemError error = {};  ///< for `inPlace`: why
};

/// Moves a regular file to the Trash and proves what lies there now.
///
/// `was` is what the file was when it was hashed a moment ago; an empty identity means that none could be read. A
/// replacement that slipped in between is recognized by its identity, which a rename keeps, or else by its content. It
/// is put back, as is a file whose place in the Trash no record could name because it is not UTF-8, and one for which
/// `mayStay`, asked once the file is in the Trash, says no. Putting back never replaces anything; what can not be put
/// back stays in the Trash and is reported there.
///
/// A change of the bytes in place, with the size kept, between hashing and trashing goes unnoticed here. The file is in
/// the Trash whole; putting it back will notice. On the calling thread, which is one that may call `fs`.
[[nodiscard]] TrashMove sendToTrash(const Url& file, const Fingerprint& was, OrdovanFileSystem& fs,
                                    const std::function<bool()>& mayStay = {});

// Pure; any thread.

/// True when a record can name the file: its path is UTF-8.
[[nodiscard]] bool isRecordable(const Url& file);

/// A file's path as a record tells it: textually normal and otherwise byte for byte, so that the file comes back under
/// the very name it had.
[[nodiscard]] std::string recordedPath(const Url& file);

/// True for the error of a hash that was given up because the run is to stop: ECANCELED.
[[nodiscard]] bool isStop(const OrdovanSystemError& error);

}  // namespace ordovan
