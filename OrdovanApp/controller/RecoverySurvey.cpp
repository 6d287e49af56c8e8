#include "OrdovanApp/controller/RecoverySurvey.h"

#include "OrdovanApp/stores/StorageLocations.h"
#include "OrdovanCore/Categories.h"
#include "OrdovanCore/ExecutionScope.h"
#include "OrdovanCore/Proposals.h"
#include "OrdovanCore/TrashMove.h"
#include "OrdovanCore/TrashPlace.h"

#include <algorithm>
#include <array>
#include <ranges>
#include <string>
#include <string_view>

namespace ordovan {
namespace {

using State = RecoverySurvey::State;

/// The places of one folder that its files are moved between.
class Places {
public:
    Places(const Url& folder, OrdovanFileSystem& fs)
        : fs_(fs),
          root_(OrdovanProposalPlanner::canonicalPath(folder)),
          organized_{ExecutionScope(folder, folder.appending(OrdovanOutput::folderName)),
                     ExecutionScope(folder, folder.appending(olderOutputFolderName))},
          trashed_(folder) {}

    [[nodiscard]] State of(const OrdovanJournalEntry& entry) const {
        const Url source = Url::file(entry.source());
        const Url destination = Url::file(entry.destination());
        const bool isInScope = std::ranges::any_of(organized_, [&](const ExecutionScope& scope) {
            return scope.holds(source, destination, fs_) && !scope.crossesLink(source, destination, fs_);
        });
        return isInScope ? presence(destination) : State::refused;
    }

    [[nodiscard]] State of(const OrdovanTrashEntry& entry) const {
        const Url original = Url::file(entry.original());
        const Url trashed = Url::file(entry.trashed());
        if (!OrdovanProposalPlanner::containsCanonical(OrdovanProposalPlanner::canonicalPath(original), root_)) {
            return State::elsewhere;
        }
        const bool isInScope = namesOnePlace(trashed) && isInTrash(trashed.path()) && trashed_.holds(original, fs_);
        return isInScope ? presence(trashed) : State::refused;
    }

private:
    [[nodiscard]] State presence(const Url& file) const {
        return fs_.isRegularFile(file) ? State::present : State::missing;
    }

    OrdovanFileSystem& fs_;
    std::string root_;
    std::array<ExecutionScope, 2> organized_;
    TrashScope trashed_;
};

}  // namespace

std::size_t RecoverySurvey::recoverable() const {
    return static_cast<std::size_t>(std::ranges::count(organized, State::present) +
                                    std::ranges::count(trashed, State::present));
}

SearchIndex RecoverySurvey::namesOf(const std::optional<Url>& folder, const OrdovanJournal* journal,
                                    const OrdovanTrashRecord& trash) {
    SearchIndex names;
    names.reset((journal != nullptr ? journal->entries.size() : 0) + trash.entries.size());
    // What the folder's own path holds would find every file.
    const std::string root = folder ? std::string(folder->path()) + '/' : std::string();
    const auto add = [&](std::string_view path) {
        if (path.starts_with(root)) path.remove_prefix(root.size());
        names.add(path);
    };
    if (journal != nullptr) {
        for (const OrdovanJournalEntry& entry : std::views::reverse(journal->entries)) add(entry.destination());
    }
    for (const OrdovanTrashEntry& entry : std::views::reverse(trash.entries)) add(entry.original());
    return names;
}

RecoverySurvey RecoverySurvey::of(const std::optional<Url>& folder, std::shared_ptr<const OrdovanJournal> journal,
                                  std::shared_ptr<const OrdovanTrashRecord> trash, OrdovanFileSystem& fs) {
    RecoverySurvey survey = {
        .journal = std::move(journal), .trash = std::move(trash), .organized = {}, .trashed = {}, .names = {}};
    if (!folder) {
        if (survey.journal) survey.organized.assign(survey.journal->entries.size(), State::elsewhere);
        survey.trashed.assign(survey.trash->entries.size(), State::elsewhere);
        return survey;
    }
    const Places places(*folder, fs);
    const auto state = [&](const auto& entry) { return places.of(entry); };
    if (survey.journal) std::ranges::transform(survey.journal->entries, std::back_inserter(survey.organized), state);
    std::ranges::transform(survey.trash->entries, std::back_inserter(survey.trashed), state);
    return survey;
}

}  // namespace ordovan
