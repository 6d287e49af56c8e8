#pragma once

#include "OrdovanCore/FileSystem.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

/// A regular file open for reading. Used by one thread at a time; closed when it is destroyed.
class OrdovanOpenContent {
public:
    /// What tells files apart, whatever they are called (st_dev and st_ino, stat(2)).
    struct Identity {
        std::uint64_t device = 0;
        std::uint64_t inode = 0;
        friend bool operator==(const Identity&, const Identity&) = default;
    };

    virtual ~OrdovanOpenContent() = default;

    /// That of the file that was opened, whatever bears its name by now.
    [[nodiscard]] virtual Identity identity() const = 0;

    /// How many names the file had when it was opened (st_nlink): 1 unless there are hard links.
    [[nodiscard]] virtual std::uint64_t linkCount() const = 0;

    /// Reads bytes from `offset` on and returns how many: 0 only at or behind the end (or for no room), and possibly
    /// fewer than there is room for before it. Errors: the system's, EINVAL for a negative offset; from the port of a
    /// run EBUSY at the end of a file that another program writes or that is not what it was when it was opened.
    virtual OrdovanResult<std::size_t> read(std::int64_t offset, std::span<char> into) = 0;

    /// The same without waiting for a disk: EAGAIN where it would, and then the system has begun to fetch those bytes.
    /// Where the system can not tell, it reads. This default always does.
    virtual OrdovanResult<std::size_t> readAtHand(std::int64_t offset, std::span<char> into) {
        return read(offset, into);
    }
};

/// Opens files to read their content: the port through which many files are compared at once. It never changes
/// anything, access times included where the system lets us. Any thread, several at once; but one that is the disk of a
/// run is used by the run's one thread, with the files that it opens.
class OrdovanContentReading {
public:
    virtual ~OrdovanContentReading() = default;

    /// Opens a regular file as `OrdovanFileSystem::contentHash` does, with the same errors: ELOOP for a link, EISDIR
    /// for a folder, EINVAL for anything else, ENOENT where nothing is.
    virtual OrdovanResult<std::unique_ptr<OrdovanOpenContent>> open(const Url& url) = 0;
};
