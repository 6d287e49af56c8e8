#pragma once

#include "OrdovanApp/controller/PlanIndex.h"
#include "OrdovanApp/theme/RowsModel.h"
#include "OrdovanCore/Inventory.h"
#include "OrdovanCore/Planner.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

class ThemeEnvironment;
class TidyViewModel;

/// The rows of a plan: what is proposed, with tick boxes; what needs review, with its sentence; and what was skipped,
/// with its reason. Shows the controller's last plan, narrowed by a search and a folder, and follows its selection.
///
/// A row is made when it is asked for; a file costs some 80 bytes here. Ticking one takes constant time, a search one
/// pass over the folded names.
class PlanModel : public RowsModel {
    Q_OBJECT

public:
    enum Action { includeOrLeaveOut, reveal };
    /// One folder that files are sorted into.
    struct Folder {
        std::string name;
        int files = 0;  ///< proposals
        friend bool operator==(const Folder&, const Folder&) = default;
    };
    /// The counts of what is ticked.
    struct Ticked {
        int files = 0;
        qint64 bytes = 0;
        int hidden = 0;  ///< of the files, those that search or folder keep out of sight
        friend bool operator==(const Ticked&, const Ticked&) = default;
    };

    /// Both outlive it.
    PlanModel(TidyViewModel& model, const ThemeEnvironment& theme, QObject* parent = nullptr);

    /// Takes over the controller's plan and inventory. Search and folder stay as far as the folder is still there.
    /// Nothing happens, and the answer is false, where they are the ones that are shown.
    bool reload();

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] std::span<const int> heads() const override { return heads_; }
    [[nodiscard]] RowContent content(int row) const override;
    [[nodiscard]] QString title(int row) const override;
    void toggle(int row) override;
    void toggleRows(std::span<const int> rows) override;

    void setQuery(const QString& query);
    /// Narrows the list to one folder; nothing shows all. A folder that the plan does not have shows all as well.
    void setFolder(const std::optional<std::string>& name);
    [[nodiscard]] std::optional<std::string> folder() const;
    [[nodiscard]] bool isNarrowed() const { return folder_.has_value() || !query_.isEmpty(); }

    /// The folders of the proposals, the fullest first.
    [[nodiscard]] const std::vector<Folder>& folders() const { return folders_; }
    [[nodiscard]] int proposals() const;
    [[nodiscard]] int conflicts() const;
    /// Files and folders that are neither proposed nor in conflict.
    [[nodiscard]] int skipped() const;
    [[nodiscard]] const Ticked& ticked() const { return ticked_; }
    /// Whether a proposal is in sight, and whether all of those are ticked.
    [[nodiscard]] bool hasShownProposals() const { return shownProposals_ > 0; }
    [[nodiscard]] bool allShownTicked() const { return shownTicked_ == shownProposals_; }

    /// Ticks or unticks every proposal in sight.
    void tickShown(bool ticked);

    /// Keeps ticks as they are, with the reason as the tool tip of every row; empty lets them change.
    void setLocked(const QString& reason);

    /// What a row is about; an empty URL for a head.
    [[nodiscard]] Url url(int row) const;
    /// The rows of these paths, ascending; paths that are not in sight have none.
    [[nodiscard]] std::vector<int> rowsOf(std::span<const std::string> paths) const;

Q_SIGNALS:
    /// What `ticked` says, or whether all in sight are ticked, may have changed.
    void tickedChanged();

private:
    enum class Group { proposed, review, skipped };
    static constexpr std::uint32_t nowhere = PlanIndex::nowhere;

    void indexFolders();
    void sortFolders();
    void narrow();
    void readTicks();
    void countTicks();
    void countShown();
    void followExclusions();
    void setTicks(std::span<const std::uint32_t> items, bool ticked);

    [[nodiscard]] Group groupOf(std::uint32_t item) const;
    [[nodiscard]] const Url& source(std::uint32_t item) const;
    [[nodiscard]] const OrdovanInventoryEntry* entry(std::uint32_t item) const;
    /// What a row shows; nothing for a head.
    [[nodiscard]] std::optional<std::uint32_t> itemAt(int row) const;
    [[nodiscard]] QString goal(const Url& destination) const;

    [[nodiscard]] RowContent head(int row) const;
    [[nodiscard]] RowContent proposal(std::uint32_t item) const;
    [[nodiscard]] RowContent conflict(std::uint32_t item) const;
    [[nodiscard]] RowContent skip(std::uint32_t item) const;
    void addFacts(RowContent& content, std::uint32_t item) const;

    TidyViewModel& model_;
    const ThemeEnvironment& theme_;
    std::shared_ptr<const OrdovanPlanResult> plan_;
    std::shared_ptr<const OrdovanInventory> inventory_;
    Url root_;

    // Items are numbered through: the proposals, the conflicts, the skips, each in plan order.
    std::shared_ptr<const PlanIndex> index_ = std::make_shared<const PlanIndex>();
    std::vector<Folder> folders_;
    std::vector<std::uint32_t> folderOf_;  // of each proposal and conflict: its place in `folders_`, or `nowhere`
    std::vector<bool> ticks_;              // of each proposal

    QString query_;
    std::optional<std::uint32_t> folder_;  // its place in `folders_`
    std::vector<std::uint32_t> shown_;     // items in order, without heads
    std::vector<int> heads_;
    std::vector<Group> headGroups_;
    int shownProposals_ = 0;
    int shownTicked_ = 0;
    Ticked ticked_;
    bool ownChange_ = false;
    QString locked_;
};
