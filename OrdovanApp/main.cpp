#include "OrdovanApp/controller/CommandCenter.h"
#include "OrdovanApp/controller/SystemEnvironment.h"
#include "OrdovanApp/controller/TidyViewModel.h"
#include "OrdovanApp/models/Language.h"
#include "OrdovanApp/screens/ContentView.h"
#include "OrdovanApp/screens/OrdovanWindow.h"
#include "OrdovanApp/screens/SingleInstance.h"
#include "OrdovanApp/screens/StartOptions.h"
#include "OrdovanApp/screens/SystemDesktop.h"
#include "OrdovanApp/screens/TrayItem.h"
#include "OrdovanApp/theme/Glyph.h"
#include "OrdovanApp/theme/ThemeEnvironment.h"
#include "OrdovanCore/platform/Interrupts.h"

#include <QApplication>
#include <QDir>
#include <QSocketNotifier>
#include <QTimer>
#include <QUrl>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string_view>

using namespace Qt::StringLiterals;

namespace {

constexpr int wrongUsage = 2;
constexpr int impossible = 3;
constexpr std::chrono::seconds handOverPatience{10};

void print(std::FILE* stream, std::string_view text) {
    static_cast<void>(std::fwrite(text.data(), 1, text.size(), stream));
}

/// Empty where there is none.
QString display() {
    const QString wayland = qEnvironmentVariable("WAYLAND_DISPLAY");
    return wayland.isEmpty() ? qEnvironmentVariable("DISPLAY") : wayland;
}

QByteArray activationToken() {
    const QByteArray token = qgetenv("XDG_ACTIVATION_TOKEN");
    return token.isEmpty() ? qgetenv("DESKTOP_STARTUP_ID") : token;
}

/// What the Help item opens.
QString documentation() {
    const QString address = QStringLiteral(ORDOVAN_DOCUMENTATION);
    if (!address.isEmpty()) return address;
    const QDir programs(QCoreApplication::applicationDirPath());
    return QUrl::fromLocalFile(QDir::cleanPath(programs.filePath(QStringLiteral(ORDOVAN_GUIDE)))).toString();
}

/// The window with all it stands on, and what reaches it from outside: the tray and later starts.
class Application {
public:
    explicit Application(SingleInstance& instance)
        : instance_(instance),
          model_(environment_.ports(), {.loadsInBackground = true, .indexesPlans = true}),
          theme_(environment_.settings().theme()),
          desktop_([this] { return model_.rootURL(); }),
          window_({.model = model_,
                   .settings = environment_.settings(),
                   .rules = environment_.rules(),
                   .theme = theme_,
                   .commands = commands_,
                   .desktop = desktop_,
                   .values = environment_.values(),
                   .documentation = documentation(),
                   .background = environment_.background()},
                  Sections::screens()) {
        environment_.storeInBackground();
        QObject::connect(&instance_, &SingleInstance::wished, &window_, [this](const SingleInstance::Wish& wish) {
            window_.bringForward(wish.activationToken);
            if (wish.folder) window_.previewFolder(*wish.folder);
        });
        QObject::connect(&window_, &OrdovanWindow::finished, &window_, &QCoreApplication::quit);
        // The end of a session or Ctrl-C: nobody is asked, but what a run has moved is recorded first.
        QObject::connect(&interrupts_, &QSocketNotifier::activated, &window_, [this] {
            ordovan::interrupts::drain();
            window_.stopAndQuit();
        });
        window_.setCanComeBack([this] { return tray_ && tray_->isThere(); });
    }

    /// From here on a start waits until this program has ended.
    ~Application() { instance_.close(); }
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

    void start(const std::optional<Url>& folder) {
        if (folder) window_.previewFolder(*folder);
        window_.appear();
        instance_.listen();
        // Asking for a tray takes the session bus, and the window need not wait for it.
        QTimer::singleShot(0, &window_, [this] { makeTrayItem(); });
    }

private:
    void makeTrayItem() {
        if (!TrayItem::isPossible()) return;
        tray_ = std::make_unique<TrayItem>(theme_);
        QObject::connect(tray_.get(), &TrayItem::openRequested, &window_, [this] { window_.bringForward({}); });
        QObject::connect(tray_.get(), &TrayItem::quitRequested, &window_, &OrdovanWindow::quit);
    }

    SingleInstance& instance_;
    SystemEnvironment environment_;
    TidyViewModel model_;
    ThemeEnvironment theme_;
    CommandCenter commands_;
    SystemDesktop desktop_;
    QSocketNotifier interrupts_{ordovan::interrupts::descriptor(), QSocketNotifier::Read};
    OrdovanWindow window_;
    std::unique_ptr<TrayItem> tray_;
};

int run(int& argc, char** argv, SingleInstance& instance, const std::optional<Url>& folder) {
    ordovan::interrupts::install();
    const QApplication application(argc, argv);
    const Language language(Language::wantedByEnvironment());
    QApplication::setQuitOnLastWindowClosed(false);
    QApplication::setWindowIcon(Glyphs::application());
    Application ordovan(instance);
    ordovan.start(folder);
    return QApplication::exec();
}

}  // namespace

int main(int argc, char** argv) {
    std::error_code error;
    const std::string currentFolder = std::filesystem::current_path(error).string();
    const std::span<const char* const> arguments(argv + 1, static_cast<std::size_t>(argc - 1));
    const auto options = StartOptions::parse(arguments, error ? "/" : currentFolder);
    if (!options) {
        print(stderr, "ordovan: " + options.error() + "\n");
        return wrongUsage;
    }
    if (options->action == StartOptions::Action::showHelp) return print(stdout, StartOptions::help()), 0;
    if (options->action == StartOptions::Action::showVersion) return print(stdout, "ordovan " ORDOVAN_VERSION "\n"), 0;
    if (display().isEmpty() && !qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        print(stderr, "ordovan: There is no display to open a window on. On a terminal, use ordovan-cli.\n");
        return impossible;
    }

    QCoreApplication::setApplicationName(u"ordovan+"_s);
    QCoreApplication::setApplicationVersion(QStringLiteral(ORDOVAN_VERSION));
    QGuiApplication::setDesktopFileName(QStringLiteral(ORDOVAN_APPLICATION_ID));
    int noArguments = 1;  // none of ours is for the toolkit

    SingleInstance instance(
        SingleInstance::meetingFolder(qEnvironmentVariable("XDG_RUNTIME_DIR"), QDir::tempPath(), display()));
    std::unique_ptr<QCoreApplication> messenger;
    const auto outcome =
        instance.start({.folder = options->folder, .activationToken = activationToken()}, handOverPatience,
                       [&] { messenger = std::make_unique<QCoreApplication>(noArguments, argv); });
    messenger.reset();
    switch (outcome) {
        case SingleInstance::Outcome::first:
            return run(noArguments, argv, instance, options->folder);
        case SingleInstance::Outcome::handedOver:
            return 0;
        case SingleInstance::Outcome::queued:
            print(stderr, "ordovan: ordovan+ is running but busy. It shows the folder as soon as it can.\n");
            return 0;
        case SingleInstance::Outcome::unanswered:
            break;
    }
    print(stderr, "ordovan: ordovan+ is already running but does not answer. Try again in a moment.\n");
    return impossible;
}
