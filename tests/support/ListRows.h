#pragma once

#include "OrdovanApp/theme/RowsModel.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace ordovan::test {

/// A small list of rows for tests of views; counts how often a row's content was asked for.
class ListRows : public RowsModel {
public:
    struct Line {
        RowContent content;
        bool head = false;
    };

    explicit ListRows(std::vector<Line> lines = {}) { set(std::move(lines)); }

    static Line head(const QString& title) { return {.content = {.title = title}, .head = true}; }
    static Line tick(const QString& title, bool marked = true) {
        return {.content = {.mark = RowContent::Mark::tick, .marked = marked, .title = title}};
    }
    static Line radio(const QString& title, bool marked = false) {
        return {.content = {.mark = RowContent::Mark::radio, .marked = marked, .title = title}};
    }
    static Line plain(const QString& title, QList<RowAction> actions = {}) {
        return {.content = {.title = title, .actions = std::move(actions)}};
    }

    void set(std::vector<Line> lines) {
        beginResetModel();
        lines_ = std::move(lines);
        findHeads();
        endResetModel();
    }
    /// Tells that everything may be another.
    void reset() {
        beginResetModel();
        endResetModel();
    }
    void remove(int row) {
        beginRemoveRows({}, row, row);
        lines_.erase(lines_.begin() + row);
        findHeads();
        endRemoveRows();
    }
    void insert(int row, Line line) {
        beginInsertRows({}, row, row);
        lines_.insert(lines_.begin() + row, std::move(line));
        findHeads();
        endInsertRows();
    }

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override {
        return parent.isValid() ? 0 : static_cast<int>(lines_.size());
    }
    [[nodiscard]] std::span<const int> heads() const override { return heads_; }
    [[nodiscard]] RowContent content(int row) const override {
        ++contentCalls;
        return at(row).content;
    }
    [[nodiscard]] QString title(int row) const override { return at(row).content.title; }
    void toggle(int row) override {
        toggled.push_back(row);
        RowContent& content = lines_[static_cast<std::size_t>(row)].content;
        if (content.mark != RowContent::Mark::tick && content.mark != RowContent::Mark::radio) return;
        content.marked = !content.marked;
        Q_EMIT dataChanged(index(row), index(row), {Qt::CheckStateRole});
    }

    mutable int contentCalls = 0;
    std::vector<int> toggled;

private:
    [[nodiscard]] const Line& at(int row) const { return lines_[static_cast<std::size_t>(row)]; }
    void findHeads() {
        heads_.clear();
        for (int row = 0; row < rowCount(); ++row) {
            if (at(row).head) heads_.push_back(row);
        }
    }

    std::vector<Line> lines_;
    std::vector<int> heads_;
};

}  // namespace ordovan::test
