#pragma once

#include "OrdovanApp/screens/SmartInboxView.h"
#include "tests/support/ScreenWorld.h"

namespace ordovan::test {

using namespace Qt::StringLiterals;

class SmartInbox : public SectionWorld<SmartInboxView> {
protected:
    /// Makes these the recent folders, newest first.
    void remember(const std::vector<Url>& folders) {
        std::vector<Url> known;
        for (auto folder = folders.rbegin(); folder != folders.rend(); ++folder) {
            known = recentFolders.add(*folder, known).folders;
        }
    }
    RowsView& list() { return *widget<RowsView>(u"planList"); }
    QStringList rows() { return titles(list()); }
    std::vector<std::string> ticked() { return lines(model->selectedProposals()); }
    QString summary() { return widget<QWidget>(u"summary")->accessibleName(); }
    Sheet* sheet() { return question(u"organizeSheet"); }
    void organize() {
        click(u"organize");
        click(sheet()->confirmButton());
    }
};

}  // namespace ordovan::test
