// That assistive technologies are told of every menu by the name of what opens it.

#include "OrdovanApp/screens/ContentView.h"
#include "OrdovanApp/screens/OrdovanWindow.h"
#include "OrdovanApp/screens/SectionScreens.h"
#include "tests/support/ScreenWorld.h"
#include "tests/support/WidgetTestMain.h"

#include <QAccessible>
#include <QMenu>

using namespace ordovan::test;
using namespace Qt::StringLiterals;

namespace {

class Menus : public ScreenWorld {
protected:
    void visitAll() {
        for (const Section section : Sections::allCases) window_.content().showSection(section);
        tasks.finish();
    }
    /// What the menus of the window are called, those that are closed as well.
    QStringList names() {
        QStringList result;
        for (QMenu* menu : window_.findChildren<QMenu*>())
            result += QAccessible::queryAccessibleInterface(menu)->text(QAccessible::Name);
        result.sort();
        result.removeDuplicates();
        return result;
    }

    OrdovanWindow window_{windowParts(), Sections::screens()};
};

TEST_F(Menus, OfAllSectionsAreCalledAsWhatOpensThem) {
    tree({"a.pdf = 1", "b.pdf = 1"});
    model->chooseFolder(Url::file("/r"));
    tasks.finish();
    visitAll();
    EXPECT_EQ(names(), (QStringList{u"Auto-pick the copy to keep"_s, u"File"_s, u"Help"_s, u"More"_s, u"Older than…"_s,
                                    u"Organize"_s, u"Pick a folder name"_s, u"Recent Folders"_s}));
}

}  // namespace
