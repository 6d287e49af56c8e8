#include "OrdovanApp/theme/Banner.h"

#include "OrdovanApp/theme/AccessibleRole.h"
#include "OrdovanApp/theme/Buttons.h"
#include "OrdovanApp/theme/Card.h"
#include "OrdovanApp/theme/Glyph.h"
#include "OrdovanApp/theme/StyleSheet.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QListView>
#include <QPainter>
#include <QPushButton>
#include <QStringListModel>
#include <QVBoxLayout>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr int linesInSight = 6;
constexpr int linesAtOnce = 200;

Glyph glyphOf(Banner::Kind kind) {
    switch (kind) {
        case Banner::Kind::info:
            return Glyph::info;
        case Banner::Kind::warning:
            return Glyph::warning;
        case Banner::Kind::error:
            return Glyph::error;
    }
    return Glyph::info;
}

QColor colorOf(Banner::Kind kind, const ThemeColors& colors) {
    switch (kind) {
        case Banner::Kind::info:
            return colors.accentText;
        case Banner::Kind::warning:
            return colors.warning;
        case Banner::Kind::error:
            return colors.danger;
    }
    return colors.accentText;
}

}  // namespace

Banner::Banner(const ThemeEnvironment& theme, Kind kind, QWidget* parent)
    : QWidget(parent), theme_(theme), kind_(kind), glyph_(new QLabel(this)), text_(new QLabel(this)) {
    setAccessibleRole(this, QAccessible::Notification);
    setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    text_->setObjectName(u"bannerText"_s);
    text_->setTextFormat(Qt::PlainText);
    text_->setWordWrap(true);
    StyleSheet::setType(text_, StyleSheet::LabelType::body);
    toggle_ = Buttons::link(QString(), this);
    toggle_->setObjectName(u"bannerToggle"_s);
    toggle_->hide();
    close_ = Buttons::glyphOnly(theme, Glyph::close, tr("Close"), this);
    close_->setObjectName(u"bannerClose"_s);
    lines_ = new QStringListModel(this);
    details_ = new QListView(this);
    details_->setObjectName(u"bannerDetails"_s);
    details_->setModel(lines_);
    details_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    details_->setWordWrap(true);
    details_->setTextElideMode(Qt::ElideNone);
    details_->setResizeMode(QListView::Adjust);
    // There may be one for each of 50,000 files.
    details_->setLayoutMode(QListView::Batched);
    details_->setBatchSize(linesAtOnce);
    details_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    details_->hide();

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(14, 8, 10, 8);
    layout->setSpacing(8);
    auto* line = new QHBoxLayout;
    line->setSpacing(8);
    line->addWidget(glyph_);
    line->addSpacing(2);
    line->addWidget(text_, 1);
    line->addWidget(toggle_);
    buttons_ = new QHBoxLayout;
    buttons_->setSpacing(8);
    line->addLayout(buttons_);
    line->addWidget(close_);
    layout->addLayout(line);
    layout->addWidget(details_);

    connect(toggle_, &QPushButton::clicked, this, [this] { setDetailsShown(!detailsShown()); });
    connect(close_, &QPushButton::clicked, this, [this] {
        hide();
        Q_EMIT closed();
    });
    connect(&theme, &ThemeEnvironment::changed, this, &Banner::recolor);
    setDetailsTexts(tr("Problems"), tr("Show Problems"), tr("Hide Problems"));
    recolor();
}

void Banner::setKind(Kind kind) {
    kind_ = kind;
    recolor();
}

void Banner::setText(const QString& text) {
    text_->setText(text);
    setAccessibleName(text);
}

QString Banner::text() const {
    return text_->text();
}

void Banner::addButton(QPushButton* button) {
    buttons_->addWidget(button);
}

void Banner::setDetails(const QStringList& lines) {
    lines_->setStringList(lines);
    detailsWidth_ = 0;
    toggle_->setVisible(!lines.isEmpty());
    setDetailsShown(false);
}

void Banner::setDetailsTexts(const QString& name, const QString& show, const QString& hide) {
    show_ = show;
    hide_ = hide;
    details_->setAccessibleName(name);
    setDetailsShown(detailsShown());
}

bool Banner::detailsShown() const {
    return !details_->isHidden();
}

void Banner::setDetailsShown(bool shown) {
    const bool show = shown && lines_->rowCount() > 0;
    details_->setVisible(show);
    if (show) fitDetails();
    toggle_->setText(show ? hide_ : show_);
}

/// As high as the first lines, which may wrap.
void Banner::fitDetails() {
    if (width() == detailsWidth_ || lines_->rowCount() == 0) return;
    detailsWidth_ = width();
    layout()->activate();
    details_->doItemsLayout();
    details_->scrollToTop();
    const QRect last = details_->visualRect(lines_->index(std::min(linesInSight, lines_->rowCount()) - 1));
    const int around = details_->height() - details_->viewport()->height();
    details_->setFixedHeight(last.bottom() + 1 + around);
}

void Banner::resizeEvent(QResizeEvent*) {
    if (detailsShown()) fitDetails();
}

void Banner::recolor() {
    const QColor color = colorOf(kind_, theme_.colors());
    glyph_->setPixmap(Glyphs::pixmap(glyphOf(kind_), theme_.scaled(18), color, devicePixelRatioF()));
    update();
}

void Banner::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(theme_.colors().surface(colorOf(kind_, theme_.colors())));
    painter.drawRoundedRect(rect(), Surfaces::cardRadius, Surfaces::cardRadius);
}
