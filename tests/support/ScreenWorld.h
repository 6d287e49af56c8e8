#pragma once

#include "OrdovanApp/controller/CommandCenter.h"
#include "OrdovanApp/screens/AppContext.h"
#include "OrdovanApp/screens/Desktop.h"
#include "OrdovanApp/screens/OrdovanWindow.h"
#include "OrdovanApp/theme/Announcer.h"
#include "OrdovanApp/theme/Banner.h"
#include "OrdovanApp/theme/RowsView.h"
#include "OrdovanApp/theme/Sheet.h"
#include "OrdovanApp/theme/ThemeEnvironment.h"
#include "tests/support/TidyWorld.h"

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QWidget>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace ordovan::test {

/// A desktop that writes down what it is asked and answers as it was told to.
class FakeDesktop final : public Desktop {
public:
    void chooseFolder(QWidget*, std::function<void(const Url&)> chosen) override {
        if (folder) chosen(*folder);
    }
    void choosePlanFile(QWidget*, const QString& message, const QString& suggestedName,
                        std::function<void(const Url&, OrdovanPlanExportFormat)> chosen) override {
        asked = {message, suggestedName};
        if (planFile) chosen(*planFile, planFormat);
    }
    void reveal(const Url& file) override { revealed.push_back(file); }
    void showTrash(const Url& trashedFile) override { shownInTrash.push_back(trashedFile); }
    bool openAddress(const QString&) override { return true; }
    std::optional<Url> downloads() const override { return std::nullopt; }

    std::optional<Url> folder;
    std::optional<Url> planFile;
    OrdovanPlanExportFormat planFormat = OrdovanPlanExportFormat::markdown;
    std::pair<QString, QString> asked;
    std::vector<Url> revealed;
    std::vector<Url> shownInTrash;
};

/// What the views are handed, over a world in memory.
class ScreenWorld : public TidyWorld {
protected:
    [[nodiscard]] AppContext context() {
        return {.model = *model,
                .settings = settings,
                .rules = rules,
                .theme = theme,
                .commands = commands,
                .desktop = desktop,
                .announcer = announcer};
    }

    /// What the whole window is made of.
    [[nodiscard]] OrdovanWindow::Parts windowParts() {
        return {.model = *model,
                .settings = settings,
                .rules = rules,
                .theme = theme,
                .commands = commands,
                .desktop = desktop,
                .values = values,
                .documentation = QStringLiteral("https://example.org")};
    }

    /// Every text that is in sight below a widget, in the order of their making: labels, buttons and accessible names.
    static QStringList texts(const QWidget& widget) {
        QStringList result;
        for (const QWidget* child : widget.findChildren<QWidget*>()) {
            if (!child->isVisible()) continue;
            if (const auto* label = qobject_cast<const QLabel*>(child)) result.append(label->text());
            if (const auto* button = qobject_cast<const QAbstractButton*>(child)) result.append(button->text());
            if (!child->accessibleName().isEmpty()) result.append(child->accessibleName());
        }
        result.removeDuplicates();
        return result;
    }

    ThemeEnvironment theme{AppTheme::lagoon};
    CommandCenter commands;
    FakeDesktop desktop;
    Announcer announcer;
    std::unique_ptr<TidyViewModel> model = make();
};

/// A section's view in a window of its usual size.
template <class View>
class SectionWorld : public ScreenWorld {
protected:
    /// The view; it is made and shown when it is first asked for.
    View& view() {
        if (!view_) {
            view_ = makeView(&window_);
            window_.resize(1064, 772);
            view_->resize(window_.size());
            window_.show();
            tasks.finish();
        }
        return *view_;
    }
    virtual View* makeView(QWidget* window) { return new View(context(), window); }

    /// Shows the view with a preview of "/r" with these items.
    void preview(std::initializer_list<std::string_view> items) {
        view();
        tree(items);
        model->chooseFolder(Url::file("/r"));
        tasks.finish();
    }
    QStringList shown() {
        view();
        QCoreApplication::sendPostedEvents();  // what was added to a layout is shown by one
        return texts(view());
    }
    /// What has this object name in the view.
    template <class Widget = QPushButton>
    Widget* widget(QStringView name) {
        return view().template findChild<Widget*>(name.toString());
    }
    void click(QStringView name) { click(widget(name)); }
    static void click(QAbstractButton* button) { QTest::mouseClick(button, Qt::LeftButton); }
    /// A question that the view has asked, or null.
    Sheet* question(QStringView name) { return window_.findChild<Sheet*>(name.toString()); }
    /// What a banner says; empty where it is not in sight.
    QString banner(QStringView name) {
        const auto* found = this->template widget<Banner>(name);
        return found->isVisible() ? found->text() : QString();
    }
    /// Goes to another window and back.
    void activate() {
        view();
        QApplication::setActiveWindow(nullptr);
        QApplication::setActiveWindow(&window_);
    }
    bool exists(std::string_view name) { return memory.exists(Url::file("/r/" + std::string(name))); }

    /// The titles of a list's rows, those of heads as well where they are asked for.
    static QStringList titles(const RowsView& list, bool heads = false) {
        QStringList result;
        for (int row = 0; row < list.rows()->rowCount(); ++row) {
            if (heads || !list.rows()->isHead(row)) result.append(list.rows()->title(row));
        }
        return result;
    }

    QWidget window_;

private:
    View* view_ = nullptr;
};

}  // namespace ordovan::test
