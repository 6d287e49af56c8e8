#pragma once

#include "OrdovanApp/controller/SystemEnvironment.h"
#include "OrdovanApp/controller/TidyViewModel.h"
#include "OrdovanCore/testing/TreeBuilder.h"
#include "tests/support/ManualTaskRunner.h"
#include "tests/support/OtherPorts.h"
#include "tests/support/SecondVolume.h"
#include "tests/support/TempFolder.h"

#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <initializer_list>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace ordovan::proofs {

/// A person's disk: the folder "tree" that is organized, the folder "data" with the records and the Trash, and the
/// folder "decoy" with things that are nobody's business here. It lies in a volume of its own in memory where one can
/// be mounted, else in a temporary folder, or where it is told to. The settings lie beside it: nothing depends on them.
class Disk {
public:
    explicit Disk(std::size_t bytes = 64U << 20U, const std::string& options = "") {
        if (test::SecondVolume::available()) volume_ = std::make_unique<test::SecondVolume>(bytes, "tmpfs", options);
        begin(volume_ ? volume_->path() : folder_->path());
    }
    /// In a folder of a volume that is there.
    explicit Disk(const std::string& base) : folder_(nullptr) { begin(base); }
    ~Disk() {
        unmountAll();
        ::unsetenv("XDG_DATA_HOME");
    }
    Disk(const Disk&) = delete;
    Disk& operator=(const Disk&) = delete;

    [[nodiscard]] const std::string& base() const { return base_; }
    [[nodiscard]] std::string path(std::string_view name) const { return base_ + "/" + std::string(name); }
    [[nodiscard]] std::string tree() const { return path("tree"); }
    [[nodiscard]] Url root() const { return Url::file(tree()); }
    [[nodiscard]] StorageLocations locations() const {
        return {.recordsFolder = Url::file(path("data/ordovan")), .settingsFolder = Url::file(base_ + "-settings")};
    }
    [[nodiscard]] const test::SecondVolume* volume() const { return volume_.get(); }

