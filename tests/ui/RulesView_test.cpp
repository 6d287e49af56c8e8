#include "OrdovanApp/screens/RulesView.h"

#include "OrdovanApp/theme/Banner.h"
#include "OrdovanApp/theme/RowsView.h"
#include "tests/support/ScreenWorld.h"
#include "tests/support/WidgetTestMain.h"

#include <gmock/gmock.h>

#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTest>

using namespace ordovan::test;
using namespace Qt::StringLiterals;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;

namespace {

/// Settings on a disk without room.
class FullStore final : public ordovan::KeyValueStore {
public:
    explicit FullStore(KeyValueStore& values) : values_(values) {}
    [[nodiscard]] std::optional<QVariant> value(const QString& key) const override { return values_.value(key); }
    [[nodiscard]] bool update(const std::function<void(Values&)>&) override { return false; }
    void refresh() override {}

private:
    KeyValueStore& values_;
};

class RulesViewTest : public SectionWorld<RulesView> {
protected:
    /// Whatever is changed from now on can not be stored.
    void fill() { unstorable_ = std::make_unique<RuleStore>(full_); }
    QLineEdit& extensions() { return *widget<QLineEdit>(u"extensions"); }
    QLineEdit& folder() { return *widget<QLineEdit>(u"folderName"); }
    void type(const QString& typed, const QString& name) {
        extensions().setText(typed);
        folder().setText(name);
    }
    void add(const QString& typed, const QString& name) {
        type(typed, name);
        click(u"addRule");
    }
    QString message() { return widget<QLabel>(u"ruleMessage")->text(); }
    QColor messageColor() { return widget<QLabel>(u"ruleMessage")->palette().color(QPalette::WindowText); }
    RowsView& list() { return *widget<RowsView>(u"rulesList"); }
    RowsView& types() { return *widget<RowsView>(u"typesList"); }
    std::vector<std::string> stored() {
        std::vector<std::string> folders;
        for (const OrdovanRule& rule : RuleStore(values).ruleSet().rules) folders.push_back(rule.folderName);
        return folders;
    }
    void threeRules() {
        rules.add("dmg, pkg", "Apps");
        rules.add("pdf", "Papers");
        rules.add("zip", "Packed");
    }

private:
    RulesView* makeView(QWidget* window) override {
        return new RulesView({.model = *model,
                              .settings = settings,
                              .rules = unstorable_ ? *unstorable_ : rules,
                              .theme = theme,
                              .commands = commands,
                              .desktop = desktop,
                              .announcer = announcer},
                             window);
    }

    FullStore full_{values};
    std::unique_ptr<RuleStore> unstorable_;
};

}  // namespace

TEST_F(RulesViewTest, SaysWhatRulesAreFor) {
    EXPECT_THAT(texts(view()),
                IsSupersetOf(
                    {u"Rules"_s,
                     u"Send file types to folders you name, like .dmg and .pkg to Installers. Rules change the "
                     "preview only; nothing moves until you apply."_s,
                     u"Extensions, e.g. dmg, pkg"_s, u"Folder name, e.g. Installers"_s, u"Try: dmg, pkg → Installers"_s,
                     u"Pick a folder name"_s, u"Add Rule"_s, u"Your rules, in order"_s,
                     u"The first matching rule wins. Files without a rule use the built-in folders "
                     "(Documents, Images…)."_s,
                     u"Show Built-in Types"_s}));
    EXPECT_EQ(extensions().placeholderText(), u"Extensions, e.g. dmg, pkg"_s);
    EXPECT_EQ(folder().placeholderText(), u"Folder name, e.g. Installers"_s);
    EXPECT_FALSE(list().isVisible());
}

// Adding.

