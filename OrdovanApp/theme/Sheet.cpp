#include "OrdovanApp/theme/Sheet.h"

#include "OrdovanApp/theme/AccessibleRole.h"
#include "OrdovanApp/theme/Buttons.h"
#include "OrdovanApp/theme/Card.h"
#include "OrdovanApp/theme/PointBox.h"
#include "OrdovanApp/theme/StyleSheet.h"

#include <QApplication>
#include <QGraphicsOpacityEffect>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>
#include <QVariantAnimation>

#include <algorithm>

using namespace Qt::StringLiterals;
using StyleSheet::LabelType;

namespace {

constexpr int cardWidth = 460;
constexpr int cardRadius = 14;
constexpr int margin = 24;
constexpr int shadowReach = 56;
constexpr int fadeMilliseconds = 150;

QLabel* wrapped(QWidget* parent, LabelType type) {
    auto* label = new QLabel(parent);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    StyleSheet::setType(label, type);
    return label;
}

}  // namespace

class Sheet::SheetCard : public QWidget {
public:
    SheetCard(const ThemeEnvironment& theme, QWidget* parent) : QWidget(parent), theme_(theme) {}

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(theme_.colors().hairline, 1));
        painter.setBrush(theme_.colors().card);
        painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), cardRadius, cardRadius);
    }
    // The scrim below would take a click on the card for one on itself.
    void mousePressEvent(QMouseEvent* event) override { event->accept(); }

private:
    const ThemeEnvironment& theme_;
};

Sheet::Sheet(const ThemeEnvironment& theme, QWidget* host, QObject* parent)
    : QWidget(host), theme_(theme), host_(host), card_(new SheetCard(theme, this)) {
    hide();
    setAccessibleRole(this, QAccessible::Dialog);
    setFocusPolicy(Qt::NoFocus);
    build();
    fade_ = new QVariantAnimation(this);
    fade_->setStartValue(0.0);
    fade_->setEndValue(1.0);
    connect(fade_, &QVariantAnimation::valueChanged, this, [this](const QVariant& value) {
        shown_ = value.toDouble();
        if (auto* effect = qobject_cast<QGraphicsOpacityEffect*>(card_->graphicsEffect())) effect->setOpacity(shown_);
        update();
    });
    connect(fade_, &QVariantAnimation::finished, this, [this] { card_->setGraphicsEffect(nullptr); });
    connect(cancel_, &QPushButton::clicked, this, [this] { answer(false); });
    connect(confirm_, &QPushButton::clicked, this, [this] { answer(true); });
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* now) { keepFocus(now); });
    connect(&theme, &ThemeEnvironment::changed, this, qOverload<>(&QWidget::update));
    if (parent != nullptr && parent != host) connect(parent, &QObject::destroyed, this, &QObject::deleteLater);
    host->installEventFilter(this);
}

void Sheet::build() {
    card_->setObjectName(u"sheetCard"_s);
    title_ = wrapped(card_, LabelType::sheetTitle);
    title_->setObjectName(u"sheetTitle"_s);
    message_ = wrapped(card_, LabelType::second);
    message_->setObjectName(u"sheetMessage"_s);
    points_ = new QVBoxLayout;
    points_->setSpacing(8);
    cancel_ = Buttons::quiet(tr("Cancel"), card_);
    cancel_->setObjectName(u"sheetCancel"_s);
    confirm_ = Buttons::primary(QString(), card_);
    confirm_->setObjectName(u"sheetConfirm"_s);
    for (QPushButton* button : {cancel_, confirm_}) button->setAutoDefault(false);  // Return is answered here

    auto* layout = new QVBoxLayout(card_);
    layout->setContentsMargins(margin, margin - 2, margin, margin);
    layout->setSpacing(0);
    layout->addWidget(title_);
    layout->addSpacing(6);
    layout->addWidget(message_);
    layout->addLayout(points_);
    layout->addSpacing(20);
    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(8);
    buttons->addStretch();
    buttons->addWidget(cancel_);
    buttons->addWidget(confirm_);
    layout->addLayout(buttons);
}

void Sheet::setTitle(const QString& text) {
    title_->setText(text);
    setAccessibleName(text);
}

void Sheet::setMessage(const QString& text) {
    message_->setText(text);
    message_->setVisible(!text.isEmpty());
    setAccessibleDescription(text);
}

void Sheet::addPoint(Glyph glyph, const QString& text) {
    points_->setContentsMargins(0, 16, 0, 0);
    points_->addWidget(new PointBox(theme_, glyph, text, card_));
}

