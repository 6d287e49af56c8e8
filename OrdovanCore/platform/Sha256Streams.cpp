#include "OrdovanCore/platform/Sha256Streams.h"

#include <algorithm>

namespace ordovan {

namespace {

/// A digest in bytes as the words of a state, most significant byte first.
Sha256State wordsOf(const std::array<unsigned char, 32>& digest) {
    Sha256State words{};
    for (std::size_t i = 0; i < digest.size(); ++i) words[i / 4] = words[i / 4] << 8 | digest[i];
    return words;
}

}  // namespace

bool Sha256Streams::add(std::span<const Sha256Job> jobs) {
    if (!byInstructions_) return std::ranges::all_of(jobs, [this](const Sha256Job& job) { return addByLibrary(job); });
    streams_.clear();
    for (const Sha256Job& job : jobs) {
        const auto* const data = reinterpret_cast<const unsigned char*>(job.bytes.data());
        streams_.push_back({&job.prefix->state_, data, job.bytes.size() / sha256BlockSize});
        job.prefix->size_ += job.bytes.size();
    }
    runStreams();
    streams_.clear();
    ends_.resize(jobs.size());
    for (std::size_t i = 0; i < jobs.size(); ++i) {
        if (!jobs[i].last) continue;
        const std::size_t rest = jobs[i].bytes.size() % sha256BlockSize;
        const auto* const end = reinterpret_cast<const unsigned char*>(jobs[i].bytes.data()) + jobs[i].bytes.size();
        const std::size_t blocks = endOfMessage({end - rest, rest}, jobs[i].prefix->size_, ends_[i].data());
        streams_.push_back({&jobs[i].prefix->state_, ends_[i].data(), blocks});
    }
    runStreams();
    return true;
}

/// Keeps as many streams in step as there are lanes; where one ends, the next one takes its lane.
void Sha256Streams::runStreams() {
    Stream lanes[ShaNi::mostLanes];
    std::size_t used = 0, next = 0;
    for (;;) {
        while (used < ShaNi::mostLanes && next < streams_.size()) {
            if (streams_[next].blocks > 0) lanes[used++] = streams_[next];
            ++next;
        }
        if (used == 0) return;
        Sha256State* states[ShaNi::mostLanes];
        const unsigned char* data[ShaNi::mostLanes];
        std::size_t blocks = lanes[0].blocks;
        for (std::size_t i = 0; i < used; ++i) {
            states[i] = lanes[i].state;
            data[i] = lanes[i].data;
            blocks = std::min(blocks, lanes[i].blocks);
        }
        ShaNi::compress(used, states, data, blocks);
        for (std::size_t i = 0; i < used; ++i) {
            lanes[i].data += blocks * sha256BlockSize;
            lanes[i].blocks -= blocks;
        }
        used = static_cast<std::size_t>(
            std::remove_if(lanes, lanes + used, [](const Stream& lane) { return lane.blocks == 0; }) - lanes);
    }
}

bool Sha256Streams::addByLibrary(const Sha256Job& job) {
    Sha256Prefix& prefix = *job.prefix;
    const bool begun = prefix.library_ ? scratch_.beginAt(*prefix.library_) : scratch_.begin();
    if (!begun || !scratch_.add(job.bytes.data(), job.bytes.size())) return false;
    prefix.library_.reset();
    if (!job.last) {
        const auto after = std::make_shared<LibrarySha256>();
        if (!after->beginAt(scratch_)) return false;
        prefix.library_ = after;
    }
    const auto digest = scratch_.finish();
    if (digest) prefix.state_ = wordsOf(*digest);
    return digest.has_value();
}

}  // namespace ordovan
