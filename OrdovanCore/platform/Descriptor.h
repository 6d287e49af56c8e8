#pragma once

#include <fcntl.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace ordovan {

/// An open file descriptor, closed at the end. Moved, never copied. One object is used by one thread at a time.
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int descriptor) noexcept : descriptor_(descriptor) {}
    Descriptor(Descriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(descriptor_, other.descriptor_);
        return *this;
    }
    ~Descriptor() { static_cast<void>(close()); }

    /// open(2) with O_CLOEXEC, again after an interrupting signal. On failure the descriptor is empty and errno tells.
    static Descriptor open(const char* path, int flags, ::mode_t mode = 0) {
        return openAt(AT_FDCWD, path, flags, mode);
    }
    /// The same relative to an open folder.
    static Descriptor openAt(int folder, const char* path, int flags, ::mode_t mode = 0) {
        int descriptor = -1;
        do {
            descriptor = ::openat(folder, path, flags | O_CLOEXEC, mode);
        } while (descriptor < 0 && errno == EINTR);
        return Descriptor(descriptor);
    }

    [[nodiscard]] int get() const noexcept { return descriptor_; }
    explicit operator bool() const noexcept { return descriptor_ >= 0; }
    /// Gives the descriptor away without closing it.
    [[nodiscard]] int release() noexcept { return std::exchange(descriptor_, -1); }

    /// Closes now and returns 0 or the errno: on some volumes (NFS, quotas) a late write error is first told here.
    /// An interrupted close has closed the descriptor on this system (close(2), EINTR) and is no error.
    int close() noexcept {
        if (descriptor_ < 0) return 0;
        const bool closed = ::close(std::exchange(descriptor_, -1)) == 0 || errno == EINTR;
        return closed ? 0 : errno;
    }

private:
    int descriptor_ = -1;
};

}  // namespace ordovan
