// How long the other sections keep the interface thread with as much as they may ever hold: 10,000 groups of
// duplicates, 50,000 organized and 100,000 trashed files to recover, a full history. For each the time until it is
// first shown, to scroll a page and for each letter typed into its search, and the longest wait while its records are
// read, searched and taken over. The whole content of the window, off-screen, drawing included; prints one JSON object.
//
//     sections_bench FOLDER     FOLDER: an empty scratch folder
#include "OrdovanApp/controller/CommandCenter.h"
#include "OrdovanApp/controller/SystemEnvironment.h"
#include "OrdovanApp/controller/TidyViewModel.h"
#include "OrdovanApp/screens/ContentView.h"
#include "OrdovanApp/screens/SystemDesktop.h"
#include "OrdovanApp/theme/Announcer.h"
#include "OrdovanApp/theme/RowsView.h"
#include "OrdovanApp/theme/ThemeEnvironment.h"
#include "benchmarks/WindowTimes.h"

#include <QApplication>
#include <QEventLoop>
#include <QImage>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

using namespace Qt::StringLiterals;
using namespace WindowTimes;

namespace {

constexpr int groups = 10'000;
constexpr int organizedFiles = 50'000;
constexpr int trashedFiles = 100'000;

void write(const std::string& path, const std::string& content) {
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path, std::ios::binary) << content;
}

/// A name of everyday length; every fifth is not in ASCII.
std::string fileName(int number) {
    return (number % 5 == 0 ? "résumé " : "Quarterly report ") + std::to_string(number) + ".pdf";
}

/// Two or three copies in each group.
void makeCopies(const std::string& root) {
    for (int group = 0; group < groups; ++group) {
        for (int copy = 0; copy < 2 + group % 2; ++copy) {
            write(root + "/folder " + std::to_string(group % 97) + "/copy " + std::to_string(copy) + "/" +
                      fileName(group),
                  "content " + std::to_string(1'000'000 + group));
        }
    }
}

std::string journal(const std::string& root) {
    OrdovanJournal made;
    const std::string hash(64, 'a');
    for (int i = 0; i < organizedFiles; ++i) {
        const std::string name = "organized " + fileName(i);
        made.entries.emplace_back(root + "/inbox/" + name, root + "/ordovan+/Documents/" + name, true, 1000 + i, hash,
                                  "64769:" + std::to_string(i));
    }
    return made.encoded();
}

/// Every second one from another folder.
std::string trashRecord(const std::string& root, const std::string& other) {
    OrdovanTrashRecord made;
    const std::string hash(64, 'b');
    for (int i = 0; i < trashedFiles; ++i) {
        const std::string name = "trashed " + fileName(i);
        made.entries.emplace_back((i % 2 == 0 ? root : other) + "/films/" + name,
                                  other + "/.local/share/Trash/files/" + name, 1000 + i, hash);
    }
    return made.encoded();
}

std::string history(const std::string& root) {
    OrdovanRunHistory made;
    for (std::size_t i = 0; i < OrdovanRunHistory::maxRecords; ++i) {
        OrdovanRunRecord run = OrdovanRunRecord::make(OrdovanRunRecord::Kind::organize, {}, Url::file(root),
                                                      1'700'000'000.0 + 40'000.0 * static_cast<double>(i));
        run.moved = static_cast<std::int64_t>(i);
        made = made.adding(run);
    }
    return made.encoded();
}

/// The content of the window over the real disk.
class Bench {
public:
    explicit Bench(const ordovan::StorageLocations& locations) : environment_(locations) {
        window_.resize(target_.size());
        view_.resize(target_.size());
        window_.show();
        draw();
    }

    TidyViewModel& model() { return model_; }
    void draw() { window_.render(&target_); }
    /// Lets events happen until nothing is at work in the background; the longest wait in between.
    double settle() {
        Heartbeat heart;
        QEventLoop loop;
        QTimer poll;
        int quietTurns = 0;
        QObject::connect(&poll, &QTimer::timeout, &loop, [&] {
            quietTurns = environment_.waitForWork(std::chrono::milliseconds(0)) ? quietTurns + 1 : 0;
            if (quietTurns > 3) loop.quit();
        });
        poll.start(5);
        loop.exec();
        return heart.longestMilliseconds();
    }
    double open(Section section) {
        return milliseconds([&] {
            view_.showSection(section);
            draw();
        });
    }
    /// What an activation of the window leads to.
    double activate() {
        Heartbeat heart;
        for (QWidget* widget : view_.findChildren<QWidget*>()) {
            QEvent activated(QEvent::WindowActivate);
            if (widget->isVisible()) QCoreApplication::sendEvent(widget, &activated);
        }
        return std::max(heart.longestMilliseconds(), settle());
    }
    template <class Widget>
    Widget& find(QStringView section, QStringView name) {
        return *view_.findChild<QWidget*>(section.toString())->findChild<Widget*>(name.toString());
    }

private:
    SystemEnvironment environment_;
    TidyViewModel model_{environment_.ports(), {.loadsInBackground = true, .indexesPlans = true}};
    ThemeEnvironment theme_{AppTheme::lagoon};
    CommandCenter commands_;
    SystemDesktop desktop_{[this] { return model_.rootURL(); }};
    Announcer announcer_;
    QImage target_{1280, 772, QImage::Format_ARGB32_Premultiplied};
    QWidget window_;
    ContentView view_{{model_, environment_.settings(), environment_.rules(), theme_, commands_, desktop_, announcer_},
                      Sections::screens(),
                      &window_};
};

