#pragma once

#include "tests/support/SecondVolume.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace ordovan::proofs {

/// A real file system on a device that is a file in memory, as root alone can mount it.
class LoopVolume {
public:
    /// Why such volumes can not be made here with these programs; empty when they can.
    static std::string missing(const std::vector<std::string>& programs) {
        if (::geteuid() != 0) return "only root can mount a real file system";
        if (!test::SecondVolume::available()) return test::SecondVolume::unavailable;
        for (const std::string& program : programs) {
            if (!did("command -v " + program)) return program + " is missing (scripts/bootstrap prove installs it)";
        }
        if (!did("command -v losetup && test -e /dev/loop-control")) return "there are no loop devices";
        return "";
    }

    /// Runs a command of the shell, whose output is dropped; true when it ended well.
    static bool did(const std::string& command) {
        return std::system(("(" + command + ") >/dev/null 2>&1").c_str()) == 0;
    }

    /// `room`: what its device can hold of it, in bytes.
    explicit LoopVolume(std::string type, std::size_t room = 512U << 20U)
        : type_(std::move(type)), holder_(room), image_(holder_.path("image")) {
        const std::string megabytes = type_ == "xfs" ? "320" : type_ == "btrfs" ? "128" : "32";
        const std::string quietly = type_ == "ext4" ? " -q -F " : " -q -f ";
        if (!did("truncate -s " + megabytes + "M " + image_ + " && mkfs." + type_ + quietly + image_)) {
            throw std::runtime_error("can not make a file system of type " + type_);
        }
        attach();
        mount();
    }
    ~LoopVolume() {
        unmount();
        detach();
    }
    LoopVolume(const LoopVolume&) = delete;
    LoopVolume& operator=(const LoopVolume&) = delete;

    [[nodiscard]] const std::string& path() const { return at_.path(); }
    [[nodiscard]] std::string path(std::string_view name) const { return at_.path(name); }

    /// The power is cut: what is not on the device now never gets there, and every later call fails. `isLogWritten`:
    /// the names and places of files reach the device before that, and their contents only where they were flushed; not
    /// for btrfs. Any process.
    void cut(bool isLogWritten) const {
        if (type_ == "btrfs") {
            // It can not be shut down. What its device holds at this moment is kept instead.
            if (!did("cp --sparse=always " + image_ + " " + image_ + ".cut")) std::abort();
            return;
        }
        constexpr unsigned long shutdown = 0x8004587D;  // EXT4_IOC_SHUTDOWN and XFS_IOC_GOINGDOWN
        std::uint32_t how = isLogWritten ? 1 : 2;  // EXT4_GOING_FLAGS_(NO)LOGFLUSH, XFS_FSOP_GOING_FLAGS_(NO)LOGFLUSH
        const int folder = ::open(path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (folder < 0 || ::ioctl(folder, shutdown, &how) != 0) std::abort();
        ::close(folder);
    }

    /// ext4 meets an error and turns read-only, as `errors=remount-ro` makes it: what its log does not hold by now
    /// never gets there, though it is seen until the volume is mounted anew. Any process.
    void breakDown() const {
        if (::mount(nullptr, path().c_str(), nullptr, MS_REMOUNT | MS_NOSUID, "abort") != 0) std::abort();
    }

    /// The device takes nothing more that it does not hold already, or takes it again: it is thinly provisioned, say.
    void setFull(bool isFull) const {
        const std::string filler = holder_.path("filler");
        static_cast<void>(isFull ? did("cat /dev/zero > " + filler) : did("rm " + filler));
    }

    /// The computer is started again: the volume is mounted from what its device holds.
    void startAgain() {
        unmount();
        if (type_ == "btrfs") {
            detach();
            std::filesystem::rename(image_ + ".cut", image_);
            attach();
        }
        mount();
    }
    /// The volume is unmounted and mounted again; in between something else is, which may take its device number.
    void mountAgain() {
        unmount();
        others_.push_back(std::make_unique<test::SecondVolume>());
        mount();
    }
    [[nodiscard]] ::dev_t number() const {
        struct ::stat facts{};
        return ::stat(path().c_str(), &facts) == 0 ? facts.st_dev : 0;
    }

private:
    /// Its device keeps its number as long as it is attached: others may be attached and detached meanwhile.
    void attach() {
        std::string command = "losetup --find --show " + image_;
        std::unique_ptr<FILE, int (*)(FILE*)> output(::popen(command.c_str(), "r"), ::pclose);
        char line[64] = {};
        if (!output || std::fgets(line, sizeof line, output.get()) == nullptr)
            throw std::runtime_error("no loop device");
        device_ = std::string(line, std::string_view(line).find_first_of("\n"));
    }
    void detach() { (void)did("losetup -d " + device_); }
    void mount() {
        if (::mount(device_.c_str(), path().c_str(), type_.c_str(), MS_NOSUID, "") != 0) {
            throw std::system_error(errno, std::generic_category(), "can not mount " + type_);
        }
    }
    void unmount() { ::umount2(path().c_str(), 0); }

    std::string type_;
    test::SecondVolume holder_;
    std::string image_;
    test::TempFolder at_;
    std::string device_;
    std::vector<std::unique_ptr<test::SecondVolume>> others_;
};

}  // namespace ordovan::proofs
