#pragma once

#include "OrdovanApp/theme/RowsView.h"
#include "OrdovanCore/Url.h"

#include <QScrollBar>

/// What a list of files looks like to its user: the current file and how far it is scrolled. Taken before its model is
/// filled anew, and given back after. `Model` is a `RowsModel` with `url(row)`.
template <class Model>
class ListSight {
public:
    ListSight(RowsView& list, const Model& model)
        : list_(list), model_(model), scroll_(list.verticalScrollBar()->value()) {
        if (list.currentIndex().isValid()) current_ = model.url(list.currentIndex().row());
    }

    void restore() const {
        for (int row = 0; !current_.path().empty() && row < model_.rowCount(); ++row) {
            if (model_.isHead(row) || model_.url(row) != current_) continue;
            list_.setCurrentIndex(model_.index(row));
            break;
        }
        list_.verticalScrollBar()->setValue(scroll_);
    }

private:
    RowsView& list_;
    const Model& model_;
    int scroll_;
    Url current_;
};
