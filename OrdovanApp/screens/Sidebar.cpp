#include "OrdovanApp/screens/Sidebar.h"

#include "OrdovanApp/models/Formats.h"
#include "OrdovanApp/screens/SidebarItem.h"
#include "OrdovanApp/theme/AccessibleRole.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QVBoxLayout>

#include <algorithm>
#include <iterator>

using namespace Qt::StringLiterals;

namespace {

constexpr int sidebarWidth = 216;
constexpr int logoSize = 28;
constexpr int logoGlyphSize = 17;

/// The program's mark in the color of the theme.
class Logo : public QWidget {
public:
    Logo(const ThemeEnvironment& theme, QWidget* parent) : QWidget(parent), theme_(theme) {
        setFixedSize(logoSize, logoSize);
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(theme_.colors().accent);
        painter.drawRoundedRect(rect(), 8, 8);
        constexpr double inset = (logoSize - logoGlyphSize) / 2.0;
        Glyphs::paint(painter, Glyph::folder, QRectF(inset, inset, logoGlyphSize, logoGlyphSize),
                      theme_.colors().onAccent);
    }

private:
    const ThemeEnvironment& theme_;
};

/// The line between what acts on the folder and what stands beside it.
class Divider : public QWidget {
public:
    Divider(const ThemeEnvironment& theme, QWidget* parent) : QWidget(parent), theme_(theme) { setFixedHeight(21); }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter(this).fillRect(8, height() / 2, width() - 16, 1, theme_.colors().hairline);
    }

private:
    const ThemeEnvironment& theme_;
};

}  // namespace

Sidebar::Sidebar(const ThemeEnvironment& theme, QWidget* parent)
    : QWidget(parent), theme_(theme), name_(new QLabel(u"ordovan+"_s, this)), status_(new QLabel(this)) {
    setObjectName(u"sidebar"_s);
    name_->setObjectName(u"brand"_s);
    status_->setObjectName(u"status"_s);
    status_->setWordWrap(true);
    status_->setTextFormat(Qt::PlainText);
    status_->setContentsMargins(10, 10, 10, 10);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(10, 16, 11, 10);
    layout->setSpacing(0);
    layout->addWidget(makeBrand());
    layout->addWidget(makeList());
    layout->addStretch();
    layout->addWidget(status_);

    connect(&theme, &ThemeEnvironment::changed, this, &Sidebar::recolor);
    recolor();
}

QWidget* Sidebar::makeBrand() {
    auto* brand = new QWidget(this);
    auto* layout = new QHBoxLayout(brand);
    layout->setContentsMargins(8, 2, 8, 18);
    layout->setSpacing(10);
    layout->addWidget(new Logo(theme_, brand));
    layout->addWidget(name_, 1);
    return brand;
}

QWidget* Sidebar::makeList() {
    auto* list = new QWidget(this);
    list->setObjectName(u"sections"_s);
    setAccessibleRole(list, QAccessible::List);
    list->setAccessibleName(tr("Sections"));
    auto* layout = new QVBoxLayout(list);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    int number = 1;
    for (const Section section : Sections::sidebarOrder) {
        if (section == Section::rules) layout->addWidget(new Divider(theme_, list));
        auto* item = new SidebarItem(theme_, section, list);
        item->setToolTip(tr("Ctrl+%1").arg(number++));
        item->setCurrent(section == current_);
        connect(item, &SidebarItem::clicked, this, [this, section] { setCurrent(section); });
        layout->addWidget(item);
        items_[section] = item;
    }
    return list;
}

void Sidebar::setCurrent(Section section) {
    if (section == current_) return;
    const bool focused = items_.at(current_)->hasFocus();
    items_.at(current_)->setCurrent(false);
    current_ = section;
    items_.at(current_)->setCurrent(true);
    if (focused) focusCurrent();
    Q_EMIT currentChanged(section);
}

void Sidebar::setCount(Section section, qint64 count, const QString& description) {
    items_.at(section)->setCount(count > 0 ? Formats::count(count) : QString(), count > 0 ? description : QString());
}

void Sidebar::setStatus(const QString& text) {
    status_->setText(text);
}

void Sidebar::focusCurrent() {
    items_.at(current_)->setFocus(Qt::OtherFocusReason);
}

void Sidebar::step(int by) {
    const auto& order = Sections::sidebarOrder;
    const auto at = static_cast<int>(std::distance(order.begin(), std::find(order.begin(), order.end(), current_)));
    const int to = std::clamp(at + by, 0, static_cast<int>(order.size()) - 1);
    items_.at(current_)->setFocus(Qt::TabFocusReason);
    setCurrent(order.at(static_cast<std::size_t>(to)));
}

void Sidebar::keyPressEvent(QKeyEvent* event) {
    constexpr int all = static_cast<int>(Sections::sidebarOrder.size());
    switch (event->key()) {
        case Qt::Key_Up:
            return step(-1);
        case Qt::Key_Down:
            return step(1);
        case Qt::Key_Home:
            return step(-all);
        case Qt::Key_End:
            return step(all);
        default:
            QWidget::keyPressEvent(event);
    }
}

void Sidebar::recolor() {
    setFixedWidth(theme_.scaled(sidebarWidth));
    const ThemeColors& colors = theme_.colors();
    const auto paint = [](QLabel* label, const QColor& color) {
        QPalette palette = label->palette();
        palette.setColor(QPalette::WindowText, color);
        label->setPalette(palette);
    };
    name_->setFont(theme_.font(ThemeEnvironment::Type::heading));
    paint(name_, colors.text);
    status_->setFont(theme_.font(ThemeEnvironment::Type::caption));
    paint(status_, colors.faintText);
    update();
}

void Sidebar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.fillRect(rect(), theme_.colors().sidebar);
    painter.fillRect(width() - 1, 0, 1, height(), theme_.colors().hairline);
}
