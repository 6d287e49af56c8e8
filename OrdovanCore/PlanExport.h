#pragma once

#include "OrdovanCore/Planner.h"

#include <string>
#include <string_view>
#include <unordered_set>

/// The kinds of text that a plan is exported as.
enum class OrdovanPlanExportFormat { markdown, csv };

/// A plan as text to keep or share. Pure; any thread. Names that are not UTF-8 are written with U+FFFD.
namespace OrdovanPlanExport {

/// A Markdown document. `folderName` is the display name of the organized folder, `excluded` the ids of unticked
/// proposals. Skipped files are counted, not listed.
[[nodiscard]] std::string markdown(const OrdovanPlanResult& plan, std::string_view folderName,
                                   const std::unordered_set<std::string>& excluded);

/// A CSV table (RFC 4180 line ends and quoting) with a header line. Texts that a spreadsheet would take for a formula
/// get an apostrophe in front.
[[nodiscard]] std::string csv(const OrdovanPlanResult& plan, const std::unordered_set<std::string>& excluded);

/// The one or the other; `folderName` is used by `markdown` alone.
[[nodiscard]] std::string text(OrdovanPlanExportFormat format, const OrdovanPlanResult& plan,
                               std::string_view folderName, const std::unordered_set<std::string>& excluded);

}  // namespace OrdovanPlanExport
