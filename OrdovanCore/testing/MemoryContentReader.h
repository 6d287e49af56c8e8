#pragma once

#include "OrdovanCore/ContentReading.h"
#include "OrdovanCore/FileSystem.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace ordovan::testing {

/// Files in memory to be opened and read, by path, with what can go wrong. Any thread.
class MemoryContentReader final : public OrdovanContentReading {
public:
    MemoryContentReader();
    ~MemoryContentReader() override;

    /// Makes a file, or changes the content of the one that is there.
    void write(std::string_view path, std::string content);
    /// Puts another file, with another identity, in place of what is there.
    void replace(std::string_view path, std::string content);
    void hardLink(std::string_view path, std::string_view existing);
    void remove(std::string_view path);

    /// Makes opening this path fail.
    void failOpening(std::string_view path, int errnoValue);
    /// Makes reading the file fail at this byte, or at its end: what lies before can be read. No effect behind the end.
    void failReading(std::string_view path, std::size_t offset, int errnoValue);
    /// No read gives more bytes than this.
    void setLongestRead(std::size_t bytes);
    /// Nothing is at hand of what was not read before: the first time, `readAtHand` fails with EAGAIN.
    void setCold();
    /// Opening fails with EMFILE while so many files are open.
    void setMostOpen(std::size_t files);
    /// Called before each read, without a lock held; may change the files.
    void setBeforeRead(std::function<void(std::string_view path, std::int64_t offset)> hook);

    OrdovanResult<std::unique_ptr<OrdovanOpenContent>> open(const Url& url) override;

    /// Bytes read so far, of all files or of one, under whatever name.
    [[nodiscard]] std::uint64_t bytesRead() const;
    [[nodiscard]] std::uint64_t bytesRead(std::string_view path) const;
    /// How many calls of `open` there were.
    [[nodiscard]] std::size_t opens() const;
    /// The most files that were open at one time.
    [[nodiscard]] std::size_t mostOpenAtOnce() const;

private:
    class Open;
    struct File {
        std::uint64_t inode = 0;
        std::uint64_t links = 1;
        std::string content;
        std::optional<std::size_t> failsAt;
        int error = 0;
        std::uint64_t bytesRead = 0;
        std::set<std::int64_t> fetched;  // offsets that were asked for
    };

    std::shared_ptr<File>& at(std::string_view path);

    mutable std::mutex mutex_;
    std::map<std::string, std::shared_ptr<File>, std::less<>> files_;
    std::map<std::string, int, std::less<>> unopenable_;
    std::function<void(std::string_view, std::int64_t)> beforeRead_;
    std::size_t longestRead_;
    std::size_t mostOpen_;
    bool cold_ = false;
    std::uint64_t lastInode_ = 0;
    std::uint64_t bytesRead_ = 0;
    std::size_t opens_ = 0;
    std::size_t openNow_ = 0;
    std::size_t mostOpenAtOnce_ = 0;
};

/// A file-system port that can do nothing but hash: what a `MemoryContentReader` gives, read from start to end. Every
/// other operation fails and is counted.
class HashingFileSystem final : public OrdovanFileSystem {
public:
    explicit HashingFileSystem(MemoryContentReader& reader) : reader_(reader) {}

    OrdovanResult<std::string> contentHash(const Url& url) override;

    [[nodiscard]] std::size_t hashes() const noexcept { return hashes_; }
    [[nodiscard]] std::size_t otherCalls() const noexcept { return otherCalls_; }

    bool exists(const Url&) override { return refuse(); }
    bool isRegularFile(const Url&) override { return refuse(); }
    bool isSymlink(const Url&) override { return refuse(); }
    bool sameVolume(const Url&, const Url&) override { return refuse(); }
    OrdovanResult<void> createDirectory(const Url&) override { return refusal(); }
    OrdovanResult<void> move(const Url&, const Url&) override { return refusal(); }
    OrdovanResult<void> copy(const Url&, const Url&) override { return refusal(); }
    OrdovanResult<void> remove(const Url&) override { return refusal(); }
    OrdovanResult<std::int64_t> fileSize(const Url&) override { return refusal(); }
    OrdovanResult<std::string> fileIdentity(const Url&) override { return refusal(); }
    OrdovanResult<Url> trash(const Url&) override { return refusal(); }

private:
    bool refuse() {
        ++otherCalls_;
        return false;
    }
    std::unexpected<OrdovanSystemError> refusal();

    MemoryContentReader& reader_;
    std::size_t hashes_ = 0;
    std::size_t otherCalls_ = 0;
};

}  // namespace ordovan::testing
