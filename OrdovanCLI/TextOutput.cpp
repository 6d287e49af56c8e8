#include "OrdovanCLI/TextOutput.h"

#include "OrdovanCLI/TextPage.h"

#include <algorithm>
#include <array>
#include <unordered_map>

namespace ordovan::cli {
namespace {

/// The selected proposals of one destination folder.
struct Group {
    std::string_view folder;  ///< below the output folder
    std::vector<std::uint32_t> proposals;
    std::int64_t byteSize = 0;
};

/// By destination folder, in the order in which the folders first occur in the plan. Two folders whose names differ
/// only in case are mixed in the plan, so that a group may be taken up again.
std::vector<Group> groupsOf(const PlanView& view) {
    std::vector<Group> groups;
    std::unordered_map<std::string_view, std::size_t> positions;
    std::size_t current = 0;
    const auto& proposals = view.plan->proposals;
    for (std::uint32_t index = 0; index < proposals.size(); ++index) {
        if (view.isLeftOut[index]) continue;
        const std::string_view folder = below(parentPath(proposals[index].destination.path()), view.outputRoot.path());
        if (groups.empty() || groups[current].folder != folder) {
            const auto [found, isNew] = positions.emplace(folder, groups.size());
            if (isNew) groups.push_back({folder, {}, 0});
            current = found->second;
        }
        groups[current].proposals.push_back(index);
        groups[current].byteSize += view.facts[index].byteSize;
    }
    return groups;
}

void writeGroup(Page& page, const PlanView& view, const Group& group, DateFormatter& dates) {
    page.bold(group.folder).raw("  ").count(group.proposals.size(), "file").raw(", ");
    appendSize(page.out(), group.byteSize);
    page.endLine();
    for (const std::uint32_t index : group.proposals) {
        const std::string_view source = view.plan->proposals[index].source.path();
        const std::string_view folder = below(parentPath(source), view.root.path());
        page.raw("  ").size(view.facts[index].byteSize).raw("  ").date(dates, view.facts[index].modifiedEpoch);
        page.raw("  ").safe(lastPathComponent(source));
        if (folder != view.root.path()) page.raw("  ").dim("from").raw(" ").safe(folder);
        page.endLine();
    }
    page.endLine();
}

/// What the user may wonder about, each reason with its number: the output folder and single limits are told
/// elsewhere.
void writeNotScanned(Page& page, const PlanView& view) {
    using Reason = OrdovanInventorySkip::Reason;
    struct Line {
        Reason reason;
        std::string_view one, many;
    };
    static constexpr std::array<Line, 4> lines = {{
        {Reason::hidden, "hidden item", "hidden items"},
        {Reason::symbolicLinkNotFollowed, "symbolic link, not followed", "symbolic links, not followed"},
        {Reason::packageTreatedAsFile, "package, kept whole", "packages, kept whole"},
        {Reason::depthLimitReached, "folder too deep", "folders too deep"},
    }};
    const auto& skipped = view.inventory->skipped;
    bool isFirst = true;
    const auto head = [&] {
        if (isFirst) page.bold("Not scanned").endLine();
        isFirst = false;
    };
    for (const Line& line : lines) {
        const auto count = std::ranges::count(skipped, line.reason, &OrdovanInventorySkip::reason);
        if (count == 0) continue;
        head();
        page.raw("  ");
        appendInteger(page.out(), count);
        page.raw(" ").raw(count == 1 ? line.one : line.many).endLine();
    }
    for (const OrdovanInventorySkip& skip : skipped) {
        if (skip.reason != Reason::unreadableDirectory) continue;
        head();
        page.raw("  ").safe(below(skip.url.path(), view.root.path())).raw(": could not be read").endLine();
    }
    if (!isFirst) page.endLine();
}

void writeReview(Page& page, const PlanView& view) {
    if (view.plan->conflicts.empty()) return;
    page.bold("Needs review").raw("  ").count(view.plan->conflicts.size(), "file").endLine();
    for (const OrdovanPlanConflict& conflict : view.plan->conflicts) {
        page.raw("  ").safe(below(conflict.source.path(), view.root.path())).raw(" → ");
        page.safe(below(conflict.destination.path(), view.outputRoot.path())).endLine();
        page.raw("    ").dim(message(conflict.kind)).endLine();
    }
    page.endLine();
}

void writeSkipped(Page& page, const PlanView& view) {
    if (view.plan->skipped.empty()) return;
    page.bold("Skipped").raw("  ").count(view.plan->skipped.size(), "file").endLine();
    for (const OrdovanPlanSkip& skip : view.plan->skipped) {
        page.raw("  ").safe(below(skip.source.path(), view.root.path())).raw(": ").safe(skip.reason).endLine();
    }
    page.endLine();
}

/// How many files went to which folder of the output folder.
void writeDestinations(Page& page, const RunReport& result) {
    const Url outputRoot = result.folder.appending(OrdovanOutput::folderName);
    std::vector<std::pair<std::string_view, std::size_t>> counts;
    std::unordered_map<std::string_view, std::size_t> positions;
    for (const OrdovanExecutionOutcome& outcome : result.report->outcomes) {
        if (outcome.status != OrdovanExecutionStatus::moved) continue;
        const std::string_view folder = below(parentPath(outcome.destination.path()), outputRoot.path());
        const auto [found, isNew] = positions.emplace(folder, counts.size());
        if (isNew) counts.emplace_back(folder, 0);
        ++counts[found->second].second;
    }
    for (const auto& [folder, count] : counts) page.raw("  ").safe(folder).raw("  ").count(count, "file").endLine();
}

std::string_view leftBehindHead(OrdovanRunRecord::Kind kind) {
    using Kind = OrdovanRunRecord::Kind;
    return kind == Kind::organize ? "Not organized" : kind == Kind::trash ? "Not moved to the Trash" : "Not put back";
}

void writeLeftBehind(Page& page, const RunReport& result) {
    const std::size_t stayed = result.report ? result.report->skippedCount() + result.report->failedCount() : 0;
    const std::size_t count = stayed + result.notEvaluated();
    if (count == 0) return;
    // A file is told by where it lies in the folder: after an undo by where it stayed, in the Trash by where it was.
    const bool isToldByDestination =
        result.kind == OrdovanRunRecord::Kind::undo || result.kind == OrdovanRunRecord::Kind::restoreTrash;
    page.bold(leftBehindHead(result.kind)).raw("  ").count(count, "file").endLine();
    const auto line = [&](const Url& file, std::string_view reason) {
        page.raw("  ").safe(below(file.path(), result.folder.path())).raw(": ").safe(reason).endLine();
    };
    if (stayed > 0) {
        for (const OrdovanExecutionOutcome& outcome : result.report->outcomes) {
            if (outcome.status == OrdovanExecutionStatus::moved) continue;
            line(isToldByDestination ? outcome.destination : outcome.source, outcome.message);
        }
    }
    if (!result.plan) return;
    for (const OrdovanPlanSkip& skip : result.plan->skipped) line(skip.source, skip.reason);
}

/// What a preview found contested: a run does not touch it.
void writeNeedsReview(Page& page, const RunReport& result) {
    const std::size_t count = result.needReview();
    if (count == 0) return;
    page.count(count, "file").raw(count == 1 ? " needs review; " : " need review; ");
    page.raw("\"preview\" shows which and why.").endLine();
}

/// What a run did, in one line.
void writeSummary(Page& page, const RunReport& result) {
    if (result.kind == OrdovanRunRecord::Kind::trash) {
        page.count(result.report->movedCount(), "file").raw(" moved to the Trash · ");
        appendSize(page.out(), result.trashedBytes);
    } else {
        page.safe(OrdovanRunRecord::make(result.kind, *result.report, result.folder, 0).summary());
    }
    page.endLine();
}

std::size_t presentCount(const std::vector<RecoverySurvey::State>& states) {
    return static_cast<std::size_t>(std::ranges::count(states, RecoverySurvey::State::present));
}

/// Why an entry can not be taken back; nothing for one that can.
void writeHindrance(Page& page, RecoverySurvey::State state, std::string_view missing, std::string_view refused) {
    if (state == RecoverySurvey::State::present) return;
    page.raw("    ").dim(state == RecoverySurvey::State::missing ? missing : refused).endLine();
}

void writeOrganized(Page& page, const RecoveryResult& result) {
    page.raw(recoverableSentence(presentCount(result.found.organized))).endLine();
    std::size_t index = 0;
    for (const OrdovanJournalEntry& entry : result.found.journal->entries) {
        page.raw("  ").safe(below(entry.destination(), result.folder.path())).raw(" → ");
        page.safe(below(entry.source(), result.folder.path())).endLine();
        writeHindrance(page, result.found.organized[index++],
                       "Missing: deleted or moved since organizing. Undo will skip it.",
                       "The record names a place outside this folder or behind a link. Undo will refuse it.");
    }
}

void writeTrashed(Page& page, const RecoveryResult& result) {
    page.raw(restorableSentence(presentCount(result.found.trashed))).endLine();
    std::size_t index = 0;
    for (const OrdovanTrashEntry& entry : result.found.trash->entries) {
        page.raw("  ").safe(entry.trashed()).raw(" → ").safe(below(entry.original(), result.folder.path())).endLine();
        writeHindrance(page, result.found.trashed[index++],
                       "No longer in the Trash (emptied or moved), so it can't be put back from here.",
                       "The record names a place that is in no Trash or behind a link. Restore will refuse it.");
    }
}

}  // namespace

void writeText(Output& output, const PlanView& view, const TextStyle& style) {
    Page page(output, style);
    DateFormatter dates(style.zone);
    const std::vector<Group> groups = groupsOf(view);
    if (!groups.empty()) page.safe(view.outputRoot.path()).endLine();
    if (!groups.empty()) page.endLine();
    for (const Group& group : groups) writeGroup(page, view, group, dates);
    writeReview(page, view);
    writeSkipped(page, view);
    writeNotScanned(page, view);
    if (view.plan->proposals.empty()) page.raw("Nothing to organize").endLine();
    const std::size_t leftOut = view.plan->proposals.size() - view.selectedCount();
    if (leftOut > 0) page.count(leftOut, "proposed file").raw(" left out").endLine();
    if (view.partialDownloads > 0) {
        page.count(view.partialDownloads, "unfinished download").raw(" among them; --include-partial selects them");
        page.endLine();
    }
    page.safe(view.status).endLine();
}

void writeText(Output& output, const RunReport& result, const TextStyle& style) {
    Page page(output, style);
    if (result.report) {
        writeSummary(page, result);
        if (result.kind == OrdovanRunRecord::Kind::organize) writeDestinations(page, result);
    } else if (result.plan) {
        const bool isSelection = !result.plan->proposals.empty();
        page.raw(isSelection ? "No file is selected, so nothing was moved." : "Nothing to organize").endLine();
    } else {
        page.raw("Nothing was changed").endLine();
    }
    writeLeftBehind(page, result);
    writeNeedsReview(page, result);
}

void writeText(Output& output, const RecoveryResult& result, const TextStyle& style) {
    Page page(output, style);
    const bool hasTrashed = !result.found.trash->entries.empty();
    if (!result.found.journal && !hasTrashed) return page.raw("Nothing to recover").endLine();
    if (result.found.journal) writeOrganized(page, result);
    if (result.found.journal && hasTrashed) page.endLine();
    if (hasTrashed) writeTrashed(page, result);
}

void writeText(Output& output, std::span<const OrdovanRunRecord> history, const TextStyle& style) {
    Page page(output, style);
    DateFormatter dates(style.zone);
    for (const OrdovanRunRecord& run : history) {
        page.date(dates, run.epoch).raw("  ").safe(run.summary());
        for (const auto& [count, word] : {std::pair(run.skipped, " skipped"), std::pair(run.failed, " failed")}) {
            if (count == 0) continue;
            page.raw(", ");
            appendInteger(page.out(), count);
            page.raw(word);
        }
        page.endLine();
    }
}

void writeText(Output& output, const OrdovanRuleSet& rules, const TextStyle& style) {
    Page page(output, style);
    std::size_t position = 0;
    for (const OrdovanRule& rule : rules.rules) {
        appendInteger(page.out(), static_cast<std::int64_t>(++position));
        page.raw("  ");
        for (const std::string& extension : rule.extensions) {
            page.raw(&extension == &rule.extensions.front() ? "" : ", ").safe(extension);
        }
        page.raw(" → ").safe(rule.folderName).endLine();
    }
}

void writeText(Output& output, const SettingsResult& settings, const TextStyle& style) {
    Page page(output, style);
    for (const SettingsResult::Value& value : settings.values) {
        if (settings.values.size() > 1) page.raw(value.key).raw(" = ");
        page.safe(value.text).endLine();
    }
}

std::string recoverableSentence(std::size_t count) {
    std::string sentence;
    appendCount(sentence, count, "organized file");
    return sentence + " can go back to where they came from.";
}

std::string restorableSentence(std::size_t count) {
    std::string sentence;
    appendCount(sentence, count, "file");
    return sentence + " in the Trash can be put back (from Duplicates or Big Files).";
}

}  // namespace ordovan::cli
