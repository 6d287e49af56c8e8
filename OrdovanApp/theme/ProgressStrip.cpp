#include "OrdovanApp/theme/ProgressStrip.h"

#include "OrdovanApp/theme/Buttons.h"
#include "OrdovanApp/theme/Card.h"
#include "OrdovanApp/theme/ElidedLabel.h"
#include "OrdovanApp/theme/StyleSheet.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>
#include <QVariantAnimation>

#include <algorithm>

using StyleSheet::LabelType;

namespace {

constexpr int steps = 1000;

}  // namespace

/// A thin bar. While the end is not known a piece of it goes from left to right, or stands still where the desktop asks
/// for reduced motion.
class ProgressStrip::Bar : public QProgressBar {
public:
    Bar(const ThemeEnvironment& theme, QWidget* parent) : QProgressBar(parent), theme_(theme) {
        setTextVisible(false);
        setFixedHeight(6);
        sweep_.setStartValue(0.0);
        sweep_.setEndValue(1.0);
        sweep_.setDuration(1600);
        sweep_.setLoopCount(-1);
        QObject::connect(&sweep_, &QVariantAnimation::valueChanged, this, qOverload<>(&QWidget::update));
    }
    void setBusy(bool busy) {
        if (busy) {
            setRange(0, 0);
        } else {
            setRange(0, steps);
        }
        move();
    }

protected:
    void showEvent(QShowEvent* event) override {
        QProgressBar::showEvent(event);
        move();
    }
    void hideEvent(QHideEvent* event) override {
        QProgressBar::hideEvent(event);
        sweep_.stop();
    }
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(theme_.colors().hairline);
        const QRectF whole = rect();
        painter.drawRoundedRect(whole, 3, 3);
        painter.setBrush(theme_.colors().accent);
        QRectF part = whole;
        if (maximum() > 0) {
            if (value() <= 0) return;
            part.setWidth(std::max(6.0, whole.width() * value() / maximum()));
        } else {
            const qreal piece = whole.width() * 0.28;
            const bool still = sweep_.state() != QAbstractAnimation::Running;
            const qreal left =
                still ? (whole.width() - piece) / 2 : sweep_.currentValue().toReal() * (whole.width() + piece) - piece;
            part = QRectF(left, 0, piece, whole.height()) & whole;
        }
        painter.drawRoundedRect(part, 3, 3);
    }

private:
    void move() {
        const bool moves = maximum() == 0 && isVisible() && theme_.motion(1) > 0;
        if (!moves) {
            sweep_.stop();
        } else if (sweep_.state() != QAbstractAnimation::Running) {
            sweep_.start();
        }
        update();
    }

    const ThemeEnvironment& theme_;
    QVariantAnimation sweep_;
};

ProgressStrip::ProgressStrip(const ThemeEnvironment& theme, QWidget* parent)
    : Card(theme, parent), text_(new ElidedLabel(this)), detail_(new ElidedLabel(this)), bar_(new Bar(theme, this)) {
    text_->setObjectName(QStringLiteral("progressText"));
    text_->setElideMode(Qt::ElideRight);
    StyleSheet::setType(text_, LabelType::strong);
    detail_->setObjectName(QStringLiteral("progressDetail"));
    StyleSheet::setType(detail_, LabelType::caption);
    detail_->setMinimumHeight(theme.scaled(17));
    bar_->setObjectName(QStringLiteral("progressBar"));
    cancel_ = Buttons::quiet(tr("Cancel"), this);
    cancel_->setObjectName(QStringLiteral("progressCancel"));
    connect(cancel_, &QPushButton::clicked, this, [this] {
        cancel_->setEnabled(false);
        Q_EMIT cancelled();
    });

    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(16, 12, 16, 12);
    layout->setSpacing(16);
    auto* texts = new QVBoxLayout;
    texts->setSpacing(6);
    texts->addWidget(text_);
    texts->addWidget(bar_);
    texts->addWidget(detail_);
    layout->addLayout(texts, 1);
    layout->addWidget(cancel_, 0, Qt::AlignVCenter);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    setBusy();
}

void ProgressStrip::setText(const QString& text) {
    text_->setText(text);
    bar_->setAccessibleName(text);
}

void ProgressStrip::setDetail(const QString& text) {
    detail_->setText(text);
}

void ProgressStrip::setProgress(qint64 done, qint64 total) {
    if (total <= 0) {
        setBusy();
        return;
    }
    if (bar_->maximum() == 0) bar_->setBusy(false);
    const double share = static_cast<double>(std::clamp<qint64>(done, 0, total)) / static_cast<double>(total);
    bar_->setValue(static_cast<int>(share * steps));
}

void ProgressStrip::setBusy() {
    bar_->setBusy(true);
}

void ProgressStrip::reset() {
    cancel_->setEnabled(true);
    setDetail({});
    setBusy();
}
