#pragma once

#include "OrdovanCore/FileSystem.h"

#include <string>
#include <string_view>

namespace ordovan {

/// True when a path has a ".." piece. Any thread.
[[nodiscard]] bool hasDotDotPiece(std::string_view path);

/// True for a URL whose text alone says where it is, and that a record can name: a file URL with an absolute path in
/// UTF-8, no longer than the system takes (4,095 bytes: PATH_MAX without its NUL, limits.h(0p)), without NUL and
/// without a ".." piece (behind a link that would be another folder than the text says). Any thread.
[[nodiscard]] bool namesOnePlace(const Url& url);

/// One folder inside which a run may act. What depends on the folder alone is found out once. Immutable; any thread
/// that may call the file system it is given.
class Boundary {
public:
    explicit Boundary(const Url& root);

    /// True when the item lies within the folder: by canonical paths, and byte for byte as well, because two spellings
    /// of one name are two folders on most volumes (a spelling that differs counts only where `fs` says that both name
    /// one folder). What does not name one place is never within.
    [[nodiscard]] bool holds(const Url& item, OrdovanFileSystem& fs) const;

    [[nodiscard]] const std::string& canonicalRoot() const noexcept { return canonical_; }

private:
    [[nodiscard]] bool isSpelledAlike(std::string_view normalPath, OrdovanFileSystem& fs) const;

    Url root_;
    std::string normal_;     // textually normal, bytes kept
    std::string canonical_;  // the same in NFC
    bool usable_;
};

/// Where a run may act: files come from and go back to places inside the authorized root, and lie organized inside the
/// output root. Apply and undo share it, each in its direction. Immutable; any thread that may call the file system it
/// is given. Making one reads the disk, to judge whether the authorized root is too broad.
class ExecutionScope {
public:
    ExecutionScope(const Url& authorizedRoot, const Url& outputRoot);

    /// True when both places of a file lie inside their roots and the authorized root is not too broad to act in.
    [[nodiscard]] bool holds(const Url& original, const Url& organized, OrdovanFileSystem& fs) const;

    /// True when a folder on the way to either place is a symbolic link. The output root is itself such a folder when
    /// it lies inside the authorized root; the authorized root is not, since the user chose it as it is. Asked anew for
    /// each file, at the moment of acting: nothing is remembered.
    [[nodiscard]] bool crossesLink(const Url& original, const Url& organized, OrdovanFileSystem& fs) const;

private:
    Boundary authorized_;
    Boundary output_;
    bool tooBroad_;
    bool outputLiesInAuthorized_;
};

}  // namespace ordovan

/// The walk that keeps a run inside its scope: true when a folder between the item and its root (the folder holding the
/// item included, the root not) is a symbolic link. The root is given as a canonical path; for an item outside it the
/// walk goes on to the top. True as well for a path with a ".." piece, which its text can not settle. Asks `fs` about
/// each folder at the moment of the call. Any thread that may call `fs`.
[[nodiscard]] bool OrdovanHasSymlinkedParent(const Url& item, std::string_view canonicalRoot, OrdovanFileSystem& fs);