    void build(std::initializer_list<std::string_view> items) const { testing::buildOnDisk(tree(), items); }
    void write(std::string_view name, std::string_view content) const {
        const std::filesystem::path file = path(name);
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary | std::ios::trunc)
            .write(content.data(), static_cast<std::streamsize>(content.size()));
    }
    [[nodiscard]] std::string read(std::string_view name) const { return contentOf(path(name)); }
    [[nodiscard]] bool has(std::string_view name) const {
        struct ::stat facts;
        return ::lstat(path(name).c_str(), &facts) == 0;
    }

    /// Mounts a volume of its own on a folder, which is made. Only where `SecondVolume::available()`.
    void mount(std::string_view name, std::size_t bytes = 16U << 20U, const std::string& options = "") {
        std::filesystem::create_directories(path(name));
        const std::string all = "mode=755,size=" + std::to_string(bytes) + (options.empty() ? "" : "," + options);
        if (!test::detail::MountNamespace::get().mount(path(name), "tmpfs", all)) {
            throw std::system_error(errno, std::generic_category(), "can not mount at " + path(name));
        }
        mounts_.push_back(path(name));
    }

    /// Gives a volume mounted so another size and other options.
    void remount(std::string_view name, std::size_t bytes, const std::string& options) const {
        const std::string all = "size=" + std::to_string(bytes) + "," + options;
        if (!test::detail::MountNamespace::get().remount(path(name), 0, all)) {
            throw std::system_error(errno, std::generic_category(), "can not remount " + path(name));
        }
    }
    /// Shows a folder of another volume at a folder, which is made.
    void bind(const std::string& from, std::string_view name) {
        std::filesystem::create_directories(path(name));
        if (!test::detail::MountNamespace::get().bind(from, path(name))) {
            throw std::system_error(errno, std::generic_category(), "can not bind " + from);
        }
        mounts_.push_back(path(name));
    }
    /// Takes away what was mounted so.
    void unmountAll() {
        for (auto mount = mounts_.rbegin(); mount != mounts_.rend(); ++mount) {
            test::detail::MountNamespace::get().unmount(*mount);
        }
        mounts_.clear();
    }
    /// Makes all volumes of this disk read-only, or writable again. False when one of them is being written to.
    bool setReadOnly(bool on) const {
        bool isDone = true;
        const auto set = [&](const std::string& at) {
            isDone = test::detail::MountNamespace::get().remount(at, on ? MS_RDONLY : 0, "") && isDone;
        };
        for (const std::string& at : mounts_) set(at);
        if (volume_) set(volume_->path());
        return isDone;
    }

    /// The same for the volume mounted at one folder, or for that of the disk itself.
    bool setReadOnly(std::string_view name, bool on) const {
        const std::string at = name.empty() ? volume_->path() : path(name);
        return test::detail::MountNamespace::get().remount(at, on ? MS_RDONLY : 0, "");
    }

    /// Everything in the chosen folder, described, without the output folder itself, which stays when it is empty.
    [[nodiscard]] std::map<std::string, std::string> described() const {
        auto items = testing::describeTree(tree());
        items.erase("ordovan+");
        return items;
    }
    [[nodiscard]] std::map<std::string, std::string> decoy() const { return testing::describeTree(path("decoy")); }

    /// The user's files wherever they are, Trash included: by path, what is in them.
    [[nodiscard]] std::map<std::string, std::string> files() const {
        namespace fs = std::filesystem;
        std::map<std::string, std::string> found;
        // The whole volume, since its own Trash may serve as well.
        for (const auto& entry : fs::recursive_directory_iterator(top_)) {
            const std::string name = entry.path().lexically_relative(base_);
            if (!entry.is_regular_file() || entry.is_symlink() || name.starts_with("data/ordovan/") ||
                name.starts_with("decoy/") || name.starts_with("../person-settings") || name.ends_with("/.filler") ||
                name.ends_with(".trashinfo")) {
                continue;
            }
            found.emplace(name, contentOf(entry.path()));
        }
        return found;
    }
    [[nodiscard]] std::multiset<std::string> contents() const {
        std::multiset<std::string> all;
        for (const auto& [path, content] : files()) all.insert(content);
        return all;
    }

    static std::string contentOf(const std::filesystem::path& file) {
        std::ifstream in(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }

private:
    void begin(const std::string& base) {
        ::umask(022);
        top_ = base;
        base_ = base + "/person";
        std::filesystem::create_directories(tree());
        std::filesystem::create_directories(path("data"));
        write("decoy/letter.txt", "private");
        write("decoy/deep/keys.pdf", "more private");
        ::setenv("XDG_DATA_HOME", path("data").c_str(), 1);
    }

    std::unique_ptr<test::TempFolder> folder_ = std::make_unique<test::TempFolder>();
    std::unique_ptr<test::SecondVolume> volume_;
    std::string top_;
    std::string base_;
    std::vector<std::string> mounts_;
};

/// The program on that disk. Nothing happens by itself: every step is taken to its end on the calling thread.
class Program {
public:
    explicit Program(const Disk& disk, const Url& root) : environment_(disk.locations()) {
        const TidyPorts real = environment_.ports();
        // Without threads.
        model_ =
            std::make_unique<TidyViewModel>(test::withOthers(real, real.fileSystem, tasks_), TidyViewModel::Options{});
        model_->chooseFolder(root);
        tasks_.finish();
    }
    explicit Program(const Disk& disk) : Program(disk, disk.root()) {}

    [[nodiscard]] TidyViewModel& model() { return *model_; }

    /// Takes a step of the controller to its end; what it says.
    template <class Step>
    bool run(const Step& step) {
        const bool started = step(*model_);
        tasks_.finish();
        return started;
    }
    bool organize() {
        return run([](TidyViewModel& model) { return model.organize(); });
    }
    bool undo() {
        return run([](TidyViewModel& model) { return model.undo(); });
    }
    bool restore() {
        return run([](TidyViewModel& model) { return model.restore(); });
    }
    bool trashExtras() {
        run([](TidyViewModel& model) { return model.findDuplicates(); });
        return run([](TidyViewModel& model) { return model.trashExtras(); });
    }
    /// Trashes these files of the chosen folder.
    bool trash(const std::vector<std::string>& paths) {
        std::vector<OrdovanFileTrasher::Item> items;
        if (!model_->inventory()) return false;
        for (const OrdovanInventoryEntry& entry : model_->inventory()->files) {
            const bool isTicked = std::ranges::find(paths, entry.url.path()) != paths.end();
            if (isTicked) items.push_back({entry.url, entry.byteSize});
        }
        return run([&](TidyViewModel& model) { return model.trashBigFiles(items); });
    }

private:
    SystemEnvironment environment_;
    test::ManualTaskRunner tasks_;
    std::unique_ptr<TidyViewModel> model_;
};

}  // namespace ordovan::proofs
