#include "OrdovanApp/controller/WatchedContents.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

namespace {

/// What is said of a link, a folder or any other thing without content of its own, of something that is gone, and of
/// bytes that are on their way.
constexpr std::array harmless = {ELOOP, EISDIR, EINVAL, ENXIO, ENOENT, ENOTDIR, EAGAIN};

}  // namespace

class WatchedContents::Content final : public OrdovanOpenContent {
public:
    Content(WatchedContents& watch, const Url& file, std::unique_ptr<OrdovanOpenContent> opened)
        : watch_(watch), file_(file), opened_(std::move(opened)) {}

    [[nodiscard]] Identity identity() const override { return opened_->identity(); }
    [[nodiscard]] std::uint64_t linkCount() const override { return opened_->linkCount(); }
    OrdovanResult<std::size_t> read(std::int64_t offset, std::span<char> into) override {
        return noted(opened_->read(offset, into));
    }
    OrdovanResult<std::size_t> readAtHand(std::int64_t offset, std::span<char> into) override {
        return noted(opened_->readAtHand(offset, into));
    }

private:
    OrdovanResult<std::size_t> noted(OrdovanResult<std::size_t> got) {
        if (!got) watch_.note(file_, got.error());
        return got;
    }

    WatchedContents& watch_;
    Url file_;
    std::unique_ptr<OrdovanOpenContent> opened_;
};

OrdovanResult<std::unique_ptr<OrdovanOpenContent>> WatchedContents::open(const Url& url) {
    auto opened = contents_.open(url);
    if (!opened) {
        note(url, opened.error());
        return opened;
    }
    return std::make_unique<Content>(*this, url, std::move(*opened));
}

std::vector<Url> WatchedContents::unread() const {
    const std::lock_guard guard(mutex_);
    std::vector<Url> files;
    files.reserve(unread_.size());
    for (const std::string& path : unread_) files.push_back(Url::file(path));
    return files;
}

void WatchedContents::note(const Url& file, const OrdovanSystemError& error) {
    if (error.domain == OrdovanSystemError::Domain::posix &&
        std::ranges::find(harmless, error.code) != harmless.end()) {
        return;
    }
    const std::lock_guard guard(mutex_);
    unread_.emplace(file.path());
}
