#pragma once

#include "OrdovanCLI/Output.h"
#include "OrdovanCLI/PlanView.h"
#include "OrdovanCLI/Results.h"

/// Results as one JSON object each: UTF-8, `"schema": 1` first, lists in their own order, one record a line. Bytes
/// that are not UTF-8 become U+FFFD, and the whole path then stands in base64 in a `pathBase64` member behind it.
namespace ordovan::cli {

void writeJson(Output& output, const PlanView& view);
void writeJson(Output& output, const RunReport& result);
void writeJson(Output& output, const RecoveryResult& result);
/// Where a group has a path that is not UTF-8, `pathBase64` is a list beside `files` (null for the others), and
/// `keepBase64` stands behind `keep` when that is the one.
void writeJson(Output& output, const DuplicatesResult& result);
void writeJson(Output& output, const LargeFilesResult& result);
void writeJson(Output& output, std::span<const OrdovanRunRecord> history);
void writeJson(Output& output, const OrdovanRuleSet& rules);
void writeJson(Output& output, const SettingsResult& settings);
/// An object with one text: "error" for a command that could not do its work, "version", "help".
void writeJsonText(Output& output, std::string_view key, std::string_view text);

}  // namespace ordovan::cli
