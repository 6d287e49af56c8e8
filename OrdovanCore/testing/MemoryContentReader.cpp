#include "OrdovanCore/testing/MemoryContentReader.h"

#include "OrdovanCore/testing/MemoryFileSystem.h"

#include <algorithm>
#include <cerrno>
#include <limits>

namespace ordovan::testing {

class MemoryContentReader::Open final : public OrdovanOpenContent {
public:
    Open(MemoryContentReader& reader, std::shared_ptr<File> file, std::string_view path)
        : reader_(reader), file_(std::move(file)), path_(path) {}
    Open(const Open&) = delete;
    Open& operator=(const Open&) = delete;
    ~Open() override {
        const std::scoped_lock lock(reader_.mutex_);
        --reader_.openNow_;
    }

    [[nodiscard]] Identity identity() const override { return {1, file_->inode}; }

    [[nodiscard]] std::uint64_t linkCount() const override {
        const std::scoped_lock lock(reader_.mutex_);
        return file_->links;
    }

    OrdovanResult<std::size_t> read(std::int64_t offset, std::span<char> into) override {
        if (reader_.beforeRead_) reader_.beforeRead_(path_, offset);
        const std::scoped_lock lock(reader_.mutex_);
        if (offset < 0) return std::unexpected(OrdovanSystemError::posix(EINVAL));
        const std::string& content = file_->content;
        const auto begin = static_cast<std::size_t>(offset);
        if (file_->failsAt && *file_->failsAt <= content.size() && begin >= *file_->failsAt) {
            return std::unexpected(OrdovanSystemError::posix(file_->error));
        }
        const std::size_t end = std::min(content.size(), file_->failsAt.value_or(content.size()));
        if (begin >= end) return 0U;
        const std::size_t count = std::min({end - begin, into.size(), reader_.longestRead_});
        std::copy_n(content.begin() + static_cast<std::ptrdiff_t>(begin), count, into.begin());
        file_->bytesRead += count;
        reader_.bytesRead_ += count;
        return count;
    }

    OrdovanResult<std::size_t> readAtHand(std::int64_t offset, std::span<char> into) override {
        {
            const std::scoped_lock lock(reader_.mutex_);
            const bool isFirst = file_->fetched.insert(offset).second;
            if (reader_.cold_ && isFirst) return std::unexpected(OrdovanSystemError::posix(EAGAIN));
        }
        return read(offset, into);
    }

private:
    MemoryContentReader& reader_;
    std::shared_ptr<File> file_;
    std::string path_;
};

MemoryContentReader::MemoryContentReader()
    : longestRead_(std::numeric_limits<std::size_t>::max()), mostOpen_(std::numeric_limits<std::size_t>::max()) {}

MemoryContentReader::~MemoryContentReader() = default;

std::shared_ptr<MemoryContentReader::File>& MemoryContentReader::at(std::string_view path) {
    std::shared_ptr<File>& file = files_[std::string(path)];
    if (!file) {
        file = std::make_shared<File>();
        file->inode = ++lastInode_;
    }
    return file;
}

void MemoryContentReader::write(std::string_view path, std::string content) {
    const std::scoped_lock lock(mutex_);
    at(path)->content = std::move(content);
}

void MemoryContentReader::replace(std::string_view path, std::string content) {
    const std::scoped_lock lock(mutex_);
    --at(path)->links;
    files_.erase(files_.find(path));
    at(path)->content = std::move(content);
}

void MemoryContentReader::hardLink(std::string_view path, std::string_view existing) {
    const std::scoped_lock lock(mutex_);
    const std::shared_ptr<File> file = at(existing);
    ++file->links;
    files_[std::string(path)] = file;
}

void MemoryContentReader::remove(std::string_view path) {
    const std::scoped_lock lock(mutex_);
    --at(path)->links;
    files_.erase(files_.find(path));
}

void MemoryContentReader::failOpening(std::string_view path, int errnoValue) {
    const std::scoped_lock lock(mutex_);
    unopenable_[std::string(path)] = errnoValue;
}

void MemoryContentReader::failReading(std::string_view path, std::size_t offset, int errnoValue) {
    const std::scoped_lock lock(mutex_);
    at(path)->failsAt = offset;
    at(path)->error = errnoValue;
}

void MemoryContentReader::setLongestRead(std::size_t bytes) {
    const std::scoped_lock lock(mutex_);
    longestRead_ = bytes;
}

void MemoryContentReader::setCold() {
    const std::scoped_lock lock(mutex_);
    cold_ = true;
}

void MemoryContentReader::setMostOpen(std::size_t files) {
    const std::scoped_lock lock(mutex_);
    mostOpen_ = files;
}

void MemoryContentReader::setBeforeRead(std::function<void(std::string_view, std::int64_t)> hook) {
    beforeRead_ = std::move(hook);
}

OrdovanResult<std::unique_ptr<OrdovanOpenContent>> MemoryContentReader::open(const Url& url) {
    const std::scoped_lock lock(mutex_);
    ++opens_;
    const auto refused = unopenable_.find(url.path());
    if (refused != unopenable_.end()) return std::unexpected(OrdovanSystemError::posix(refused->second));
    const auto file = files_.find(url.path());
    if (file == files_.end()) return std::unexpected(OrdovanSystemError::posix(ENOENT));
    if (openNow_ >= mostOpen_) return std::unexpected(OrdovanSystemError::posix(EMFILE));
    mostOpenAtOnce_ = std::max(mostOpenAtOnce_, ++openNow_);
    return std::make_unique<Open>(*this, file->second, url.path());
}

std::uint64_t MemoryContentReader::bytesRead() const {
    const std::scoped_lock lock(mutex_);
    return bytesRead_;
}

std::uint64_t MemoryContentReader::bytesRead(std::string_view path) const {
    const std::scoped_lock lock(mutex_);
    const auto file = files_.find(path);
    return file == files_.end() ? 0 : file->second->bytesRead;
}

std::size_t MemoryContentReader::opens() const {
    const std::scoped_lock lock(mutex_);
    return opens_;
}

std::size_t MemoryContentReader::mostOpenAtOnce() const {
    const std::scoped_lock lock(mutex_);
    return mostOpenAtOnce_;
}

OrdovanResult<std::string> HashingFileSystem::contentHash(const Url& url) {
    ++hashes_;
    auto file = reader_.open(url);
    if (!file) return std::unexpected(file.error());
    std::string content, piece(1 << 16, '\0');
    for (;;) {
        const auto got = (*file)->read(static_cast<std::int64_t>(content.size()), piece);
        if (!got) return std::unexpected(got.error());
        if (*got == 0) return digestOf(content);
        content.append(piece, 0, *got);
    }
}

std::unexpected<OrdovanSystemError> HashingFileSystem::refusal() {
    ++otherCalls_;
    return std::unexpected(OrdovanSystemError::posix(ENOSYS));
}

}  // namespace ordovan::testing
