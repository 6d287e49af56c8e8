#include "OrdovanApp/screens/CommandAction.h"

#include "OrdovanApp/controller/CommandCenter.h"
#include "OrdovanApp/screens/CommandAvailability.h"
#include "OrdovanApp/screens/ContentView.h"

CommandAction::CommandAction(const AppContext& context, const ContentView& content, QStringView command,
                             const QString& text, const QList<QKeySequence>& shortcuts, QObject* parent)
    : QAction(text, parent), content_(content) {
    setObjectName(command.toString());
    setShortcuts(shortcuts);
    connect(this, &QAction::triggered, this, [&commands = context.commands, command] { commands.post(command); });
    connect(&content_, &ContentView::askingChanged, this, &CommandAction::refresh);
    CommandAvailability::watch(context.model, this, [this] { refresh(); });
    refresh();
}

void CommandAction::refresh() {
    const QString reason = content_.reasonAgainst(objectName());
    setEnabled(reason.isEmpty());
    setToolTip(reason);
    setStatusTip(reason);
}
