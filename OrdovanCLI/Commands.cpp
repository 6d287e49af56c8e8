#include "OrdovanCLI/Commands.h"

#include "OrdovanApp/stores/DownloadsFolder.h"
#include "OrdovanCLI/Format.h"
#include "OrdovanCore/PreviewStatus.h"
#include "OrdovanCore/Proposals.h"
#include "OrdovanCore/platform/Interrupts.h"

#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace ordovan::cli {
namespace {

/// The folder as it was typed, or the user's Downloads.
std::expected<std::string, Outcome> namedFolder(const Invocation& invocation) {
    if (!invocation.arguments.empty()) return std::string(invocation.arguments.front());
    const char* const home = std::getenv("HOME");
    if (home == nullptr || *home != '/') {
        return std::unexpected(Outcome::impossible(
            "There is no telling where your Downloads folder is: the variable HOME holds no folder. Name the folder."));
    }
    if (const auto downloads = downloadsFolder()) return std::string(downloads->path());
    return std::unexpected(Outcome::impossible("You have no Downloads folder; name the folder."));
}

/// True when the folder can be listed.
bool isReadable(const std::filesystem::path& folder) {
    std::error_code error;
    const std::filesystem::directory_iterator listing(folder, error);
    return !error;
}

/// What a run of this kind is doing.
std::string_view verb(OrdovanRunRecord::Kind kind) {
    switch (kind) {
        case OrdovanRunRecord::Kind::organize:
            return "Organizing";
        case OrdovanRunRecord::Kind::trash:
            return "Moving to the Trash";
        case OrdovanRunRecord::Kind::undo:
        case OrdovanRunRecord::Kind::restoreTrash:
            break;
    }
    return "Putting back";
}

/// Adds what the run that has just ended did.
void addReport(RunReport& result, const TidyViewModel& model) {
    using Kind = OrdovanRunRecord::Kind;
    if (result.kind == Kind::organize || result.kind == Kind::undo) {
        result.report = model.lastReport();
        return;
    }
    const OrdovanTrashReport& report = *model.lastTrashReport();
    result.report = std::make_shared<const OrdovanExecutionReport>(report.asExecutionReport());
    if (result.kind != Kind::trash) return;
    for (const OrdovanTrashEntry& entry : report.record.entries) result.trashedBytes += entry.byteSize();
}

}  // namespace

std::expected<Url, Outcome> chosenFolder(const Invocation& invocation) {
    namespace fs = std::filesystem;
    const auto typed = namedFolder(invocation);
    if (!typed) return std::unexpected(typed.error());
    if (typed->empty()) return std::unexpected(Outcome::usage("The folder's name is empty."));
    std::error_code error;
    const fs::path path = fs::absolute(*typed, error);
    const fs::file_status status = error ? fs::file_status(fs::file_type::none) : fs::status(path, error);
    if (status.type() == fs::file_type::not_found) {
        return std::unexpected(Outcome::impossible("There is no folder " + inQuotes(*typed) + "."));
    }
    if (!error && status.type() != fs::file_type::directory) {
        return std::unexpected(Outcome::impossible(inQuotes(*typed) + " is not a folder."));
    }
    const Url folder = Url::file(path.native());
    if (OrdovanProposalPlanner::isTooBroad(folder)) {
        const std::string_view sentence = message(OrdovanProposalError::authorizedRootTooBroad);
        return std::unexpected(Outcome::impossible(std::string(sentence)));
    }
    if (error || !isReadable(path)) {
        return std::unexpected(Outcome::impossible(std::string(OrdovanPreviewStatus::unreadableFolder)));
    }
    return folder;
}

std::optional<Outcome> interruptibleFromHere() {
    interrupts::letThemEndTheProgram();
    return interrupts::requested() ? std::optional(Outcome::interrupted()) : std::nullopt;
}