TEST_F(RulesViewTest, AddsARuleWithReturnAndIsReadyForTheNext) {
    view();
    extensions().setFocus();
    QTest::keyClicks(&extensions(), u".DMG, pkg"_s);
    folder().setFocus();
    QTest::keyClicks(&folder(), u"Apps"_s);
    QTest::keyClick(&folder(), Qt::Key_Return);
    EXPECT_EQ(titles(list(), true), QStringList({u"Your rules, in order"_s, u"→ Apps"_s}));
    EXPECT_EQ(rules.ruleSet().rules.front().extensions, (std::vector<std::string>{"dmg", "pkg"}));
    EXPECT_TRUE(list().isVisible());
    EXPECT_EQ(extensions().text() + folder().text(), QString());
    EXPECT_EQ(window_.focusWidget(), &extensions());
    EXPECT_EQ(announcer.lastSaid(), u"Rule added: files of the type .DMG, pkg go to Apps."_s);
}

TEST_F(RulesViewTest, SaysWhatIsWrongWithTheExtensions) {
    add(u"tar.gz"_s, u"Packed"_s);
    EXPECT_EQ(message(), u"\"tar.gz\" isn't a valid extension. Use letters and numbers only, like dmg."_s);
    EXPECT_EQ(messageColor(), theme.colors().danger);
    EXPECT_EQ(announcer.lastSaid(), message());
    EXPECT_EQ(extensions().accessibleDescription(), message());
    EXPECT_EQ(window_.focusWidget(), &extensions());
    EXPECT_THAT(stored(), IsEmpty());
    QTest::keyClicks(&extensions(), u"z"_s);
    EXPECT_EQ(message(), QString());
}

TEST_F(RulesViewTest, SaysThatExtensionsAreMissing) {
    add(u" ,; "_s, u"Packed"_s);
    EXPECT_EQ(message(), u"Add at least one file extension, like dmg or pkg."_s);
    EXPECT_EQ(window_.focusWidget(), &extensions());
}

TEST_F(RulesViewTest, SaysWhatIsWrongWithTheFolder) {
    add(u"pdf"_s, u"  "_s);
    EXPECT_EQ(message(), u"Give the folder a name."_s);
    EXPECT_EQ(window_.focusWidget(), &folder());
    add(u"pdf"_s, u"a/b"_s);
    EXPECT_EQ(message(), u"Folder names can't contain / or :, start with a dot, or be longer than 64 characters."_s);
    EXPECT_EQ(window_.focusWidget(), &folder());
    EXPECT_EQ(extensions().text(), u"pdf"_s) << "nothing typed is lost";
}

TEST_F(RulesViewTest, RefusesTheFiftyFirstRule) {
    for (int i = 0; i < 50; ++i) rules.add("x" + std::to_string(i), "F");
    add(u"pdf"_s, u"Papers"_s);
    EXPECT_EQ(message(), u"You can have up to 50 rules."_s);
    EXPECT_EQ(titles(list(), true).size(), 51);
}

TEST_F(RulesViewTest, SaysThatARuleCouldNotBeStored) {
    fill();
    add(u"pdf"_s, u"Papers"_s);
    EXPECT_EQ(message(), u"That rule couldn't be added."_s);
}

TEST_F(RulesViewTest, AddsARuleOnceHoweverLongItTakesToStoreIt) {
    std::vector<std::function<void()>> waiting;
    rules.storeThrough([&](const auto& work, const auto& done) { waiting.insert(waiting.end(), {work, done}); });
    add(u"pdf"_s, u"Papers"_s);
    click(u"addRule");
    EXPECT_EQ(waiting.size(), 2U);
    extensions().setText(u"zip"_s);  // of the next one
    for (const auto& call : waiting) call();
    EXPECT_THAT(stored(), ElementsAre("Papers"));
    EXPECT_EQ(extensions().text(), u"zip"_s);
    EXPECT_EQ(folder().text(), QString());
}

