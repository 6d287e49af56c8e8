#pragma once

#include "OrdovanCore/Url.h"
#include "tests/support/TempFolder.h"

#include <fcntl.h>
#include <linux/capability.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

namespace ordovan::test {

namespace detail {

inline bool writeWhole(const char* file, const std::string& text) {
    const int descriptor = ::open(file, O_WRONLY | O_CLOEXEC);
    if (descriptor < 0) return false;
    const bool whole = ::write(descriptor, text.data(), text.size()) == static_cast<::ssize_t>(text.size());
    ::close(descriptor);
    return whole;
}

/// Turns the privileges that a user namespace gives on or off. They are on only while mounting, so that permission
/// checks in the tests meet an ordinary user.
inline bool useNamespacePrivileges(bool on) {
    __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct data[_LINUX_CAPABILITY_U32S_3]{};
    if (::syscall(SYS_capget, &header, data) != 0) return false;
    for (auto& part : data) part.effective = on ? part.permitted : 0;
    return ::syscall(SYS_capset, &header, data) == 0;
}

/// A mount namespace of the test program's own, so that no mount outlives it. Made once for a process.
/// Without root it takes a user namespace as well, which only a program with one thread can enter.
class MountNamespace {
public:
    static const MountNamespace& get() {
        static const MountNamespace instance;
        return instance;
    }
    [[nodiscard]] bool usable() const { return usable_; }

    [[nodiscard]] bool mount(const std::string& at, const char* type, const std::string& options) const {
        return privileged([&] { return ::mount("ordovan-test", at.c_str(), type, MS_NOSUID, options.c_str()) == 0; });
    }
    [[nodiscard]] bool bind(const std::string& from, const std::string& at) const {
        return privileged([&] { return ::mount(from.c_str(), at.c_str(), nullptr, MS_BIND, nullptr) == 0; });
    }
    [[nodiscard]] bool remountReadOnly(const std::string& at) const { return remount(at, MS_RDONLY, ""); }
    /// Gives a mounted volume other flags and options.
    [[nodiscard]] bool remount(const std::string& at, unsigned long flags, const std::string& options) const {
        return privileged([&] {
            return ::mount(nullptr, at.c_str(), nullptr, MS_REMOUNT | MS_NOSUID | flags, options.c_str()) == 0;
        });
    }
    void unmount(const std::string& at) const {
        (void)privileged([&] { return ::umount2(at.c_str(), MNT_DETACH) == 0; });
    }

private:
    MountNamespace() : root_(::geteuid() == 0) {
        const std::string user = std::to_string(::geteuid());
        const std::string group = std::to_string(::getegid());
        if (::unshare(root_ ? CLONE_NEWNS : CLONE_NEWNS | CLONE_NEWUSER) != 0) return;
        if (!root_) {
            ::prctl(PR_SET_DUMPABLE, 1);  // else /proc/self belongs to root and the maps can not be written
            if (!writeWhole("/proc/self/uid_map", user + " " + user + " 1") ||
                !writeWhole("/proc/self/setgroups", "deny") ||
                !writeWhole("/proc/self/gid_map", group + " " + group + " 1")) {
                return;
            }
        }
        usable_ = ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
        if (!root_ && !useNamespacePrivileges(false)) usable_ = false;
    }

    template <class Action>
    [[nodiscard]] bool privileged(Action action) const {
        if (root_) return action();
        if (!useNamespacePrivileges(true)) return false;
        const bool done = action();
        return useNamespacePrivileges(false) && done;
    }

    bool root_;
    bool usable_ = false;
};

}  // namespace detail

/// A real second volume: a tmpfs of its own, mounted at a temporary folder and unmounted at the end. The mount is
/// seen by this process, by its children and by threads started afterwards, and by nobody else. Make the first one
/// before starting threads.
///
///     if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
///     SecondVolume other(8 << 20);
class SecondVolume {
public:
    static constexpr const char* unavailable =
        "NOT TESTED: no second volume can be mounted here (neither root nor user namespaces)";

    /// True when volumes can be mounted: as root, or where the kernel lets users make namespaces.
    static bool available() {
        static const bool works = [] {
            const auto& space = detail::MountNamespace::get();
            if (!space.usable()) return false;
            const TempFolder trial;
            if (!space.mount(trial.path(), "tmpfs", "size=64k")) return false;
            space.unmount(trial.path());
            return true;
        }();
        return works;
    }

    /// `bytes` is the volume's size. `type` may name another file system that lives in memory ("ramfs": no extended
    /// attributes, no limit), and `options` more mount options.
    explicit SecondVolume(std::size_t bytes = 64u << 20, const char* type = "tmpfs", const std::string& options = "") {
        std::string all = "mode=755";
        if (std::string_view(type) == "tmpfs") all += ",size=" + std::to_string(bytes);
        if (!options.empty()) all += "," + options;
        if (!detail::MountNamespace::get().usable() ||
            !detail::MountNamespace::get().mount(folder_.path(), type, all)) {
            throw std::system_error(errno, std::generic_category(), std::string("can not mount ") + type);
        }
    }
    ~SecondVolume() { detail::MountNamespace::get().unmount(folder_.path()); }
    SecondVolume(const SecondVolume&) = delete;
    SecondVolume& operator=(const SecondVolume&) = delete;

    /// The volume's root, with the means to fill it.
    [[nodiscard]] const TempFolder& root() const { return folder_; }
    [[nodiscard]] const std::string& path() const { return folder_.path(); }
    [[nodiscard]] std::string path(std::string_view name) const { return folder_.path(name); }
    [[nodiscard]] Url url(std::string_view name) const { return folder_.url(name); }

    /// From now on every change is EROFS.
    void makeReadOnly() const {
        if (!detail::MountNamespace::get().remountReadOnly(folder_.path())) {
            throw std::system_error(errno, std::generic_category(), "can not remount read-only");
        }
    }
    /// No longer.
    void makeWritable() const {
        if (!detail::MountNamespace::get().remount(folder_.path(), 0, "")) {
            throw std::system_error(errno, std::generic_category(), "can not remount writable");
        }
    }

private:
    TempFolder folder_;
};

/// A folder shown at a second place: equal device numbers, yet a rename between the two is EXDEV.
/// Wants `SecondVolume::available()`.
class BindMount {
public:
    explicit BindMount(const std::string& of) {
        if (!detail::MountNamespace::get().bind(of, folder_.path())) {
            throw std::system_error(errno, std::generic_category(), "can not bind " + of);
        }
    }
    ~BindMount() { detail::MountNamespace::get().unmount(folder_.path()); }
    BindMount(const BindMount&) = delete;
    BindMount& operator=(const BindMount&) = delete;

    [[nodiscard]] const TempFolder& root() const { return folder_; }

private:
    TempFolder folder_;
};

}  // namespace ordovan::test
