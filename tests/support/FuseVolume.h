#pragma once

#include "tests/support/SecondVolume.h"
#include "tests/support/TempFolder.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <stdexcept>
#include <string>

namespace ordovan::test {

/// A file system in user space: a folder shown by bindfs(1), which runs as a child for that long. As any such file
/// system it keeps what a look told for a second or as its options say, and knows no exclusive rename. Mounted over a
/// folder of the test's and unmounted at the end; like every volume here it is seen by this process and its children
/// alone. It ends by itself after two minutes, and then nothing waits for it any longer.
///
///     if (!FuseVolume::missing().empty()) GTEST_SKIP() << FuseVolume::missing();
///     FuseVolume mounted(folder.path(), "attr_timeout=30");
class FuseVolume {
public:
    /// Why there can be none here; empty when there can.
    static std::string missing() {
        const std::string notTested = "NOT TESTED: no file system in user space can be mounted here: ";
        if (::geteuid() != 0) return notTested + "only root can";
        if (!SecondVolume::available()) return notTested + "there are no mount namespaces";
        if (::access("/dev/fuse", R_OK | W_OK) != 0) return notTested + "there is no /dev/fuse";
        if (std::system("command -v bindfs >/dev/null 2>&1") != 0) {
            return notTested + "bindfs is missing (scripts/bootstrap prove installs it)";
        }
        return "";
    }

    /// `options` as mount(8) takes them; may be empty.
    FuseVolume(const std::string& at, const std::string& options) : at_(at) {
        const ::dev_t before = deviceOf(at_);
        const ::pid_t parent = ::getpid();
        server_ = ::fork();
        if (server_ < 0) throw std::runtime_error("can not fork");
        if (server_ == 0) serve(parent, options);
        for (int tries = 0; deviceOf(at_) == before; ++tries) {
            if (tries == mostSeconds * 100 || hasEnded()) {
                end();
                throw std::runtime_error("bindfs mounts nothing at " + at_);
            }
            pause();
        }
    }
    ~FuseVolume() { end(); }
    FuseVolume(const FuseVolume&) = delete;
    FuseVolume& operator=(const FuseVolume&) = delete;

private:
    /// How long mounting and ending may take each.
    static constexpr int mostSeconds = 20;

    [[noreturn]] void serve(::pid_t parent, const std::string& options) const {
        // Whatever becomes of the test, this process does not outlive it.
        if (::prctl(PR_SET_PDEATHSIG, SIGKILL) != 0 || ::getppid() != parent) ::_exit(1);
        ::alarm(120);
        const std::string all = options.empty() ? "rw" : options;
        ::execlp("bindfs", "bindfs", "-f", "-o", all.c_str(), shown_.path().c_str(), at_.c_str(), nullptr);
        ::_exit(127);
    }

    static ::dev_t deviceOf(const std::string& path) {
        struct ::stat facts{};
        return ::stat(path.c_str(), &facts) == 0 ? facts.st_dev : 0;
    }
    static void pause() { ::poll(nullptr, 0, 10); }

    bool hasEnded() {
        if (server_ > 0 && ::waitpid(server_, nullptr, WNOHANG) == server_) server_ = -1;
        return server_ < 0;
    }
    /// The server ends when its mount is gone.
    void end() {
        detail::MountNamespace::get().unmount(at_);
        for (int tries = 0; !hasEnded() && tries < mostSeconds * 100; ++tries) pause();
        if (server_ < 0) return;
        ::kill(server_, SIGKILL);
        ::waitpid(server_, nullptr, 0);
    }

    TempFolder shown_;
    std::string at_;
    ::pid_t server_ = -1;
};

}  // namespace ordovan::test
