// How long the inbox keeps the interface thread with the plan of a real folder: while it is scanned by a disk that
// takes 50 ms for a folder, when its plan is taken over, for each letter typed into the search, to scroll a page, to
// tick one file, by age, and all. Off-screen, drawing included; prints one JSON object.
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
#include "benchmarks/WindowTimes.h"

#include <QApplication>
#include <QEventLoop>
#include <QImage>
#include <QLineEdit>
#include <QPushButton>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <memory>
#include <string>
#include <thread>
#include <vector>

using namespace Qt::StringLiterals;
using namespace WindowTimes;

namespace {

constexpr int slowFolders = 20;

/// Waits 50 ms before each of the first folders.
class SlowReader final : public OrdovanDirectoryReading {
public:
    explicit SlowReader(std::unique_ptr<OrdovanDirectoryReading> reader) : reader_(std::move(reader)) {}
    OrdovanResult<std::vector<OrdovanInventoryEntry>> children(const Url& of) override {
        if (listed_++ < slowFolders) std::this_thread::sleep_for(std::chrono::milliseconds(50));
        return reader_->children(of);
    }
    std::string resolvedPath(const Url& directory) override { return reader_->resolvedPath(directory); }

private:
    std::unique_ptr<OrdovanDirectoryReading> reader_;
    int listed_ = 0;
};

/// The longest waits of the interface.
struct Waits {
    double scanning = 0;
    double takingOver = 0;
};

/// Chooses a folder and waits for its plan to be shown.
Waits preview(TidyViewModel& model, const Url& folder) {
    QEventLoop loop;
    Waits waits;
    auto heart = std::make_unique<Heartbeat>();
    QObject::connect(&model, &TidyViewModel::inventoryChanged, &loop, [&] {
        waits.scanning = heart->longestMilliseconds();
        heart = std::make_unique<Heartbeat>();
    });
    QObject::connect(
        &model, &TidyViewModel::phaseChanged, &loop,
        [&] {
            // After what else happens on this, and once it is drawn.
            if (model.phase().kind != TidyViewModel::Phase::Case::scanning)
                QTimer::singleShot(20, &loop, &QEventLoop::quit);
        },
        Qt::QueuedConnection);
    model.chooseFolder(folder);
    loop.exec();
    waits.takingOver = heart->longestMilliseconds();
    return waits;
}

/// In days.
double medianAge(const OrdovanInventory& inventory) {
    std::vector<double> times;
    for (const OrdovanInventoryEntry& file : inventory.files) times.push_back(file.modifiedEpoch.value_or(0));
    const auto middle = times.begin() + static_cast<std::ptrdiff_t>(times.size() / 2);
    std::ranges::nth_element(times, middle);
    return (ordovan::systemTime() - *middle) / 86'400;
}

/// Resident memory in MiB (proc(5), statm).
double memory() {
    std::size_t size = 0, resident = 0;
    std::ifstream("/proc/self/statm") >> size >> resident;
    return static_cast<double>(resident) * 4096 / 1048576;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    const Url records = Url::file(std::string(argv[2]));
    SystemEnvironment environment({.recordsFolder = records, .settingsFolder = records});
    TidyPorts ports = environment.ports();
    bool isSlow = true;
    ports.makeDirectoryReader = [&isSlow,
                                 make = ports.makeDirectoryReader]() -> std::unique_ptr<OrdovanDirectoryReading> {
        if (!isSlow) return make();
        return std::make_unique<SlowReader>(make());
    };
    TidyViewModel model(ports, {.loadsInBackground = true, .indexesPlans = true});
    ThemeEnvironment theme(AppTheme::lagoon);
    CommandCenter commands;
    SystemDesktop desktop([&model] { return model.rootURL(); });
    Announcer announcer;

    QImage target(1064, 772, QImage::Format_ARGB32_Premultiplied);
    QWidget window;
    SmartInboxView view({model, environment.settings(), environment.rules(), theme, commands, desktop, announcer},
                        &window);
    window.resize(target.size());
    view.resize(window.size());
    window.show();
    const auto draw = [&] { window.render(&target); };
    draw();
    const double before = memory();

    const Url folder = Url::file(std::string(argv[1]));
    const double slowScan = preview(model, folder).scanning;
    isSlow = false;
    std::vector<double> again;
    for (int i = 0; i < 5; ++i) {
        // Another folder in between, so that the plan is a new one.
        preview(model, records);
        again.push_back(preview(model, folder).takingOver);
    }
    std::ranges::sort(again);
    if (!model.plan()) return 1;

    const Times typed =
        keystrokes(*view.findChild<QLineEdit*>(u"search"_s), {u"invoice 2024"_s, u"résumé"_s, u"e"_s, u"zzzz"_s}, draw);
    auto* list = view.findChild<RowsView*>(u"planList"_s);
    const Times scrolled = pages(*list->verticalScrollBar(), draw);
    const double tick = milliseconds([&] {
        list->rows()->toggle(1);
        draw();
    });
    const double days = medianAge(*model.inventory());
    const double byAge = milliseconds([&] {
        model.tickOlderThan(days);
        draw();
    });
    const std::size_t ticked = model.plan()->proposals.size() - model.exclusion().count();
    auto* tickAll = view.findChild<QPushButton*>(u"tickAll"_s);
    const double all = milliseconds([&] {
        tickAll->click();
        draw();
    });
    std::printf(
        "{\"proposals\": %zu, \"conflicts\": %zu, \"rows\": %d, \"slowScanGapMs\": %.1f, \"takeOverMs\": %.1f, "
        "\"keystrokeMedianMs\": %.2f, \"keystrokeWorstMs\": %.2f, \"scrollPageMs\": %.2f, \"tickMs\": %.2f, "
        "\"tickByAgeMs\": %.2f, \"tickedByAge\": %zu, \"tickAllMs\": %.2f, \"excluded\": %zu, \"memoryMiB\": %.1f}\n",
        model.plan()->proposals.size(), model.plan()->conflicts.size(), list->rows()->rowCount(), slowScan,
        again[again.size() / 2], typed.median(), typed.worst(), scrolled.median(), tick, byAge, ticked, all,
        model.exclusion().count(), memory() - before);
    return 0;
}
