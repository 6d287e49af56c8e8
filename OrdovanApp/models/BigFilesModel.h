#pragma once

#include "OrdovanApp/controller/SearchIndex.h"
#include "OrdovanApp/theme/RowsModel.h"
#include "OrdovanCore/Categories.h"
#include "OrdovanCore/FileTrasher.h"
#include "OrdovanCore/Inventory.h"

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

class ThemeEnvironment;
class TidyViewModel;

/// The largest of the previewed files, biggest first, narrowed by size, kind and a search. What is ticked stays so
/// through filters and previews, as long as the file is among the largest.
class BigFilesModel : public RowsModel {
    Q_OBJECT

public:
    /// How many files are shown at most: as many as can be looked through.
    static constexpr std::int64_t limit = 50;
    enum Action { quickLook, reveal, selectForTrash };
    struct Ticked {
        int files = 0;
        qint64 bytes = 0;
        int hidden = 0;  ///< of the files, those that a filter keeps out of sight
        friend bool operator==(const Ticked&, const Ticked&) = default;
    };

    /// Both outlive it.
    BigFilesModel(TidyViewModel& model, const ThemeEnvironment& theme, QObject* parent = nullptr);

    /// Takes the largest files of the controller's preview.
    void reload();
    /// The smallest size shown, in bytes; 0 for any.
    void setMinimumBytes(std::int64_t bytes);
    void setKind(std::optional<OrdovanFileCategory> kind);
    void setQuery(const QString& query);
    /// Keeps ticks as they are, with the reason as the tool tip of every row; empty lets them change.
    void setLocked(const QString& reason);

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] std::span<const int> heads() const override { return heads_; }
    [[nodiscard]] RowContent content(int row) const override;
    [[nodiscard]] QString title(int row) const override;
    void toggle(int row) override;

    /// The kinds among the largest files of the chosen size, in the order of categories.
    [[nodiscard]] std::vector<OrdovanFileCategory> kinds() const;
    /// The largest files whatever is filtered, and their bytes.
    struct Total {
        int files = 0;
        qint64 bytes = 0;
    };
    [[nodiscard]] Total total() const;
    /// Whether installers are among the largest files, whatever is filtered.
    [[nodiscard]] bool hasInstallers() const;
    /// Whether there is any file of the chosen size, whatever its kind or name.
    [[nodiscard]] bool hasFilesOfSize() const { return !largest_.empty(); }
    [[nodiscard]] Ticked ticked() const;
    /// The ticked files, biggest first.
    [[nodiscard]] std::vector<OrdovanFileTrasher::Item> tickedItems() const;
    /// The file of a row; an empty URL for the head.
    [[nodiscard]] Url url(int row) const;

Q_SIGNALS:
    void tickedChanged();

private:
    void collect();
    void narrow();
    template <class Change>
    void refilter(Change change);
    [[nodiscard]] const OrdovanInventoryEntry& entry(int row) const;
    void allChanged();

    TidyViewModel& model_;
    const ThemeEnvironment& theme_;
    Url root_;
    std::vector<OrdovanInventoryEntry> all_;      // the largest of any size
    std::vector<OrdovanInventoryEntry> largest_;  // of the chosen size
    SearchIndex names_;                           // of `largest_`
    std::int64_t minimum_ = 0;
    std::optional<OrdovanFileCategory> kind_;
    QString query_;
    QString locked_;
    std::unordered_set<std::string> ticks_;  // paths
    std::vector<std::uint32_t> shown_;       // of `largest_`
    std::vector<int> heads_;
};
