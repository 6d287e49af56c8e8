// How long the inbox keeps the interface thread with the plan of a real folder: to show it, for each letter typed into
// the search, to tick one file, by age, and all. Off-screen, drawing included; prints one JSON object.
//
//     inbox_bench FOLDER RECORDS     RECORDS: a scratch folder for the program's records
#include "OrdovanApp/controller/CommandCenter.h"
#include "OrdovanApp/controller/SystemEnvironment.h"
#include "OrdovanApp/controller/TidyViewModel.h"
#include "OrdovanApp/screens/SmartInboxView.h"
#include "OrdovanApp/screens/SystemDesktop.h"
#include "OrdovanApp/theme/Announcer.h"
#include "OrdovanApp/theme/RowsView.h"
#include "OrdovanApp/theme/ThemeEnvironment.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QImage>
#include <QLineEdit>
#include <QPushButton>

#include <algorithm>
#include <cstdio>
#include <vector>

using namespace Qt::StringLiterals;

namespace {

template <class Work>
double milliseconds(Work work) {
    QElapsedTimer timer;
    timer.start();
    work();
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

void waitForPreview(TidyViewModel& model) {
    QEventLoop loop;
    QObject::connect(&model, &TidyViewModel::phaseChanged, &loop, [&] {
        if (model.phase().kind != TidyViewModel::Phase::Case::scanning) loop.quit();
    });
    loop.exec();
}

/// The times of each of these texts typed letter by letter and taken away again, sorted.
template <class Draw>
std::vector<double> keystrokes(QLineEdit& search, Draw draw) {
    std::vector<double> times;
    const auto type = [&](const QString& text) {
        times.push_back(milliseconds([&] {
            search.setText(text);
            draw();
        }));
    };
    for (const QString& text : {u"invoice 2024"_s, u"résumé"_s, u"e"_s, u"zzzz"_s}) {
        for (qsizetype length = 1; length <= text.size(); ++length) type(text.left(length));
        for (qsizetype length = text.size(); length-- > 0;) type(text.left(length));
    }
    std::ranges::sort(times);
    return times;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    const Url records = Url::file(std::string(argv[2]));
    SystemEnvironment environment({.recordsFolder = records, .settingsFolder = records});
    TidyViewModel model(environment.ports(), {});
    ThemeEnvironment theme(AppTheme::lagoon);
    CommandCenter commands;
    SystemDesktop desktop([&model] { return model.rootURL(); });
    Announcer announcer;

    const double scan = milliseconds([&] {
        model.chooseFolder(Url::file(std::string(argv[1])));
        waitForPreview(model);
    });
    if (!model.plan()) return 1;
    QImage target(1064, 772, QImage::Format_ARGB32_Premultiplied);
    QWidget window;
    SmartInboxView* view = nullptr;
    const auto draw = [&] { window.render(&target); };
    const double show = milliseconds([&] {
        view = new SmartInboxView(
            {model, environment.settings(), environment.rules(), theme, commands, desktop, announcer}, &window);
        window.resize(target.size());
        view->resize(window.size());
        window.show();
        draw();
    });

    const auto typed = keystrokes(*view->findChild<QLineEdit*>(u"search"_s), draw);
    auto* list = view->findChild<RowsView*>(u"planList"_s);
    const double tick = milliseconds([&] {
        list->rows()->toggle(1);
        draw();
    });
    const double byAge = milliseconds([&] {
        model.tickOlderThan(30);
        draw();
    });
    auto* tickAll = view->findChild<QPushButton*>(u"tickAll"_s);
    const double all = milliseconds([&] {
        tickAll->click();
        draw();
    });
    std::printf(
        "{\"files\": %zu, \"previewMs\": %.1f, \"showMs\": %.1f, \"keystrokeMedianMs\": %.2f, "
        "\"keystrokeWorstMs\": %.2f, \"tickMs\": %.2f, \"tickByAgeMs\": %.1f, \"tickAllMs\": %.1f}\n",
        model.plan()->proposals.size(), scan, show, typed[typed.size() / 2], typed.back(), tick, byAge, all);
    return 0;
}
