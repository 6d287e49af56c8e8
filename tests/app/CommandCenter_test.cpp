#include "OrdovanApp/controller/CommandCenter.h"
#include "tests/support/QtTestMain.h"

#include <QStringList>

namespace {

TEST(CommandCenter, TellsEveryObserverTheNameThatWasPosted) {
    CommandCenter center;
    QStringList heard;
    QObject::connect(&center, &CommandCenter::posted, &center,
                     [&](const QString& name) { heard += QStringLiteral("a ") + name; });
    QObject::connect(&center, &CommandCenter::posted, &center,
                     [&](const QString& name) { heard += QStringLiteral("b ") + name; });
    center.post(Commands::organize);
    EXPECT_EQ(heard, (QStringList{QStringLiteral("a ordovanOrganize"), QStringLiteral("b ordovanOrganize")}));
}

TEST(CommandCenter, NamesItsNotifications) {
    EXPECT_EQ(Commands::chooseFolder, u"ordovanChooseFolder");
    EXPECT_EQ(Commands::previewFolder, u"ordovanPreviewFolder");
    EXPECT_EQ(Commands::organize, u"ordovanOrganize");
    EXPECT_EQ(Commands::undoOrganize, u"ordovanUndoOrganize");
    EXPECT_EQ(Commands::findDuplicates, u"ordovanFindDuplicates");
    EXPECT_EQ(Commands::exportPlan, u"ordovanExportPlan");
}

}  // namespace
