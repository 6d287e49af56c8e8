#pragma once

#include "OrdovanApp/screens/AppContext.h"

#include <QWidget>

/// The inbox before a folder is chosen: what will happen, a place to drop a folder, and the recent folders.
class SmartInboxWelcome : public QWidget {
    Q_OBJECT

public:
    SmartInboxWelcome(const AppContext& context, QWidget* parent);

private:
    class Recent;

    AppContext context_;
};
