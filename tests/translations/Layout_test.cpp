#include "OrdovanApp/models/Language.h"
#include "OrdovanApp/screens/AboutPanel.h"
#include "OrdovanApp/screens/ContentView.h"
#include "OrdovanApp/screens/OrdovanWindow.h"
#include "OrdovanApp/screens/SectionScreens.h"
#include "OrdovanApp/screens/SettingsView.h"
#include "OrdovanApp/screens/SidebarItem.h"
#include "OrdovanApp/theme/ElidedLabel.h"
#include "OrdovanApp/theme/Segments.h"
#include "tests/support/ScreenWorld.h"
#include "tests/support/WidgetTestMain.h"

#include <QAbstractScrollArea>
#include <QLineEdit>
#include <QMenuBar>

using namespace Qt::StringLiterals;

namespace {

using namespace ordovan::test;

struct Setting {
    QString language;
    QSize size;
};

std::string nameOf(const ::testing::TestParamInfo<Setting>& info) {
    return info.param.language.toStdString() + std::to_string(info.param.size.width());
}

/// The whole window in a language and a size, in each of the states that its sections have. A text is cut off when what
/// shows it has less room than it needs.
class Layout : public ScreenWorld, public ::testing::WithParamInterface<Setting> {
protected:
    void SetUp() override {
        QLocale::setDefault(QLocale(GetParam().language));
        language_.emplace(QStringList(GetParam().language));
        window_.emplace(windowParts(), Sections::screens());
        window_->show();  // not as large as the screen, which is small here
        window_->resize(GetParam().size);
        settle();
    }
    void TearDown() override { QLocale::setDefault(QLocale::system()); }

    void settle() {
        tasks.finish();
        for (int pass = 0; pass < 3; ++pass) {  // what a layout moves may change what another one needs
            QCoreApplication::sendPostedEvents();
            QCoreApplication::processEvents();
        }
    }

    /// A folder with something for every section to tell.
    void preview() {
        tree({"a.pdf = 12", "b.pdf = 13", "song.mp3 = la la", "same/b.pdf = 14", "one/copy.bin = twice",
              "two/second.bin = twice", "film.mkv.part = begun", "setup.dmg = a program to install"});
        model->chooseFolder(Url::file("/r"));
        settle();
    }
    void show(Section section) {
        window_->content().showSection(section);
        settle();
    }
    template <class Widget = QPushButton>
    Widget& shown(QStringView name) {
        for (Widget* widget : window_->findChildren<Widget*>(name.toString())) {
            if (widget->isVisible()) return *widget;
        }
        ADD_FAILURE() << name.toString().toStdString() << " is not in sight";
        std::abort();
    }
    void press(QStringView name) {
        shown(name).click();
        settle();
    }
    void type(QStringView name, const QString& text) {
        shown<QLineEdit>(name).setText(text);
        settle();
    }
    void look(const char* state) { look(state, *window_); }
    void look(const char* state, const QWidget& window) {
        settle();
        EXPECT_EQ(cutOff(window).join(u'\n').toStdString(), "") << state;
    }

    /// What is cut off below a window.
    static QStringList cutOff(const QWidget& window) {
        QStringList result;
        for (const QWidget* widget : window.findChildren<QWidget*>()) {
            if (!widget->isVisible()) continue;
            const QString text = textCutOff(*widget);
            if (!text.isEmpty()) result += text;
            const QWidget* parent = widget->parentWidget();
            const bool scrolls = qobject_cast<const QAbstractScrollArea*>(parent->parentWidget()) != nullptr;
            const bool hasText = qobject_cast<const QLabel*>(widget) || qobject_cast<const QAbstractButton*>(widget);
            if (hasText && !scrolls && !widget->isWindow() && !parent->rect().contains(widget->geometry())) {
                result += u"outside: "_s + widget->objectName() + u' ' + widget->accessibleName();
            }
        }
        return result;
    }
    static QString textCutOff(const QWidget& widget) {
        const QSize size = widget.size();
        if (const auto* elided = qobject_cast<const ElidedLabel*>(&widget)) {
            const int needed = elided->fontMetrics().horizontalAdvance(elided->text());
            return needed > elided->contentsRect().width() ? elided->text() : QString();
        }
        if (const auto* label = qobject_cast<const QLabel*>(&widget)) {
            if (label->text().isEmpty()) return {};
            const bool fits = label->wordWrap() ? label->heightForWidth(size.width()) <= size.height() &&
                                                      longestWord(*label) <= label->contentsRect().width()
                                                : label->sizeHint().width() <= size.width();
            return fits ? QString() : label->text();
        }
        if (const auto* item = qobject_cast<const SidebarItem*>(&widget)) {
            constexpr int beside = 10 + 18 + 10 + 10;  // the glyph and the margins
            QFont font = item->font();
            font.setWeight(QFont::DemiBold);
            return QFontMetrics(font).horizontalAdvance(item->text()) + beside > size.width() ? item->text()
                                                                                              : QString();
        }
        if (const auto* button = qobject_cast<const QAbstractButton*>(&widget)) {
            const int text = button->fontMetrics().horizontalAdvance(button->text());
            if (qobject_cast<const Segments*>(button->parentWidget()))
                return text > size.width() ? button->text() : QString();
            return button->sizeHint().width() > size.width() ? button->text() : QString();
        }
        if (const auto* field = qobject_cast<const QLineEdit*>(&widget)) {
            const QMargins inside = field->textMargins();
            const int room = size.width() - inside.left() - inside.right();
            return field->fontMetrics().horizontalAdvance(field->placeholderText()) > room ? field->placeholderText()
                                                                                           : QString();
        }
        return {};
    }
    static int longestWord(const QLabel& label) {
        int longest = 0;
        for (const QString& word : label.text().split(u' ')) {
            longest = std::max(longest, label.fontMetrics().horizontalAdvance(word));
        }
        return longest;
    }

