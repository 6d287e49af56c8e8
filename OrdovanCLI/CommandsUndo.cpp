#include "OrdovanCLI/Commands.h"

#include "OrdovanCLI/Format.h"

#include <unordered_set>

namespace ordovan::cli {
namespace {

using Journal = std::shared_ptr<const OrdovanJournal>;

RecoveryResult recovery(Context& context, const Url& folder, Journal journal) {
    RecoveryResult result{folder, std::move(journal), {}};
    if (!result.journal) return result;
    OrdovanFileSystem& fs = context.session.ports().fileSystem;
    for (const OrdovanJournalEntry& entry : result.journal->entries) {
        result.isPresent.push_back(fs.isRegularFile(Url::file(entry.destination())));
    }
    return result;
}

/// The part of a journal that the entries named on the command line make up; all of it where none is named.
std::expected<Journal, Outcome> chosenEntries(const Invocation& invocation, const Journal& journal) {
    const auto names = invocation.values(Option::entry);
    if (names.empty()) return journal;
    std::unordered_set<std::string_view> recorded;
    for (const OrdovanJournalEntry& entry : journal->entries) recorded.insert(entry.id());
    std::unordered_set<std::string_view> chosen;
    for (const std::string_view name : names) {
        bool isFound = false;
        for (const std::string& path : absoluteForms(name)) {
            const auto found = recorded.find(path);
            if (found == recorded.end()) continue;
            chosen.insert(*found);
            isFound = true;
        }
        if (!isFound)
            return std::unexpected(Outcome::usage("No organized file is recorded at " + inQuotes(name) + "."));
    }
    OrdovanJournal part{journal->version, journal->createdAtEpoch, {}};
    for (const OrdovanJournalEntry& entry : journal->entries) {
        if (chosen.contains(entry.id())) part.entries.push_back(entry);
    }
    return std::make_shared<const OrdovanJournal>(std::move(part));
}

}  // namespace

Outcome runUndo(Context& context) {
    if (auto refused = context.refusal("undo")) return std::move(*refused);
    const auto folder = chosenFolder(context.invocation);
    if (!folder) return folder.error();
    if (auto end = context.preview(*folder, {})) return std::move(*end);
    TidyViewModel& model = context.session.model();
    const Journal journal = model.recoverableJournal();
    if (!journal) return Outcome::impossible("There is nothing to undo in this folder.");
    const auto entries = chosenEntries(context.invocation, journal);
    if (!entries) return entries.error();
    if (!context.invocation.has(Option::yes)) {
        context.wantsJson() ? context.console.remark(recoverableSentence((*entries)->entries.size()))
                            : context.put(recovery(context, *model.rootURL(), *entries));
    }
    switch (context.consent("Put these files back?")) {
        case Console::Answer::interrupted:
            return Outcome::interrupted();
        case Console::Answer::no:
            if (context.wantsJson()) context.put(RunReport{OrdovanRunRecord::Kind::undo, *folder, nullptr, {}});
            return {};
        case Console::Answer::yes:
            break;
    }
    if (*entries == journal) {
        return context.run(OrdovanRunRecord::Kind::undo, [](TidyViewModel& running) { return running.undo(); });
    }
    std::unordered_set<std::string> ids;
    for (const OrdovanJournalEntry& entry : (*entries)->entries) ids.emplace(entry.id());
    return context.run(OrdovanRunRecord::Kind::undo, [&](TidyViewModel& running) { return running.undo(ids); });
}

Outcome runRecovery(Context& context) {
    const auto folder = chosenFolder(context.invocation);
    if (!folder) return folder.error();
    const TidyPorts ports = context.session.ports();
    const Url root = ports.resolveExisting(*folder);
    context.put(recovery(context, root, ports.journals.load(root, nullptr, ports.clock(), ports.fileSystem).journal));
    return {};
}

}  // namespace ordovan::cli
