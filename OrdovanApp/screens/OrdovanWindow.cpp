#include "OrdovanApp/screens/OrdovanWindow.h"

#include "OrdovanApp/controller/CommandCenter.h"
#include "OrdovanApp/controller/TidyViewModel.h"
#include "OrdovanApp/screens/AboutPanel.h"
#include "OrdovanApp/screens/CommandAction.h"
#include "OrdovanApp/screens/ContentView.h"
#include "OrdovanApp/screens/Desktop.h"
#include "OrdovanApp/screens/OrganizeMenu.h"
#include "OrdovanApp/screens/RecentFoldersMenu.h"
#include "OrdovanApp/screens/SettingsView.h"
#include "OrdovanApp/theme/Announcer.h"
#include "OrdovanApp/theme/Sheet.h"

#include <QAction>
#include <QCloseEvent>
#include <QGuiApplication>
#include <QMenuBar>
#include <QPushButton>
#include <QScreen>

#include <tuple>

using namespace Qt::StringLiterals;

namespace {

constexpr QSize smallest(800, 600);
constexpr QSize usual(1280, 800);
/// What a window manager's frame takes at most.
constexpr QSize frame(8, 40);

const QString geometryKey = u"ordovan.window.geometry"_s;
const QString sectionKey = u"ordovan.window.section"_s;

}  // namespace

OrdovanWindow::OrdovanWindow(const Parts& parts, SectionFactories screens)
    : parts_(parts),
      context_{.model = parts.model,
               .settings = parts.settings,
               .rules = parts.rules,
               .theme = parts.theme,
               .commands = parts.commands,
               .desktop = parts.desktop,
               .announcer = *new Announcer(this)},
      content_(new ContentView(context_, std::move(screens), this)) {
    setObjectName(u"main"_s);
    setWindowTitle(u"ordovan+"_s);
    setCentralWidget(content_);
    makeMenus();
    restorePlace();
    connect(&parts_.model, &TidyViewModel::isApplyingChanged, this, &OrdovanWindow::finishWhenIdle);
    connect(&parts_.model, &TidyViewModel::isTrashingChanged, this, &OrdovanWindow::finishWhenIdle);
}

void OrdovanWindow::makeMenus() {
    QMenu* file = menuBar()->addMenu(tr("File"));
    file->setObjectName(u"menu-file"_s);
    file->setAccessibleName(file->title());
    file->setToolTipsVisible(true);
    file->addMenu(new RecentFoldersMenu(context_, *content_, this));
    file->addAction(new CommandAction(context_, *content_, Commands::previewAgain, tr("Preview Again"),
                                      {Qt::Key_F5, Qt::CTRL | Qt::Key_R}, file));
    file->addSeparator();
    QAction* about = file->addAction(tr("About ordovan+"), this, &OrdovanWindow::showAbout);
    about->setMenuRole(QAction::AboutRole);
    file->addSeparator();
    QAction* settings = file->addAction(tr("Settings…"), this, &OrdovanWindow::showSettings);
    settings->setShortcut(Qt::CTRL | Qt::Key_Comma);
    settings->setMenuRole(QAction::PreferencesRole);
    file->addSeparator();
    file->addAction(tr("Close"), this, &QWidget::close)->setShortcut(Qt::CTRL | Qt::Key_W);
    QAction* quit = file->addAction(tr("Quit"), this, &OrdovanWindow::quit);
    quit->setShortcut(Qt::CTRL | Qt::Key_Q);
    quit->setMenuRole(QAction::QuitRole);

    menuBar()->addMenu(new OrganizeMenu(context_, *content_, this));

    // The tray's menu, where it is there, has this too: but a shortcut of its is heard only while it is open.
    auto* open = new QAction(tr("Open ordovan+"), this);
    open->setObjectName(u"open"_s);
    open->setShortcut(Qt::CTRL | Qt::Key_0);
    open->setShortcutContext(Qt::ApplicationShortcut);
    connect(open, &QAction::triggered, this, [this] { bringForward({}); });
    addAction(open);

    QMenu* help = menuBar()->addMenu(tr("Help"));
    help->setObjectName(u"menu-help"_s);
    help->setAccessibleName(help->title());
    help->addAction(tr("ordovan+ Help"), this, &OrdovanWindow::showDocumentation)->setShortcut(Qt::Key_F1);
    makeMenuKeys();
}

/// Each menu opens with Alt and its first letter, and the first one with F10 as well.
void OrdovanWindow::makeMenuKeys() {
    const auto menus = menuBar()->actions();
    for (QAction* menu : menus) menu->setText(u'&' + menu->text());
    auto* first = new QAction(this);
    first->setShortcut(Qt::Key_F10);
    connect(first, &QAction::triggered, this, [this] { menuBar()->setActiveAction(menuBar()->actions().first()); });
    addAction(first);
}

