#include "OrdovanCore/platform/Sha256Streams.h"

#include "OrdovanCore/Hex.h"

#include <algorithm>
#include <charconv>
#include <cstring>

namespace ordovan {

namespace {

constexpr std::size_t wordDigits = 8;

/// The message's end as whole blocks: what does not fill a block, a one bit, zeros, and the length in bits
/// (FIPS 180-4, section 5.1.1). Returns how many blocks.
std::size_t padded(std::span<const char> rest, std::uint64_t messageSize, unsigned char* into) {
    const std::size_t blocks = rest.size() + 1 + sizeof messageSize <= sha256BlockSize ? 1 : 2;
    std::memset(into, 0, blocks * sha256BlockSize);
    std::ranges::copy(rest, into);
    into[rest.size()] = 0x80;
    const std::uint64_t bits = messageSize * 8;
    for (std::size_t i = 0; i < sizeof bits; ++i) {
        into[blocks * sha256BlockSize - 1 - i] = static_cast<unsigned char>(bits >> (8 * i));
    }
    return blocks;
}

/// The state whose digits these are; false when there are too few.
bool parse(std::string_view digits, Sha256State& state) {
    if (digits.size() != wordDigits * state.size()) return false;
    for (std::size_t i = 0; i < state.size(); ++i) {
        const char* const word = digits.data() + wordDigits * i;
        std::from_chars(word, word + wordDigits, state[i], 16);
    }
    return true;
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
        const std::size_t blocks = padded(jobs[i].bytes.last(rest), jobs[i].prefix->size_, ends_[i].data());
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
        const auto after = std::make_shared<Sha256>();
        if (!after->beginAt(scratch_)) return false;
        prefix.library_ = after;
    }
    return parse(scratch_.finish(), prefix.state_);
}

std::string hexadecimal(const Sha256State& digest) {
    std::string text;
    text.reserve(wordDigits * digest.size());
    for (const std::uint32_t word : digest) appendHex(text, word, static_cast<int>(wordDigits));
    return text;
}

}  // namespace ordovan
