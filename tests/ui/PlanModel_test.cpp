#include "OrdovanApp/models/PlanModel.h"

#include "OrdovanApp/theme/ThemeEnvironment.h"
#include "tests/support/TidyWorld.h"
#include "tests/support/WidgetTestMain.h"

#include <gmock/gmock.h>

#include <QAbstractItemModelTester>

using namespace ordovan::test;
using namespace Qt::StringLiterals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

namespace {

class PlanModelTest : public TidyWorld {
protected:
    /// The model of the plan of "/r", watched by Qt's own test of models.
    PlanModel& show(std::initializer_list<std::string_view> items) {
        tree(items);
        controller = previewed();
        rows = std::make_unique<PlanModel>(*controller, theme);
        tester = std::make_unique<QAbstractItemModelTester>(rows.get(),
                                                            QAbstractItemModelTester::FailureReportingMode::Fatal);
        return *rows;
    }

    void changed(const std::string& name, std::int64_t epoch) {
        memory.setModified("/r/" + name, epoch * 1'000'000'000);
    }

    /// The rows as lines: "# head (count)", "[x] name | detail | chip | columns".
    static std::vector<std::string> text(const PlanModel& model) {
        std::vector<std::string> lines;
        for (int row = 0; row < model.rowCount(); ++row) {
            const RowContent content = model.content(row);
            QString line;
            if (model.isHead(row)) {
                line = u"# %1 (%2)"_s.arg(content.title, content.count);
            } else {
                line = content.mark == RowContent::Mark::tick ? content.marked ? u"[x] "_s : u"[ ] "_s : u"    "_s;
                line += content.title + u" | "_s + content.detail;
                if (content.chip) line += u" | "_s + content.chip->text;
            }
            lines.push_back(line.toStdString());
        }
        return lines;
    }
    static std::vector<std::string> names(const PlanModel& model) {
        std::vector<std::string> result;
        for (int row = 0; row < model.rowCount(); ++row) {
            if (!model.isHead(row)) result.push_back(model.title(row).toStdString());
        }
        return result;
    }
    static int rowOf(const PlanModel& model, std::string path) {
        const std::vector<std::string> paths = {std::move(path)};
        const auto found = model.rowsOf(paths);
        return found.empty() ? -1 : found.front();
    }
    static QStringList actions(const PlanModel& model, int row) {
        QStringList texts;
        for (const RowAction& action : model.content(row).actions) texts.append(action.text);
        return texts;
    }

    ThemeEnvironment theme{AppTheme::lagoon};
    std::unique_ptr<TidyViewModel> controller;
    std::unique_ptr<PlanModel> rows;
    std::unique_ptr<QAbstractItemModelTester> tester;
};

TEST_F(PlanModelTest, ShowsWhatIsProposedUnderWhatNeedsReviewUnderWhatWasSkipped) {
    unreadable = {"/r/locked"};
    const PlanModel& model = show({"b.pdf = b", "papers/a.pdf = aa", "pic.jpg = 1", "taken.txt = 1",
                                   "ordovan+/Documents/taken.txt = 0", "caf\xe9.pdf = 1", "locked/"});
    EXPECT_THAT(
        text(model),
        ElementsAre("# Proposed — safe, no conflict (3)", "[x] a.pdf | r / papers | Documents",
                    "[x] b.pdf | r | Documents", "[x] pic.jpg | r | Images", "# Needs your review — left untouched (1)",
                    "    taken.txt | A file already exists at the destination. Will not overwrite; left "
                    "untouched. · r | Documents",
                    "# Skipped — left untouched (2)", "    caf\ufffd.pdf | Could not evaluate this file. · r",
                    "    locked | This folder could not be read; the files in it are left untouched. · r"));
    EXPECT_EQ(model.proposals(), 3);
    EXPECT_EQ(model.conflicts(), 1);
    EXPECT_EQ(model.skipped(), 2);
}

TEST_F(PlanModelTest, ExplainsFilesThatWouldLandOnEachOther) {
    const PlanModel& model = show({"a/x.pdf = 1", "b/x.pdf = 2"});
    EXPECT_THAT(text(model),
                ElementsAre("# Needs your review — left untouched (2)",
                            "    x.pdf | Another file would be organized to the same location. Needs your decision; "
                            "left untouched. · r / a | Documents",
                            "    x.pdf | Another file would be organized to the same location. Needs your decision; "
                            "left untouched. · r / b | Documents"));
}

TEST_F(PlanModelTest, NamesTheRuleThatDecidedAndTheMonthFolder) {
    ASSERT_EQ(rules.add("dmg", "Apps"), std::nullopt);
    settings.setGroupByMonth(true);
    tree({"Setup.DMG = 1"});
    changed("Setup.DMG", 1'700'000'000);
    const PlanModel& model = show({});
    EXPECT_THAT(text(model), ElementsAre("# Proposed — safe, no conflict (1)",
                                         "[x] Setup.DMG | r · Your rule: .dmg → Apps | Apps / 2023-11"));
}

TEST_F(PlanModelTest, TellsSizeDateAndReason) {
    tree({"papers/a.pdf = 12345"});
    changed("papers/a.pdf", 1'700'000'000);
    const PlanModel& model = show({});
    const RowContent row = model.content(1);
    EXPECT_EQ(row.columns, QStringList({u"5 bytes"_s, u"14 Nov 2023"_s}));
    EXPECT_EQ(row.description, u"File type .pdf grouped as Documents. Preview only."_s);
    EXPECT_EQ(row.toolTip,
              u"/r/papers/a.pdf\nFile type .pdf grouped as Documents. Preview only.\n"
              "Goes to r / ordovan+ / Documents"_s);
}

TEST_F(PlanModelTest, OffersToIncludeWhatIsLeftOutAndTheOtherWayRound) {
    PlanModel& model = show({"a.pdf = 1", "b.pdf = 1", "ordovan+/Documents/b.pdf = 0"});
    EXPECT_EQ(actions(model, 1), QStringList({u"Leave This File Out"_s, u"Reveal in Finder"_s}));
    model.toggle(1);
    EXPECT_EQ(actions(model, 1), QStringList({u"Include This File"_s, u"Reveal in Finder"_s}));
    EXPECT_EQ(actions(model, 3), QStringList({u"Reveal in Finder"_s}));
    EXPECT_EQ(actions(model, 0), QStringList());
}

TEST_F(PlanModelTest, TicksThroughTheControllerAndCountsAlong) {
    PlanModel& model = show({"a.pdf = 123", "b.pdf = 4567"});
    EXPECT_EQ(model.ticked(), (PlanModel::Ticked{2, 7, 0}));
    SignalCount told(model, &PlanModel::tickedChanged);
    model.toggle(2);
    EXPECT_EQ(told, 1);
    EXPECT_EQ(model.ticked(), (PlanModel::Ticked{1, 3, 0}));
    EXPECT_THAT(lines(controller->selectedProposals()), ElementsAre("a.pdf -> ordovan+/Documents/a.pdf"));
    EXPECT_TRUE(model.setData(model.index(2), Qt::Checked, Qt::CheckStateRole));
    EXPECT_EQ(model.ticked(), (PlanModel::Ticked{2, 7, 0}));
}

TEST_F(PlanModelTest, FollowsASelectionMadeElsewhere) {
    now = 1'700'000'000;
    tree({"new.pdf = 12", "old.pdf = 123"});
    changed("new.pdf", 1'699'990'000);
    changed("old.pdf", 1'600'000'000);
    const PlanModel& model = show({});
    controller->tickOlderThan(30);
    EXPECT_EQ(model.ticked(), (PlanModel::Ticked{1, 3, 0}));
    EXPECT_FALSE(model.content(1).marked);
    EXPECT_TRUE(model.content(2).marked);
}

TEST_F(PlanModelTest, IgnoresTicksOfRowsWithoutABox) {
    PlanModel& model = show({"a.pdf = 1", "b.pdf = 1", "ordovan+/Documents/b.pdf = 0"});
    for (int row = 0; row < model.rowCount(); ++row) {
        if (row != 1) model.toggle(row);
    }
    EXPECT_THAT(controller->excluded(), IsEmpty());
}

TEST_F(PlanModelTest, NarrowsToWhatIsSearchedForInEveryGroup) {
    PlanModel& model = show({"papers/Résumé.pdf = 1", "other.pdf = 1", "resume.txt = 1",
                             "ordovan+/Documents/resume.txt = 0", "pic.jpg = 1"});
    model.setQuery(u"RESUME"_s);
    EXPECT_THAT(names(model), ElementsAre("Résumé.pdf", "resume.txt"));
    model.setQuery(u"papers"_s);
    EXPECT_THAT(names(model), ElementsAre("Résumé.pdf"));
    EXPECT_THAT(model.heads(), ElementsAre(0));
    model.setQuery(u"nothing like it"_s);
    EXPECT_EQ(model.rowCount(), 0);
    model.setQuery(QString());
    EXPECT_EQ(names(model).size(), 4U);
}

TEST_F(PlanModelTest, NarrowsToOneFolder) {
    PlanModel& model = show({"a.pdf = 1", "b.pdf = 1", "c.jpg = 1", "d.zip = 1", "taken.pdf = 1",
                             "ordovan+/Documents/taken.pdf = 0", "caf\xe9.pdf = 1"});
    EXPECT_THAT(model.folders(), ElementsAre(PlanModel::Folder{"Documents", 2}, PlanModel::Folder{"Archives", 1},
                                             PlanModel::Folder{"Images", 1}));
    model.setFolder("Documents");
    EXPECT_THAT(names(model), ElementsAre("a.pdf", "b.pdf", "taken.pdf"));
    model.setFolder("Images");
    EXPECT_THAT(names(model), ElementsAre("c.jpg"));
    model.setFolder("No such folder");
    EXPECT_EQ(model.folder(), std::nullopt);
    EXPECT_EQ(names(model).size(), 6U);
}

TEST_F(PlanModelTest, TellsHowMuchOfWhatIsTickedIsOutOfSight) {
    PlanModel& model = show({"a.pdf = 1", "b.pdf = 1", "c.jpg = 1"});
    model.setFolder("Images");
    EXPECT_EQ(model.ticked(), (PlanModel::Ticked{3, 3, 2}));
    EXPECT_TRUE(model.allShownTicked());
    model.tickShown(false);
    EXPECT_EQ(model.ticked(), (PlanModel::Ticked{2, 2, 2}));
    EXPECT_FALSE(model.allShownTicked());
    model.tickShown(true);
    EXPECT_EQ(model.ticked(), (PlanModel::Ticked{3, 3, 2}));
}

TEST_F(PlanModelTest, TicksSeveralRowsAtOnce) {
    PlanModel& model = show({"a.pdf = 1", "b.pdf = 1", "c.pdf = 1"});
    const std::vector<int> some = {0, 1, 3};
    model.toggleRows(some);
    EXPECT_THAT(lines(controller->selectedProposals()), ElementsAre("b.pdf -> ordovan+/Documents/b.pdf"));
    model.toggleRows(std::vector<int>{1, 2, 3});
    EXPECT_THAT(lines(controller->selectedProposals()), SizeIs(3));
}

TEST_F(PlanModelTest, KeepsTicksWhileARunGoesOn) {
    PlanModel& model = show({"a.pdf = 1"});
    model.setLocked(u"Wait until the files are organized."_s);
    model.toggle(1);
    model.tickShown(false);
    EXPECT_TRUE(model.content(1).marked);
    EXPECT_EQ(model.content(1).toolTip, u"Wait until the files are organized."_s);
    EXPECT_FALSE(model.content(1).actions.front().enabled);
    EXPECT_EQ(model.content(1).actions.front().help, u"Wait until the files are organized."_s);
    model.setLocked(QString());
    model.toggle(1);
    EXPECT_FALSE(model.content(1).marked);
}

TEST_F(PlanModelTest, KeepsFolderAndSearchAndTicksAcrossANewPreview) {
    PlanModel& model = show({"a.pdf = 1", "b.pdf = 1", "c.jpg = 1"});
    model.toggle(1);
    model.setFolder("Documents");
    model.setQuery(u"pdf"_s);
    tree({"d.pdf = 1", "e.pdf = 1"});
    controller->preview();
    tasks.finish();
    EXPECT_TRUE(model.reload());
    EXPECT_THAT(text(model),
                ElementsAre("# Proposed — safe, no conflict (4)", "[ ] a.pdf | r | Documents",
                            "[x] b.pdf | r | Documents", "[x] d.pdf | r | Documents", "[x] e.pdf | r | Documents"));
}

TEST_F(PlanModelTest, ShowsEverythingWhenTheFolderIsGone) {
    PlanModel& model = show({"a.pdf = 1", "c.jpg = 1"});
    model.setFolder("Images");
    memory.removeTree("/r/c.jpg");
    controller->preview();
    tasks.finish();
    EXPECT_TRUE(model.reload());
    EXPECT_EQ(model.folder(), std::nullopt);
    EXPECT_THAT(names(model), ElementsAre("a.pdf"));
}

TEST_F(PlanModelTest, StaysAsItIsWhenAPreviewFindsNothingNew) {
    PlanModel& model = show({"a.pdf = 1"});
    SignalCount resets(model, &QAbstractItemModel::modelReset);
    controller->preview();
    tasks.finish();
    EXPECT_FALSE(model.reload());
    EXPECT_EQ(resets, 0);
}

TEST_F(PlanModelTest, IsEmptyWithoutAPlan) {
    controller = make();
    const PlanModel model(*controller, theme);
    EXPECT_EQ(model.rowCount(), 0);
    EXPECT_THAT(model.heads(), IsEmpty());
    EXPECT_EQ(model.ticked(), PlanModel::Ticked{});
}

TEST_F(PlanModelTest, ShowsWhyAnUnfinishedDownloadIsNotTicked) {
    PlanModel& model = show({"film.mkv.part = 1"});
    const QString reason = u"This looks like an unfinished download; it is left out unless you tick it."_s;
    EXPECT_THAT(text(model), ElementsAre("# Proposed — safe, no conflict (1)",
                                         "[ ] film.mkv.part | This looks like an unfinished download | Other"));
    EXPECT_TRUE(model.content(1).description.startsWith(reason));
    EXPECT_TRUE(model.content(1).toolTip.contains(reason));
    model.toggle(1);
    EXPECT_TRUE(model.content(1).marked);
    controller->preview();
    tasks.finish();
    model.reload();
    EXPECT_TRUE(model.content(1).marked);
}

TEST_F(PlanModelTest, ShowsNamesThatWouldBreakTheLine) {
    const PlanModel& model = show({"two\nlines.pdf = 1"});
    EXPECT_EQ(model.title(1), u"two␊lines.pdf"_s);
    EXPECT_EQ(model.url(1), Url::file("/r/two\nlines.pdf"));
    EXPECT_EQ(rowOf(model, "/r/two\nlines.pdf"), 1);
    EXPECT_EQ(rowOf(model, "/r/gone.pdf"), -1);
}

}  // namespace
