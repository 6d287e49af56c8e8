// Scans a folder, finds its duplicates and prints the groups, one path a line with an empty line behind each group.
// What it took goes to standard error as one JSON line.
//   duplicates_bench FOLDER [in-turn]

#include "OrdovanCore/Duplicates.h"
#include "OrdovanCore/Proposals.h"
#include "OrdovanCore/platform/ContentReader.h"
#include "OrdovanCore/platform/DirectoryReader.h"
#include "OrdovanCore/platform/SystemFileSystem.h"

#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <string>
#include <string_view>

namespace {

double seconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

/// Of all threads.
double processorSeconds() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto of = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
    };
    return of(usage.ru_utime) + of(usage.ru_stime);
}

long peakKilobytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

OrdovanDuplicateReport findDuplicates(const std::vector<OrdovanInventoryEntry>& files, bool inTurn) {
    if (inTurn) {
        SystemFileSystem fs;
        return OrdovanDuplicateFinder::find(files, fs);
    }
    SystemContentReader contents;
    return OrdovanDuplicateFinder::find(files, contents, {}).value();
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fputs("usage: duplicates_bench FOLDER [in-turn]\n", stderr);
        return 2;
    }
    const Url root = OrdovanProposalPlanner::resolveExisting(Url::file(argv[1]));
    const bool inTurn = argc > 2 && std::string_view(argv[2]) == "in-turn";
    OrdovanInventoryLimits limits;
    limits.maxFiles = limits.maxDirectories = 100'000'000;
    limits.maxDepth = 100'000;
    limits.includeHidden = true;
    FileManagerDirectoryReader reader;
    const double start = seconds();
    const OrdovanInventory inventory = OrdovanInventoryScanner::scan(root, reader, limits, {}, [] { return true; });
    const double scanned = seconds(), scannedBusy = processorSeconds();
    const long scannedKilobytes = peakKilobytes();
    const OrdovanDuplicateReport report = findDuplicates(inventory.files, inTurn);
    const double found = seconds(), foundBusy = processorSeconds();
    std::string text;
    for (const OrdovanDuplicateGroup& group : report.groups) {
        for (const Url& file : group.files) text.append(file.path()) += '\n';
        text += '\n';
    }
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fprintf(stderr,
                 "{\"files\": %zu, \"groups\": %zu, \"duplicates\": %lld, \"reclaimable\": %lld, \"scan\": %.4f, "
                 "\"find\": %.4f, \"findBusy\": %.4f, \"peakKilobytes\": %ld, \"findKilobytes\": %ld}\n",
                 inventory.files.size(), report.groups.size(), static_cast<long long>(report.duplicateFileCount()),
                 static_cast<long long>(report.reclaimableBytes()), scanned - start, found - scanned,
                 foundBusy - scannedBusy, peakKilobytes(), peakKilobytes() - scannedKilobytes);
    return 0;
}
