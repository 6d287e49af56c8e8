#pragma once

#include <QElapsedTimer>
#include <QLineEdit>
#include <QScrollBar>
#include <QTimer>

#include <algorithm>
#include <initializer_list>
#include <vector>

/// Stop watches for the thread of an interface.
namespace WindowTimes {

template <class Work>
double milliseconds(Work work) {
    QElapsedTimer timer;
    timer.start();
    work();
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

/// The longest time between two turns of the event loop.
class Heartbeat {
public:
    Heartbeat() {
        timer_.setTimerType(Qt::PreciseTimer);
        QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { beat(); });
        clock_.start();
        timer_.start(1);
    }
    double longestMilliseconds() {
        beat();
        return static_cast<double>(longest_) / 1e6;
    }

private:
    void beat() {
        longest_ = std::max(longest_, clock_.nsecsElapsed());
        clock_.restart();
    }
    QTimer timer_;
    QElapsedTimer clock_;
    qint64 longest_ = 0;
};

/// Times, sorted.
struct Times {
    std::vector<double> milliseconds;

    [[nodiscard]] double median() const { return milliseconds[milliseconds.size() / 2]; }
    [[nodiscard]] double worst() const { return milliseconds.back(); }
};

/// The times of each of these texts typed letter by letter and taken away again.
template <class Draw>
Times keystrokes(QLineEdit& field, std::initializer_list<QString> texts, Draw draw) {
    Times times;
    const auto type = [&](const QString& text) {
        times.milliseconds.push_back(milliseconds([&] {
            field.setText(text);
            draw();
        }));
    };
    for (const QString& text : texts) {
        for (qsizetype length = 1; length <= text.size(); ++length) type(text.left(length));
        for (qsizetype length = text.size(); length-- > 0;) type(text.left(length));
    }
    std::ranges::sort(times.milliseconds);
    return times;
}

/// The times of fifty pages down.
template <class Draw>
Times pages(QScrollBar& bar, Draw draw) {
    Times times;
    for (int page = 0; page < 51; ++page) {
        times.milliseconds.push_back(milliseconds([&] {
            bar.setValue(bar.value() + bar.pageStep());
            draw();
        }));
    }
    std::ranges::sort(times.milliseconds);
    return times;
}

}  // namespace WindowTimes
