#pragma once

#include "OrdovanCore/Planner.h"

#include <string>
#include <string_view>
#include <unordered_set>

/// A plan as text to keep or share. Pure; any thread. Names that are not UTF-8 are written with U+FFFD.
namespace OrdovanPlanExport {

/// A Markdown document. `folderName` is the display name of the organized folder, `excluded` the ids of unticked
/// proposals. Skipped files are counted, not listed.
[[nodiscard]] std::string markdown(const OrdovanPlanResult& plan, std::string_view folderName,
                                   const std::unordered_set<std::string>& excluded);

/// A CSV table (RFC 4180 line ends and quoting) with a header line. Texts that a spreadsheet would take for a formula
/// get an apostrophe in front.
[[nodiscard]] std::string csv(const OrdovanPlanResult& plan, const std::unordered_set<std::string>& excluded);

}  // namespace OrdovanPlanExport
