#pragma once

#include "OrdovanApp/theme/RowsModel.h"
#include "OrdovanCore/Categories.h"

#include <optional>
#include <string_view>
#include <vector>

class ThemeEnvironment;

/// The extensions that the built-in categories know, under a head for each category.
class BuiltInTypesModel : public RowsModel {
    Q_OBJECT

public:
    /// `theme` outlives it.
    explicit BuiltInTypesModel(const ThemeEnvironment& theme, QObject* parent = nullptr);

    /// Shows the extensions that contain what is typed; where there are none, those of the categories whose names do.
    /// Upper and lower case make no difference, and a leading dot is none of an extension's letters.
    void setQuery(const QString& query);

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] std::span<const int> heads() const override { return heads_; }
    [[nodiscard]] RowContent content(int row) const override;
    [[nodiscard]] QString title(int row) const override;

    /// The names of the built-in folders.
    [[nodiscard]] static QStringList folders();
    /// The extensions in text typed for a rule that no category knows, as ".abc, .def", empty where there are none.
    /// Nothing for text that makes no rule.
    [[nodiscard]] static std::optional<QString> unknownIn(const QString& typed);

private:
    struct Line {
        OrdovanFileCategory category;
        std::string_view extension;  ///< empty: the head
    };

    void narrow();
    void collect(bool byName);

    const ThemeEnvironment& theme_;
    QString query_;
    std::vector<Line> lines_;
    std::vector<int> heads_;
};