std::optional<Outcome> Context::refusal(std::string_view act) const {
    if (invocation.has(Option::yes) || console.canAsk()) return std::nullopt;
    return Outcome::usage("There is nobody to ask here; say --yes to " + std::string(act) + " without a question.");
}

Console::Answer Context::consent(std::string_view question) {
    if (interrupts::requested()) return Console::Answer::interrupted;
    if (invocation.has(Option::yes)) return Console::Answer::yes;
    output.flush();
    if (output.error()) return Console::Answer::no;
    const Console::Answer answer = console.ask(question);
    if (answer == Console::Answer::no) console.remark("Nothing was changed.");
    return answer;
}

std::optional<Outcome> Context::unrecordable(OrdovanRunRecord::Kind kind) const {
    using Kind = OrdovanRunRecord::Kind;
    // Putting back needs no new record, and what is left in the old one is refused safely.
    if (kind == Kind::undo || kind == Kind::restoreTrash) return std::nullopt;
    if (session.areRecordsHeldElsewhere()) {
        if (interrupts::requested()) return Outcome::interrupted();
        return Outcome::impossible(
            "Another ordovan+ is saving its records, so nothing was moved. Try again in a moment.");
    }
    if (session.model().canSaveRecords()) return std::nullopt;
    return Outcome::impossible("No record of the run could be saved, so nothing was moved. Check the permissions of " +
                               inQuotes(session.recordsFolder().path()) + " and the free space there.");
}

std::optional<Outcome> Context::declined(OrdovanRunRecord::Kind kind, std::string_view question) {
    if (auto end = unrecordable(kind)) return end;
    switch (consent(question)) {
        case Console::Answer::interrupted:
            return Outcome::interrupted();
        case Console::Answer::no:
            if (wantsJson()) put(RunReport{kind, *session.model().rootURL(), nullptr, {}});
            return Outcome();
        case Console::Answer::yes:
            break;
    }
    return std::nullopt;
}

std::optional<Outcome> Context::preview(const Url& folder, const TidyViewModel::SettingOverrides& overrides,
                                        PreviewDepth depth) {
    session.preview(folder, overrides, depth);
    const TidyViewModel::Phase& phase = session.model().phase();
    if (interrupts::requested()) return Outcome::interrupted();
    if (phase.kind == TidyViewModel::Phase::Case::failed) return Outcome::impossible(phase.message);
    return std::nullopt;
}

Outcome Context::run(OrdovanRunRecord::Kind kind, const std::function<bool(TidyViewModel&)>& start) {
    const TidyViewModel& model = session.model();
    const bool started = session.run(verb(kind), start);
    const bool wasStopped = interrupts::requested();
    interrupts::letThemEndTheProgram();
    if (model.runRefusal()) return Outcome::impossible(*model.runRefusal());
    RunReport result{kind, *model.rootURL(), nullptr, model.journalWarning()};
    if (started) addReport(result, model);
    put(result);
    if (result.warning) console.warn(*result.warning);
    const std::size_t moved = result.report ? result.report->movedCount() : 0;
    const bool someStayed = result.report && moved < result.report->outcomes.size();
    return {.kind = wasStopped ? Outcome::Kind::interrupted : Outcome::Kind::done,
            .isFlawed = someStayed || result.warning,
            .didChange = moved > 0,
            .sentence = {}};
}

Outcome runCommand(Context& context) {
    switch (*context.invocation.command) {
        case Command::preview:
            return runPreview(context);
        case Command::organize:
            return runOrganize(context);
        case Command::undo:
            return runUndo(context);
        case Command::duplicates:
            return runDuplicates(context);
        case Command::big:
            return runBig(context);
        case Command::recovery:
            return runRecovery(context);
        case Command::restore:
            return runRestore(context);
        case Command::rules:
            return runRules(context);
        case Command::history:
            return runHistory(context);
        case Command::settings:
            break;
    }
    return runSettings(context);
}

}  // namespace ordovan::cli