TEST_F(RulesViewTest, MarksWhatNoBuiltInCategoryKnowsWhileItIsTyped) {
    view();
    QTest::keyClicks(&extensions(), u"pdf, qqq"_s);
    EXPECT_EQ(message(), u".qqq: not a built-in type"_s);
    EXPECT_EQ(messageColor(), theme.colors().warning);
    extensions().setText(u"pdf"_s);
    EXPECT_EQ(message(), QString());
    add(u"qqq"_s, u"Odd"_s);
    EXPECT_EQ(message(), QString());
    EXPECT_EQ(list().rows()->content(1).chip->text, u"not a built-in type"_s);
}

TEST_F(RulesViewTest, OffersTheNamesOfTheBuiltInFolders) {
    view();
    const QList<QAction*> actions = widget(u"pickFolder")->menu()->actions();
    EXPECT_EQ(actions[0]->text(), u"Built-in folders"_s);
    QStringList names;
    for (const QAction* action : actions.sliced(2)) names.append(action->text());
    EXPECT_EQ(names, QStringList({u"Documents"_s, u"Spreadsheets"_s, u"Images"_s, u"Design"_s, u"Videos"_s, u"Audio"_s,
                                  u"Archives"_s, u"Installers"_s, u"Code"_s, u"Fonts"_s, u"Books"_s, u"Other"_s}));
    actions[4]->trigger();
    EXPECT_EQ(folder().text(), u"Images"_s);
}

// The list.

TEST_F(RulesViewTest, CountsTheFilesOfThePreviewThatEachRuleTakes) {
    threeRules();
    tree({"a.dmg = 1", "b.pkg = 1", "c.pdf = 1"});
    model->chooseFolder(Url::file("/r"));
    tasks.finish();
    view();
    EXPECT_EQ(list().rows()->content(1).detail,
              u"Files in the folder you're previewing that this rule would send to Apps: 2"_s);
    EXPECT_EQ(list().rows()->content(2).detail,
              u"Files in the folder you're previewing that this rule would send to Papers: 1"_s);
}

TEST_F(RulesViewTest, DeletesARule) {
    threeRules();
    view();
    const RowAction action = list().rows()->content(2).actions.front();
    EXPECT_EQ(action.text, u"Delete rule for Papers"_s);
    EXPECT_EQ(action.help, u"Delete this rule (your files are not affected)"_s);
    QTest::mouseClick(list().viewport(), Qt::LeftButton, {}, list().actionRect(2, RulesModel::deleteRule).center());
    EXPECT_THAT(stored(), ElementsAre("Apps", "Packed"));
    EXPECT_EQ(list().currentIndex().row(), 2);
    EXPECT_EQ(announcer.lastSaid(), u"The rule → Papers was deleted."_s);
}

TEST_F(RulesViewTest, ShowsThatThereAreNoRulesAfterTheLastWasDeleted) {
    rules.add("pdf", "Papers");
    view();
    Q_EMIT list().actionTriggered(1, RulesModel::deleteRule);
    EXPECT_FALSE(list().isVisible());
    EXPECT_THAT(texts(view()), IsSupersetOf({u"Your rules, in order"_s}));
    EXPECT_EQ(window_.focusWidget(), &extensions());
}

TEST_F(RulesViewTest, ReordersWithTheKeyboardAndKeepsHoldOfTheRule) {
    threeRules();
    view();
    list().setFocus();
    list().setCurrentIndex(list().rows()->index(1));
    QTest::keyClick(&list(), Qt::Key_Down, Qt::AltModifier);
    EXPECT_THAT(stored(), ElementsAre("Papers", "Apps", "Packed"));
    EXPECT_EQ(list().currentIndex().row(), 2);
    EXPECT_EQ(announcer.lastSaid(), u"→ Apps is now rule 2 of 3."_s);
    QTest::keyClick(&list(), Qt::Key_Up, Qt::AltModifier);
    EXPECT_THAT(stored(), ElementsAre("Apps", "Papers", "Packed"));
}

