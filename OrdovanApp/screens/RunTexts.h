#pragma once

#include "OrdovanCore/Executor.h"

#include <QString>
#include <QStringList>

#include <cstddef>
#include <span>

/// What is said of runs, whatever they did.
namespace RunTexts {

/// How far a run is: "3 of 121 files".
[[nodiscard]] QString done(quint64 files, quint64 total);
/// What is done before anything else where a run was interrupted.
[[nodiscard]] QString recovering();
/// "1 skipped, 2 failed", with what there is of it; empty where every file was moved.
[[nodiscard]] QString leftBehind(std::size_t skipped, std::size_t failed);
/// What a run did, with what was left behind where there is any: in `whole` stands "%1" for the number of files moved,
/// in `withRest` also "%2" for what `leftBehind` says. Both are plural texts of the context "RunTexts".
[[nodiscard]] QString summary(const OrdovanExecutionReport& report, const char* whole, const char* withRest);
/// A line for each file: its name and what became of it.
[[nodiscard]] QStringList sentences(std::span<const OrdovanExecutionOutcome> outcomes);
/// The same of the files that were not moved.
[[nodiscard]] QStringList problems(std::span<const OrdovanExecutionOutcome> outcomes);

}  // namespace RunTexts
