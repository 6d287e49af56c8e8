#include "OrdovanApp/models/RulesModel.h"

#include "OrdovanApp/theme/ThemeEnvironment.h"
#include "tests/support/RowText.h"
#include "tests/support/TidyWorld.h"
#include "tests/support/WidgetTestMain.h"

#include <gmock/gmock.h>

#include <QAbstractItemModelTester>

using namespace ordovan::test;
using namespace Qt::StringLiterals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

class RulesModelTest : public TidyWorld {
protected:
    RulesModel& show(std::initializer_list<std::string_view> items = {}) {
        tree(items);
        controller = previewed();
        rows = std::make_unique<RulesModel>(*controller, rules, theme);
        tester = std::make_unique<QAbstractItemModelTester>(rows.get(),
                                                            QAbstractItemModelTester::FailureReportingMode::Fatal);
        return *rows;
    }
    static std::vector<std::string> titles(const RulesModel& model) {
        std::vector<std::string> result;
        for (int row = 0; row < model.rowCount(); ++row) result.push_back(model.title(row).toStdString());
        return result;
    }

    static void expectDone(bool isDone) { EXPECT_TRUE(isDone); }

    ThemeEnvironment theme{AppTheme::lagoon};
    std::unique_ptr<TidyViewModel> controller;
    std::unique_ptr<RulesModel> rows;
    std::unique_ptr<QAbstractItemModelTester> tester;
};

}  // namespace

TEST_F(RulesModelTest, ListsRulesInTheirOrder) {
    rules.add("dmg, pkg", "Apps");
    rules.add("pdf", "Papers");
    EXPECT_THAT(
        rowTexts(show({"a.dmg = 1", "b.PKG = 1", "c.pdf = 1", "d.txt = 1"})),
        ElementsAre("# Your rules, in order",
                    ":: → Apps | Files in the folder you're previewing that this rule would send to Apps: 2",
                    ":: → Papers | Files in the folder you're previewing that this rule would send to Papers: 1"));
    QStringList tags;
    for (const auto& tag : rows->content(1).tags) tags << tag.text;
    EXPECT_EQ(tags, (QStringList{u".dmg"_s, u".pkg"_s}));
}

TEST_F(RulesModelTest, LetsTheFirstMatchingRuleHaveAFile) {
    rules.add("pdf", "First");
    rules.add("pdf, txt", "Second");
    const auto& model = show({"a.pdf = 1", "b.txt = 1"});
    EXPECT_EQ(model.matches(1), 1);
    EXPECT_EQ(model.matches(2), 1);
}

TEST_F(RulesModelTest, OffersToDeleteARule) {
    rules.add("pdf", "Papers");
    rules.add("zip", "Packed");
    auto& model = show();
    const RowAction action = model.content(1).actions.front();
    EXPECT_EQ(action.text, u"Delete rule for Papers"_s);
    EXPECT_EQ(action.help, u"Delete this rule (your files are not affected)"_s);
    EXPECT_FALSE(action.activates);
    model.remove(1, expectDone);
    EXPECT_THAT(titles(model), ElementsAre("Your rules, in order", "→ Packed"));
    model.remove(1, expectDone);
    EXPECT_THAT(titles(model), IsEmpty());
}

TEST_F(RulesModelTest, MovesARuleAndKeepsHoldOfIt) {
    for (const char* name : {"A", "B", "C"}) rules.add(std::string("x") + name, name);
    auto& model = show();
    const QPersistentModelIndex moved = model.index(1);
    model.move(1, 4, expectDone);
    EXPECT_THAT(titles(model), ElementsAre("Your rules, in order", "→ B", "→ C", "→ A"));
    EXPECT_EQ(moved.row(), 3);
    model.move(3, 2, expectDone);
    EXPECT_THAT(titles(model), ElementsAre("Your rules, in order", "→ B", "→ A", "→ C"));
    EXPECT_EQ(moved.row(), 2);
}

TEST_F(RulesModelTest, MarksWhatNoBuiltInCategoryKnows) {
    rules.add("pdf", "Papers");
    rules.add("pdf, qqq", "Odd");
    const auto& model = show();
    EXPECT_FALSE(model.content(1).chip.has_value());
    EXPECT_EQ(model.content(2).chip->text, u"not a built-in type"_s);
    EXPECT_TRUE(model.content(2).toolTip.contains(u".qqq: not a built-in type"_s));
    EXPECT_FALSE(model.content(2).toolTip.contains(u".pdf: not"_s));
}

TEST_F(RulesModelTest, CountsAnewAfterAPreview) {
    rules.add("pdf", "Papers");
    const auto& model = show({"a.pdf = 1"});
    tree({"b.pdf = 2"});
    controller->preview();
    tasks.finish();
    EXPECT_EQ(model.matches(1), 2);
}

TEST_F(RulesModelTest, NamesEveryExtensionInItsToolTipAndDescription) {
    rules.add("pdf, txt, zip", "Papers");
    const auto& model = show({"a.pdf = 1"});
    EXPECT_EQ(model.content(1).toolTip,
              u".pdf, .txt, .zip\nFiles in the folder you're previewing that this rule would send to Papers: 1"_s);
    EXPECT_EQ(model.content(1).description, model.content(1).toolTip);
}

TEST_F(RulesModelTest, CountsNothingOfTheFolderBefore) {
    rules.add("pdf", "Papers");
    const auto& model = show({"a.pdf = 1"});
    unreadable.insert("/other");
    controller->chooseFolder(Url::file("/other"));
    EXPECT_EQ(model.matches(1), std::nullopt);
    tasks.finish();
    EXPECT_THAT(rowTexts(model),
                ElementsAre("# Your rules, in order",
                            ":: → Papers | Files in the folder you're previewing that this rule would send to Papers"));
    controller->chooseFolder(Url::file("/r"));
    tasks.finish();
    EXPECT_EQ(model.matches(1), 1);
}

TEST_F(RulesModelTest, FollowsTheStore) {
    const auto& model = show();
    EXPECT_EQ(model.rowCount(), 0);
    rules.add("pdf", "Papers");
    EXPECT_EQ(model.rowCount(), 2);
}
