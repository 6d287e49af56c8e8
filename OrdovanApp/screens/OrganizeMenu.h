#pragma once

#include "OrdovanApp/screens/AppContext.h"

#include <QMenu>

class ContentView;

/// The menu "Organize": the commands that act on the chosen folder.
class OrganizeMenu : public QMenu {
    Q_OBJECT

public:
    /// `content` observes the commands; it lives at least as long as the menu is used.
    OrganizeMenu(const AppContext& context, const ContentView& content, QWidget* parent);
};
