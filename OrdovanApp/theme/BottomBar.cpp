#include "OrdovanApp/theme/BottomBar.h"

#include "OrdovanApp/theme/AccessibleRole.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QPushButton>

#include <algorithm>

using Type = ThemeEnvironment::Type;

/// One line in two weights.
class BottomBar::Summary : public QWidget {
public:
    Summary(const ThemeEnvironment& theme, QWidget* parent) : QWidget(parent), theme_(theme) {
        setObjectName(QStringLiteral("summary"));
        setAccessibleRole(this, QAccessible::StaticText);
        setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    }
    void show(const QString& strong, const QString& rest) {
        if (strong == strong_ && rest == rest_) return;
        strong_ = strong;
        rest_ = rest;
        const QString whole = strong.isEmpty() || rest.isEmpty() ? strong + rest : strong + u' ' + rest;
        setAccessibleName(whole);
        setToolTip(whole.toHtmlEscaped());
        update();
    }
    [[nodiscard]] QSize sizeHint() const override {
        return {theme_.scaled(200), QFontMetrics(theme_.font(Type::body)).height()};
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        const QFont strongFont = theme_.font(Type::bodyStrong);
        const QFontMetrics strongMetrics(strongFont);
        painter.setFont(strongFont);
        painter.setPen(theme_.colors().text);
        const int align = Qt::AlignVCenter | Qt::AlignLeft;
        painter.drawText(rect(), align, strongMetrics.elidedText(strong_, Qt::ElideRight, width()));
        const int gap = strong_.isEmpty() ? 0 : strongMetrics.horizontalAdvance(strong_ + u' ');
        const QRect room = rect().adjusted(std::min(gap, width()), 0, 0, 0);
        painter.setFont(theme_.font(Type::body));
        painter.setPen(theme_.colors().secondText);
        painter.drawText(room, align, painter.fontMetrics().elidedText(rest_, Qt::ElideRight, room.width()));
    }

private:
    const ThemeEnvironment& theme_;
    QString strong_;
    QString rest_;
};

BottomBar::BottomBar(const ThemeEnvironment& theme, QWidget* parent)
    : QWidget(parent), summary_(new Summary(theme, this)), left_(new QHBoxLayout), right_(new QHBoxLayout) {
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 14, 0, 18);
    layout->setSpacing(12);
    left_->setSpacing(12);
    right_->setSpacing(8);
    layout->addLayout(left_);
    layout->addWidget(summary_, 1);
    layout->addLayout(right_);
    setMinimumHeight(theme.scaled(34) + 32);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    connect(&theme, &ThemeEnvironment::changed, summary_, qOverload<>(&QWidget::update));
}

void BottomBar::setSummary(const QString& strong, const QString& rest) {
    summary_->show(strong, rest);
}

void BottomBar::addButton(QPushButton* button) {
    right_->addWidget(button);
}

void BottomBar::addLeft(QWidget* widget) {
    left_->addWidget(widget);
}
