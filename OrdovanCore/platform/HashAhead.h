#pragma once

#include "OrdovanCore/FileSystem.h"

#include <sys/stat.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>

namespace ordovan {

/// The real disk for one run whose files are known beforehand: worker threads hash the next files while the run is
/// still busy with the ones before them.
///
/// A hash made ahead is handed out only when nothing tells that the file changed since: it is still a regular file with
/// the same device, inode, size, modification and status-change time (st_ctim, which no program can set), the latter
/// old enough when the hash was made that a later change must show in it, nobody had it open for writing (which might
/// show in the stamps late), and all on a local file system whose stamps can be relied on. Otherwise the file is hashed
/// at the moment it is asked for, as without this class.
///
/// Every other operation goes straight to the file system given. Used by the run's one thread, beside which the workers
/// open and read the next files. Destroying it stops them, in the middle of a file as well.
class HashAheadFileSystem final : public OrdovanFileSystem {
public:
    struct Options {
        /// The path of the run's folder: files below it are opened from there without following a link. Empty: none
        /// are.
        std::string root = {};
        /// Whether any other file may be opened at all: the checks that the run itself will make of its place. Called
        /// on the workers; empty for always.
        std::function<bool(const Url& file)> mayRead = {};
        /// Told of each hash made ahead that is asked for: `facts` are those of the descriptor that was read. Says
        /// whether that is the file at the path; else the hash is not handed out. Called on the thread that asks for
        /// the hash; empty for a look here.
        std::function<bool(const Url& file, const struct ::stat& facts)> vouch = {};
        /// The time, seconds since 1970; empty for the system's clock. Called on the workers.
        std::function<double()> clock = {};
        /// Relies on the time stamps of every file system, not only of those known to keep them well.
        bool trustsEveryFileSystem = false;
    };

    /// `files`: what will be hashed, in about this order. `fs` outlives this object.
    HashAheadFileSystem(OrdovanFileSystem& fs, std::span<const Url> files, Options options);
    ~HashAheadFileSystem() override;

    bool exists(const Url& url) override { return fs_.exists(url); }
    bool isRegularFile(const Url& url) override { return fs_.isRegularFile(url); }
    bool isSymlink(const Url& url) override { return fs_.isSymlink(url); }
    bool sameVolume(const Url& a, const Url& b) override { return fs_.sameVolume(a, b); }
    OrdovanResult<void> createDirectory(const Url& url) override { return fs_.createDirectory(url); }
    OrdovanResult<void> move(const Url& from, const Url& to) override { return fs_.move(from, to); }
    OrdovanResult<void> copy(const Url& from, const Url& to) override { return fs_.copy(from, to); }
    OrdovanResult<void> remove(const Url& url) override { return fs_.remove(url); }
    OrdovanResult<std::int64_t> fileSize(const Url& url) override { return fs_.fileSize(url); }
    OrdovanResult<std::string> contentHash(const Url& url) override;
    OrdovanResult<std::string> fileIdentity(const Url& url) override { return fs_.fileIdentity(url); }
    OrdovanResult<Url> trash(const Url& url) override { return fs_.trash(url); }

    /// How many hashes made ahead were handed out so far.
    [[nodiscard]] std::size_t handedOut() const noexcept { return handedOut_; }

private:
    class Queue;
    OrdovanFileSystem& fs_;
    std::function<bool(const Url& file, const struct ::stat& facts)> vouch_;
    std::unique_ptr<Queue> queue_;
    std::size_t handedOut_ = 0;
};

}  // namespace ordovan
