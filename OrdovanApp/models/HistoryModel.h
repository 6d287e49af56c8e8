#pragma once

#include "OrdovanApp/theme/RowsModel.h"
#include "OrdovanCore/RunHistory.h"

#include <functional>
#include <optional>
#include <vector>

class ThemeEnvironment;
class TidyViewModel;

/// The runs of the history, newest first, under a head for each local day. Follows the controller.
class HistoryModel : public RowsModel {
    Q_OBJECT

public:
    /// Both outlive it. `now` gives seconds since 1970-01-01 UTC; empty: the system's clock.
    HistoryModel(TidyViewModel& model, const ThemeEnvironment& theme, std::function<double()> now = {},
                 QObject* parent = nullptr);

    /// Shows runs of one kind; nothing shows all.
    void setKind(std::optional<OrdovanRunRecord::Kind> kind);
    /// Groups by days anew: at midnight today becomes yesterday.
    void reload();

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] std::span<const int> heads() const override { return heads_; }
    [[nodiscard]] RowContent content(int row) const override;
    [[nodiscard]] QString title(int row) const override;

    /// Whether there is no run at all, whatever is filtered.
    [[nodiscard]] bool isEmpty() const { return runs_.records.empty(); }

private:
    [[nodiscard]] QString dayName(double epoch) const;

    TidyViewModel& model_;
    const ThemeEnvironment& theme_;
    const std::function<double()> now_;
    OrdovanRunHistory runs_;
    std::optional<OrdovanRunRecord::Kind> kind_;
    double today_ = 0;
    struct Line {
        std::size_t record;
        bool head;
    };
    std::vector<Line> lines_;
    std::vector<int> heads_;
};
