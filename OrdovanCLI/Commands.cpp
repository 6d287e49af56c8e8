#include "OrdovanCLI/Commands.h"

#include "OrdovanApp/stores/DownloadsFolder.h"
#include "OrdovanCLI/Format.h"
#include "OrdovanCLI/TextPage.h"
#include "OrdovanCore/PreviewStatus.h"
#include "OrdovanCore/Proposals.h"
#include "OrdovanCore/platform/Interrupts.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <span>
#include <system_error>

namespace ordovan::cli {
namespace {

/// The folder as it was typed, or the user's Downloads.
std::expected<std::string, Outcome> namedFolder(const Invocation& invocation) {
    if (!invocation.arguments.empty()) {
        const std::string_view typed = invocation.arguments.front();
        const Url address = Url::parse(typed);
        return std::string(typed.starts_with("file://") && address.isFile() ? address.path() : typed);
    }
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

bool isDamaged(const JournalStore& journals, const Url& root) {
    return journals.read(root).state == JournalStore::Stored::State::unreadable;
}

bool isDamaged(const TrashRecordStore& records) {
    return records.load({}).revision == 0;
}

/// How many things a warning names at most.
constexpr std::size_t mostNamed = 20;

/// "2 folders left out:" and a line for each, the first ones.
template <class Thing, class AppendLine>
std::string listed(std::span<const Thing> things, std::string_view noun, std::string_view what, AppendLine appendLine) {
    std::string block;
    appendCount(block, things.size(), noun);
    block.append(what).append(":");
    for (const Thing& thing : things.first(std::min(things.size(), mostNamed))) {
        block += "\n  ";
        appendLine(block, thing);
    }
    if (things.size() > mostNamed)
        block.append("\n  and ").append(std::to_string(things.size() - mostNamed)) += " more";
    return block;
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
    if (error) {
        return std::unexpected(
            Outcome::impossible("There is no folder " + inQuotes(*typed) + ": the current folder is gone."));
    }
    const fs::file_status status = fs::status(path, error);
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
    interrupts::letThemEndTheProgram(exitInterrupted);
    return interrupts::requested() ? std::optional(Outcome::interrupted()) : std::nullopt;
}

std::string Context::callOf(std::string_view command) const {
    std::string call = "\"ordovan-cli ";
    call += command;
    if (!invocation.arguments.empty()) call += " " + inShellQuotes(session.model().rootURL()->path());
    return call + "\"";
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

std::optional<Outcome> Context::declined(const RunReport& intended, std::string_view question) {
    if (auto end = unrecordable(intended.kind)) return end;
    switch (consent(question)) {
        case Console::Answer::interrupted:
            return Outcome::interrupted();
        case Console::Answer::no:
            if (wantsJson()) put(intended);
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

std::optional<std::string> Context::unreadable(std::initializer_list<Record> records) {
    const TidyPorts ports = session.ports();
    for (const Record record : records) {
        if (record == Record::settings) {
            if (const auto problem = session.settingsProblem()) return std::string(*problem);
            continue;
        }
        if (!session.canReachRecords()) {
            return "The folder of the records, " + inQuotes(session.recordsFolder().path()) + ", can't be reached.";
        }
        // What could be read and holds something need not be read again.
        const TidyViewModel& model = session.model();
        if (record == Record::journal && !model.recoverableJournal() && isDamaged(ports.journals, *model.rootURL())) {
            return "The undo record of this folder couldn't be read.";
        }
        if (record == Record::trash && model.trashRecord()->entries.empty() && isDamaged(ports.trashRecords)) {
            return "The record of what was moved to the Trash couldn't be read.";
        }
        if (record == Record::history && !ports.history.loadReadable()) return "The history couldn't be read.";
    }
    return std::nullopt;
}

void Context::warnOfRecords(std::initializer_list<Record> records) {
    for (const Record record : records) {
        const auto sentence = unreadable({record});
        if (!sentence) continue;
        console.warn(*sentence);
        isFlawed = true;
    }
}

Unseen Context::unseen() const {
    using Reason = OrdovanInventorySkip::Reason;
    Unseen unseen{.isPartialScan = session.model().partialScan()};
    std::ranges::copy_if(
        session.model().inventory()->skipped, std::back_inserter(unseen.folders), [](const OrdovanInventorySkip& skip) {
            return skip.reason == Reason::unreadableDirectory || skip.reason == Reason::depthLimitReached;
        });
    return unseen;
}

void Context::warnOf(const Unseen& unseen) {
    const Url& root = *session.model().rootURL();
    if (unseen.isPartialScan) console.warn(partialScanSentence);
    if (!unseen.folders.empty()) {
        const auto line = [&](std::string& out, const OrdovanInventorySkip& skip) {
            appendSafe(out, below(skip.url.path(), root.path()));
            out +=
                skip.reason == OrdovanInventorySkip::Reason::depthLimitReached ? ": too deep" : ": could not be read";
        };
        console.warn(listed(std::span(unseen.folders), "folder", " left out", line));
    }
    if (!unseen.files.empty()) {
        const auto line = [&](std::string& out, const Url& file) { appendSafe(out, below(file.path(), root.path())); };
        console.warn(listed(std::span(unseen.files), "file", " couldn't be read and compared with others", line));
    }
}

Outcome Context::run(RunReport intended, const std::function<bool(TidyViewModel&)>& start) {
    const TidyViewModel& model = session.model();
    const bool started = session.run(verb(intended.kind), start);
    const bool wasStopped = interrupts::requested();
    interrupts::letThemEndTheProgram(exitInterrupted);
    if (model.runRefusal()) return Outcome::impossible(*model.runRefusal());
    RunReport result = std::move(intended);
    result.warning = model.journalWarning();
    if (started) addReport(result, model);
    put(result);
    if (result.warning) console.warn(*result.warning);
    return {.kind = wasStopped ? Outcome::Kind::interrupted : Outcome::Kind::done,
            .isFlawed = result.isFlawed(),
            .didChange = result.report && result.report->movedCount() > 0,
            .sentence = {}};
}

Outcome Context::runOfNothing(const RunReport& intended) {
    put(intended);
    return {.kind = Outcome::Kind::done, .isFlawed = intended.isFlawed(), .didChange = false, .sentence = {}};
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
