// Scans a folder and plans it, as a preview does, and prints what that took as one JSON line.
//   scan_bench FOLDER [REPEATS]

#include "OrdovanCore/Planner.h"
#include "OrdovanCore/platform/DirectoryReader.h"

#include <sys/resource.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace {

double seconds() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

long peakKilobytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fputs("usage: scan_bench FOLDER [REPEATS]\n", stderr);
        return 2;
    }
    const Url root = OrdovanProposalPlanner::resolveExisting(Url::file(argv[1]));
    const Url output = root.appending(OrdovanOutput::folderName);
    const int repeats = argc > 2 ? std::max(1, std::atoi(argv[2])) : 1;
    OrdovanInventoryLimits limits;
    limits.maxFiles = limits.maxDirectories = 100'000'000;
    limits.maxDepth = 100'000;
    const long before = peakKilobytes();
    double bestScan = 1e9, bestPlan = 1e9, best = 1e9;
    std::size_t files = 0, proposals = 0, conflicts = 0;
    for (int i = 0; i < repeats; ++i) {
        FileManagerDirectoryReader reader;
        const double start = seconds();
        const OrdovanInventory inventory =
            OrdovanInventoryScanner::scan(root, reader, limits, std::span(&output, 1), [] { return true; });
        const double scanned = seconds();
        const OrdovanPlanResult plan =
            OrdovanPlanner::plan(inventory.files, root, output, {}, false, {}, false, ordovan::text::TimeZone::utc());
        const double planned = seconds();
        bestScan = std::min(bestScan, scanned - start);
        bestPlan = std::min(bestPlan, planned - scanned);
        best = std::min(best, planned - start);
        files = inventory.files.size();
        proposals = plan.proposals.size();
        conflicts = plan.conflicts.size();
    }
    const long after = peakKilobytes();
    std::printf(
        "{\"files\": %zu, \"proposals\": %zu, \"conflicts\": %zu, \"scan\": %.4f, \"plan\": %.4f, "
        "\"seconds\": %.4f, \"peakKilobytes\": %ld, \"bytesPerFile\": %.0f}\n",
        files, proposals, conflicts, bestScan, bestPlan, best, after,
        files == 0 ? 0.0 : static_cast<double>(after - before) * 1024.0 / static_cast<double>(files));
    return 0;
}
