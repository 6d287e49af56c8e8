// How long the list of the screens takes with 50,000 rows: to show them, to scroll a page, to draw again. Off-screen;
// prints one JSON object with milliseconds.
#include "OrdovanApp/theme/RowsView.h"
#include "tests/support/ListRows.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QImage>
#include <QScrollBar>

#include <algorithm>
#include <cstdio>
#include <vector>

using namespace Qt::StringLiterals;
using ordovan::test::ListRows;

namespace {

std::vector<ListRows::Line> makeRows(const ThemeColors& colors, int count) {
    std::vector<ListRows::Line> lines{ListRows::head(u"Proposed"_s)};
    for (int i = 0; i < count; ++i) {
        auto line = ListRows::tick(u"Report of the year number %1.pdf"_s.arg(i), i % 3 != 0);
        const auto kind = OrdovanFileCategories::allCases[static_cast<std::size_t>(i) % 12];
        line.content.detail = u"Downloads / folder %1"_s.arg(i % 200);
        line.content.glyph = Glyphs::forCategory(kind);
        line.content.glyphColor = colors.kind(kind);
        line.content.chip = {u"Documents"_s, colors.kind(kind)};
        line.content.columns = {u"1.2 MB"_s, u"12 Nov 2026"_s};
        lines.push_back(std::move(line));
    }
    return lines;
}

double milliseconds(const QElapsedTimer& timer) {
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

/// The middle of the times of `repeats` calls.
template <class Work>
double median(int repeats, Work work) {
    std::vector<double> times;
    for (int i = 0; i < repeats; ++i) {
        QElapsedTimer timer;
        timer.start();
        work();
        times.push_back(milliseconds(timer));
    }
    std::ranges::nth_element(times, times.begin() + repeats / 2);
    return times[static_cast<std::size_t>(repeats) / 2];
}

}  // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    const ThemeEnvironment theme(AppTheme::lagoon);
    ListRows model(makeRows(theme.colors(), 50'000));

    QImage target(1008, 640, QImage::Format_ARGB32_Premultiplied);
    QElapsedTimer timer;
    timer.start();
    RowsView view(theme, RowsView::Style::sections);
    view.setColumnWidths({84, 96});
    view.resize(1008, 640);
    view.setModel(&model);
    view.show();
    view.render(&target);
    const double show = milliseconds(timer);

    QScrollBar* bar = view.verticalScrollBar();
    const double page = median(101, [&] {
        bar->setValue(bar->value() + bar->pageStep());
        view.render(&target);
    });
    const double repaint = median(101, [&] { view.render(&target); });
    const double reset = median(21, [&] {
        model.reset();
        view.render(&target);
    });
    std::printf("{\"rows\": 50000, \"showMs\": %.2f, \"scrollPageMs\": %.2f, \"repaintMs\": %.2f, \"resetMs\": %.2f}\n",
                show, page, repaint, reset);
    return 0;
}
