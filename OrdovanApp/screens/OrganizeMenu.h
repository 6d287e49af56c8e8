#pragma once

#include "OrdovanApp/screens/AppContext.h"

#include <QMenu>
#include <QPointer>

/// The menu "Organize". Its items post notifications and do nothing else; one that has nothing to act on is disabled,
/// with the reason as its tool tip and in the status tip.
class OrganizeMenu : public QMenu {
    Q_OBJECT

public:
    OrganizeMenu(const AppContext& context, QWidget* parent);

private:
    void refresh();

    AppContext context_;
};
