#include "OrdovanApp/theme/RowsModel.h"

#include <algorithm>
#include <vector>

bool RowsModel::isHead(int row) const {
    return std::ranges::binary_search(heads(), row);
}

void RowsModel::toggleRows(std::span<const int> rows) {
    std::vector<int> ticked, unticked;
    for (const int row : rows) {
        const RowContent shown = content(row);
        if (shown.mark == RowContent::Mark::tick) (shown.marked ? ticked : unticked).push_back(row);
    }
    for (const int row : unticked.empty() ? ticked : unticked) toggle(row);
}

QVariant RowsModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount()) return {};
    const int row = index.row();
    switch (role) {
        case HeadRole:
            return isHead(row);
        case Qt::DisplayRole:
        case Qt::AccessibleTextRole:
            return title(row);
        case Qt::ToolTipRole:
            return content(row).toolTip;
        case Qt::AccessibleDescriptionRole:
            return content(row).description;
        case Qt::CheckStateRole: {
            const RowContent shown = content(row);
            if (shown.mark != RowContent::Mark::tick && shown.mark != RowContent::Mark::radio) return {};
            return shown.marked ? Qt::Checked : Qt::Unchecked;
        }
        default:
            return {};
    }
}

bool RowsModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (role != Qt::CheckStateRole) return false;
    const QVariant state = data(index, Qt::CheckStateRole);
    if (!state.isValid()) return false;
    if (state.toInt() != value.toInt()) toggle(index.row());
    return true;
}

Qt::ItemFlags RowsModel::flags(const QModelIndex& index) const {
    if (!index.isValid() || index.row() >= rowCount()) return Qt::NoItemFlags;
    const Qt::ItemFlags head = Qt::ItemIsEnabled | Qt::ItemNeverHasChildren;
    return isHead(index.row()) ? head : head | Qt::ItemIsSelectable;
}

QModelIndexList RowsModel::match(const QModelIndex& start, int role, const QVariant& value, int hits,
                                 Qt::MatchFlags flags) const {
    if (role != Qt::DisplayRole || (flags & Qt::MatchTypeMask) != Qt::MatchStartsWith) {
        return QAbstractListModel::match(start, role, value, hits, flags);
    }
    const QString wanted = value.toString();
    const auto sensitivity = flags.testFlag(Qt::MatchCaseSensitive) ? Qt::CaseSensitive : Qt::CaseInsensitive;
    const int count = rowCount();
    const int first = std::max(0, start.row());
    const int end = flags.testFlag(Qt::MatchWrap) ? first + count : count;
    QModelIndexList found;
    for (int i = first; i < end && (hits < 0 || found.size() < hits); ++i) {
        const int row = i % count;
        if (!isHead(row) && title(row).startsWith(wanted, sensitivity)) found.append(index(row));
    }
    return found;
}
