#include "OrdovanApp/controller/FileLooks.h"

#include <algorithm>
#include <utility>

namespace {

constexpr std::size_t piece = std::size_t{1} << 20;

/// Nothing once the flag is set.
std::optional<FileBeginning> beginning(OrdovanContentReading* contents, const Url& file, std::size_t limit,
                                       const CancelFlag& flag) {
    FileBeginning result;
    if (flag.isCancelled()) return std::nullopt;
    if (contents == nullptr) return result;
    const auto open = contents->open(file);
    if (!open) return result;
    // One byte more than wanted tells whether that was all.
    while (result.bytes.size() <= limit) {
        if (flag.isCancelled()) return std::nullopt;
        const std::size_t done = result.bytes.size();
        result.bytes.resize(done + std::min(piece, limit + 1 - done));
        const auto got = (*open)->read(static_cast<std::int64_t>(done),
                                       std::span(result.bytes.data() + done, result.bytes.size() - done));
        if (!got) return FileBeginning();
        result.bytes.resize(done + *got);
        if (*got == 0) break;
    }
    result.couldRead = true;
    result.isWhole = result.bytes.size() <= limit;
    result.bytes.resize(std::min(result.bytes.size(), limit));
    return result;
}

}  // namespace

void FileLooks::look(const Url& file, std::size_t limit, Examine examine, std::function<void()> examined) {
    Look look{file, limit, std::move(examine), std::move(examined)};
    if (flag_) {
        flag_->cancel();
        next_ = std::move(look);
    } else {
        start(std::move(look));
    }
}

void FileLooks::cancel() {
    next_.reset();
    if (flag_) flag_->cancel();
}

void FileLooks::start(Look look) {
    flag_ = std::make_shared<CancelFlag>();
    const auto work = [contents = contents_, flag = flag_, file = look.file, limit = look.limit,
                       examine = std::move(look.examine)] {
        const auto found = beginning(contents, file, limit, *flag);
        if (found && !flag->isCancelled()) examine(*found);
    };
    const auto done = [this, alive = std::weak_ptr(alive_), flag = flag_, examined = std::move(look.examined)] {
        if (alive.expired()) return;
        const bool counts = !flag->isCancelled();
        finished();
        if (counts) examined();
    };
    tasks_.run(work, done);
}

void FileLooks::finished() {
    flag_.reset();
    if (next_) start(*std::exchange(next_, std::nullopt));
}
