#pragma once

#include "OrdovanApp/controller/CancelFlag.h"
#include "OrdovanCore/ContentReading.h"
#include "OrdovanCore/FileSystem.h"

#include <cstdint>
#include <string>

/// The file system of one run whose hashes can be given up in the middle of a file: `contentHash` then fails with
/// ECANCELED. A file that the run has begun to change is finished: from its first change on until the next file, hashes
/// are complete. Every other operation goes straight to the file system given. Used by the run's one thread; the flag
/// may be set from any.
class StoppableFileSystem final : public OrdovanFileSystem {
public:
    /// `contents`: sees the same files as `fs` and reads those of more than `largeFile` bytes in pieces; null for none.
    /// A hash of any other file is `fs`'s, and is not begun once the flag is set. All three outlive this object.
    StoppableFileSystem(OrdovanFileSystem& fs, OrdovanContentReading* contents, const CancelFlag& flag)
        : fs_(fs), contents_(contents), flag_(flag) {}

    /// To be called before each file. False when the run is to stop.
    [[nodiscard]] bool beginFile();

    /// 64 MiB: less is hashed before anybody notices.
    static constexpr std::int64_t largeFile = std::int64_t{64} << 20;

    bool exists(const Url& url) override { return fs_.exists(url); }
    bool isRegularFile(const Url& url) override { return fs_.isRegularFile(url); }
    bool isSymlink(const Url& url) override { return fs_.isSymlink(url); }
    bool sameVolume(const Url& a, const Url& b) override { return fs_.sameVolume(a, b); }
    OrdovanResult<void> createDirectory(const Url& url) override { return changing().createDirectory(url); }
    OrdovanResult<void> move(const Url& from, const Url& to) override { return changing().move(from, to); }
    OrdovanResult<void> copy(const Url& from, const Url& to) override { return changing().copy(from, to); }
    OrdovanResult<void> remove(const Url& url) override { return changing().remove(url); }
    OrdovanResult<std::int64_t> fileSize(const Url& url) override { return fs_.fileSize(url); }
    OrdovanResult<std::string> contentHash(const Url& url) override;
    OrdovanResult<std::string> fileIdentity(const Url& url) override { return fs_.fileIdentity(url); }
    OrdovanResult<Url> trash(const Url& url) override { return changing().trash(url); }

private:
    OrdovanFileSystem& changing() {
        isChanging_ = true;
        return fs_;
    }
    [[nodiscard]] bool isStopped() const { return !isChanging_ && flag_.isCancelled(); }
    [[nodiscard]] OrdovanResult<std::string> hashInPieces(const Url& url) const;

    OrdovanFileSystem& fs_;
    OrdovanContentReading* contents_;
    const CancelFlag& flag_;
    bool isChanging_ = false;
};