void Sheet::clearPoints() {
    qDeleteAll(card_->findChildren<PointBox*>());
    points_->setContentsMargins(0, 0, 0, 0);
}

void Sheet::setConfirm(const QString& text, bool destructive) {
    destructive_ = destructive;
    confirm_->setText(QString(text).replace(u'&', u"&&"_s));
    confirm_->setProperty("kind", destructive ? u"destructive"_s : u"primary"_s);
    confirm_->style()->unpolish(confirm_);
    confirm_->style()->polish(confirm_);
}

void Sheet::open() {
    if (host_ == nullptr) return;
    if (isHidden()) focusBefore_ = window()->focusWidget();
    setGeometry(host_->rect());
    placeCard();
    raise();
    fadeIn();
    show();
    (destructive_ ? cancel_ : confirm_)->setFocus(Qt::OtherFocusReason);
    QAccessibleEvent shown(this, QAccessible::DialogStart);
    QAccessible::updateAccessibility(&shown);
}

void Sheet::fadeIn() {
    fade_->stop();
    shown_ = 1;
    const int length = theme_.motion(fadeMilliseconds);
    if (length <= 0) return;
    shown_ = 0;
    auto* effect = new QGraphicsOpacityEffect(card_);
    effect->setOpacity(0);
    card_->setGraphicsEffect(effect);
    fade_->setDuration(length);
    fade_->start();
}

void Sheet::answer(bool yes) {
    if (isHidden()) return;
    fade_->stop();
    card_->setGraphicsEffect(nullptr);
    hide();
    if (focusBefore_ != nullptr) focusBefore_->setFocus(Qt::OtherFocusReason);
    QAccessibleEvent gone(this, QAccessible::DialogEnd);
    QAccessible::updateAccessibility(&gone);
    if (yes) {
        Q_EMIT confirmed();
    } else {
        Q_EMIT cancelled();
    }
}

void Sheet::keepFocus(QWidget* now) {
    if (isHidden() || now == nullptr || now->window() != window() || isAncestorOf(now)) return;
    cancel_->setFocus(Qt::OtherFocusReason);
}

bool Sheet::focusNextPrevChild(bool next) {
    QList<QWidget*> stops;
    for (QWidget* widget : {static_cast<QWidget*>(cancel_), static_cast<QWidget*>(confirm_)}) {
        if (widget->isEnabled()) stops.append(widget);
    }
    if (stops.isEmpty()) return true;
    const qsizetype at = stops.indexOf(window()->focusWidget());
    const qsizetype to = (at + (next ? 1 : -1) + stops.size()) % stops.size();
    stops[to]->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    return true;
}

/// Some systems tell of a key that is held as of one that goes up and down again in the same moment.
void Sheet::keyReleaseEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) returnUp_ = event->timestamp();
}

void Sheet::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
        case Qt::Key_Escape:
            answer(false);
            return;
        case Qt::Key_Return:
        case Qt::Key_Enter:
            // Who holds the key that asked the question down has not read it.
            if (event->isAutoRepeat() || (returnUp_ != 0 && event->timestamp() == returnUp_)) return;
            answer(confirm_->isEnabled() && (confirm_->hasFocus() || (!destructive_ && !cancel_->hasFocus())));
            return;
        case Qt::Key_Left:
        case Qt::Key_Up:
            focusNextPrevChild(false);
            return;
        case Qt::Key_Right:
        case Qt::Key_Down:
            focusNextPrevChild(true);
            return;
        default:
            event->accept();  // nothing reaches what is covered
    }
}

bool Sheet::eventFilter(QObject* watched, QEvent* event) {
    if (watched == host_ && event->type() == QEvent::Resize && !isHidden()) setGeometry(host_->rect());
    return QWidget::eventFilter(watched, event);
}

void Sheet::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    placeCard();
}

void Sheet::placeCard() {
    card_->layout()->activate();
    const int width = std::min(theme_.scaled(cardWidth), this->width() - 2 * margin);
    const int height = std::min(card_->layout()->totalHeightForWidth(width), this->height() - margin);
    card_->setGeometry((this->width() - width) / 2, (this->height() - height) / 2, width, height);
}

void Sheet::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    QColor scrim = theme_.colors().scrim;
    scrim.setAlphaF(scrim.alphaF() * static_cast<float>(shown_));
    painter.fillRect(rect(), scrim);
    QColor shadow = theme_.colors().shadow;
    shadow.setAlphaF(0.20F * static_cast<float>(shown_));
    Surfaces::paintShadow(painter, QRectF(card_->geometry()), cardRadius, shadowReach, shadow);
}