/// Prints the members that every section with a list and a search has.
void measureList(Bench& bench, const char* key, RowsView& list, QLineEdit* search) {
    const auto draw = [&] { bench.draw(); };
    std::printf(", \"%sRows\": %d", key, list.rows()->rowCount());
    std::printf(", \"%sScrollMs\": %.2f", key, pages(*list.verticalScrollBar(), draw).median());
    if (search == nullptr) return;
    const Times typed = keystrokes(*search, {u"report 12"_s, u"résumé"_s, u"e"_s, u"zzzz"_s}, draw);
    std::printf(", \"%sKeyMedianMs\": %.2f, \"%sKeyWorstMs\": %.2f", key, typed.median(), key, typed.worst());
}

void measureDuplicates(Bench& bench) {
    bench.model().findDuplicates();
    std::printf(", \"duplicatesSearchMs\": %.2f", bench.settle());
    std::printf(", \"groups\": %zu", bench.model().duplicateReport()->groups.size());
    std::printf(", \"duplicatesOpenMs\": %.2f", bench.open(Section::duplicates));
    auto& list = bench.find<RowsView>(u"duplicates", u"duplicateList");
    measureList(bench, "duplicates", list, &bench.find<QLineEdit>(u"duplicates", u"search"));
    std::printf(", \"duplicatesKeepMs\": %.2f", milliseconds([&] {
                    list.rows()->toggle(2);
                    bench.draw();
                }));
    std::printf(", \"duplicatesAutoPickMs\": %.2f", milliseconds([&] {
                    bench.model().autoPick(OrdovanKeepPolicy::newest);
                    bench.draw();
                }));
    bench.model().preview();
    std::printf(", \"duplicatesPreviewMs\": %.2f", bench.settle());
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) return 2;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    const std::string scratch = std::filesystem::canonical(argv[1]).string();
    const std::string root = scratch + "/folder";
    const ordovan::StorageLocations locations = {.recordsFolder = Url::file(scratch + "/records"),
                                                 .settingsFolder = Url::file(scratch + "/settings")};
    makeCopies(root);
    write(std::string(locations.journal(Url::file(root)).path()), journal(root));
    write(std::string(locations.trashRecord().path()), trashRecord(root, scratch));
    write(std::string(locations.history().path()), history(root));

    Bench bench(locations);
    std::printf("{\"startMs\": %.2f", bench.settle());
    bench.model().chooseFolder(Url::file(root));
    std::printf(", \"previewMs\": %.2f", bench.settle());
    std::printf(", \"organized\": %zu, \"trashed\": %zu", bench.model().recoverableJournal()->entries.size(),
                bench.model().trashRecord()->entries.size());

    measureDuplicates(bench);

    std::printf(", \"bigFilesOpenMs\": %.2f", bench.open(Section::bigFiles));
    measureList(bench, "bigFiles", bench.find<RowsView>(u"bigFiles", u"bigFileList"),
                &bench.find<QLineEdit>(u"bigFiles", u"search"));

    std::printf(", \"recoveryOpenMs\": %.2f", bench.open(Section::recovery));
    std::printf(", \"recoverySurveyMs\": %.2f", bench.settle());
    measureList(bench, "recovery", bench.find<RowsView>(u"recovery", u"recoveryList"),
                &bench.find<QLineEdit>(u"recovery", u"search"));
    std::printf(", \"recoveryAgainMs\": %.2f", bench.activate());

    std::printf(", \"historyOpenMs\": %.2f", bench.open(Section::history));
    bench.settle();
    measureList(bench, "history", bench.find<RowsView>(u"history", u"historyList"), nullptr);
    std::printf("}\n");
    return 0;
}
