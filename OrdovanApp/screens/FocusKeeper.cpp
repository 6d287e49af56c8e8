#include "OrdovanApp/screens/FocusKeeper.h"

#include "OrdovanApp/theme/EmptyState.h"
#include "OrdovanApp/theme/FilterField.h"
#include "OrdovanApp/theme/ProgressStrip.h"
#include "OrdovanApp/theme/RowsView.h"
#include "OrdovanApp/theme/Sheet.h"
#include "OrdovanApp/theme/ThemeEnvironment.h"

#include <QApplication>
#include <QPushButton>

#include <algorithm>
#include <utility>

namespace {

bool isUsable(const QWidget* widget) {
    return widget->isVisible() && widget->isEnabled() && widget->focusPolicy() != Qt::NoFocus;
}

RowsView* listIn(const QWidget& screen) {
    const auto lists = screen.findChildren<RowsView*>();
    const auto found = std::ranges::find_if(lists, [](const RowsView* list) {
        return isUsable(list) && list->rows() != nullptr && list->rows()->rowCount() > 0;
    });
    return found == lists.end() ? nullptr : *found;
}

/// The first button of a `Place` in sight.
template <class Place>
QPushButton* buttonIn(const QWidget& screen) {
    for (const Place* place : screen.findChildren<Place*>()) {
        for (QPushButton* button : place->template findChildren<QPushButton*>()) {
            if (isUsable(button)) return button;
        }
    }
    return nullptr;
}

QWidget* bestIn(const QWidget& screen) {
    if (RowsView* list = listIn(screen)) return list;
    if (QPushButton* button = buttonIn<EmptyState>(screen)) return button;
    return buttonIn<ProgressStrip>(screen);
}

}  // namespace

FocusKeeper::FocusKeeper(const ThemeEnvironment& theme, QWidget* content, std::function<QWidget*()> screen,
                         std::function<void()> sidebar)
    : QObject(content), theme_(theme), content_(content), screen_(std::move(screen)), sidebar_(std::move(sidebar)) {
    connect(qApp, &QApplication::focusChanged, this, &FocusKeeper::follow);
}

/// What is done about it waits until whoever hides things has come to an end, and may have chosen what has the focus.
void FocusKeeper::follow(const QWidget* before, QWidget* now) {
    if (!settles_) place_ = Place::sameScreen;
    const QWidget* screen = screen_();
    if (std::exchange(lastScreen_, screen) != screen) {
        place_ = seen_.insert(screen).second ? Place::newScreen : Place::screenSeenBefore;
    }
    const bool isLost = before != nullptr && content_->isAncestorOf(before) && !isUsable(before);
    const bool isOnNothing =
        now == nullptr ? content_->isActiveWindow() : content_->isAncestorOf(now) && !isUsable(now);
    if (!isLost && !isOnNothing) return;
    next_ = now;
    if (!std::exchange(settles_, true)) QMetaObject::invokeMethod(this, &FocusKeeper::settle, Qt::QueuedConnection);
}

void FocusKeeper::settle() {
    settles_ = false;
    const QWidget* focus = QApplication::focusWidget();
    if (!content_->isVisible() || !content_->isActiveWindow() || isAsking()) return;
    if (focus != nullptr && (!content_->isAncestorOf(focus) || isChosen(*focus))) return;
    QWidget* best = bestIn(*screen_());
    // Who uses the keyboard is to see where in a list it is.
    if (best != nullptr)
        best->setFocus(theme_.usesKeyboard() ? Qt::TabFocusReason : Qt::OtherFocusReason);
    else if (focus == nullptr || !isUsable(focus) || focus == next_)
        sidebar_();
}

/// Whether more than the order of controls made this the one. Where a page comes into sight it is its first control,
/// which is the search of its list mostly; in a section that was in sight before it is where its user was.
bool FocusKeeper::isChosen(const QWidget& focus) const {
    if (!isUsable(&focus) || &focus == next_ || place_ == Place::newScreen) return false;
    return place_ == Place::screenSeenBefore || qobject_cast<const FilterField*>(&focus) == nullptr;
}

/// A question has the focus, and gives it back.
bool FocusKeeper::isAsking() const {
    const auto sheets = content_->findChildren<Sheet*>();
    return std::ranges::any_of(sheets, &QWidget::isVisible);
}
