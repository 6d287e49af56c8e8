#pragma once

#include "OrdovanApp/theme/RowsModel.h"
#include "OrdovanCore/Rules.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string_view>
#include <vector>

class RuleStore;
class ThemeEnvironment;
class TidyViewModel;

/// The user's rules in their order, each with the number of files of the previewed folder that it would send to its
/// folder. Follows the store and the controller's plan.
class RulesModel : public RowsModel {
    Q_OBJECT

public:
    enum Action { deleteRule };

    /// All outlive it.
    RulesModel(TidyViewModel& model, RuleStore& store, const ThemeEnvironment& theme, QObject* parent = nullptr);

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] std::span<const int> heads() const override { return heads_; }
    [[nodiscard]] RowContent content(int row) const override;
    [[nodiscard]] QString title(int row) const override;

    /// Moves a row before another, as they are numbered now. `done` hears soon whether that could be stored.
    void move(int row, int before, std::function<void(bool isDone)> done);
    /// Deletes the rule of a row. `done` hears soon whether that could be stored.
    void remove(int row, std::function<void(bool isDone)> done);
    /// Files of the preview that a row's rule would take; nothing while the chosen folder has no preview.
    [[nodiscard]] std::optional<int> matches(int row) const;

    /// Whether a built-in category knows an extension, given as rules store it.
    [[nodiscard]] static bool isBuiltIn(std::string_view extension);

private:
    [[nodiscard]] static std::size_t position(int row) { return static_cast<std::size_t>(row) - 1; }
    void followRules();
    void countMatches();
    void followPlan();

    TidyViewModel& model_;
    RuleStore& store_;
    const ThemeEnvironment& theme_;
    std::vector<OrdovanRule> rules_;
    std::optional<std::vector<int>> matches_;  // nothing: there is no preview of the chosen folder
    std::vector<int> heads_;
};
