#pragma once

#include "OrdovanApp/screens/AppContext.h"
#include "OrdovanApp/screens/SectionScreens.h"
#include "OrdovanApp/stores/BackgroundWork.h"
#include "OrdovanApp/stores/KeyValueStore.h"
#include "OrdovanCore/Url.h"

#include <QMainWindow>
#include <QPointer>

#include <functional>

class AboutPanel;
class ContentView;
class SettingsView;
class Sheet;

/// The main window: menu bar and content, where it stands on the screen, and how it ends.
///
/// Closing it ends the program, unless something (`setCanComeBack`) can bring it back. The program never ends in the
/// middle of a run without asking, and then only between two files, once what was moved is recorded.
class OrdovanWindow : public QMainWindow {
    Q_OBJECT

public:
    /// What the window stands on; it outlives the window.
    struct Parts {
        TidyViewModel& model;
        AppSettings& settings;
        RuleStore& rules;
        ThemeEnvironment& theme;
        CommandCenter& commands;
        Desktop& desktop;
        ordovan::KeyValueStore& values;           ///< where place and section are remembered
        QString documentation;                    ///< the web address that the Help item opens
        ordovan::BackgroundWork background = {};  ///< stores place and section; empty: they are stored at once
    };

    OrdovanWindow(const Parts& parts, SectionFactories screens);

    /// Shows the window where it was, and as it was.
    void appear();
    /// Brings the window in front of the others. `activationToken` is by what the desktop lets it; may be empty.
    void bringForward(const QByteArray& activationToken);
    void previewFolder(const Url& folder);
    /// Ends the program; asks first while a run goes on.
    void quit();
    /// Ends the program without a question; a run that goes on stops before its next file and is recorded first.
    void stopAndQuit();
    /// Tells whether a closed window can be brought back: it then only hides. Default: it can not.
    void setCanComeBack(std::function<bool()> canComeBack) { canComeBack_ = std::move(canComeBack); }

    [[nodiscard]] ContentView& content() const { return *content_; }

Q_SIGNALS:
    /// The window is done; the program is to end.
    void finished();

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void makeMenus();
    void makeMenuKeys();
    void showInFront(QWidget* panel);
    void showSettings();
    void showAbout();
    void showDocumentation();
    void restorePlace();
    void storePlace();
    void askToStop();
    void finishWhenIdle();
    [[nodiscard]] bool isRunning() const;

    Parts parts_;
    AppContext context_;
    ContentView* content_;
    QPointer<SettingsView> settings_;
    QPointer<AboutPanel> about_;
    QPointer<Sheet> question_;
    std::function<bool()> canComeBack_;
    bool maximizes_ = false;
    bool quitting_ = false;
    bool finished_ = false;
};
