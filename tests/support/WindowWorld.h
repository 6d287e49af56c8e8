#pragma once

#include "OrdovanApp/controller/CommandCenter.h"
#include "OrdovanApp/screens/AppContext.h"
#include "OrdovanApp/screens/Desktop.h"
#include "OrdovanApp/screens/SectionScreens.h"
#include "OrdovanApp/theme/Announcer.h"
#include "OrdovanApp/theme/ThemeEnvironment.h"
#include "tests/support/TidyWorld.h"

#include <QStringList>
#include <QWidget>

namespace ordovan::test {

/// A desktop that notes what it is asked and answers when told to.
class FakeDesktop final : public Desktop {
public:
    void chooseFolder(QWidget*, std::function<void(const Url&)> chosen) override { answer = std::move(chosen); }
    void choosePlanFile(QWidget*, const QString&, const QString&,
                        std::function<void(const Url&, OrdovanPlanExportFormat)>) override {}
    void reveal(const Url&) override {}
    void showTrash(const Url&) override {}
    bool openAddress(const QString& address) override {
        opened += address;
        return opens;
    }
    [[nodiscard]] std::optional<Url> downloads() const override { return downloadsFolder; }

    std::function<void(const Url&)> answer;
    QStringList opened;
    bool opens = true;
    std::optional<Url> downloadsFolder = Url::file("/downloads");
};

/// The controller in memory with everything that a view is handed down.
class WindowWorld : public TidyWorld {
public:
    /// Empty screens, named by their sections, that note what is asked of them.
    SectionFactories screens() {
        SectionFactories factories;
        for (const Section section : Sections::allCases) {
            factories[section] = [this, section](const AppContext&, QWidget* parent) {
                const QString name = Sections::rawValue(section);
                made += name;
                auto* page = new QWidget(parent);
                page->setObjectName(QStringLiteral("screen-") + name);
                return SectionScreen{.widget = page,
                                     .requestOrganize = [this] { requests += QStringLiteral("organize"); },
                                     .requestExport = [this] { requests += QStringLiteral("export"); }};
            };
        }
        return factories;
    }

    AppContext context() { return {*model, settings, rules, theme, commands, desktop, announcer}; }

    ThemeEnvironment theme{AppTheme::lagoon};
    CommandCenter commands;
    FakeDesktop desktop;
    Announcer announcer;
    std::unique_ptr<TidyViewModel> model = make();
    QStringList made;
    QStringList requests;
};

}  // namespace ordovan::test
