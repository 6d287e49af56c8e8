#pragma once

#include "OrdovanApp/screens/AppContext.h"

#include <QAction>
#include <QKeySequence>
#include <QList>

class ContentView;

/// A menu item that posts a notification and does nothing else. While the command has nothing to act on it is disabled,
/// with the reason as its tool tip and in the status tip.
class CommandAction : public QAction {
    Q_OBJECT

public:
    /// `command`: one of `Commands`, which is its object name as well. `content` observes the commands; it lives at
    /// least as long as the item is used.
    CommandAction(const AppContext& context, const ContentView& content, QStringView command, const QString& text,
                  const QList<QKeySequence>& shortcuts, QObject* parent);

private:
    void refresh();

    const ContentView& content_;
};
