#include "OrdovanApp/controller/PreviewFlow.h"

#include "OrdovanApp/stores/StorageLocations.h"
#include "OrdovanCore/Categories.h"
#include "OrdovanCore/Proposals.h"
#include "OrdovanCore/TrashPlace.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <string>
#include <unordered_set>
#include <utility>

namespace {

using OrdovanProposalPlanner::canonicalPath;
using OrdovanProposalPlanner::containsCanonical;

/// The bounds of the scan that learns what exists in the output folder: what was organized into it over the years.
constexpr OrdovanInventoryLimits outputLimits = {
    .maxFiles = 200'000, .maxDepth = 32, .maxDirectories = 200'000, .includeHidden = true};

/// The output folder, the other folders that files were organized into, and the program's own: records that were
/// organized away could not be used to undo anything.
std::vector<Url> excludedSubtrees(const TidyPorts& ports, const Url& root, const Url& outputRoot,
                                  const ordovan::JournalStore::Journal& journal) {
    std::vector<Url> excluded = {outputRoot};
    if (journal) {
        for (Url& folder : PreviewFlow::outputRoots(*journal, root)) {
            if (folder.path() != outputRoot.path()) excluded.push_back(std::move(folder));
        }
    }
    std::ranges::move(ports.ownFolders(), std::back_inserter(excluded));
    return excluded;
}

/// The canonical paths of everything a scan met, also of what it did not enter: a link or a package occupies its name
/// like any file.
std::unordered_set<std::string> pathsMet(const OrdovanInventory& scan) {
    std::unordered_set<std::string> paths;
    paths.reserve(scan.files.size() + scan.directories.size() + scan.skipped.size());
    for (const auto& entry : scan.files) paths.insert(canonicalPath(entry.url));
    for (const auto& entry : scan.directories) paths.insert(canonicalPath(entry.url));
    for (const auto& skip : scan.skipped) paths.insert(canonicalPath(skip.url));
    return paths;
}

/// What the output folder holds; `partial` is set where not all of it was met. Through a link nothing will be moved, so
/// what lies behind it is not looked at.
std::unordered_set<std::string> pathsInOutput(const TidyPorts& ports, const Url& outputRoot,
                                              const std::function<bool()>& shouldContinue, bool& partial) {
    if (!ports.fileSystem.exists(outputRoot) || ports.fileSystem.isSymlink(outputRoot)) return {};
    const OrdovanInventory output =
        OrdovanInventoryScanner::scan(outputRoot, *ports.makeDirectoryReader(), outputLimits, {}, shouldContinue);
    partial = partial || output.truncated;
    return pathsMet(output);
}

/// A reader that passes over the Trash of every volume, and tells how many files and folders it has listed, leaving out
/// what the scan leaves out by its name or kind. (What a limit or an excluded folder takes away shows at the end.)
class CountingReader final : public OrdovanDirectoryReading {
public:
    CountingReader(OrdovanDirectoryReading& reader, const PreviewInputs& inputs) : reader_(reader), inputs_(inputs) {}

    OrdovanResult<std::vector<OrdovanInventoryEntry>> children(const Url& of) override {
        auto found = reader_.children(of);
        if (!found) return found;
        std::erase_if(*found, [](const OrdovanInventoryEntry& entry) {
            return entry.isDirectory && ordovan::isTrashName(entry.url.lastPathComponent());
        });
        if (!inputs_.progressed) return found;
        for (const OrdovanInventoryEntry& entry : *found) {
            if (entry.isHidden && !inputs_.includeHidden) continue;
            files_ += entry.isRegularFile() ? 1 : 0;
            folders_ += entry.isDirectory && !entry.isPackage ? 1 : 0;
        }
        inputs_.progressed(files_, folders_, false);
        return found;
    }

