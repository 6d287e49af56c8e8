#include "OrdovanCLI/Commands.h"

#include "OrdovanCLI/Format.h"
#include "OrdovanCore/PlanExport.h"
#include "OrdovanCore/Text.h"
#include "OrdovanCore/platform/Interrupts.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

namespace ordovan::cli {
namespace {

/// Setting overrides and selection, as the options say.
struct PlanOptions {
    TidyViewModel::SettingOverrides overrides;
    Selection selection;
    std::optional<std::int64_t> olderThanDays;
};

std::expected<PlanOptions, Outcome> planOptions(const Invocation& invocation) {
    constexpr std::int64_t mostDays = 365'000;
    PlanOptions options;
    options.overrides = {invocation.choice(Option::groupByMonth, Option::noGroupByMonth),
                         invocation.choice(Option::includeHidden, Option::noIncludeHidden)};
    options.selection.onlyFolder = invocation.value(Option::only);
    options.selection.leftOutPaths = invocation.values(Option::leaveOut);
    if (const auto days = invocation.value(Option::olderThan)) {
        options.olderThanDays = wholeNumber(*days, 0, mostDays);
        if (!options.olderThanDays) {
            return std::unexpected(
                Outcome::usage("--older-than takes a whole number of days, not " + inQuotes(*days) + "."));
        }
    }
    return options;
}

/// Previews the chosen folder and makes the selection.
std::expected<PlanView, Outcome> planned(Context& context) {
    const auto options = planOptions(context.invocation);
    if (!options) return std::unexpected(options.error());
    const auto folder = chosenFolder(context.invocation);
    if (!folder) return std::unexpected(folder.error());
    if (auto end = context.preview(*folder, options->overrides, PreviewDepth::plan))
        return std::unexpected(std::move(*end));
    context.warnOfRecords({Context::Record::settings, Context::Record::journal});
    TidyViewModel& model = context.session.model();
    PlanView view{.plan = model.plan(),
                  .inventory = model.inventory(),
                  .root = *model.rootURL(),
                  .outputRoot = *model.outputRoot(),
                  .caseInsensitive = model.caseInsensitive(),
                  .partialScan = model.partialScan(),
                  .status = model.status().pulseSummary()};
    view.fill();
    if (auto selected = apply(options->selection, model.rules(), view); !selected) {
        return std::unexpected(Outcome::usage(std::move(selected.error())));
    }
    if (options->olderThanDays) {
        model.tickOlderThan(static_cast<double>(*options->olderThanDays));
        view.leaveOut(model.excluded());
    }
    if (!context.invocation.has(Option::includePartial)) view.leaveOutPartialDownloads();
    return view;
}

/// What stands where the folder for organized files should be, and lets no file be organized; nothing where that
/// place is free or a folder.
std::optional<std::string> obstacle(const Url& outputRoot) {
    namespace fs = std::filesystem;
    std::error_code unknown;
    const fs::file_type type = fs::symlink_status(outputRoot.path(), unknown).type();
    if (type == fs::file_type::directory || type == fs::file_type::not_found || type == fs::file_type::none) {
        return std::nullopt;
    }
    return inQuotes(outputRoot.path()) +
           (type == fs::file_type::symlink ? " is a link, not a folder" : " is no folder") +
           ", so nothing can be organized into it. Rename it or move it away first.";
}

std::optional<OrdovanPlanExportFormat> exportFormat(std::string_view file) {
    const std::string ext = text::asciiLowercased(pathExtension(file));
    if (ext == "md") return OrdovanPlanExportFormat::markdown;
    return ext == "csv" ? std::optional(OrdovanPlanExportFormat::csv) : std::nullopt;
}

/// Saves the plan in a file that must not exist yet. Its name is taken by an empty file first, which the plan then
/// replaces: what another program puts there is never touched.
std::optional<Outcome> exportPlan(Context& context, const PlanView& view, const std::string& file,
                                  OrdovanPlanExportFormat format) {
    std::FILE* const made = std::fopen(file.c_str(), "wxe");
    if (made == nullptr && errno == EEXIST) {
        return Outcome::impossible(inQuotes(file) + " exists already and was left as it is.");
    }
    if (made == nullptr) {
        return Outcome::impossible(inQuotes(file) + " couldn't be made: " + std::strerror(errno) + ".");
    }
    std::error_code error;
    static_cast<void>(std::fclose(made));
    context.session.model().setExcluded(view.leftOutIDs());
    const auto failure = context.session.exportPlan(Url::file(std::filesystem::absolute(file, error).native()), format);
    if (!failure) return std::nullopt;
    std::filesystem::remove(file, error);
    return Outcome::impossible(*failure);
}

/// The end of an organize without a file to move. With `--yes` only the result is wanted, and that is that nothing was
/// done.
Outcome organizeNothing(Context& context, const PlanView& view, const RunReport& intended) {
    if (context.wantsJson() || context.invocation.has(Option::yes)) return context.runOfNothing(intended);
    context.put(view);
    if (!view.plan->proposals.empty()) context.explain("No file is selected, so nothing was moved.");
    return {.kind = Outcome::Kind::done, .isFlawed = intended.isFlawed(), .didChange = false, .sentence = {}};
}

}  // namespace

Outcome runPreview(Context& context) {
    const auto exportFile = context.invocation.value(Option::exportTo);
    const auto format = exportFile ? exportFormat(*exportFile) : std::nullopt;
    if (exportFile && !format) {
        return Outcome::usage("--export takes a file name that ends in .md or .csv, not " + inQuotes(*exportFile) +
                              ".");
    }
    const auto view = planned(context);
    if (!view) return view.error();
    if (format) {
        if (auto failure = exportPlan(context, *view, std::string(*exportFile), *format)) return std::move(*failure);
        context.console.remark("Saved the preview in " + inQuotes(*exportFile) + ".");
    }
    if (auto sentence = view->selectedCount() > 0 ? obstacle(view->outputRoot) : std::nullopt) {
        context.console.warn(*sentence);
    }
    if (view->partialScan) context.console.warn(partialScanSentence);
    interrupts::letThemEndTheProgram(exitInterrupted);
    context.put(*view);
    return {.kind = Outcome::Kind::done, .isFlawed = false, .didChange = format.has_value(), .sentence = {}};
}

Outcome runOrganize(Context& context) {
    if (auto refused = context.refusal("organize")) return std::move(*refused);
    const auto view = planned(context);
    if (!view) return view.error();
    const RunReport intended{
        .kind = OrdovanRunRecord::Kind::organize, .folder = view->root, .plan = view->plan, .unseen = context.unseen()};
    context.warnOf(*intended.unseen);
    if (view->selectedCount() == 0) return organizeNothing(context, *view, intended);
    if (auto sentence = obstacle(view->outputRoot)) return Outcome::impossible(std::move(*sentence));
    if (!context.invocation.has(Option::yes)) {
        context.wantsJson() ? context.console.remark(view->status) : context.put(*view);
        context.explain(
            "Files move into the ordovan+ folder inside this folder. Nothing is copied or deleted, and "
            "you can undo this with " +
            context.callOf("undo") + ".");
    }
    if (auto end = context.declined(intended, "Organize these files?")) return std::move(*end);
    context.session.model().setExcluded(view->leftOutIDs());
    return context.run(intended, [](TidyViewModel& model) { return model.organize(); });
}

}  // namespace ordovan::cli