    std::optional<Language> language_;
    std::optional<OrdovanWindow> window_;
};

TEST_P(Layout, HoldsWithoutAFolder) {
    look("welcome");
    show(Section::duplicates);
    look("no duplicates yet");
    show(Section::bigFiles);
    look("no preview");
    show(Section::recovery);
    look("nothing to recover");
    show(Section::rules);
    look("no rules");
    show(Section::history);
    look("no runs");
}

TEST_P(Layout, HoldsForAFolderThatCanNotBeRead) {
    unreadable.insert("/r");
    preview();
    look("failed");
}

TEST_P(Layout, HoldsForAFolderWithoutFiles) {
    tree({"empty/"});
    model->chooseFolder(Url::file("/r"));
    look("nothing to organize");
    show(Section::bigFiles);
    look("no files");
    show(Section::duplicates);
    press(u"findDuplicates");
    look("no duplicates");
}

TEST_P(Layout, HoldsForAPlan) {
    preview();
    look("plan");
    type(u"search", u"zebra"_s);
    look("no match");
    type(u"search", u""_s);
    press(u"organize");
    look("organize?");
}

TEST_P(Layout, HoldsForARun) {
    preview();
    press(u"organize");
    shown<Sheet>(u"organizeSheet").confirmButton()->click();
    QCoreApplication::sendPostedEvents();
    EXPECT_EQ(cutOff(*window_).join(u'\n').toStdString(), "") << "organizing";
    memory.removeTree("/r/a.pdf");
    settle();
    look("result");
    press(u"bannerToggle");
    look("problems");
    show(Section::recovery);
    look("organized files");
    press(u"undoOrganize");
    look("undo?");
    shown<Sheet>(u"putBackSheet").confirmButton()->click();
    settle();
    look("put back");
    show(Section::history);
    look("runs");
    press(u"clearHistory");
    look("clear?");
}

TEST_P(Layout, HoldsForDuplicates) {
    preview();
    show(Section::duplicates);
    look("start");
    press(u"findDuplicates");
    look("found");
    press(u"trash-all-extras");
    look("extras?");
    shown<Sheet>(u"trashExtrasSheet").confirmButton()->click();
    settle();
    look("trashed");
    show(Section::recovery);
    look("trashed files");
    press(u"putAllBack");
    look("put all back?");
}

TEST_P(Layout, HoldsForBigFiles) {
    preview();
    show(Section::bigFiles);
    look("list");
    auto& list = shown<RowsView>(u"bigFileList");
    list.rows()->toggle(1);
    look("ticked");
    type(u"search", u"zebra"_s);
    look("no match");
    type(u"search", u""_s);
    press(u"trashTicked");
    look("trash?");
    shown<Sheet>(u"trashFilesSheet").confirmButton()->click();
    settle();
    look("trashed");
}

TEST_P(Layout, HoldsForRules) {
    preview();
    show(Section::rules);
    type(u"extensions", u"dmg, blend"_s);
    type(u"folderName", u"Installer"_s);
    look("an unknown type");
    press(u"addRule");
    look("list");
    type(u"extensions", u"dmg"_s);
    type(u"folderName", u".."_s);
    press(u"addRule");
    look("refused");
    press(u"builtInTypes");
    look("types");
    type(u"typeSearch", u"zebra"_s);
    look("no type");
}

TEST_P(Layout, HoldsForTheSmallWindows) {
    SettingsView settingsView(context(), nullptr);
    settingsView.show();
    look("settings", settingsView);
    AboutPanel about(theme, nullptr);
    about.show();
    look("about", about);
}

INSTANTIATE_TEST_SUITE_P(Languages, Layout,
                         ::testing::Values(Setting{u"de"_s, {800, 600}}, Setting{u"de"_s, {1100, 720}},
                                           Setting{u"de"_s, {1280, 800}}, Setting{u"en"_s, {800, 600}},
                                           Setting{u"en"_s, {1100, 720}}),
                         nameOf);

}  // namespace
