// Moves every file below a folder to the Trash, or puts the Trash work's parts beside it. Prints one JSON line.
//   trash_bench move FOLDER     the Trash work alone
//   trash_bench prove FOLDER    hashed first (ahead, as in the program), and proved afterwards, as big files are
//   trash_bench hash FOLDER     SHA-256 of each, and nothing else
//   trash_bench back FOLDER     all put back; the trashing before it is not timed, and is on the disk by then

#include "OrdovanCore/DuplicateTrasher.h"
#include "OrdovanCore/FileTrasher.h"
#include "OrdovanCore/platform/HashAhead.h"
#include "OrdovanCore/platform/RunFileSystem.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <ranges>
#include <string>
#include <string_view>
#include <vector>

namespace {

using ordovan::HashAheadFileSystem;
using ordovan::RunFileSystem;
using Clock = std::chrono::steady_clock;

std::vector<OrdovanFileTrasher::Item> filesBelow(const std::string& folder) {
    std::vector<OrdovanFileTrasher::Item> items;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
        if (!entry.is_regular_file()) continue;
        items.push_back({Url::file(entry.path().string()), static_cast<std::int64_t>(entry.file_size())});
    }
    return items;
}

/// For the workers of a run on this disk.
HashAheadFileSystem::Options vouchingTo(RunFileSystem& disk) {
    HashAheadFileSystem::Options options;
    options.vouch = RunFileSystem::voucher(disk);
    return options;
}

/// How many files were done as `mode` says. `begun` is when the clock began, which some modes put off.
std::size_t run(std::string_view mode, const std::vector<OrdovanFileTrasher::Item>& items, const Url& folder,
                Clock::time_point& begun) {
    RunFileSystem fs(folder);
    std::size_t done = 0;
    if (mode == "move") {
        for (const auto& item : items) done += fs.trash(item.url) ? 1 : 0;
    } else if (mode == "hash") {
        for (const auto& item : items) done += fs.contentHash(item.url) ? 1 : 0;
    } else {
        std::vector<Url> files;
        for (const auto& item : items) files.push_back(item.url);
        HashAheadFileSystem ahead(fs, files, vouchingTo(fs));
        const OrdovanTrashReport report = OrdovanFileTrasher::trash(items, folder, ahead);
        if (mode == "prove") return report.movedCount();
        ::sync();
        std::vector<Url> trashed;
        for (const auto& entry : std::views::reverse(report.record.entries))
            trashed.push_back(Url::file(entry.trashed()));
        begun = Clock::now();
        HashAheadFileSystem aheadOfBack(fs, trashed, vouchingTo(fs));
        return OrdovanDuplicateTrasher::restore(report.record, folder, aheadOfBack).movedCount();
    }
    return done;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string_view mode = argc == 3 ? argv[1] : "";
    if (mode != "move" && mode != "prove" && mode != "hash" && mode != "back") {
        std::fputs("usage: trash_bench move|prove|hash|back FOLDER\n", stderr);
        return 2;
    }
    const auto items = filesBelow(argv[2]);
    Clock::time_point begun = Clock::now();
    const std::size_t done = run(mode, items, Url::file(argv[2]), begun);
    const std::chrono::duration<double> took = Clock::now() - begun;
    std::printf("{\"files\": %zu, \"done\": %zu, \"seconds\": %.6f}\n", items.size(), done, took.count());
    return done == items.size() ? 0 : 1;
}
