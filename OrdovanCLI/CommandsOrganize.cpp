#include "OrdovanCLI/Commands.h"

#include "OrdovanCLI/Format.h"
#include "OrdovanCLI/Interrupts.h"
#include "OrdovanCore/PlanExport.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>

namespace ordovan::cli {
namespace {

constexpr const char* exportFailed = "The plan couldn't be saved there. Try another folder.";

/// Setting overrides and selection, as the options say.
struct PlanOptions {
    TidyViewModel::SettingOverrides overrides;
    Selection selection;
};

std::expected<PlanOptions, Outcome> planOptions(const Invocation& invocation) {
    constexpr std::int64_t mostDays = 365'000;
    PlanOptions options;
    options.overrides = {invocation.choice(Option::groupByMonth, Option::noGroupByMonth),
                         invocation.choice(Option::includeHidden, Option::noIncludeHidden)};
    options.selection.onlyFolder = invocation.value(Option::only);
    options.selection.leftOutPaths = invocation.values(Option::leaveOut);
    if (const auto days = invocation.value(Option::olderThan)) {
        options.selection.olderThanDays = wholeNumber(*days, 0, mostDays);
        if (!options.selection.olderThanDays) {
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
    if (auto end = context.preview(*folder, options->overrides)) return std::unexpected(std::move(*end));
    const TidyViewModel& model = context.session.model();
    PlanView view{.plan = model.plan(),
                  .inventory = model.inventory(),
                  .root = *model.rootURL(),
                  .outputRoot = *model.outputRoot(),
                  .caseInsensitive = model.caseInsensitive(),
                  .partialScan = model.partialScan(),
                  .status = model.status().pulseSummary()};
    view.fill();
    const double now = context.session.ports().clock();
    if (auto selected = apply(options->selection, model.rules(), now, view); !selected) {
        return std::unexpected(Outcome::usage(std::move(selected.error())));
    }
    if (view.partialScan && !context.wantsJson()) context.console.warn(partialScanSentence);
    return view;
}

enum class ExportFormat { markdown, csv };

std::optional<ExportFormat> exportFormat(std::string_view file) {
    const std::string_view ext = pathExtension(file);
    if (ext == "md") return ExportFormat::markdown;
    return ext == "csv" ? std::optional(ExportFormat::csv) : std::nullopt;
}

/// Writes a file that must not exist yet; one that could not be written whole is taken away again.
std::optional<Outcome> writeNewFile(const std::string& file, std::string_view text) {
    std::FILE* stream = std::fopen(file.c_str(), "wxe");
    if (stream == nullptr) {
        const bool isTaken = errno == EEXIST;
        return Outcome::impossible(isTaken ? inQuotes(file) + " exists already and was left as it is." : exportFailed);
    }
    const bool isWritten = std::fwrite(text.data(), 1, text.size(), stream) == text.size();
    if (std::fclose(stream) == 0 && isWritten) return std::nullopt;
    std::error_code ignored;
    std::filesystem::remove(file, ignored);
    return Outcome::impossible(exportFailed);
}

std::optional<Outcome> exportPlan(const PlanView& view, const std::string& file, ExportFormat format) {
    const auto excluded = view.leftOutIDs();
    return writeNewFile(file, format == ExportFormat::csv
                                  ? OrdovanPlanExport::csv(*view.plan, excluded)
                                  : OrdovanPlanExport::markdown(*view.plan, view.root.lastPathComponent(), excluded));
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
        if (auto failure = exportPlan(*view, std::string(*exportFile), *format)) return std::move(*failure);
        context.console.remark("Saved the preview in " + inQuotes(*exportFile) + ".");
    }
    interrupts::letThemEndTheProgram();
    context.put(*view);
    return {};
}

Outcome runOrganize(Context& context) {
    if (auto refused = context.refusal("organize")) return std::move(*refused);
    const auto view = planned(context);
    if (!view) return view.error();
    const RunReport nothing{OrdovanRunRecord::Kind::organize, view->root, nullptr, std::nullopt};
    const bool isAsked = !context.invocation.has(Option::yes);
    if (view->selectedCount() == 0) {
        context.wantsJson() ? context.put(nothing) : context.put(*view);
        return {};
    }
    if (isAsked) {
        context.wantsJson() ? context.console.remark(view->status) : context.put(*view);
        context.explain(
            "Files move into the ordovan+ folder inside this folder. Nothing is copied or deleted, and "
            "you can undo this with \"ordovan-cli undo\".");
    }
    switch (context.consent("Organize these files?")) {
        case Console::Answer::interrupted:
            return Outcome::interrupted();
        case Console::Answer::no:
            if (context.wantsJson()) context.put(nothing);
            return {};
        case Console::Answer::yes:
            break;
    }
    context.session.model().setExcluded(view->leftOutIDs());
    return context.run(OrdovanRunRecord::Kind::organize, [](TidyViewModel& model) { return model.organize(); });
}

}  // namespace ordovan::cli
