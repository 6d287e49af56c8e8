#include "OrdovanApp/theme/Segments.h"

#include "OrdovanApp/theme/AccessibleRole.h"
#include "OrdovanApp/theme/Buttons.h"
#include "OrdovanApp/theme/Card.h"

#include <QKeyEvent>
#include <QMenu>
#include <QPainter>
#include <QPainterPath>
#include <QPushButton>
#include <QRadioButton>
#include <QStyle>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr int sidePadding = 13;
constexpr int widestMenuText = 180;

QFont fontOf(const ThemeEnvironment& theme, bool chosen) {
    QFont font = theme.font(chosen ? ThemeEnvironment::Type::bodyStrong : ThemeEnvironment::Type::body);
    if (!chosen) font.setWeight(QFont::Medium);
    return font;
}

}  // namespace

/// One segment: a radio button that draws itself as part of the whole.
class Segments::Segment : public QRadioButton {
public:
    Segment(const ThemeEnvironment& theme, const QString& text, Segments* owner)
        : QRadioButton(owner), theme_(theme), owner_(owner) {
        setText(QString(text).replace(u'&', u"&&"_s));
        setAccessibleName(text);
        setAttribute(Qt::WA_Hover);
        setProperty("ringRadius", 6);
    }
    void setLast(bool last) { last_ = last; }
    [[nodiscard]] QSize sizeHint() const override {
        // As wide as when it is chosen, so that choosing moves nothing.
        const int text = QFontMetrics(fontOf(theme_, true)).horizontalAdvance(accessibleName());
        return {text + 2 * theme_.scaled(sidePadding), theme_.scaled(34)};
    }

protected:
    void nextCheckState() override { setChecked(true); }
    [[nodiscard]] bool hitButton(const QPoint& position) const override { return rect().contains(position); }
    void keyPressEvent(QKeyEvent* event) override {
        // Left to the whole; Space is the button's own.
        if (event->key() == Qt::Key_Space) {
            QRadioButton::keyPressEvent(event);
        } else {
            event->ignore();
        }
    }
    void paintEvent(QPaintEvent*) override {
        const ThemeColors& colors = theme_.colors();
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        QPainterPath whole;
        whole.addRoundedRect(QRectF(owner_->outline()).adjusted(1, 1, -1, -1).translated(-pos()),
                             Surfaces::controlRadius - 1, Surfaces::controlRadius - 1);
        painter.setClipPath(whole);
        if (isChecked()) {
            painter.fillRect(rect(), colors.tint);
        } else if (isDown()) {
            painter.fillRect(rect(), colors.pressed);
        } else if (underMouse() && isEnabled()) {
            painter.fillRect(rect(), colors.hover);
        }
        if (!last_) painter.fillRect(QRectF(width() - 1, 0, 1, height()), colors.hairline);
        painter.setFont(fontOf(theme_, isChecked()));
        painter.setPen(!isEnabled() ? colors.faintText : isChecked() ? colors.accentText : colors.secondText);
        const QString shown = painter.fontMetrics().elidedText(accessibleName(), Qt::ElideRight, width() - 8);
        painter.drawText(rect(), Qt::AlignCenter, shown);
    }

private:
    const ThemeEnvironment& theme_;
    const Segments* owner_;
    bool last_ = false;
};

Segments::Segments(const ThemeEnvironment& theme, QWidget* parent)
    : QWidget(parent), theme_(theme), more_(Buttons::quiet(tr("More"), this)), menu_(new QMenu(this)) {
    setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Fixed);
    setAccessibleRole(this, QAccessible::Grouping);
    more_->setObjectName(u"moreSegments"_s);
    more_->setProperty("kind", u"segmentMenu"_s);
    more_->setProperty("ringRadius", 6);
    more_->hide();
    Buttons::setMenu(theme, more_, menu_);
    connect(&theme, &ThemeEnvironment::changed, this, [this] {
        updateGeometry();
        place();
        update();
    });
}

void Segments::setSegments(const QStringList& texts, const QStringList& helps) {
    helps_ = helps;
    if (texts != texts_) {
        const QString chosen = texts_.value(current_);
        const int before = current_;
        texts_ = texts;
        current_ = texts_.isEmpty() ? -1 : std::max(0, static_cast<int>(texts_.indexOf(chosen)));
        rebuild();
        if (current_ != before) Q_EMIT currentChanged(current_);
    }
    for (qsizetype i = 0; i < segments_.size(); ++i) segments_[i]->setToolTip(helps_.value(i));
}

void Segments::rebuild() {
    const bool hadFocus = isAncestorOf(window()->focusWidget());
    qDeleteAll(segments_);
    segments_.clear();
    for (const QString& text : texts_) {
        auto* segment = new Segment(theme_, text, this);
        const int index = static_cast<int>(segments_.size());
        connect(segment, &QRadioButton::toggled, this, [this, index](bool on) {
            if (on) setCurrent(index);
        });
        segments_.append(segment);
    }
    // Made later than what comes after this, they would be reached after all of it.
    QWidget* before = more_;
    for (Segment* segment : segments_) setTabOrder(std::exchange(before, segment), segment);
    setTabOrder(before, more_);
    markCurrent();
    updateGeometry();
    place();
    if (hadFocus && current_ >= 0) segments_[current_]->setFocus();
}

