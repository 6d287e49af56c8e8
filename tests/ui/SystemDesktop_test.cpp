#include "OrdovanApp/screens/SystemDesktop.h"

#include "tests/support/TempFolder.h"
#include "tests/support/WidgetTestMain.h"

#include <QFileDialog>
#include <QLineEdit>

namespace {

using namespace Qt::StringLiterals;
using ordovan::test::TempFolder;
using Format = OrdovanPlanExportFormat;

const QString markdown = u"Markdown (*.md)"_s;
const QString csv = u"CSV (*.csv)"_s;

TEST(PlanFile, TakesItsFormatFromItsExtension) {
    EXPECT_EQ(PlanFile::format(u"/x/plan.csv", markdown), Format::csv);
    EXPECT_EQ(PlanFile::format(u"/x/plan.MD", csv), Format::markdown);
}

TEST(PlanFile, TakesItsFormatFromTheFilterWithoutOneOfTheTwoExtensions) {
    EXPECT_EQ(PlanFile::format(u"/x/plan", csv), Format::csv);
    EXPECT_EQ(PlanFile::format(u"/x/plan.txt", markdown), Format::markdown);
    EXPECT_EQ(PlanFile::format(u"/x.csv/plan", markdown), Format::markdown);
}

TEST(PlanFile, IsNamedAfterTheChosenFilter) {
    EXPECT_EQ(PlanFile::named(u"plan – my.folder"_s, markdown), u"plan – my.folder.md"_s);
    EXPECT_EQ(PlanFile::named(u"plan.md"_s, csv), u"plan.csv"_s);
    EXPECT_EQ(PlanFile::named(u"plan.csv"_s, csv), u"plan.csv"_s);
}

class SystemDesktops : public ::testing::Test {
protected:
    static QFileDialog* dialog(QWidget& parent) { return parent.findChild<QFileDialog*>(); }

    TempFolder folder;
    QString path = QString::fromStdString(folder.path());
    SystemDesktop desktop{[this] { return std::optional(Url::file(folder.path())); }};
    QWidget parent;
};

TEST_F(SystemDesktops, ChoosesAFolderFromTheCurrentOneOn) {
    std::optional<Url> chosen;
    desktop.chooseFolder(&parent, [&](const Url& url) { chosen = url; });
    ASSERT_NE(dialog(parent), nullptr);
    EXPECT_EQ(dialog(parent)->fileMode(), QFileDialog::Directory);
    EXPECT_EQ(dialog(parent)->directory().absolutePath(), path);
    Q_EMIT dialog(parent)->fileSelected(path);
    EXPECT_EQ(chosen, Url::file(folder.path()));
}

TEST_F(SystemDesktops, OpensOneChooserAtATime) {
    desktop.chooseFolder(&parent, [](const Url&) {});
    desktop.chooseFolder(&parent, [](const Url&) {});
    EXPECT_EQ(parent.findChildren<QFileDialog*>().size(), 1);
}

TEST_F(SystemDesktops, AsksWhereToSaveAPlanWithMessageNameAndFormats) {
    desktop.choosePlanFile(&parent, u"A report of the preview. Nothing is moved."_s, u"ordovan+ plan – my.folder"_s,
                           [](const Url&, Format) {});
    const QFileDialog* chooser = dialog(parent);
    EXPECT_EQ(chooser->windowTitle(), u"A report of the preview. Nothing is moved."_s);
    EXPECT_EQ(chooser->acceptMode(), QFileDialog::AcceptSave);
    EXPECT_EQ(chooser->nameFilters(), (QStringList{markdown, csv}));
    EXPECT_TRUE(chooser->selectedFiles().front().endsWith(u"/ordovan+ plan – my.folder.md"_s));
}

TEST_F(SystemDesktops, NamesThePlanAnewWhenTheFormatChanges) {
    std::optional<Format> saved;
    desktop.choosePlanFile(&parent, u"m"_s, u"plan"_s, [&](const Url&, Format format) { saved = format; });
    QFileDialog* chooser = dialog(parent);
    chooser->selectNameFilter(csv);
    Q_EMIT chooser->filterSelected(csv);
    EXPECT_TRUE(chooser->selectedFiles().front().endsWith(u"/plan.csv"_s));
    EXPECT_EQ(chooser->defaultSuffix(), u"csv"_s);
    Q_EMIT chooser->fileSelected(path + u"/plan.csv"_s);
    EXPECT_EQ(saved, Format::csv);
}

}  // namespace
