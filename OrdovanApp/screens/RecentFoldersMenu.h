#pragma once

#include "OrdovanApp/screens/AppContext.h"

#include <QMenu>

class ContentView;

/// The menu "Recent Folders": the folders that were previewed last, newest first. Each is previewed when it is chosen.
/// Where none can be chosen the whole menu is disabled, with the reason as its tool tip and in the status tip.
class RecentFoldersMenu : public QMenu {
    Q_OBJECT

public:
    /// `content` previews the folders; it lives at least as long as the menu is used.
    RecentFoldersMenu(const AppContext& context, ContentView& content, QWidget* parent);

private:
    void fill();
    void refresh();

    AppContext context_;
    ContentView& content_;
};
