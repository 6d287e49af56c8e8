#pragma once

#include "OrdovanCore/ContentReading.h"
#include "OrdovanCore/Url.h"

#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

/// Reads through another port and remembers which files it could not read. A search for duplicates leaves such a file
/// out without a word; whoever reads its result has to know that.
///
/// Any thread, several at once.
class WatchedContents final : public OrdovanContentReading {
public:
    /// `contents` outlives this and what it has opened.
    explicit WatchedContents(OrdovanContentReading& contents) : contents_(contents) {}

    OrdovanResult<std::unique_ptr<OrdovanOpenContent>> open(const Url& url) override;

    /// The files that could not be opened or read so far, by path. What is no regular file, or is not there any more,
    /// is none of them.
    [[nodiscard]] std::vector<Url> unread() const;

private:
    class Content;
    void note(const Url& file, const OrdovanSystemError& error);

    OrdovanContentReading& contents_;
    mutable std::mutex mutex_;
    std::set<std::string> unread_;
};
