#include "OrdovanApp/screens/OrganizeMenu.h"

#include "OrdovanApp/controller/CommandCenter.h"
#include "OrdovanApp/screens/CommandAction.h"

#include <array>

using namespace Qt::StringLiterals;

namespace {

struct Command {
    QStringView name;
    const char* text;
    QKeyCombination shortcut;
};

const std::array<Command, 6> commands = {{
    {Commands::chooseFolder, QT_TRANSLATE_NOOP("OrganizeMenu", "Choose Folder…"), Qt::CTRL | Qt::Key_O},
    {Commands::previewFolder, QT_TRANSLATE_NOOP("OrganizeMenu", "Preview Downloads"), Qt::CTRL | Qt::Key_D},
    {Commands::organize, QT_TRANSLATE_NOOP("OrganizeMenu", "Organize Selected Files…"), Qt::CTRL | Qt::Key_S},
    {Commands::undoOrganize, QT_TRANSLATE_NOOP("OrganizeMenu", "Undo Organize"), Qt::CTRL | Qt::ALT | Qt::Key_Z},
    {Commands::findDuplicates, QT_TRANSLATE_NOOP("OrganizeMenu", "Find Duplicates"), Qt::CTRL | Qt::SHIFT | Qt::Key_D},
    {Commands::exportPlan, QT_TRANSLATE_NOOP("OrganizeMenu", "Export Plan…"), Qt::CTRL | Qt::SHIFT | Qt::Key_E},
}};

}  // namespace

OrganizeMenu::OrganizeMenu(const AppContext& context, const ContentView& content, QWidget* parent)
    : QMenu(tr("Organize"), parent) {
    setObjectName(u"menu-organize"_s);
    setAccessibleName(title());
    setToolTipsVisible(true);
    for (const Command& command : commands) {
        addAction(new CommandAction(context, content, command.name, tr(command.text), {command.shortcut}, this));
    }
}
