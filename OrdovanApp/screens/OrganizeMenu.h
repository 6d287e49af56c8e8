#pragma once

#include "OrdovanApp/screens/AppContext.h"

#include <QMenu>

class ContentView;

/// The menu "Organize". Its items post notifications and do nothing else; one that has nothing to act on is disabled,
/// with the reason as its tool tip and in the status tip.
class OrganizeMenu : public QMenu {
    Q_OBJECT

public:
    /// `content` observes the commands; it lives at least as long as the menu is used.
    OrganizeMenu(const AppContext& context, const ContentView& content, QWidget* parent);

private:
    void refresh();

    AppContext context_;
    const ContentView& content_;
};
