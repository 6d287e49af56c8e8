#pragma once

#include "OrdovanApp/theme/Glyph.h"

#include <QAbstractListModel>
#include <QColor>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>
#include <span>

/// Something that can be done with one row: a button on it, an item of its context menu, a child to assistive
/// technologies.
struct RowAction {
    int id = 0;
    QString text{};
    QString help{};
    std::optional<Glyph> glyph{};
    bool enabled = true;
    bool menuOnly = false;    ///< in the context menu alone
    bool glyphOnly = false;   ///< drawn as its glyph, with the text as its accessible name
    bool activates = true;    ///< Return and a double click may trigger it; false for what is not lightly done
    bool returnOnly = false;  ///< of these two, only Return: for what moves files without a question
    friend bool operator==(const RowAction&, const RowAction&) = default;
};

/// What a row shows. Made when the row is drawn or asked for, never stored for all rows.
struct RowContent {
    enum class Mark { none, tick, radio, warning, grip };
    struct Chip {
        QString text{};
        QColor color{};  ///< of the text, the surface goes with it; none: quiet text without a surface
        friend bool operator==(const Chip&, const Chip&) = default;
    };

    Mark mark = Mark::none;
    bool marked = false;           ///< ticked or chosen
    bool enabled = true;           ///< false where its mark can not be changed now
    bool dimmed = false;           ///< quieter than its neighbors, still readable
    std::optional<Glyph> glyph{};  ///< the kind icon, on a surface of its color; on a head a plain small icon
    QColor glyphColor{};
    QString title{};     ///< also the accessible name
    QString detail{};    ///< second line; on a head what stands on its right
    QString count{};     ///< on a head: quietly behind the title
    QList<Chip> tags{};  ///< small pills before the title
    std::optional<Chip> chip{};
    QStringList columns{};  ///< on the right, aligned right, one a column of the view
    double share = 0;       ///< 0 to 1: the bar behind the row; the first column is what it measures
    QString toolTip{};
    QString markHelp{};     ///< the tool tip of the mark; none: that of the row
    QString description{};  ///< what assistive technologies say besides the title
    QList<RowAction> actions{};
};

/// A list of rows under heads, for a `RowsView`. On the main thread.
class RowsModel : public QAbstractListModel {
    Q_OBJECT

public:
    enum Role { HeadRole = Qt::UserRole + 1, FirstFreeRole };

    using QAbstractListModel::QAbstractListModel;

    /// The rows that are heads, ascending; empty where the list has no groups. Constant time. Holds until the model
    /// says that its rows change.
    [[nodiscard]] virtual std::span<const int> heads() const = 0;
    [[nodiscard]] virtual RowContent content(int row) const = 0;
    /// The title in `content(row)`; for the search by typing, which may ask for all of them.
    [[nodiscard]] virtual QString title(int row) const { return content(row).title; }
    /// Ticks or chooses a row, as a click on its mark or Space does. Rows without a mark ignore it.
    virtual void toggle(int row) { Q_UNUSED(row) }

    /// Ticks those of these rows that can be; unticks them where all of those are ticked. As Space does where several
    /// rows are selected.
    virtual void toggleRows(std::span<const int> rows);

    [[nodiscard]] bool isHead(int row) const;

    /// From `content`: the title, the tick, the tool tip and the accessible texts.
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    /// Heads are enabled, rows selectable as well.
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;
    /// For `Qt::DisplayRole` by titles, over heads; otherwise as any model does.
    [[nodiscard]] QModelIndexList match(const QModelIndex& start, int role, const QVariant& value, int hits,
                                        Qt::MatchFlags flags) const override;
};
