#pragma once

#include "OrdovanCore/SharedText.h"

#include <ostream>
#include <string>
#include <string_view>
#include <utility>

/// Where something is: a scheme and the bytes of a path.
///
/// Everything the engine touches is a file URL; another scheme exists only to be refused. File names on this platform
/// are bytes, so the path is kept byte for byte: nothing is decoded, normalized or checked for UTF-8 here. A value is
/// two pointers wide and its copies share the path; they may be used and destroyed on different threads. Nothing here
/// touches the disk, and every function may be called from any thread.
class Url {
public:
    /// The file URL of an empty path.
    Url() = default;

    /// The file URL of a path, taken as it is.
    static Url file(ordovan::SharedText path);

    /// A URL from its text form, as it comes with a drop or on a command line: "file:///a%20b" (percent-decoded),
    /// "https://host/x" (kept, not a file URL) or a plain path.
    static Url parse(std::string_view text);

    [[nodiscard]] bool isFile() const noexcept { return scheme_.empty(); }
    /// "file" for a file URL.
    [[nodiscard]] std::string_view scheme() const noexcept { return isFile() ? "file" : scheme_.view(); }
    [[nodiscard]] std::string_view path() const noexcept { return path_.view(); }
    [[nodiscard]] const ordovan::SharedText& sharedPath() const noexcept { return path_; }

    /// The last component without slashes around it; "/" for the root, empty for an empty path.
    [[nodiscard]] std::string_view lastPathComponent() const noexcept;

    /// What follows the last dot of the last component; empty where that dot is the component's first or last
    /// character (".bashrc", "name.") or where there is none.
    [[nodiscard]] std::string_view pathExtension() const noexcept;

    /// The path with "/" and the component behind it.
    [[nodiscard]] Url appending(std::string_view component) const;

    /// The folder that holds this item; the root's is the root.
    [[nodiscard]] Url deletingLastPathComponent() const;

    /// The path with empty pieces, "." and ".." removed textually ("/" where nothing is left).
    [[nodiscard]] Url standardized() const;

    friend bool operator==(const Url&, const Url&) = default;
    friend std::ostream& operator<<(std::ostream& out, const Url& url) {
        return out << url.scheme() << "://" << url.path();
    }

private:
    Url(ordovan::SharedText path, ordovan::SharedText scheme) : path_(std::move(path)), scheme_(std::move(scheme)) {}

    ordovan::SharedText path_;
    ordovan::SharedText scheme_;  // empty for a file URL
};

namespace ordovan {

/// The last component of a path, as `Url::lastPathComponent`.
[[nodiscard]] std::string_view lastPathComponent(std::string_view path) noexcept;

/// The extension of a file name or path, as `Url::pathExtension`.
[[nodiscard]] std::string_view pathExtension(std::string_view path) noexcept;

/// The folder part of a path, without a trailing slash; "/" for the root and for what lies directly in it, empty for
/// a path without a slash.
[[nodiscard]] std::string_view parentPath(std::string_view path) noexcept;

/// True when a path is absolute and textually normal: it begins with "/", and holds no empty piece, no "." and no
/// ".." piece, and no slash at the end (but for "/" itself).
[[nodiscard]] bool isNormalPath(std::string_view path) noexcept;

/// The normal form of a path: split at "/", "." and empty pieces dropped, ".." taking the piece before it away (and
/// dropped where there is none), joined with one "/" in front. Purely textual.
[[nodiscard]] std::string normalizedPath(std::string_view path);

}  // namespace ordovan
