#include "OrdovanCLI/Commands.h"

#include "OrdovanCLI/Format.h"
#include "OrdovanCLI/PlanView.h"
#include "OrdovanCLI/TextPage.h"
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

/// The end of a command that changed nothing.
Outcome flawedBy(const Unseen& unseen) {
    return {.kind = Outcome::Kind::done, .isFlawed = unseen.isAnything(), .didChange = false, .sentence = {}};
}

/// Scans the chosen folder.
std::expected<Url, Outcome> scanned(Context& context) {
    const auto folder = chosenFolder(context.invocation);
    if (!folder) return std::unexpected(folder.error());
    const auto includeHidden = context.invocation.choice(Option::includeHidden, Option::noIncludeHidden);
    if (auto end = context.preview(*folder, {std::nullopt, includeHidden}, PreviewDepth::files))
        return std::unexpected(std::move(*end));
    context.warnOfRecords({Context::Record::settings});
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
        Outcome::usage("--keep takes " + alternatives(spec(Option::keep).values) + ", not " + inQuotes(*typed) + "."));
}

DuplicatesResult duplicates(const Context& context) {
    const TidyViewModel& model = context.session.model();
    DuplicatesResult result{*model.rootURL(), model.inventory(), model.duplicateReport(), {}, context.unseen()};
    result.unseen.files = model.unreadFiles();
    result.keep.reserve(result.report->groups.size());
    for (const OrdovanDuplicateGroup& group : result.report->groups) {
        const auto kept = std::ranges::find(group.files, model.keeper(group));
        result.keep.push_back(kept == group.files.end() ? 0 : static_cast<std::size_t>(kept - group.files.begin()));
    }
    return result;
}

Outcome trashExtras(Context& context, const DuplicatesResult& result) {
    const RunReport intended{.kind = OrdovanRunRecord::Kind::trash, .folder = result.folder, .unseen = result.unseen};
    if (result.report->groups.empty()) {
        if (context.wantsJson()) return context.runOfNothing(intended);
        context.put(result);
        return flawedBy(result.unseen);
    }
    if (!context.invocation.has(Option::yes)) {
        context.wantsJson() ? context.console.remark(duplicatesSentence(*result.report)) : context.put(result);
        const bool isChosen = context.invocation.has(Option::keep);
        context.explain((isChosen ? "The copy you chose to keep stays." : "One copy stays, the one marked \"keep\".") +
                        std::string(" Each extra is checked again first, and anything that changed is left alone. You "
                                    "can put files back with ") +
                        context.callOf("restore") + " or from the Trash.");
    }
    if (auto end = context.declined(intended, "Move duplicate extras to the Trash?")) return std::move(*end);
    return context.run(intended, [](TidyViewModel& model) { return model.trashExtras(); });
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
                Outcome::usage("--min-size takes a size of at most 9.2 EB, such as 500k, 10MB or 1.5GB, not " +
                               inQuotes(*typed) + "."));
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
                                                                       const OrdovanInventory& inventory,
                                                                       const Url& outputRoot) {
    std::unordered_map<std::string_view, const OrdovanInventoryEntry*> byPath;
    for (const OrdovanInventoryEntry& entry : inventory.files) {
        if (entry.isRegularFile()) byPath.emplace(entry.id(), &entry);
    }
    std::vector<OrdovanInventoryEntry> chosen;
    std::unordered_set<const OrdovanInventoryEntry*> seen;
    for (const std::string_view name : invocation.values(Option::trashFile)) {
        const OrdovanInventoryEntry* found = nullptr;
        bool isOrganized = false;
        for (const std::string& path : absoluteForms(name)) {
            isOrganized |= below(path, outputRoot.path()) != path;
            if (const auto entry = byPath.find(path); entry != byPath.end()) found = entry->second;
        }
        if (found == nullptr) {
            std::string sentence = "There is no file of this folder at " + inQuotes(name);
            if (isOrganized) sentence += "; what lies in its " + inQuotes(OrdovanOutput::folderName) + " is left out";
            return std::unexpected(Outcome::usage(sentence + "."));
        }
        if (seen.insert(found).second) chosen.push_back(*found);
    }
    return chosen;
}

Outcome trashFiles(Context& context, const Url& folder) {
    const TidyViewModel& model = context.session.model();
    const auto chosen = chosenFiles(context.invocation, *model.inventory(), *model.outputRoot());
    if (!chosen) return chosen.error();
    std::string count;
    appendCount(count, chosen->size(), "file");
    if (!context.invocation.has(Option::yes)) {
        if (!context.wantsJson()) context.put(LargeFilesResult{folder, model.inventory(), *chosen, {}});
        context.explain(
            "Files go to the Trash and are not deleted. Each file is checked again first; anything that changed is "
            "left alone. You can put files back with " +
            context.callOf("restore") + " or from the Trash.");
    }
    const RunReport intended{.kind = OrdovanRunRecord::Kind::trash, .folder = folder};
    if (auto end = context.declined(intended, "Move " + count + " to the Trash?")) return std::move(*end);
    std::vector<OrdovanFileTrasher::Item> items;
    for (const OrdovanInventoryEntry& file : *chosen) items.push_back({file.url, file.byteSize});
    return context.run(intended, [&](TidyViewModel& running) { return running.trashBigFiles(items); });
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
    const DuplicatesResult result = duplicates(context);
    context.warnOf(result.unseen);
    if (isToTrash) return trashExtras(context, result);
    interrupts::letThemEndTheProgram(exitInterrupted);
    context.put(result);
    return flawedBy(result.unseen);
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
    const TidyViewModel& model = context.session.model();
    const LargeFilesResult result{*folder, model.inventory(), model.largeFiles(shown->limit, shown->minimumBytes),
                                  context.unseen()};
    context.warnOf(result.unseen);
    interrupts::letThemEndTheProgram(exitInterrupted);
    context.put(result);
    if (!context.wantsJson() && std::ranges::any_of(result.files, isInstaller)) {
        context.explain(
            "Installers (.dmg, .pkg) are often safe to remove once the app is installed. Organize sends them to " +
            std::string(OrdovanOutput::folderName) + "/Installers so you can review them in one place.");
    }
    return flawedBy(result.unseen);
}

}  // namespace ordovan::cli