    std::string resolvedPath(const Url& directory) override { return reader_.resolvedPath(directory); }

private:
    OrdovanDirectoryReading& reader_;
    const PreviewInputs& inputs_;
    std::uint64_t files_ = 0;
    std::uint64_t folders_ = 0;
};

/// The known object where it is equal.
template <class T>
std::shared_ptr<const T> shared(T value, const std::shared_ptr<const T>& known) {
    return known && *known == value ? known : std::make_shared<const T>(std::move(value));
}

void adopt(PreviewedFolder& found, const PreviewInputs& inputs, OrdovanInventory inventory, OrdovanPlanResult plan) {
    const PreviewedFolder& known = inputs.known;
    found.inventory = shared(std::move(inventory), known.inventory);
    found.plan = shared(std::move(plan), known.plan);
    if (!inputs.indexesPlan) return;
    const bool isSame = found.root == known.root && found.inventory == known.inventory && found.plan == known.plan;
    found.index = isSame && known.index
                      ? known.index
                      : std::make_shared<const PlanIndex>(PlanIndex::of(*found.plan, *found.inventory, found.root));
}

/// The records of the folder that are in memory, after a run that was interrupted in it was brought to its end. While
/// the folder is locked, a run goes on in it, and what it does is that run's to record; where it can not be locked, no
/// one can tell that none does.
RecordsInMemory recordsAfterRecovery(const TidyPorts& ports, const PreviewInputs& inputs) {
    const Url& root = inputs.root;
    const auto unsaved = inputs.unsavedJournals.find(std::string(root.path()));
    RecordsInMemory memory = {.journal = nullptr,
                              .unsavedJournal = unsaved == inputs.unsavedJournals.end() ? nullptr : unsaved->second,
                              .trash = inputs.knownTrash,
                              .unsavedRuns = inputs.unsavedRuns,
                              .ownRuns = inputs.ownRuns};
    memory.journal = memory.unsavedJournal;
    const std::lock_guard turn(*inputs.recoveryTurn);
    if (inputs.flag->isCancelled() || inputs.recovery.flag->isCancelled()) return memory;
    if (ports.recording.runRecords == nullptr || !ports.recording.runRecords->mayStand(root)) return memory;
    const auto lock = ports.tryLockFolder(root);
    if (!lock) return memory;
    Recovery recovery =
        RunRecovery::settle(ports, root, memory, ports.clock(), RunRecovery::Occasion::preview, inputs.recovery);
    // Told while the folder is still locked, so that it comes before what any later run has to tell.
    for (RecoveredRun& run : recovery.runs) {
        if (inputs.recovered) inputs.recovered(root, std::move(run));
    }
    return memory;
}

}  // namespace

PreviewResult PreviewFlow::run(const TidyPorts& ports, PreviewInputs inputs) {
    const auto shouldContinue = [&flag = *inputs.flag] { return !flag.isCancelled(); };
    if (!inputs.isResolved) {
        inputs.root = ports.resolveExisting(inputs.root);
        inputs.resolved(inputs.root);
    }
    const Url& root = inputs.root;
    const Url outputRoot = root.appending(OrdovanOutput::folderName);
    PreviewResult result;
    result.found.root = root;
    const RecordsInMemory memory = recordsAfterRecovery(ports, inputs);
    if (!shouldContinue()) return result;
    result.unsavedBefore = memory.unsavedJournal;
    result.journal = ports.journals.load(root, memory.unsavedJournal, ports.clock(), ports.fileSystem);
    result.trash = ports.trashRecords.load(memory.trash);
    if (inputs.depth == PreviewDepth::records) return result;

    const auto reader = ports.makeDirectoryReader();
    CountingReader counted(*reader, inputs);
    OrdovanInventory inventory = OrdovanInventoryScanner::scan(
        root, counted, OrdovanInventoryLimits{.includeHidden = inputs.includeHidden},
        excludedSubtrees(ports, root, outputRoot, result.journal.journal), shouldContinue);
    if (!shouldContinue() || inventory.rootWasUnreadable(root)) return result;
    if (inputs.progressed) inputs.progressed(inventory.files.size(), inventory.directories.size(), true);
    result.partial = inventory.truncated;
    result.caseInsensitive = !ports.supportsCaseSensitiveNames(root).value_or(false);

    OrdovanPlanResult plan;
    if (inputs.depth == PreviewDepth::plan) {
        const auto preexisting = pathsInOutput(ports, outputRoot, shouldContinue, result.partial);
        if (!shouldContinue()) return result;
        plan = OrdovanPlanner::plan(inventory.files, root, outputRoot, preexisting, result.caseInsensitive,
                                    inputs.rules, inputs.groupByMonth, ports.timeZone());
    }
    adopt(result.found, inputs, std::move(inventory), std::move(plan));
    return result;
}

std::vector<Url> PreviewFlow::outputRoots(const OrdovanJournal& journal, const Url& root) {
    std::vector<Url> roots;
    for (const std::string_view name : {OrdovanOutput::folderName, ordovan::olderOutputFolderName}) {
        const Url folder = root.appending(name);
        const std::string canonical = canonicalPath(folder);
        const bool used = std::ranges::any_of(journal.entries, [&](const OrdovanJournalEntry& entry) {
            // Composing never makes these letters, so a path without the name is not in the folder: most journals are
            // done with here, without a canonical path for each of a million entries.
            return entry.destination().find(name) != std::string_view::npos &&
                   containsCanonical(canonicalPath(Url::file(entry.destination())), canonical);
        });
        if (used) roots.push_back(folder);
    }
    return roots;
}
