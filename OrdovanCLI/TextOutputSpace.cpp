#include "OrdovanCLI/TextOutput.h"
#include "OrdovanCLI/TextPage.h"

#include <unordered_map>

namespace ordovan::cli {
namespace {

/// When each file was last changed, by path.
class Dates {
public:
    explicit Dates(const OrdovanInventory& inventory) {
        epochs_.reserve(inventory.files.size());
        for (const OrdovanInventoryEntry& entry : inventory.files) {
            if (entry.modifiedEpoch) epochs_.emplace(entry.id(), *entry.modifiedEpoch);
        }
    }
    [[nodiscard]] std::optional<double> of(const Url& url) const {
        const auto found = epochs_.find(url.path());
        return found == epochs_.end() ? std::nullopt : std::optional(found->second);
    }

private:
    std::unordered_map<std::string_view, double> epochs_;
};

}  // namespace

void writeText(Output& output, const DuplicatesResult& result, const TextStyle& style) {
    Page page(output, style);
    const OrdovanDuplicateReport& report = *result.report;
    if (report.groups.empty()) {
        if (result.unseen.isAnything()) return page.raw("No exact duplicates among what could be read").endLine();
        page.raw("No exact duplicates").endLine();
        return page.raw("Every file in this folder is unique by content.").endLine();
    }
    DateFormatter formatter(style.zone);
    const Dates dates(*result.inventory);
    std::string head;
    std::size_t index = 0;
    for (const OrdovanDuplicateGroup& group : report.groups) {
        head.clear();
        appendInteger(head, static_cast<std::int64_t>(group.files.size()));
        head += " identical copies · ";
        appendSize(head, group.byteSize);
        page.bold(head).endLine();
        const Url& kept = group.files[result.keep[index++]];
        for (const Url& file : group.files) {
            page.raw(&file == &kept ? "  keep   " : "  extra  ").date(formatter, dates.of(file));
            page.raw("  ").safe(below(file.path(), result.folder.path())).endLine();
        }
        page.endLine();
    }
    page.raw(duplicatesSentence(report)).endLine();
}

void writeText(Output& output, const LargeFilesResult& result, const TextStyle& style) {
    Page page(output, style);
    if (result.files.empty()) {
        page.raw("No files this size").endLine();
        return page.raw("Try a smaller size filter.").endLine();
    }
    DateFormatter formatter(style.zone);
    page.bold("Largest files, biggest first").endLine();
    for (const OrdovanInventoryEntry& file : result.files) {
        page.raw("  ").size(file.byteSize).raw("  ").date(formatter, file.modifiedEpoch);
        page.raw("  ").safe(below(file.url.path(), result.folder.path())).endLine();
    }
}

std::string duplicatesSentence(const OrdovanDuplicateReport& report) {
    std::string sentence;
    appendCount(sentence, report.groups.size(), "duplicate group");
    sentence += " · ";
    appendCount(sentence, static_cast<std::size_t>(report.duplicateFileCount()), "file");
    sentence += " · ";
    appendSize(sentence, report.reclaimableBytes());
    return sentence + " in extra copies";
}

}  // namespace ordovan::cli
