#pragma once

#include <QString>

#include <optional>
#include <span>
#include <string_view>

class OrdovanPreviewStatus;
enum class AppTheme;
enum class OrdovanFileCategory;
enum class OrdovanKeepPolicy;
struct OrdovanInterruptedRun;
struct OrdovanRunRecord;

/// What the engine and the controller say, in the user's language. They speak English, and what is stored, exported or
/// printed by the command line stays so; the window asks here for what it shows. Main thread.
namespace EngineTexts {

/// Sentences as the engine makes them, with the names in them, as `Formats::text`. Those that are not known stay
/// English. Several sentences may follow each other.
[[nodiscard]] QString sentence(std::string_view english);
/// Every sentence that is known; "%1" and "%2" stand for what is inserted. In the context "Engine" of the translations.
[[nodiscard]] std::span<const char* const> known();

/// The name of a kind of file. The folder of that name is never called otherwise.
[[nodiscard]] QString category(OrdovanFileCategory category);
[[nodiscard]] QString keepPolicy(OrdovanKeepPolicy policy);
[[nodiscard]] QString theme(AppTheme theme);

/// What a run did: "Organized 3 files in Downloads".
[[nodiscard]] QString summary(const OrdovanRunRecord& run);
/// How many files an interrupted run finished, and what became of the others.
[[nodiscard]] QString summary(const OrdovanInterruptedRun& run);

/// Where a preview stands, in one line.
[[nodiscard]] QString status(const OrdovanPreviewStatus& status);
/// What a screen reader should say when this state is reached, if anything.
[[nodiscard]] std::optional<QString> announcement(const OrdovanPreviewStatus& status);

}  // namespace EngineTexts
