#pragma once

#include "OrdovanCore/platform/RunFileSystem.h"
#include "OrdovanCore/platform/SystemFileSystem.h"
#include "OrdovanCore/testing/MemoryFileSystem.h"
#include "OrdovanCore/testing/TreeBuilder.h"
#include "tests/support/SecondVolume.h"
#include "tests/support/TempFolder.h"
#include "tests/support/Unprivileged.h"

#include <sys/stat.h>

#include <cstdlib>
#include <functional>
#include <initializer_list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace ordovan::test {

/// An implementation of the file-system port together with the means to build trees for it and to look at them, so
/// that one test runs against every implementation.
class PortWorld {
public:
    virtual ~PortWorld() = default;

    virtual OrdovanFileSystem& fs() = 0;
    /// Whether it goes through links on the way to what it acts on, or refuses them with ELOOP.
    [[nodiscard]] virtual bool followsLinks() const { return true; }
    /// The empty folder in which a test works.
    [[nodiscard]] virtual std::string root() const = 0;
    virtual void build(std::initializer_list<std::string_view> items) = 0;
    virtual void setMode(std::string_view name, unsigned mode) = 0;
    virtual void setModified(std::string_view name, std::int64_t nanoseconds) = 0;
    virtual void replaceFile(std::string_view name, std::string_view content) = 0;
    [[nodiscard]] virtual std::map<std::string, std::string> snapshot(const std::string& below) = 0;

    [[nodiscard]] virtual bool canMount() const = 0;
    /// Mounts an empty second volume and returns its mount point.
    virtual std::string addVolume(std::size_t bytes) = 0;
    /// Mounts a volume of the root's device that refuses renames from the root.
    virtual std::string addMountOfSameDevice() = 0;
    virtual void buildOnVolume(std::initializer_list<std::string_view> items) = 0;
    virtual void makeVolumeReadOnly() = 0;

    /// Runs an action as an ordinary user who owns the tree.
    virtual int asUser(const std::function<int()>& action) = 0;

    /// The errno with which an operation fails for that user; 0 when it succeeds.
    template <class Action>
    int errorAsUser(const Action& action) {
        return asUser([&] {
            const auto result = action();
            return result ? 0 : result.error().code;
        });
    }

    [[nodiscard]] std::string path(std::string_view name) const { return root() + '/' + std::string(name); }
    [[nodiscard]] Url url(std::string_view name) const { return Url::file(path(name)); }
    [[nodiscard]] std::map<std::string, std::string> snapshot() { return snapshot(root()); }
};

class MemoryWorld final : public PortWorld {
public:
    MemoryWorld() { memory_.makeDirectory(root()); }

    OrdovanFileSystem& fs() override { return memory_; }
    [[nodiscard]] std::string root() const override { return "/home/user/tree"; }
    void build(std::initializer_list<std::string_view> items) override { testing::build(memory_, root(), items); }
    void setMode(std::string_view name, unsigned mode) override { memory_.setMode(path(name), mode); }
    void setModified(std::string_view name, std::int64_t nanoseconds) override {
        memory_.setModified(path(name), nanoseconds);
    }
    void replaceFile(std::string_view name, std::string_view content) override {
        // The old file lives on under another name, so that its identity can not be given out again.
        (void)memory_.move(url(name), url(std::string(name) + ".old"));
        memory_.write(path(name), content);
    }
    [[nodiscard]] std::map<std::string, std::string> snapshot(const std::string& below) override {
        return memory_.snapshot(below);
    }
    [[nodiscard]] bool canMount() const override { return true; }
    std::string addVolume(std::size_t bytes) override {
        memory_.addVolume(mountPoint, static_cast<std::int64_t>(bytes));
        return mountPoint;
    }
    std::string addMountOfSameDevice() override {
        memory_.addMountOfRootDevice(mountPoint);
        return mountPoint;
    }
    void buildOnVolume(std::initializer_list<std::string_view> items) override {
        testing::build(memory_, mountPoint, items);
    }
    void makeVolumeReadOnly() override { memory_.setReadOnly(mountPoint, true); }
    int asUser(const std::function<int()>& action) override { return action(); }

private:
    static constexpr const char* mountPoint = "/mnt/usb";
    testing::MemoryFileSystem memory_;
};

/// The real disk, in a temporary folder, with the home Trash in another one.
class DiskWorld : public PortWorld {
public:
    DiskWorld() {
        ::umask(022);
        ::setenv("XDG_DATA_HOME", folder_.path("data").c_str(), 1);
    }
    ~DiskWorld() override { ::unsetenv("XDG_DATA_HOME"); }

    OrdovanFileSystem& fs() override { return system_; }
    [[nodiscard]] std::string root() const override { return tree_; }
    void build(std::initializer_list<std::string_view> items) override { testing::buildOnDisk(root(), items); }
    void setMode(std::string_view name, unsigned mode) override { ::chmod(path(name).c_str(), mode); }
    void setModified(std::string_view name, std::int64_t nanoseconds) override {
        const ::timespec time{nanoseconds / 1'000'000'000, nanoseconds % 1'000'000'000};
        const ::timespec both[2] = {time, time};
        ::utimensat(AT_FDCWD, path(name).c_str(), both, 0);
    }
    void replaceFile(std::string_view name, std::string_view content) override {
        (void)system_.move(url(name), url(std::string(name) + ".old"));
        testing::buildOnDisk(root(),
                             std::initializer_list<std::string_view>{std::string(name) + " = " + std::string(content)});
    }
    [[nodiscard]] std::map<std::string, std::string> snapshot(const std::string& below) override {
        return testing::describeTree(below);
    }
    [[nodiscard]] bool canMount() const override { return SecondVolume::available(); }
    std::string addVolume(std::size_t bytes) override {
        volume_ = std::make_unique<SecondVolume>(bytes);
        return volume_->path();
    }
    std::string addMountOfSameDevice() override {
        const std::string shown(folder_.makeFolder("shown twice").path());
        bind_ = std::make_unique<BindMount>(shown);
        return bind_->root().path();
    }
    void buildOnVolume(std::initializer_list<std::string_view> items) override {
        testing::buildOnDisk(volume_ ? volume_->path() : bind_->root().path(), items);
    }
    void makeVolumeReadOnly() override { volume_->makeReadOnly(); }
    int asUser(const std::function<int()>& action) override {
        giveToUnprivileged(folder_.path());
        return unprivileged(action);
    }

private:
    TempFolder folder_;
    std::string tree_ = std::string(folder_.makeFolder("tree").path());
    std::unique_ptr<SecondVolume> volume_;
    std::unique_ptr<BindMount> bind_;
    SystemFileSystem system_;
};

/// The same with the disk of a run in the tree.
class RunWorld final : public DiskWorld {
public:
    explicit RunWorld(ConfinedFolders::Entering entering) : run_(Url::file(root()), entering) {}

    OrdovanFileSystem& fs() override { return run_; }
    [[nodiscard]] bool followsLinks() const override { return false; }

private:
    RunFileSystem run_;
};

}  // namespace ordovan::test
