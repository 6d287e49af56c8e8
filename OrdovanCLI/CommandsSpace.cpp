#include "OrdovanCLI/Commands.h"

#include "OrdovanCLI/Format.h"
#include "OrdovanCLI/PlanView.h"
#include "OrdovanCore/Categories.h"
#include "OrdovanCore/FileTrasher.h"
#include "OrdovanCore/KeepPolicy.h"
#include "OrdovanCore/platform/Interrupts.h"

#include <algorithm>
#include <array>
#include <limits>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace ordovan::cli {
namespace {

constexpr const char* trashingAct = "move files to the Trash";
constexpr std::int64_t usualLimit = 50;

/// Scans the chosen folder.
std::expected<Url, Outcome> scanned(Context& context) {
    const auto folder = chosenFolder(context.invocation);
    if (!folder) return std::unexpected(folder.error());
    const auto includeHidden = context.invocation.choice(Option::includeHidden, Option::noIncludeHidden);
    if (auto end = context.preview(*folder, {std::nullopt, includeHidden}, PreviewDepth::files))
        return std::unexpected(std::move(*end));
    if (context.session.model().partialScan()) context.console.warn(partialScanSentence);
    return *context.session.model().rootURL();
}

// Duplicates.

std::expected<std::optional<OrdovanKeepPolicy>, Outcome> keepPolicy(const Invocation& invocation) {
    static constexpr std::array<std::pair<std::string_view, OrdovanKeepPolicy>, 4> names = {
        {{"oldest", OrdovanKeepPolicy::oldest},
         {"newest", OrdovanKeepPolicy::newest},
         {"shortest", OrdovanKeepPolicy::shortestPath},
         {"deepest", OrdovanKeepPolicy::deepestPath}}};
    const auto typed = invocation.value(Option::keep);
    if (!typed) return std::nullopt;
    const auto found = std::ranges::find(names, *typed, &decltype(names)::value_type::first);
    if (found != names.end()) return found->second;
    return std::unexpected(
        Outcome::usage("--keep takes oldest, newest, shortest or deepest, not " + inQuotes(*typed) + "."));
}

DuplicatesResult duplicates(const TidyViewModel& model) {
    DuplicatesResult result{*model.rootURL(), model.inventory(), model.duplicateReport(), {}};
    result.keep.reserve(result.report->groups.size());
    for (const OrdovanDuplicateGroup& group : result.report->groups) {
        const auto kept = std::ranges::find(group.files, model.keeper(group));
        result.keep.push_back(kept == group.files.end() ? 0 : static_cast<std::size_t>(kept - group.files.begin()));
    }
    return result;
}

Outcome trashExtras(Context& context, const DuplicatesResult& result) {
    if (result.report->groups.empty()) {
        context.wantsJson() ? context.put(RunReport{OrdovanRunRecord::Kind::trash, result.folder, nullptr, {}})
                            : context.put(result);
        return {};
    }
    if (!context.invocation.has(Option::yes)) {
        context.wantsJson() ? context.console.remark(duplicatesSentence(*result.report)) : context.put(result);
        context.explain(
            "The copy you chose to keep stays. Each extra is checked again first, and anything that changed is left "
            "alone. You can put files back with \"ordovan-cli restore\" or from the Trash.");
    }
    constexpr auto kind = OrdovanRunRecord::Kind::trash;
    if (auto end = context.declined(kind, "Move duplicate extras to the Trash?")) return std::move(*end);
    return context.run(kind, [](TidyViewModel& model) { return model.trashExtras(); });
}

// Big files.

struct Listing {
    std::int64_t minimumBytes = 0;
    std::int64_t limit = usualLimit;
};

std::expected<Listing, Outcome> listing(const Invocation& invocation) {
    Listing listing;
    if (const auto typed = invocation.value(Option::minSize)) {
        const auto size = parsedSize(*typed);
        if (!size) {
            return std::unexpected(
                Outcome::usage("--min-size takes a size such as 500k, 10MB or 1.5GB, not " + inQuotes(*typed) + "."));
        }
        listing.minimumBytes = *size;
    }
    if (const auto typed = invocation.value(Option::limit)) {
        const auto limit = wholeNumber(*typed, 0, std::numeric_limits<std::int64_t>::max());
        if (!limit)
            return std::unexpected(Outcome::usage("--limit takes a whole number, not " + inQuotes(*typed) + "."));
        listing.limit = *limit;
    }
    return listing;
}

/// The files of the inventory that the command line names, each once, in the order named.
std::expected<std::vector<OrdovanInventoryEntry>, Outcome> chosenFiles(const Invocation& invocation,
                                                                       const OrdovanInventory& inventory) {
    std::unordered_map<std::string_view, const OrdovanInventoryEntry*> byPath;
    for (const OrdovanInventoryEntry& entry : inventory.files) {
        if (entry.isRegularFile()) byPath.emplace(entry.id(), &entry);
    }
    std::vector<OrdovanInventoryEntry> chosen;
    std::unordered_set<const OrdovanInventoryEntry*> seen;
    for (const std::string_view name : invocation.values(Option::trashFile)) {
        const OrdovanInventoryEntry* found = nullptr;
        for (const std::string& path : absoluteForms(name)) {
            if (const auto entry = byPath.find(path); entry != byPath.end()) found = entry->second;
        }
        if (found == nullptr) {
            return std::unexpected(Outcome::usage("There is no file of this folder at " + inQuotes(name) + "."));
        }
        if (seen.insert(found).second) chosen.push_back(*found);
    }
    return chosen;
}

Outcome trashFiles(Context& context, const Url& folder) {
    const auto chosen = chosenFiles(context.invocation, *context.session.model().inventory());
    if (!chosen) return chosen.error();
    std::string count;
    appendCount(count, chosen->size(), "file");
    if (!context.invocation.has(Option::yes)) {
        if (!context.wantsJson()) context.put(LargeFilesResult{folder, *chosen});
        context.explain(
            "Files go to the Trash and are not deleted. Each file is checked again first; anything that changed is "
            "left alone. You can put files back with \"ordovan-cli restore\" or from the Trash.");
    }
    constexpr auto kind = OrdovanRunRecord::Kind::trash;
    if (auto end = context.declined(kind, "Move " + count + " to the Trash?")) return std::move(*end);
    std::vector<OrdovanFileTrasher::Item> items;
    for (const OrdovanInventoryEntry& file : *chosen) items.push_back({file.url, file.byteSize});
    return context.run(kind, [&](TidyViewModel& model) { return model.trashBigFiles(items); });
}

bool isInstaller(const OrdovanInventoryEntry& file) {
    return OrdovanFileCategories::forExtension(file.url.pathExtension()) == OrdovanFileCategory::installers;
}

}  // namespace

