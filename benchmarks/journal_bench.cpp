// Reads and writes undo journals of any size, timed:
//   journal_bench write FILE N   formats N entries, writes them to FILE and flushes it to the disk
//   journal_bench read FILE      reads FILE in pieces of 256 KiB and checks it
// Prints one line of JSON: what was done, entries, bytes, seconds, peak resident KiB.

#include "OrdovanCore/Journal.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <charconv>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;

OrdovanJournal journalOf(std::size_t count) {
    constexpr std::string_view categories[] = {"Documents", "Images", "Archives", "Music", "Movies", "Other"};
    constexpr std::string_view names[] = {"invoice-2023", "Überweisung_2024", "IMG", "scan of 200",
                                          "写真",         "report v2.3"};
    constexpr std::string_view extensions[] = {"pdf", "jpg", "docx", "zip", "mp3", "HEIC"};
    constexpr std::string_view digits = "0123456789abcdef";
    std::mt19937_64 random(20240505);
    OrdovanJournal journal;
    journal.createdAtEpoch = 1'714'903'200.25;
    journal.entries.reserve(count);
    std::string source, destination, name, hash(64, '0');
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint64_t dice = random();
        name.assign(names[dice % 6]).append(" ").append(std::to_string(i)).append(".").append(extensions[dice / 6 % 6]);
        source.assign("/home/user/Downloads/client-").append(std::to_string(dice % 997)).append("/").append(name);
        destination.assign("/home/user/Downloads/ordovan+/").append(categories[dice / 36 % 6]).append("/").append(name);
        for (std::size_t at = 0; at < 64; at += 16) {
            std::uint64_t word = random();
            for (std::size_t place = at; place < at + 16; ++place, word /= 16) hash[place] = digits[word % 16];
        }
        journal.entries.emplace_back(source, destination, dice % 10 != 0, static_cast<std::int64_t>(dice >> 32), hash,
                                     "65024:" + std::to_string(1'000'000 + i));
    }
    return journal;
}

bool writeAll(int descriptor, std::string_view piece) {
    while (!piece.empty()) {
        const ssize_t written = ::write(descriptor, piece.data(), piece.size());
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;
        piece.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

void report(const char* did, std::size_t entries, std::size_t bytes, Clock::time_point start) {
    const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    std::printf("{\"did\": \"%s\", \"entries\": %zu, \"bytes\": %zu, \"seconds\": %.4f, \"peakKiB\": %ld}\n", did,
                entries, bytes, seconds, usage.ru_maxrss);
}

int fail(const char* what) {
    std::fprintf(stderr, "journal_bench: %s\n", what);
    return 1;
}

int write(const char* path, std::size_t count) {
    const OrdovanJournal journal = journalOf(count);
    const Clock::time_point start = Clock::now();
    const int descriptor = ::open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (descriptor < 0) return fail(std::strerror(errno));
    std::size_t bytes = 0;
    const bool whole = journal.encode([&](std::string_view piece) {
        bytes += piece.size();
        return writeAll(descriptor, piece);
    });
    const bool flushed = whole && ::fsync(descriptor) == 0;
    if (::close(descriptor) != 0 || !flushed) return fail("the journal could not be written");
    report("write", count, bytes, start);
    return 0;
}

int read(const char* path) {
    const Clock::time_point start = Clock::now();
    const int descriptor = ::open(path, O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) return fail(std::strerror(errno));
    std::vector<char> buffer(std::size_t{256} * 1024);
    OrdovanJournalDecoder decoder;
    std::size_t bytes = 0;
    for (;;) {
        const ssize_t got = ::read(descriptor, buffer.data(), buffer.size());
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return fail(std::strerror(errno));
        if (got == 0) break;
        bytes += static_cast<std::size_t>(got);
        if (!decoder.feed({buffer.data(), static_cast<std::size_t>(got)})) break;
    }
    ::close(descriptor);
    const auto journal = decoder.finish();
    if (!journal) return fail(describe(journal.error()).c_str());
    report("read", journal->entries.size(), bytes, start);
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 3 && std::string_view(argv[1]) == "read") return read(argv[2]);
    if (argc == 4 && std::string_view(argv[1]) == "write") {
        const std::string_view number = argv[3];
        std::size_t count = 0;
        const auto [end, status] = std::from_chars(number.data(), number.data() + number.size(), count);
        if (status == std::errc() && end == number.data() + number.size()) return write(argv[2], count);
    }
    std::fprintf(stderr, "usage: journal_bench write FILE N | journal_bench read FILE\n");
    return 2;
}
