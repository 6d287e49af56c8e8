#pragma once

#include <QObject>
#include <QPointer>
#include <QWidget>

#include <functional>
#include <set>

class ThemeEnvironment;

/// Keeps the keyboard focus of the window's content on something that can be used. Where what had it is hidden,
/// disabled or gone, and nobody has chosen another, it goes to the list of the screen in sight; else to the button of
/// what stands for the list, to that of the work that goes on, or last to the sidebar.
class FocusKeeper : public QObject {
    Q_OBJECT

public:
    /// `screen` tells what is in sight, `sidebar` gives the sidebar the focus. All of them outlive this.
    FocusKeeper(const ThemeEnvironment& theme, QWidget* content, std::function<QWidget*()> screen,
                std::function<void()> sidebar);

private:
    void follow(const QWidget* before, QWidget* now);
    void settle();
    [[nodiscard]] bool isChosen(const QWidget& focus) const;
    [[nodiscard]] bool isAsking() const;

    const ThemeEnvironment& theme_;
    QWidget* content_;
    std::function<QWidget*()> screen_;
    std::function<void()> sidebar_;
    bool settles_ = false;
    /// Where it is now that it was lost.
    enum class Place { sameScreen, screenSeenBefore, newScreen };
    Place place_ = Place::sameScreen;
    const QWidget* lastScreen_ = nullptr;
    std::set<const QWidget*> seen_;  ///< the screens that were in sight
    QPointer<QWidget> next_;         ///< what the toolkit has taken for it: the next one by the Tab key
};