TEST_F(RulesViewTest, ReordersByDragging) {
    threeRules();
    view();
    const auto middle = [this](int row) { return list().visualRect(list().rows()->index(row)).center(); };
    QTest::mousePress(list().viewport(), Qt::LeftButton, {}, list().markRect(3).center());
    QTest::mouseMove(list().viewport(), middle(2));
    QTest::mouseMove(list().viewport(), middle(1) - QPoint(0, 20));
    QTest::mouseRelease(list().viewport(), Qt::LeftButton, {}, middle(1) - QPoint(0, 20));
    EXPECT_THAT(stored(), ElementsAre("Packed", "Apps", "Papers"));
}

TEST_F(RulesViewTest, SaysThatAChangeCouldNotBeStored) {
    threeRules();
    fill();
    view();
    Q_EMIT list().moveRequested(1, 3);
    auto* problem = widget<Banner>(u"ruleProblem");
    EXPECT_TRUE(problem->isVisible());
    EXPECT_EQ(problem->text(), u"The rules couldn't be put in another order."_s);
    Q_EMIT list().actionTriggered(1, RulesModel::deleteRule);
    EXPECT_EQ(problem->text(), u"The rule couldn't be deleted."_s);
    EXPECT_EQ(announcer.lastSaid(), problem->text());
    EXPECT_EQ(titles(list(), true),
              QStringList({u"Your rules, in order"_s, u"→ Apps"_s, u"→ Papers"_s, u"→ Packed"_s}));
}

// Built-in types.

TEST_F(RulesViewTest, ShowsTheBuiltInTypesWhenAskedTo) {
    view();
    EXPECT_FALSE(types().isVisible());
    click(u"builtInTypes");
    EXPECT_TRUE(types().isVisible());
    EXPECT_EQ(widget<QLineEdit>(u"typeSearch")->placeholderText(), u"Search types, e.g. pdf"_s);
    EXPECT_EQ(titles(types(), true).first(2), QStringList({u"Documents"_s, u".pdf"_s}));
    EXPECT_EQ(types().rows()->heads().size(), 11U) << "all but Other";
    click(u"builtInTypes");
    EXPECT_FALSE(types().isVisible());
}

TEST_F(RulesViewTest, SearchesTheBuiltInTypes) {
    view();
    click(u"builtInTypes");
    auto* search = widget<QLineEdit>(u"typeSearch");
    search->setText(u".PDF"_s);
    EXPECT_EQ(titles(types(), true), QStringList({u"Documents"_s, u".pdf"_s}));
    EXPECT_EQ(types().rows()->content(1).columns, QStringList({u"Documents"_s}));
    search->setText(u"doc"_s);
    EXPECT_EQ(titles(types(), true), QStringList({u"Documents"_s, u".doc"_s, u".docx"_s}));
    search->setText(u"fonts"_s);
    EXPECT_EQ(titles(types(), true).front(), u"Fonts"_s);
    EXPECT_GT(titles(types(), true).size(), 2);
    search->setText(u"qqq"_s);
    EXPECT_FALSE(types().isVisible());
    EXPECT_THAT(texts(view()), IsSupersetOf({u"not a built-in type"_s}));
}
TEST_F(RulesViewTest, LeavesOutWhatItExplainsInALowWindow) {
    view().resize(584, 350);
    QCoreApplication::processEvents();
    EXPECT_FALSE(widget<QWidget>(u"rulesNote")->isVisible());
    for (const QWidget* each : std::initializer_list<QWidget*>{&extensions(), widget(u"addRule"), widget(u"pickFolder"),
                                                               widget<QWidget>(u"noRules"), widget(u"builtInTypes")}) {
        EXPECT_GE(each->height(), each->minimumSizeHint().height()) << each->objectName().toStdString();
    }
    view().resize(584, 560);
    QCoreApplication::processEvents();
    EXPECT_TRUE(widget<QWidget>(u"rulesNote")->isVisible());
}