Outcome runDuplicates(Context& context) {
    const auto policy = keepPolicy(context.invocation);
    if (!policy) return policy.error();
    const bool isToTrash = context.invocation.has(Option::trashExtras);
    if (isToTrash) {
        if (auto refused = context.refusal(trashingAct)) return std::move(*refused);
    }
    const auto folder = scanned(context);
    if (!folder) return folder.error();
    TidyViewModel& model = context.session.model();
    if (!context.session.findDuplicates()) return Outcome::interrupted();
    if (*policy) model.autoPick(**policy);
    const DuplicatesResult result = duplicates(model);
    if (isToTrash) return trashExtras(context, result);
    interrupts::letThemEndTheProgram();
    context.put(result);
    return {};
}

Outcome runBig(Context& context) {
    const auto shown = listing(context.invocation);
    if (!shown) return shown.error();
    const bool isToTrash = context.invocation.has(Option::trashFile);
    if (isToTrash) {
        if (auto refused = context.refusal(trashingAct)) return std::move(*refused);
    }
    const auto folder = scanned(context);
    if (!folder) return folder.error();
    if (isToTrash) return trashFiles(context, *folder);
    const LargeFilesResult result{*folder, context.session.model().largeFiles(shown->limit, shown->minimumBytes)};
    interrupts::letThemEndTheProgram();
    context.put(result);
    if (!context.wantsJson() && std::ranges::any_of(result.files, isInstaller)) {
        context.explain(
            "Installers (.dmg, .pkg) are often safe to remove once the app is installed. Organize sends them to " +
            std::string(OrdovanOutput::folderName) + "/Installers so you can review them in one place.");
    }
    return {};
}

}  // namespace ordovan::cli
