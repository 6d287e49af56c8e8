#include "OrdovanApp/screens/RecentFoldersMenu.h"

#include "OrdovanApp/controller/CommandCenter.h"
#include "OrdovanApp/controller/TidyViewModel.h"
#include "OrdovanApp/models/Formats.h"
#include "OrdovanApp/screens/CommandAvailability.h"
#include "OrdovanApp/screens/ContentView.h"
#include "OrdovanApp/theme/ToolTips.h"

#include <QAction>

using namespace Qt::StringLiterals;

RecentFoldersMenu::RecentFoldersMenu(const AppContext& context, ContentView& content, QWidget* parent)
    : QMenu(tr("Recent Folders"), parent), context_(context), content_(content) {
    setObjectName(u"menu-recent"_s);
    setAccessibleName(title());
    setToolTipsVisible(true);
    connect(&context_.model, &TidyViewModel::recentFoldersChanged, this, &RecentFoldersMenu::fill);
    connect(&content_, &ContentView::askingChanged, this, &RecentFoldersMenu::refresh);
    CommandAvailability::watch(context_.model, this, [this] { refresh(); });
    fill();
}

void RecentFoldersMenu::fill() {
    clear();
    for (const Url& folder : context_.model.recentFolders()) {
        QAction* action = addAction(Formats::fileName(folder).replace(u'&', u"&&"_s));
        action->setToolTip(ToolTips::plain(Formats::path(folder)));
        connect(action, &QAction::triggered, this, [this, folder] { content_.previewFolder(folder); });
    }
    refresh();
}

void RecentFoldersMenu::refresh() {
    QString reason = content_.reasonAgainst(Commands::chooseFolder);
    if (reason.isEmpty() && isEmpty()) reason = tr("No folder was previewed yet.");
    menuAction()->setEnabled(reason.isEmpty());
    menuAction()->setToolTip(reason);
    menuAction()->setStatusTip(reason);
    // Disabling the menu leaves its items enabled for whoever asks them.
    const auto all = actions();
    for (QAction* action : all) action->setEnabled(reason.isEmpty());
}
