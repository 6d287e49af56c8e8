#pragma once

#include "OrdovanCore/FileSystem.h"

#include <string>
#include <string_view>

namespace ordovan {

/// True when a path has a ".." piece.
[[nodiscard]] bool hasDotDotPiece(std::string_view path);

/// True for a URL whose text alone says where it is, and that a record can name: a file URL with an absolute path in
/// UTF-8, no longer than the system takes (4,095 bytes), without NUL and without a ".." piece (behind a link that would
/// be another folder than the text says).
[[nodiscard]] bool namesOnePlace(const Url& url);

/// One folder inside which a run may act. What depends on the folder alone is found out once.
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
/// output root. Apply and undo share it, each in its direction.
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
