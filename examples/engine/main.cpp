// Prints where every file of a folder would go. Reads names, sizes and dates only, and moves nothing.
#include <OrdovanCore/Categories.h>
#include <OrdovanCore/Planner.h>
#include <OrdovanCore/platform/DirectoryReader.h>
#include <OrdovanCore/platform/Volumes.h>

#include <filesystem>
#include <iostream>
#include <string>
#include <unordered_set>

int main(int argc, char** argv) {
    if (argc != 2) return std::cerr << "usage: engine-example FOLDER\n", 2;
    const Url root = Url::file(std::filesystem::absolute(argv[1]).string()).standardized();
    const Url output = root.appending(OrdovanOutput::folderName);

    FileManagerDirectoryReader reader, outputReader;
    const auto found = OrdovanInventoryScanner::scan(root, reader, {}, {&output, 1}, {});
    if (found.rootWasUnreadable(root)) return std::cerr << "can not read " << root.path() << '\n', 1;

    // What was organized before keeps its name: nothing is ever overwritten.
    std::unordered_set<std::string> taken;
    const auto organized = OrdovanInventoryScanner::scan(output, outputReader, {.includeHidden = true}, {}, {});
    for (const auto& entry : organized.files) taken.insert(OrdovanProposalPlanner::canonicalPath(entry.url));

    const bool caseInsensitive = !ordovan::supportsCaseSensitiveNames(root).value_or(false);
    const auto plan = OrdovanPlanner::plan(found.files, root, output, taken, caseInsensitive, OrdovanRuleSet(),
                                           /*groupByMonth=*/false, ordovan::text::TimeZone::current());
    for (const auto& file : plan.proposals)
        std::cout << file.source.path() << " -> " << file.destination.path() << '\n';
    for (const auto& file : plan.conflicts) std::cout << file.source.path() << ": " << message(file.kind) << '\n';
}
