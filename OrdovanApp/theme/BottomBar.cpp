#include "OrdovanApp/theme/BottomBar.h"

#include "OrdovanApp/theme/AccessibleRole.h"
#include "OrdovanApp/theme/ToolTips.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QPushButton>
#include <QTextLayout>

#include <algorithm>
#include <cmath>

using Type = ThemeEnvironment::Type;

/// One line in two weights, or as many as it takes where there is no room for it.
class BottomBar::Summary : public QWidget {
public:
    Summary(const ThemeEnvironment& theme, QWidget* parent) : QWidget(parent), theme_(theme) {
        setObjectName(QStringLiteral("summary"));
        setAccessibleRole(this, QAccessible::StaticText);
        QSizePolicy policy(QSizePolicy::Ignored, QSizePolicy::Preferred);
        policy.setHeightForWidth(true);
        setSizePolicy(policy);
    }
    void show(const QString& strong, const QString& rest) {
        if (strong == strong_ && rest == rest_) return;
        strong_ = strong;
        rest_ = rest;
        const QString whole = strong.isEmpty() || rest.isEmpty() ? strong + rest : strong + u' ' + rest;
        setAccessibleName(whole);
        setToolTip(ToolTips::plain(whole));
        updateGeometry();
        update();
    }
    [[nodiscard]] QSize sizeHint() const override {
        return {theme_.scaled(200), 2 * QFontMetrics(theme_.font(Type::body)).height()};
    }
    /// Never less than two lines take, so that nothing jumps where it need not.
    [[nodiscard]] int heightForWidth(int width) const override {
        QTextLayout text(accessibleName());
        return std::max(sizeHint().height(), static_cast<int>(std::ceil(layOut(text, width))));
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        QTextLayout text(accessibleName());
        const qreal height = layOut(text, width());
        text.draw(&painter, QPointF(0, std::max(0.0, (this->height() - height) / 2)));
    }

private:
    /// Breaks the summary into lines of this width. Returns their height.
    qreal layOut(QTextLayout& text, int width) const {
        text.setFont(theme_.font(Type::body));
        text.setFormats(
            {format(0, strong_.size(), Type::bodyStrong, theme_.colors().text),
             format(strong_.size(), accessibleName().size() - strong_.size(), Type::body, theme_.colors().secondText)});
        text.beginLayout();
        qreal height = 0;
        for (QTextLine line = text.createLine(); line.isValid(); line = text.createLine()) {
            line.setLineWidth(width);
            line.setPosition({0, height});
            height += line.height();
        }
        text.endLayout();
        return height;
    }
    [[nodiscard]] QTextLayout::FormatRange format(qsizetype start, qsizetype length, Type type,
                                                  const QColor& color) const {
        QTextLayout::FormatRange range;
        range.start = static_cast<int>(start);
        range.length = static_cast<int>(length);
        range.format.setFont(theme_.font(type));
        range.format.setForeground(color);
        return range;
    }

    const ThemeEnvironment& theme_;
    QString strong_;
    QString rest_;
};

BottomBar::BottomBar(const ThemeEnvironment& theme, QWidget* parent)
    : QWidget(parent), summary_(new Summary(theme, this)), right_(new QHBoxLayout) {
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 14, 0, 18);
    layout->setSpacing(12);
    right_->setSpacing(8);
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
