#pragma once

#include "OrdovanApp/screens/TrashNotices.h"

#include <vector>

/// The lines above Duplicates: those about runs with the Trash, and one about files that a search could not read.
class DuplicatesNotices : public TrashNotices {
    Q_OBJECT

public:
    DuplicatesNotices(const AppContext& context, QWidget* parent);

    /// Tells how many files were left out, with their names to unfold, or takes that away when there are none. Files
    /// that it told of last are not told of again, also where that line was closed.
    void showUnread(const std::vector<Url>& files, const Url& root);

private:
    Banner* unread_;
    std::vector<Url> told_;
};
