#pragma once

#include "OrdovanCore/Executor.h"

#include <QString>

/// The inbox's sentences that depend on numbers.
namespace SmartInboxTexts {

/// "Organize 1 File…", "Organize 1,204 Files…".
[[nodiscard]] QString organizeButton(qint64 files);
/// The same on the button that confirms.
[[nodiscard]] QString organizeConfirm(qint64 files);

/// What is said of a preview without a proposal.
[[nodiscard]] QString nothingTitle();
[[nodiscard]] QString nothingMessage();

/// What a run did, in a line: "Last organize run moved 3 files; 1 skipped, 2 failed.", "Last undo run put back 1 file."
[[nodiscard]] QString organizeSummary(const OrdovanExecutionReport& report);
[[nodiscard]] QString undoSummary(const OrdovanExecutionReport& report);

/// What a preview under way does.
[[nodiscard]] QString scanning();
/// What a preview under way has seen: "1,204 files in 17 folders".
[[nodiscard]] QString scanned(quint64 files, quint64 folders);

}  // namespace SmartInboxTexts