void Segments::setCurrent(int index) {
    if (index < 0 || index >= segments_.size() || index == current_) return;
    const bool hadFocus = isAncestorOf(window()->focusWidget());
    current_ = index;
    markCurrent();
    place();
    if (hadFocus) {
        QWidget* now = index < shown_ ? static_cast<QWidget*>(segments_[index]) : more_;
        now->setFocus(Qt::OtherFocusReason);
    }
    Q_EMIT currentChanged(index);
}

void Segments::markCurrent() {
    if (current_ >= 0) segments_[current_]->setChecked(true);  // which unchecks the others
    for (qsizetype i = 0; i < segments_.size(); ++i) {
        // One stop for Tab; the arrow keys do the rest.
        segments_[i]->setFocusPolicy(i == current_ ? Qt::StrongFocus : Qt::ClickFocus);
        segments_[i]->update();
    }
}

int Segments::widthOf(int count) const {
    int width = 0;
    for (int i = 0; i < count; ++i) width += segments_[i]->sizeHint().width();
    return width;
}

Segments::Fit Segments::fitting(int room) const {
    const int count = static_cast<int>(segments_.size());
    const int all = widthOf(count);
    if (all <= room) return {.shown = count, .used = all, .needed = all};
    const QString chosen = texts_.value(current_);
    const QFontMetrics metrics(fontOf(theme_, true));
    const auto menuWidth = [&](const QString& text) {
        return std::min(widestMenuText, metrics.horizontalAdvance(text)) + theme_.scaled(52);
    };
    const int widestMenu = std::max(menuWidth(tr("More")), menuWidth(chosen));
    int shown = count;
    while (shown > 0 && widthOf(shown) + widestMenu > room) --shown;
    const QString menu = current_ >= shown ? chosen : tr("More");
    return {.shown = shown,
            .used = std::min(room, widthOf(shown) + menuWidth(menu)),
            .needed = std::min(room, widthOf(shown) + widestMenu)};
}

void Segments::place() {
    const int count = static_cast<int>(segments_.size());
    const Fit fit = fitting(width());
    shown_ = fit.shown;
    used_ = fit.used;
    int x = 0;
    for (int i = 0; i < count; ++i) {
        Segment* segment = segments_[i];
        segment->setVisible(i < shown_);
        segment->setLast(i + 1 == count);
        if (i >= shown_) continue;
        segment->setGeometry(x, 0, segment->sizeHint().width(), height());
        x += segment->width();
    }
    const bool overflow = shown_ < count;
    more_->setVisible(overflow);
    const bool inMenu = overflow && current_ >= shown_;
    update();
    if (!overflow) return;
    const QString chosen = texts_.value(current_);
    const QFontMetrics metrics(fontOf(theme_, true));
    more_->setGeometry(x + 1, 1, std::max(0, used_ - x - 2), height() - 2);
    const QString text = inMenu ? metrics.elidedText(chosen, Qt::ElideRight, widestMenuText) : tr("More");
    more_->setText(QString(text).replace(u'&', u"&&"_s));
    more_->setAccessibleName(inMenu ? chosen : text);
    if (more_->property("chosen").toBool() != inMenu) {
        more_->setProperty("chosen", inMenu);
        more_->style()->unpolish(more_);
        more_->style()->polish(more_);
    }
    fillMenu();
}

void Segments::fillMenu() {
    menu_->clear();
    for (int i = shown_; i < segments_.size(); ++i) {
        QAction* action = menu_->addAction(QString(texts_[i]).replace(u'&', u"&&"_s));
        action->setCheckable(true);
        action->setChecked(i == current_);
        connect(action, &QAction::triggered, this, [this, i] { setCurrent(i); });
    }
}

void Segments::step(int by) {
    if (segments_.isEmpty()) return;
    setCurrent(std::clamp(current_ + by, 0, static_cast<int>(segments_.size()) - 1));
}

void Segments::keyPressEvent(QKeyEvent* event) {
    const int forward = isRightToLeft() ? -1 : 1;
    switch (event->key()) {
        case Qt::Key_Right:
            step(forward);
            return;
        case Qt::Key_Left:
            step(-forward);
            return;
        case Qt::Key_Home:
            setCurrent(0);
            return;
        case Qt::Key_End:
            setCurrent(static_cast<int>(segments_.size()) - 1);
            return;
        default:
            QWidget::keyPressEvent(event);
    }
}

void Segments::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    place();
}

void Segments::paintEvent(QPaintEvent*) {
    if (segments_.isEmpty()) return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(theme_.colors().hairline, 1));
    painter.setBrush(theme_.colors().card);
    painter.drawRoundedRect(QRectF(outline()).adjusted(0.5, 0.5, -0.5, -0.5), Surfaces::controlRadius,
                            Surfaces::controlRadius);
}

QSize Segments::sizeHint() const {
    return {widthOf(static_cast<int>(segments_.size())), theme_.scaled(34)};
}

QSize Segments::minimumSizeHint() const {
    return {segments_.isEmpty() ? 0 : std::min(sizeHint().width(), theme_.scaled(120)), theme_.scaled(34)};
}
