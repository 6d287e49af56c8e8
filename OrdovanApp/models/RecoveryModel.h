#pragma once

#include "OrdovanApp/controller/RecoverySurvey.h"
#include "OrdovanApp/controller/SearchIndex.h"
#include "OrdovanApp/theme/RowsModel.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class ThemeEnvironment;
class TidyViewModel;

/// What can be taken back: the organized files of the chosen folder, and the files in the Trash, the latest first.
/// Follows the controller's records. Whether a file is still there is found out in the background. Until that is known
/// its row puts nothing back; what is known of a file is kept while its entry stays in the record.
class RecoveryModel : public RowsModel {
    Q_OBJECT

public:
    enum Action { putBack, putBackFromTrash, showInTrash, reveal };

    /// Both outlive it.
    RecoveryModel(TidyViewModel& model, const ThemeEnvironment& theme, QObject* parent = nullptr);

    /// Looks again whether the files are there.
    void survey();
    void setQuery(const QString& query);
    /// Disables what puts files back, with the reason as its help; empty enables it.
    void setLocked(const QString& reason);
    /// Shows the buttons of rows as their glyphs alone, where there is little room.
    void setCompact(bool compact);

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] std::span<const int> heads() const override { return heads_; }
    [[nodiscard]] RowContent content(int row) const override;
    [[nodiscard]] QString title(int row) const override;

    /// Whether there is nothing at all to recover, whatever is searched for.
    [[nodiscard]] bool isEmpty() const { return organized() == 0 && trashed() == 0; }
    /// How many can go back, with those of which nothing is known yet.
    [[nodiscard]] int recoverableOrganized() const { return recoverableOrganized_; }
    [[nodiscard]] int recoverableTrashed() const { return recoverableTrashed_; }
    /// How many files in the Trash came from other folders than the chosen one, as far as is known.
    [[nodiscard]] int elsewhere() const { return elsewhere_; }
    /// Whether it is known of every file whether it is still there.
    [[nodiscard]] bool isSurveyed() const { return unknown_ == 0; }

    /// What undo and restore of the controller call a row's entry; empty for a head.
    [[nodiscard]] std::string entryID(int row) const;
    /// Whether the records have an entry, shown or not.
    [[nodiscard]] bool holds(std::string_view entryID) const;
    /// Where the file of a row lies now, as the record says; an empty URL for a head.
    [[nodiscard]] Url url(int row) const;

Q_SIGNALS:
    /// `isEmpty` or one of the counts may have changed.
    void countsChanged();

private:
    using State = ordovan::RecoverySurvey::State;
    /// Of each entry, in the record's order; nothing where it is not known yet.
    using States = std::vector<std::optional<State>>;

    void reload();
    /// Shows what the query finds. Where the names are not known yet, that is what is shown already.
    void narrow();
    [[nodiscard]] bool isNarrowed() const { return !query_.trimmed().isEmpty(); }
    void count();
    void adopt(ordovan::RecoverySurvey survey);
    [[nodiscard]] std::uint32_t organized() const;
    [[nodiscard]] std::uint32_t trashed() const;
    [[nodiscard]] bool isOrganizedHead(int row) const { return row == 0 && shownOrganized_ > 0; }
    /// The entry of a row that is no head: organized ones first, then trashed ones, each the latest first.
    [[nodiscard]] std::uint32_t itemAt(int row) const;
    [[nodiscard]] const OrdovanJournalEntry& organizedEntry(std::uint32_t item) const;
    [[nodiscard]] const OrdovanTrashEntry& trashedEntry(std::uint32_t item) const;
    [[nodiscard]] std::optional<State> stateOf(std::uint32_t item) const;
    /// Why a file in this state, as its row's detail tells it, can not be got hold of; empty where it can.
    [[nodiscard]] static QString reasonAgainst(std::optional<State> state, const QString& detail);
    [[nodiscard]] QString putBackHelp(const QString& reason) const;
    [[nodiscard]] QString folderBelowRoot(std::string_view file) const;

    [[nodiscard]] QString headTitle(int row) const;
    [[nodiscard]] RowContent organizedRow(std::uint32_t item) const;
    [[nodiscard]] RowContent trashedRow(std::uint32_t item) const;
    [[nodiscard]] RowContent row(std::string_view path, std::int64_t bytes, std::optional<State> state) const;

    TidyViewModel& model_;
    const ThemeEnvironment& theme_;
    std::shared_ptr<const OrdovanJournal> journal_;
    std::shared_ptr<const OrdovanTrashRecord> trash_ = std::make_shared<const OrdovanTrashRecord>();
    Url root_;
    States organizedStates_;
    States trashedStates_;
    int recoverableOrganized_ = 0;
    int recoverableTrashed_ = 0;
    int elsewhere_ = 0;
    int unknown_ = 0;
    std::optional<SearchIndex> names_;  // nothing: not known yet
    QString query_;
    QString locked_;
    bool compact_ = false;
    std::vector<std::uint32_t> shown_;
    int shownOrganized_ = 0;
    std::vector<int> heads_;
    std::uint64_t surveys_ = 0;
};
