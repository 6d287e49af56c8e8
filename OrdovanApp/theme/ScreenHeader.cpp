#include "OrdovanApp/theme/ScreenHeader.h"

#include "OrdovanApp/theme/ElidedLabel.h"
#include "OrdovanApp/theme/Glyph.h"
#include "OrdovanApp/theme/StyleSheet.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

using StyleSheet::LabelType;

namespace {

constexpr int gap = 16;

}  // namespace

/// The outline of a pill, painted so that it is as round as it is high.
class ScreenHeader::Pill : public QWidget {
public:
    Pill(const ThemeEnvironment& theme, QWidget* parent) : QWidget(parent), theme_(theme) {
        setObjectName(QStringLiteral("folderPill"));
        setFixedHeight(theme.scaled(32));
        setMaximumWidth(theme.scaled(280));
        auto* layout = new QHBoxLayout(this);
        layout->setContentsMargins(12, 0, 13, 0);
        layout->setSpacing(8);
        glyph_ = new QLabel(this);
        text_ = new ElidedLabel(this);
        text_->setObjectName(QStringLiteral("folderName"));
        StyleSheet::setType(text_, LabelType::body);
        layout->addWidget(glyph_);
        layout->addWidget(text_);
        recolor();
    }
    void show(const QString& path) {
        const QString name = path.section(u'/', -1, -1, QString::SectionSkipEmpty);
        text_->setText(name.isEmpty() ? path : name);
        text_->setFullToolTip(path);
        text_->setAccessibleDescription(path);
        setVisible(true);
    }
    void recolor() {
        const ThemeColors& colors = theme_.colors();
        glyph_->setPixmap(Glyphs::pixmap(Glyph::folder, 16, colors.text, devicePixelRatioF()));
        setFixedHeight(theme_.scaled(32));
        update();
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(theme_.colors().hairline, 1));
        painter.setBrush(theme_.colors().card);
        const QRectF outline = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
        painter.drawRoundedRect(outline, outline.height() / 2, outline.height() / 2);
    }

private:
    const ThemeEnvironment& theme_;
    QLabel* glyph_;
    ElidedLabel* text_;
};

ScreenHeader::ScreenHeader(const ThemeEnvironment& theme, const QString& title, QWidget* parent)
    : QWidget(parent),
      theme_(theme),
      title_(new ElidedLabel(title, this)),
      lede_(new QLabel(this)),
      pill_(new Pill(theme, this)) {
    title_->setObjectName(QStringLiteral("screenTitle"));
    title_->setElideMode(Qt::ElideRight);
    StyleSheet::setType(title_, LabelType::title);
    lede_->setObjectName(QStringLiteral("screenLede"));
    lede_->setTextFormat(Qt::PlainText);
    lede_->setWordWrap(true);
    StyleSheet::setType(lede_, LabelType::second);
    lede_->hide();
    pill_->hide();

    whole_ = new QVBoxLayout(this);
    whole_->setContentsMargins(0, 22, 0, 14);
    whole_->setSpacing(4);
    auto* layout = new QHBoxLayout;
    layout->setSpacing(gap);
    texts_ = new QVBoxLayout;
    texts_->setSpacing(4);
    texts_->addWidget(title_);
    texts_->addWidget(lede_);
    texts_->addStretch();
    layout->addLayout(texts_, 1);
    whole_->addLayout(layout);
    right_ = new QHBoxLayout;
    right_->setSpacing(8);
    right_->addWidget(pill_, 0, Qt::AlignVCenter);
    layout->addLayout(right_);
    layout->setAlignment(right_, Qt::AlignTop);
    connect(&theme, &ThemeEnvironment::changed, this, [this] { pill_->recolor(); });
}

void ScreenHeader::setLede(const QString& text) {
    lede_->setText(text);
    lede_->setVisible(!text.isEmpty());
    placeLede();
}

void ScreenHeader::setFolder(const std::optional<QString>& path) {
    if (path) {
        pill_->show(*path);
    } else {
        pill_->hide();
    }
}

/// Buttons come and go.
bool ScreenHeader::event(QEvent* event) {
    if (event->type() == QEvent::LayoutRequest) placeLede();
    return QWidget::event(event);
}

void ScreenHeader::resizeEvent(QResizeEvent*) {
    placeLede();
}

/// Where it does not fit beside the buttons in one line, the lede has the whole width below them.
void ScreenHeader::placeLede() {
    const int besides = width() - (right_->isEmpty() ? 0 : right_->sizeHint().width() + gap);
    const bool ownLine = lede_->fontMetrics().horizontalAdvance(lede_->text()) > besides;
    if (ownLine == ledeHasOwnLine_) return;
    ledeHasOwnLine_ = ownLine;
    if (ownLine) {
        whole_->addWidget(lede_);
    } else {
        texts_->insertWidget(1, lede_);
    }
}

void ScreenHeader::addButton(QPushButton* button) {
    right_->addWidget(button, 0, Qt::AlignVCenter);
}
