#pragma once

#include <QPoint>
#include <QRect>

#include <span>
#include <vector>

/// Where the rows of a `RowsView` lie, in content coordinates: those of the viewport when it is scrolled to the top.
///
/// Rows stand in groups, each begun by its head; rows before the first head are a group without one. Everything is
/// found by binary search; of cards one number is kept for each line of them.
class RowsGeometry {
public:
    struct Metrics {
        int width = 0;
        int rowHeight = 54;
        int headHeight = 36;
        bool cards = false;
        int gap = 12;                ///< between cards
        int minimumCardWidth = 440;  ///< as many columns as leave a card this wide
        int maximumColumns = 4;
        bool headsOutside = false;  ///< a card's head stands above it
        friend bool operator==(const Metrics&, const Metrics&) = default;
    };
    struct Range {
        int begin = 0;
        int end = 0;
        friend bool operator==(const Range&, const Range&) = default;
    };

    /// `heads` is kept: it must hold until the next call.
    void set(std::span<const int> heads, int rowCount, const Metrics& metrics);

    [[nodiscard]] int height() const;
    [[nodiscard]] int rowCount() const { return rowCount_; }
    [[nodiscard]] int columns() const { return columns_; }
    [[nodiscard]] QRect rowRect(int row) const;
    /// The row at a point, or -1.
    [[nodiscard]] int rowAt(const QPoint& point) const;

    [[nodiscard]] int groupCount() const;
    [[nodiscard]] int groupOf(int row) const;
    /// The rows of a group with its head.
    [[nodiscard]] Range rowsOf(int group) const;
    [[nodiscard]] bool hasHead(int group) const { return !leading_ || group > 0; }
    /// What is drawn as one card: a group, without its head where that stands outside.
    [[nodiscard]] QRect cardRect(int group) const;

    /// The groups of which something lies between two heights.
    [[nodiscard]] Range groupsIn(int top, int bottom) const;
    /// The rows of a group of which something lies between two heights; its head is not left out.
    [[nodiscard]] Range rowsIn(int group, int top, int bottom) const;

private:
    [[nodiscard]] int topOf(int group) const;
    [[nodiscard]] int heightOf(int group) const;
    [[nodiscard]] int edge() const { return metrics_.cards ? 1 : 0; }

    std::span<const int> heads_;
    int rowCount_ = 0;
    Metrics metrics_;
    bool leading_ = false;  // the first group has no head
    int columns_ = 1;
    std::vector<int> lineTops_;  // of cards, and where a further line would begin
};
