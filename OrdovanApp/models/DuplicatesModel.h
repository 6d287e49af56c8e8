#pragma once

#include "OrdovanApp/controller/SearchIndex.h"
#include "OrdovanApp/theme/RowsModel.h"
#include "OrdovanCore/Duplicates.h"
#include "OrdovanCore/Inventory.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <unordered_map>
#include <vector>

class ThemeEnvironment;
class TidyViewModel;

/// The copies that the search for duplicates found: a card for each group, headed by its count and size, and in it a
/// row for each copy, of which one is kept. Choosing a row keeps it. Shows the controller's report and follows its
/// keepers.
class DuplicatesModel : public RowsModel {
    Q_OBJECT

public:
    enum Action { keepInstead, reveal };

    /// Both outlive it.
    DuplicatesModel(TidyViewModel& model, const ThemeEnvironment& theme, QObject* parent = nullptr);

    /// Takes over the controller's report and inventory; the search stays.
    void reload();
    /// Shows the groups with a copy that the query finds, each with all of its copies.
    void setQuery(const QString& query);
    /// Keeps the choice as it is, with the reason as the tool tip of every row; empty lets it change.
    void setLocked(const QString& reason);

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] std::span<const int> heads() const override { return heads_; }
    [[nodiscard]] RowContent content(int row) const override;
    [[nodiscard]] QString title(int row) const override;
    /// Keeps this copy.
    void toggle(int row) override;

    /// Of the whole report, whatever is searched for.
    [[nodiscard]] int groups() const;
    [[nodiscard]] qint64 extras() const;
    /// Of the extras, those in groups that the search keeps out of sight.
    [[nodiscard]] qint64 hiddenExtras() const;
    [[nodiscard]] qint64 reclaimableBytes() const;
    /// The file of a row; an empty URL for a head.
    [[nodiscard]] Url url(int row) const;

private:
    struct Place {
        const OrdovanDuplicateGroup& group;
        std::optional<std::size_t> file;  ///< nothing for the head
    };
    [[nodiscard]] Place placeOf(int row) const;
    [[nodiscard]] RowContent head(const OrdovanDuplicateGroup& group) const;
    [[nodiscard]] QString headTitle(const OrdovanDuplicateGroup& group) const;
    void indexNames();
    void narrow();
    void followKeepers();

    TidyViewModel& model_;
    const ThemeEnvironment& theme_;
    std::shared_ptr<const OrdovanDuplicateReport> report_;
    std::shared_ptr<const OrdovanInventory> inventory_;
    Url root_;
    std::unordered_map<std::string_view, double> modified_;  // by path; the texts are the inventory's
    SearchIndex names_;                                      // of every file of every group
    std::vector<std::uint32_t> groupOf_;                     // of each of these
    QString query_;
    QString locked_;
    std::vector<std::uint32_t> shown_;  // groups
    std::vector<int> heads_;            // a row for each of them
    int rows_ = 0;
};
