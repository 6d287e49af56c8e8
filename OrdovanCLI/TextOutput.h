#pragma once

#include "OrdovanCLI/Output.h"
#include "OrdovanCLI/PlanView.h"
#include "OrdovanCLI/Results.h"
#include "OrdovanCore/Text.h"

/// Results for reading. Whatever a name holds, it stays on its line and can not drive the terminal. Sizes and dates
/// stand in front of names, so that columns hold without measuring names.
namespace ordovan::cli {

struct TextStyle {
    bool isColored = false;
    text::TimeZone zone = text::TimeZone::utc();  ///< of the dates
};

/// The selected proposals by destination folder, then what needs review, what is skipped and what was not scanned,
/// and the status line.
void writeText(Output& output, const PlanView& view, const TextStyle& style);
/// One line for the run, after an organize how many files went to which folder, and every file that stayed, with the
/// reason.
void writeText(Output& output, const RunReport& result, const TextStyle& style);
void writeText(Output& output, const RecoveryResult& result, const TextStyle& style);
/// The groups with their files, the one to keep marked.
void writeText(Output& output, const DuplicatesResult& result, const TextStyle& style);
void writeText(Output& output, const LargeFilesResult& result, const TextStyle& style);
void writeText(Output& output, std::span<const OrdovanRunRecord> history, const TextStyle& style);
void writeText(Output& output, const OrdovanRuleSet& rules, const TextStyle& style);
void writeText(Output& output, const SettingsResult& settings, const TextStyle& style);

/// "12 organized files can go back to where they came from."
[[nodiscard]] std::string recoverableSentence(std::size_t count);
/// "2 files in the Trash can be put back (from Duplicates or Big Files)."
[[nodiscard]] std::string restorableSentence(std::size_t count);
/// "3 duplicate groups · 7 files · 1.2 GB in extra copies"
[[nodiscard]] std::string duplicatesSentence(const OrdovanDuplicateReport& report);

}  // namespace ordovan::cli
