#include "OrdovanApp/theme/FilterField.h"

#include "OrdovanApp/theme/Buttons.h"
#include "OrdovanApp/theme/Glyph.h"

#include <QKeyEvent>
#include <QPainter>
#include <QPushButton>

FilterField::FilterField(const ThemeEnvironment& theme, const QString& placeholder, QWidget* parent)
    : QLineEdit(parent), theme_(theme), clear_(Buttons::glyphOnly(theme, Glyph::close, tr("Clear"), this)) {
    setProperty("role", QStringLiteral("filter"));
    setPlaceholderText(placeholder);
    setAccessibleName(placeholder);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    clear_->setCursor(Qt::ArrowCursor);
    clear_->setFocusPolicy(Qt::NoFocus);  // Esc does the same
    clear_->hide();
    connect(clear_, &QPushButton::clicked, this, &QLineEdit::clear);
    connect(this, &QLineEdit::textChanged, this, [this](const QString& text) {
        clear_->setVisible(!text.isEmpty());
        placeClear();
    });
    connect(&theme, &ThemeEnvironment::changed, this, qOverload<>(&QWidget::update));
}

QSize FilterField::sizeHint() const {
    const int text = fontMetrics().horizontalAdvance(placeholderText());
    return {std::max(theme_.scaled(230), text + theme_.scaled(36 + 34 + 8)), QLineEdit::sizeHint().height()};
}

QSize FilterField::minimumSizeHint() const {
    return {theme_.scaled(140), QLineEdit::minimumSizeHint().height()};
}

void FilterField::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape && !text().isEmpty()) {
        clear();
        return;
    }
    QLineEdit::keyPressEvent(event);
}

void FilterField::resizeEvent(QResizeEvent* event) {
    QLineEdit::resizeEvent(event);
    placeClear();
}

void FilterField::paintEvent(QPaintEvent* event) {
    QLineEdit::paintEvent(event);
    QPainter painter(this);
    const int size = theme_.scaled(16);
    const QRect rect(theme_.scaled(12), (height() - size) / 2, size, size);
    Glyphs::paint(painter, Glyph::search, rect, theme_.colors().faintText);
}

void FilterField::placeClear() {
    const QSize size = clear_->sizeHint();
    clear_->setGeometry(width() - size.width() - 2, (height() - size.height()) / 2, size.width(), size.height());
}
