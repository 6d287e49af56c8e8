#pragma once

#include "OrdovanCore/Url.h"

#include <linux/limits.h>

#include <cerrno>
#include <cstddef>
#include <string_view>

namespace ordovan {

/// A URL's path as system calls want it: ended by NUL, on the stack, without slashes at the end (behind a link or a
/// file they would change what the system looks at). One object is used by one thread at a time.
class SystemPath {
public:
    explicit SystemPath(const Url& url) noexcept {
        std::string_view path = url.path();
        while (path.size() > 1 && path.back() == '/') path.remove_suffix(1);
        if (!url.isFile() || !path.starts_with('/') || path.find('\0') != std::string_view::npos) {
            error_ = EINVAL;
        } else if (path.size() >= sizeof bytes_) {
            error_ = ENAMETOOLONG;
        } else {
            path.copy(bytes_, path.size());
            size_ = path.size();
        }
        bytes_[size_] = '\0';
    }
    SystemPath(const SystemPath&) = delete;
    SystemPath& operator=(const SystemPath&) = delete;

    /// 0; EINVAL for what is not an absolute file path or holds a NUL byte; ENAMETOOLONG from PATH_MAX on.
    /// While it is not 0 the path is empty.
    [[nodiscard]] int error() const noexcept { return error_; }
    [[nodiscard]] const char* text() const noexcept { return bytes_; }
    [[nodiscard]] std::string_view view() const noexcept { return {bytes_, size_}; }

    /// Makes the path its own parent folder; false when it is the root (or empty) already.
    bool stepUp() noexcept {
        if (size_ <= 1) return false;
        const std::string_view parent = parentPath(view());
        size_ = parent.size();
        bytes_[size_] = '\0';
        return true;
    }

private:
    int error_ = 0;
    std::size_t size_ = 0;
    char bytes_[PATH_MAX];  // with its NUL, as the system counts it
};

}  // namespace ordovan
