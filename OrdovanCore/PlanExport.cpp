#include "OrdovanCore/PlanExport.h"

#include "OrdovanCore/Categories.h"
#include "OrdovanCore/Text.h"

#include <algorithm>

namespace {

using Excluded = std::unordered_set<std::string>;

std::string_view yesOrNo(bool value) {
    return value ? "yes" : "no";
}

/// Text for a cell or a line of Markdown: on one line, and without bare column separators.
std::string cleaned(std::string_view text) {
    std::string out;
    for (const char c : ordovan::text::withReplacements(text)) {
        if (c == '|') out += '\\';
        out += c == '\n' ? ' ' : c;
    }
    return out;
}

/// A quoted CSV field. A text that a spreadsheet would run as a formula gets an apostrophe in front.
std::string quoted(std::string_view text) {
    constexpr std::string_view formulaStarts = "=+-@";
    std::string out = "\"";
    if (!text.empty() && formulaStarts.find(text.front()) != std::string_view::npos) out += '\'';
    for (const char c : ordovan::text::withReplacements(text)) {
        if (c == '"') out += '"';
        out += c;
    }
    return out += '"';
}

void appendProposalTable(std::string& out, const OrdovanPlanResult& plan, const Excluded& excluded) {
    if (plan.proposals.empty()) return;
    out += "| Selected | File | Goes to |\n|---|---|---|\n";
    for (const OrdovanFileProposal& proposal : plan.proposals) {
        out.append("| ").append(yesOrNo(!excluded.contains(proposal.id())));
        out.append(" | ").append(cleaned(proposal.source.lastPathComponent()));
        out.append(" | ")
            .append(OrdovanOutput::folderName)
            .append("/")
            .append(cleaned(proposal.folderName()))
            .append(" |\n");
    }
    out += "\n";
}

void appendReviewList(std::string& out, const OrdovanPlanResult& plan) {
    if (plan.conflicts.empty()) return;
    out += "## Needs review\n\n";
    for (const OrdovanPlanConflict& conflict : plan.conflicts) {
        out.append("- ").append(cleaned(conflict.source.lastPathComponent()));
        out.append(": ").append(message(conflict.kind)).append("\n");
    }
}

}  // namespace

std::string OrdovanPlanExport::markdown(const OrdovanPlanResult& plan, std::string_view folderName,
                                        const Excluded& excluded) {
    const auto selected = std::ranges::count_if(
        plan.proposals, [&](const OrdovanFileProposal& proposal) { return !excluded.contains(proposal.id()); });
    std::string out = "# ordovan+ plan — " + cleaned(folderName) + "\n\n";
    out += "- Proposed: " + std::to_string(plan.proposals.size()) + " (selected: " + std::to_string(selected) + ")\n";
    out += "- Need review: " + std::to_string(plan.conflicts.size()) + "\n";
    out += "- Skipped: " + std::to_string(plan.skipped.size()) + "\n\n";
    out += "Preview only — nothing has been moved.\n\n";
    appendProposalTable(out, plan, excluded);
    appendReviewList(out, plan);
    return out;
}

std::string OrdovanPlanExport::csv(const OrdovanPlanResult& plan, const Excluded& excluded) {
    std::string out = "selected,file,destination_folder,status\r\n";
    for (const OrdovanFileProposal& proposal : plan.proposals) {
        out.append(yesOrNo(!excluded.contains(proposal.id()))).append(",");
        out.append(quoted(proposal.source.lastPathComponent())).append(",");
        out.append(quoted(proposal.folderName())).append(",proposed\r\n");
    }
    for (const OrdovanPlanConflict& conflict : plan.conflicts) {
        out.append("no,").append(quoted(conflict.source.lastPathComponent()));
        out.append(",").append(quoted("")).append(",").append(quoted("needs review")).append("\r\n");
    }
    return out;
}

std::string OrdovanPlanExport::text(OrdovanPlanExportFormat format, const OrdovanPlanResult& plan,
                                    std::string_view folderName, const Excluded& excluded) {
    return format == OrdovanPlanExportFormat::csv ? csv(plan, excluded) : markdown(plan, folderName, excluded);
}