void OrdovanWindow::showSettings() {
    if (settings_ == nullptr) settings_ = new SettingsView(context_, this);
    showInFront(settings_);
}

void OrdovanWindow::showAbout() {
    if (about_ == nullptr) about_ = new AboutPanel(parts_.theme, this);
    showInFront(about_);
}

/// In the middle of this window, unless its user has put it elsewhere since.
void OrdovanWindow::showInFront(QWidget* panel) {
    if (!panel->testAttribute(Qt::WA_Moved)) {
        panel->adjustSize();
        panel->move(frameGeometry().center() - panel->rect().center());
    }
    panel->show();
    panel->raise();
    panel->activateWindow();
}

void OrdovanWindow::showDocumentation() {
    if (parts_.desktop.openAddress(parts_.documentation)) return;
    auto* sheet = new Sheet(parts_.theme, content_, this);
    sheet->setTitle(tr("No web browser could be opened"));
    sheet->setMessage(tr("The documentation is at %1").arg(parts_.documentation));
    sheet->setConfirm(tr("OK"));
    sheet->cancelButton()->hide();
    connect(sheet, &Sheet::confirmed, sheet, &QObject::deleteLater);
    connect(sheet, &Sheet::cancelled, sheet, &QObject::deleteLater);
    sheet->open();
}

/// On a screen that is too small for the smallest size, the window fills it.
void OrdovanWindow::restorePlace() {
    const QScreen* home = QGuiApplication::primaryScreen();
    const QSize room = home != nullptr ? home->availableSize() - frame : usual;
    setMinimumSize(smallest.boundedTo(room));
    resize(usual.boundedTo(room));
    maximizes_ = room.width() < smallest.width() || room.height() < smallest.height();
    if (const auto geometry = parts_.values.value(geometryKey)) restoreGeometry(geometry->toByteArray());

    const auto stored = parts_.values.value(sectionKey);
    const auto section = Sections::fromRawValue(stored ? stored->toString() : QString());
    if (section) content_->showSection(*section);
}

void OrdovanWindow::storePlace() {
    const auto store = [&store = parts_.values, geometry = saveGeometry(),
                        section = Sections::rawValue(content_->section())] {
        // Not being able to is no reason to keep the user.
        std::ignore = store.update([&](auto& values) {
            values[geometryKey] = geometry;
            values[sectionKey] = section;
        });
    };
    parts_.background ? parts_.background(store, [] {}) : store();
}

void OrdovanWindow::appear() {
    maximizes_ ? showMaximized() : show();
}

void OrdovanWindow::bringForward(const QByteArray& activationToken) {
    // Where the platform plug-in looks for it when a window asks to be activated.
    if (!activationToken.isEmpty()) qputenv("XDG_ACTIVATION_TOKEN", activationToken);
    if (isMinimized()) {
        setWindowState(windowState() & ~Qt::WindowMinimized);
    }
    show();
    raise();
    activateWindow();
}

void OrdovanWindow::previewFolder(const Url& folder) {
    content_->previewFolder(folder);
}

bool OrdovanWindow::isRunning() const {
    return parts_.model.isApplying() || parts_.model.isTrashing();
}

void OrdovanWindow::closeEvent(QCloseEvent* event) {
    if (finished_) return;
    if (canComeBack_ && canComeBack_()) {
        storePlace();
        return;
    }
    quit();
    if (!finished_) event->ignore();
}

void OrdovanWindow::quit() {
    if (quitting_ || finished_) return;
    if (isRunning()) {
        bringForward({});
        askToStop();
        return;
    }
    stopAndQuit();
}

void OrdovanWindow::stopAndQuit() {
    quitting_ = true;
    if (isRunning()) parts_.model.cancelRun();
    finishWhenIdle();
}

void OrdovanWindow::askToStop() {
    if (question_ == nullptr) {
        question_ = new Sheet(parts_.theme, content_, this);
        question_->setObjectName(u"stop-question"_s);
        question_->setTitle(tr("Stop moving files and quit?"));
        question_->setMessage(
            tr("ordovan+ stops as soon as the file it is at is done. What has moved by then is recorded and can be put "
               "back later."));
        question_->setConfirm(tr("Stop and Quit"), true);
        question_->cancelButton()->setText(tr("Keep Running"));
        connect(question_, &Sheet::confirmed, this, &OrdovanWindow::stopAndQuit);
        for (const auto signal : {&TidyViewModel::isApplyingChanged, &TidyViewModel::isTrashingChanged}) {
            connect(&parts_.model, signal, question_, [this] {
                // The run is over, and with it the question.
                if (!isRunning() && question_->isVisible()) question_->cancelButton()->click();
            });
        }
    }
    question_->open();
}

void OrdovanWindow::finishWhenIdle() {
    if (!quitting_ || finished_ || isRunning()) return;
    finished_ = true;
    storePlace();
    hide();
    Q_EMIT finished();
}
