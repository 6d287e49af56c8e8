#include "OrdovanApp/theme/EmptyState.h"

#include "OrdovanApp/theme/PointBox.h"
#include "OrdovanApp/theme/StyleSheet.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

using StyleSheet::LabelType;

namespace {

constexpr int widest = 720;
constexpr int narrow = 660;
constexpr QMargins usualMargins(40, 48, 40, 44);
constexpr QMargins narrowMargins(32, 24, 32, 24);
constexpr int pictureSize = 44;

QLabel* centred(QWidget* parent, LabelType type, const QString& name) {
    auto* label = new QLabel(parent);
    label->setObjectName(name);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setAlignment(Qt::AlignHCenter);
    StyleSheet::setType(label, type);
    label->hide();
    return label;
}

void fill(QLabel* label, const QString& text) {
    label->setText(text);
    label->setVisible(!text.isEmpty());
}

}  // namespace

/// What is in the middle; with an outline of dashes where something can be dropped.
class EmptyState::DropCard : public QWidget {
public:
    DropCard(const ThemeEnvironment& theme, QWidget* parent) : QWidget(parent), theme_(theme) {
        setMaximumWidth(widest);
    }
    void setDashed(bool dashed) {
        dashed_ = dashed;
        update();
    }
    [[nodiscard]] bool dashed() const { return dashed_; }

protected:
    void paintEvent(QPaintEvent*) override {
        if (!dashed_) return;
        const ThemeColors& colors = theme_.colors();
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        QPen pen(colors.control, 1);
        pen.setDashPattern({4, 4});
        painter.setPen(pen);
        painter.setBrush(colors.card);
        painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), 16, 16);
    }

private:
    const ThemeEnvironment& theme_;
    bool dashed_ = false;
};

EmptyState::EmptyState(const ThemeEnvironment& theme, Glyph glyph, QWidget* parent)
    : QWidget(parent), theme_(theme), glyph_(glyph), card_(new DropCard(theme, this)) {
    picture_ = new QLabel(card_);
    picture_->setAlignment(Qt::AlignHCenter);
    title_ = centred(card_, LabelType::title, QStringLiteral("emptyTitle"));
    message_ = centred(card_, LabelType::second, QStringLiteral("emptyMessage"));
    points_ = new QWidget(card_);
    points_->hide();
    pointLayout_ = new QHBoxLayout(points_);
    pointLayout_->setContentsMargins(0, 22, 0, 0);
    pointLayout_->setSpacing(12);
    buttons_ = new QHBoxLayout;
    buttons_->setSpacing(8);
    footnote_ = centred(card_, LabelType::second, QStringLiteral("emptyFootnote"));
    footnote_->setContentsMargins(0, 10, 0, 0);

    auto* inside = new QVBoxLayout(card_);
    inside->setContentsMargins(usualMargins);
    inside->setSpacing(0);
    inside->addWidget(picture_);
    inside->addSpacing(14);
    inside->addWidget(title_);
    inside->addSpacing(6);
    inside->addWidget(message_);
    inside->addWidget(points_);
    inside->addLayout(buttons_);
    inside->addWidget(footnote_);

    auto* across = new QHBoxLayout;
    across->addStretch(1);
    across->addWidget(card_, 100);
    across->addStretch(1);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(28, 8, 28, 8);
    layout->addStretch(1);
    layout->addLayout(across);
    layout->addStretch(1);
    connect(&theme, &ThemeEnvironment::changed, this, &EmptyState::recolor);
    recolor();
}

void EmptyState::setGlyph(Glyph glyph) {
    glyph_ = glyph;
    recolor();
}

void EmptyState::setTitle(const QString& text) {
    fill(title_, text);
}

void EmptyState::setMessage(const QString& text) {
    fill(message_, text);
}

void EmptyState::setPoints(const QList<std::pair<Glyph, QString>>& points) {
    if (points == pointTexts_) return;
    pointTexts_ = points;
    qDeleteAll(points_->findChildren<PointBox*>());
    for (const auto& [glyph, text] : points) {
        auto* box = new PointBox(theme_, glyph, text, points_);
        box->setOnCard(card_->dashed());
        pointLayout_->addWidget(box, 1);
    }
    points_->setVisible(!points.isEmpty());
}

/// Where it is narrow the points stand below each other, nearer together: beside each other they would be cut off.
void EmptyState::resizeEvent(QResizeEvent*) {
    const bool isNarrow = width() < theme_.scaled(narrow);
    pointLayout_->setDirection(isNarrow ? QBoxLayout::TopToBottom : QBoxLayout::LeftToRight);
    pointLayout_->setSpacing(isNarrow ? 6 : 12);
    card_->layout()->setContentsMargins(isNarrow ? narrowMargins : usualMargins);
}

void EmptyState::addButton(QPushButton* button) {
    if (buttons_->isEmpty()) {
        buttons_->setContentsMargins(0, 24, 0, 0);
        buttons_->addStretch(1);
        buttons_->addStretch(1);
    }
    button->setProperty("large", true);
    buttons_->insertWidget(buttons_->count() - 1, button);
}

void EmptyState::setFootnote(const QString& text) {
    fill(footnote_, text);
}

void EmptyState::setDashed(bool dashed) {
    card_->setDashed(dashed);
    for (PointBox* box : points_->findChildren<PointBox*>()) box->setOnCard(dashed);
}

void EmptyState::recolor() {
    picture_->setPixmap(
        Glyphs::pixmap(glyph_, theme_.scaled(pictureSize), theme_.colors().accentText, devicePixelRatioF()));
    card_->update();
}
