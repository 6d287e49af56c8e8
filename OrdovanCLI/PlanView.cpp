#include "OrdovanCLI/PlanView.h"

#include "OrdovanCLI/Format.h"
#include "OrdovanCore/PartialDownloads.h"

#include <algorithm>
#include <bit>
#include <filesystem>
#include <system_error>
#include <unordered_map>

namespace ordovan::cli {
namespace {

/// Finds the entry of a proposal's file: by the storage their paths share, which is one probe for a file, and where
/// they share none, by the path itself.
class EntriesByPath {
public:
    explicit EntriesByPath(std::span<const OrdovanInventoryEntry> entries)
        : entries_(entries), slots_(std::bit_ceil(entries.size() * 2 + 2)) {
        for (const OrdovanInventoryEntry& entry : entries) {
            std::size_t at = slotOf(entry.url);
            while (slots_[at] != nullptr) at = next(at);
            slots_[at] = &entry;
        }
    }

    [[nodiscard]] const OrdovanInventoryEntry* find(const Url& source) {
        for (std::size_t at = slotOf(source); slots_[at] != nullptr; at = next(at)) {
            if (slots_[at]->url.sharedPath().sharesStorageWith(source.sharedPath())) return slots_[at];
        }
        if (byText_.empty()) {
            for (const OrdovanInventoryEntry& entry : entries_) byText_.emplace(entry.id(), &entry);
        }
        const auto found = byText_.find(source.path());
        return found == byText_.end() ? nullptr : found->second;
    }

private:
    [[nodiscard]] std::size_t slotOf(const Url& url) const {
        constexpr std::uint64_t goldenRatio = 0x9e3779b97f4a7c15;
        const auto address = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(url.path().data()));
        return (address * goldenRatio >> 20) & (slots_.size() - 1);
    }
    [[nodiscard]] std::size_t next(std::size_t slot) const { return (slot + 1) & (slots_.size() - 1); }

    std::span<const OrdovanInventoryEntry> entries_;
    std::vector<const OrdovanInventoryEntry*> slots_;
    std::unordered_map<std::string_view, const OrdovanInventoryEntry*> byText_;
};

bool isAtOrBelow(std::string_view path, std::string_view folder) {
    if (!path.starts_with(folder)) return false;
    return path.size() == folder.size() || path[folder.size()] == '/' || folder == "/";
}

bool isNamed(const OrdovanRuleSet& rules, std::string_view folderName) {
    return std::ranges::any_of(rules.rules, [&](const OrdovanRule& rule) { return rule.folderName == folderName; });
}

std::expected<void, std::string> selectFolder(std::string_view typed, const OrdovanRuleSet& rules, PlanView& view) {
    const std::string name = text::composed(typed);
    const auto& proposals = view.plan->proposals;
    bool isKnown = OrdovanFileCategories::fromRawValue(name).has_value() || isNamed(rules, name);
    for (std::size_t index = 0; index < proposals.size(); ++index) {
        if (proposals[index].folderName() == name)
            isKnown = true;
        else
            view.isLeftOut[index] = true;
    }
    if (isKnown) return {};
    return std::unexpected("There is no folder named " + inQuotes(typed) +
                           ": --only takes a built-in folder such as Images, or the folder of one of your rules.");
}

/// Whether something of the previewed folder lies there; when it is not proposed, leaving it out is granted already.
bool staysAnyway(const PlanView& view, const std::string& path) {
    if (isAtOrBelow(view.root.path(), path)) return true;
    std::error_code error;
    return isAtOrBelow(path, view.root.path()) && std::filesystem::exists(std::filesystem::symlink_status(path, error));
}

std::expected<void, std::string> leaveOut(std::string_view typed, PlanView& view) {
    bool isFound = false;
    for (const std::string& path : absoluteForms(typed)) {
        isFound |= staysAnyway(view, path);
        for (std::size_t index = 0; index < view.plan->proposals.size(); ++index) {
            if (!isAtOrBelow(view.plan->proposals[index].source.path(), path)) continue;
            view.isLeftOut[index] = true;
            isFound = true;
        }
    }
    if (isFound) return {};
    return std::unexpected("Nothing to leave out at " + inQuotes(typed) +
                           ": no file or folder of that name lies in the previewed folder.");
}

}  // namespace

void PlanView::fill() {
    EntriesByPath entries(inventory->files);
    facts.clear();
    facts.reserve(plan->proposals.size());
    for (const OrdovanFileProposal& proposal : plan->proposals) {
        const OrdovanInventoryEntry* entry = entries.find(proposal.source);
        facts.push_back(entry == nullptr ? Facts{} : Facts{entry->byteSize, entry->modifiedEpoch});
    }
    isLeftOut.assign(plan->proposals.size(), false);
}

void PlanView::leaveOut(const std::unordered_set<std::string>& proposalIDs) {
    for (std::size_t index = 0; index < isLeftOut.size(); ++index) {
        if (!isLeftOut[index] && proposalIDs.contains(plan->proposals[index].id())) isLeftOut[index] = true;
    }
}

void PlanView::leaveOutPartialDownloads() {
    for (std::size_t index = 0; index < isLeftOut.size(); ++index) {
        const std::string_view name = plan->proposals[index].source.lastPathComponent();
        if (isLeftOut[index] || !OrdovanPartialDownloads::isPartialDownload(name)) continue;
        isLeftOut[index] = true;
        ++partialDownloads;
    }
}

std::size_t PlanView::selectedCount() const {
    return static_cast<std::size_t>(std::ranges::count(isLeftOut, false));
}

std::unordered_set<std::string> PlanView::leftOutIDs() const {
    std::unordered_set<std::string> ids;
    for (std::size_t index = 0; index < isLeftOut.size(); ++index) {
        if (isLeftOut[index]) ids.insert(plan->proposals[index].id());
    }
    return ids;
}

std::expected<void, std::string> apply(const Selection& selection, const OrdovanRuleSet& rules, PlanView& view) {
    if (selection.onlyFolder) {
        if (auto done = selectFolder(*selection.onlyFolder, rules, view); !done) return done;
    }
    for (const std::string_view path : selection.leftOutPaths) {
        if (auto done = leaveOut(path, view); !done) return done;
    }
    return {};
}

std::vector<std::string> absoluteForms(std::string_view typed) {
    if (typed.empty()) return {};
    std::error_code error;
    const std::filesystem::path absolute = std::filesystem::absolute(typed, error);
    std::vector<std::string> forms = {normalizedPath(error ? std::string(typed) : absolute.native())};
    // The item itself may be a link, or gone; only the folders above it are resolved.
    const std::filesystem::path folder = std::filesystem::weakly_canonical(parentPath(forms.front()), error);
    if (error) return forms;
    std::string resolved = normalizedPath(folder.native() + "/" + std::string(lastPathComponent(forms.front())));
    if (resolved != forms.front()) forms.push_back(std::move(resolved));
    return forms;
}

}  // namespace ordovan::cli
