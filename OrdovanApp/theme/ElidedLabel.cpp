#include "OrdovanApp/theme/ElidedLabel.h"

#include "OrdovanApp/theme/ToolTips.h"

#include <QEvent>
#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QToolTip>

ElidedLabel::ElidedLabel(QWidget* parent) : QLabel(parent) {
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
}

ElidedLabel::ElidedLabel(const QString& text, QWidget* parent) : ElidedLabel(parent) {
    setText(text);
}

void ElidedLabel::setText(const QString& text) {
    QLabel::setText(text);
    setAccessibleName(text);
}

void ElidedLabel::setElideMode(Qt::TextElideMode mode) {
    mode_ = mode;
    update();
}

void ElidedLabel::setFullToolTip(const QString& text) {
    fullToolTip_ = text;
}

QSize ElidedLabel::minimumSizeHint() const {
    const int width = fontMetrics().horizontalAdvance(QStringLiteral("MM…"));
    return {std::min(width, sizeHint().width()), QLabel::minimumSizeHint().height()};
}

bool ElidedLabel::fits() const {
    return fontMetrics().horizontalAdvance(text()) <= contentsRect().width();
}

void ElidedLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    const QRect rect = contentsRect();
    const QString shown = fits() ? text() : fontMetrics().elidedText(text(), mode_, rect.width());
    style()->drawItemText(&painter, rect, static_cast<int>(alignment()), palette(), isEnabled(), shown,
                          foregroundRole());
}

bool ElidedLabel::event(QEvent* event) {
    if (event->type() == QEvent::ToolTip && (!fits() || !fullToolTip_.isEmpty())) {
        const auto* help = static_cast<QHelpEvent*>(event);
        const QString whole = fullToolTip_.isEmpty() ? text() : fullToolTip_;
        QToolTip::showText(help->globalPos(), ToolTips::plain(whole), this);
        return true;
    }
    return QLabel::event(event);
}
