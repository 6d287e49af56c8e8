#pragma once

#include "OrdovanApp/controller/CommandCenter.h"
#include "OrdovanApp/screens/AppContext.h"
#include "OrdovanApp/screens/Desktop.h"
#include "OrdovanApp/theme/Announcer.h"
#include "OrdovanApp/theme/ThemeEnvironment.h"
#include "tests/support/TidyWorld.h"

#include <QAbstractButton>
#include <QLabel>
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

}  // namespace ordovan::test
