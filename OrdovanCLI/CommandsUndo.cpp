#include "OrdovanCLI/Commands.h"

#include "OrdovanCLI/Format.h"
#include "OrdovanCLI/PlanView.h"

#include <algorithm>
#include <iterator>
#include <span>
#include <unordered_set>

namespace ordovan::cli {
namespace {

using Journal = std::shared_ptr<const OrdovanJournal>;
using IDs = std::unordered_set<std::string>;

/// What of these records could be taken back now.
RecoveryResult recovery(Context& context, const Url& folder, Journal journal, std::vector<OrdovanTrashEntry> trashed) {
    OrdovanTrashRecord record;
    record.entries = std::move(trashed);
    return {folder, RecoverySurvey::of(folder, std::move(journal),
                                       std::make_shared<const OrdovanTrashRecord>(std::move(record)),
                                       context.session.ports().fileSystem)};
}

/// The ids of the entries with these names, as typed; empty where there are none. `kind` is what the entries are
/// ("organized file").
template <class Entry>
std::expected<IDs, Outcome> chosenIDs(std::span<const std::string_view> names, const std::vector<Entry>& entries,
                                      std::string_view kind) {
    IDs chosen;
    if (names.empty()) return chosen;
    std::unordered_set<std::string_view> recorded;
    for (const Entry& entry : entries) recorded.insert(entry.id());
    for (const std::string_view name : names) {
        bool isFound = false;
        for (std::string& path : absoluteForms(name)) {
            if (!recorded.contains(path)) continue;
            chosen.insert(std::move(path));
            isFound = true;
        }
        if (!isFound) {
            return std::unexpected(
                Outcome::usage("No " + std::string(kind) + " is recorded at " + inQuotes(name) + "."));
        }
    }
    return chosen;
}

/// The entries with these ids; all of them where there are no ids.
template <class Entry>
std::vector<Entry> chosenEntries(const std::vector<Entry>& entries, const IDs& ids) {
    if (ids.empty()) return entries;
    std::vector<Entry> chosen;
    for (const Entry& entry : entries) {
        if (ids.contains(std::string(entry.id()))) chosen.push_back(entry);
    }
    return chosen;
}

/// What is to be put back, for the question about it.
struct Asked {
    std::string sentence;
    std::function<RecoveryResult()> list;  ///< only called where it is shown
};

/// Asks whether to put files back and does it.
Outcome putBack(Context& context, OrdovanRunRecord::Kind kind, const Asked& asked,
                const std::function<bool(TidyViewModel&)>& start) {
    if (!context.invocation.has(Option::yes)) {
        context.wantsJson() ? context.console.remark(asked.sentence) : context.put(asked.list());
    }
    const RunReport intended{.kind = kind, .folder = *context.session.model().rootURL()};
    if (auto end = context.declined(intended, "Put these files back?")) return std::move(*end);
    return context.run(intended, start);
}

}  // namespace

Outcome runUndo(Context& context) {
    if (auto refused = context.refusal("undo")) return std::move(*refused);
    const auto folder = chosenFolder(context.invocation);
    if (!folder) return folder.error();
    if (auto end = context.preview(*folder, {}, PreviewDepth::records)) return std::move(*end);
    TidyViewModel& model = context.session.model();
    const Journal journal = model.recoverableJournal();
    if (!journal) {
        const auto problem = context.unreadable({Context::Record::journal});
        return Outcome::impossible(problem.value_or("There is nothing to undo in this folder."));
    }
    const auto ids = chosenIDs(context.invocation.values(Option::entry), journal->entries, "organized file");
    if (!ids) return ids.error();
    const Asked asked = {
        recoverableSentence(ids->empty() ? journal->entries.size() : ids->size()), [&] {
            OrdovanJournal part = {journal->version, journal->createdAtEpoch, chosenEntries(journal->entries, *ids)};
            return recovery(context, *model.rootURL(), std::make_shared<const OrdovanJournal>(std::move(part)), {});
        }};
    return putBack(context, OrdovanRunRecord::Kind::undo, asked,
                   [&](TidyViewModel& running) { return ids->empty() ? running.undo() : running.undo(*ids); });
}

Outcome runRestore(Context& context) {
    if (auto refused = context.refusal("put files back")) return std::move(*refused);
    const auto folder = chosenFolder(context.invocation);
    if (!folder) return folder.error();
    if (auto end = context.preview(*folder, {}, PreviewDepth::records)) return std::move(*end);
    TidyViewModel& model = context.session.model();
    const std::vector<OrdovanTrashEntry> entries = model.restorableEntries();
    if (entries.empty()) {
        const auto problem = context.unreadable({Context::Record::trash});
        return Outcome::impossible(problem.value_or("There is nothing to put back from the Trash in this folder."));
    }
    const auto ids = chosenIDs(context.invocation.values(Option::original), entries, "trashed file");
    if (!ids) return ids.error();
    const Asked asked = {restorableSentence(ids->empty() ? entries.size() : ids->size()),
                         [&] { return recovery(context, *model.rootURL(), nullptr, chosenEntries(entries, *ids)); }};
    return putBack(context, OrdovanRunRecord::Kind::restoreTrash, asked,
                   [&](TidyViewModel& running) { return ids->empty() ? running.restore() : running.restore(*ids); });
}

Outcome runRecovery(Context& context) {
    const auto folder = chosenFolder(context.invocation);
    if (!folder) return folder.error();
    if (auto end = context.preview(*folder, {}, PreviewDepth::records)) return std::move(*end);
    if (auto end = interruptibleFromHere()) return std::move(*end);
    const TidyViewModel& model = context.session.model();
    const Url root = *model.rootURL();
    Journal journal = model.recoverableJournal();
    std::vector<OrdovanTrashEntry> trashed = model.restorableEntries();
    context.put(recovery(context, root, std::move(journal), std::move(trashed)));
    if (context.session.canReachRecords()) {
        context.warnOfRecords({Context::Record::journal, Context::Record::trash});
    } else {
        context.warnOfRecords({Context::Record::journal});
    }
    return {};
}

}  // namespace ordovan::cli
