#include "OrdovanApp/theme/FocusRing.h"

#include "OrdovanApp/theme/Card.h"
#include "OrdovanApp/theme/ThemeEnvironment.h"

#include <QApplication>
#include <QEvent>
#include <QLineEdit>
#include <QPainter>

namespace {

constexpr int gap = 2;
constexpr int stroke = 2;
constexpr int reach = gap + stroke;

bool isTextField(const QWidget* widget) {
    return widget->inherits("QLineEdit") || widget->inherits("QTextEdit") || widget->inherits("QPlainTextEdit");
}

/// What can be seen of a widget and its ring, in coordinates of its window: no ancestor may cut it off.
QRect ringRect(const QWidget* widget) {
    const QWidget* window = widget->window();
    QRect rect(widget->mapTo(window, QPoint()), widget->size());
    rect.adjust(-reach, -reach, reach, reach);
    for (const QWidget* ancestor = widget->parentWidget(); ancestor != nullptr && ancestor != window;
         ancestor = ancestor->parentWidget()) {
        if (ancestor->inherits("QAbstractScrollArea")) {
            rect &= QRect(ancestor->mapTo(window, QPoint()), ancestor->size());
        }
    }
    return rect;
}

}  // namespace

class FocusRing::Overlay : public QWidget {
public:
    Overlay(const ThemeEnvironment& theme, QWidget* window) : QWidget(window), theme_(theme) {
        setAttribute(Qt::WA_TransparentForMouseEvents);
        setAttribute(Qt::WA_NoSystemBackground);
        setFocusPolicy(Qt::NoFocus);
    }
    void setRadius(int radius) { radius_ = radius; }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(theme_.colors().accent, stroke));
        const QRectF rect = QRectF(this->rect()).adjusted(1, 1, -1, -1);
        painter.drawRoundedRect(rect, radius_ + gap + 1, radius_ + gap + 1);
    }

private:
    const ThemeEnvironment& theme_;
    int radius_ = 0;
};

FocusRing::FocusRing(const ThemeEnvironment& theme) : theme_(theme) {
    qApp->installEventFilter(this);
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* now) { follow(now); });
    connect(&theme, &ThemeEnvironment::changed, this, [this] {
        if (overlay_ != nullptr) overlay_->update();
    });
}

FocusRing::~FocusRing() {
    delete overlay_;
}

QWidget* FocusRing::target() const {
    return overlay_ != nullptr && !overlay_->isHidden() ? target_.data() : nullptr;
}

bool FocusRing::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
        case QEvent::KeyPress:
            if (!keyboard_) {
                keyboard_ = true;
                place();
            }
            break;
        case QEvent::MouseButtonPress:
            if (keyboard_) {
                keyboard_ = false;
                place();
            }
            break;
        case QEvent::Move:
        case QEvent::Resize:
        case QEvent::Show:
        case QEvent::Hide:
        case QEvent::EnabledChange:
            if (target_ != nullptr && watched->isWidgetType()) {
                const auto* widget = static_cast<QWidget*>(watched);
                if (widget == target_ || widget->isAncestorOf(target_)) place();
            }
            break;
        default:
            break;
    }
    return QObject::eventFilter(watched, event);
}

void FocusRing::follow(QWidget* widget) {
    target_ = widget;
    place();
}

/// A menu bar while its menus are open and a page without a control have the focus, but are not what it is meant for.
void FocusRing::place() {
    QWidget* widget = target_;
    const bool wanted = widget != nullptr && widget->isVisible() && widget->focusPolicy() != Qt::NoFocus &&
                        !widget->property("ownFocus").toBool() && (keyboard_ || isTextField(widget)) &&
                        !widget->isWindow() && widget->window()->windowType() != Qt::Popup;
    if (!wanted) {
        hide();
        return;
    }
    QWidget* window = widget->window();
    if (overlay_ == nullptr || overlay_->parentWidget() != window) {
        delete overlay_;
        overlay_ = new Overlay(theme_, window);
    }
    const QVariant radius = widget->property("ringRadius");
    overlay_->setRadius(radius.isValid() ? radius.toInt() : Surfaces::controlRadius);
    overlay_->setGeometry(ringRect(widget));
    overlay_->raise();
    overlay_->show();
}

void FocusRing::hide() {
    if (overlay_ != nullptr) overlay_->hide();
}
