#include "OrdovanApp/screens/SidebarItem.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QKeyEvent>
#include <QPainter>

using namespace Qt::StringLiterals;

namespace {

constexpr int itemHeight = 36;
constexpr int inset = 10;
constexpr int glyphSize = 18;

/// An item of a list that can be selected and pressed.
class ItemInterface : public QAccessibleWidget {
public:
    explicit ItemInterface(SidebarItem* item) : QAccessibleWidget(item, QAccessible::ListItem) {}

    [[nodiscard]] QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        state.selectable = true;
        state.focusable = true;
        state.selected = item()->isCurrent();
        return state;
    }
    [[nodiscard]] QStringList actionNames() const override { return {pressAction(), setFocusAction()}; }
    void doAction(const QString& name) override {
        if (name == pressAction()) return item()->click();
        QAccessibleWidget::doAction(name);
    }

private:
    [[nodiscard]] SidebarItem* item() const { return static_cast<SidebarItem*>(object()); }
};

QAccessibleInterface* makeInterface(const QString&, QObject* object) {
    auto* item = qobject_cast<SidebarItem*>(object);
    return item != nullptr ? new ItemInterface(item) : nullptr;
}

}  // namespace

SidebarItem::SidebarItem(const ThemeEnvironment& theme, Section section, QWidget* parent)
    : QAbstractButton(parent), theme_(theme), section_(section) {
    QAccessible::installFactory(makeInterface);
    setObjectName(u"section-"_s + Sections::rawValue(section));
    setText(Sections::title(section));
    setAccessibleName(text());
    setAttribute(Qt::WA_Hover);
    setFocusPolicy(Qt::NoFocus);
    connect(&theme, &ThemeEnvironment::changed, this, [this] {
        updateGeometry();
        update();
    });
}

void SidebarItem::setCurrent(bool current) {
    current_ = current;
    setFocusPolicy(current ? Qt::TabFocus : Qt::NoFocus);
    update();
    QAccessible::State changed;
    changed.selected = true;
    QAccessibleStateChangeEvent event(this, changed);
    QAccessible::updateAccessibility(&event);
}

void SidebarItem::setCount(const QString& count, const QString& description) {
    count_ = count;
    setAccessibleDescription(description);
    update();
}

QSize SidebarItem::sizeHint() const {
    const int height = theme_.scaled(itemHeight);
    return {height * 5, height};
}

/// A button takes the arrow keys for itself; here they are the list's.
void SidebarItem::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Up || event->key() == Qt::Key_Down) return event->ignore();
    QAbstractButton::keyPressEvent(event);
}

void SidebarItem::paintEvent(QPaintEvent*) {
    const ThemeColors& colors = theme_.colors();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (current_ || underMouse()) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(current_ ? colors.tintStrong : colors.hover);
        painter.drawRoundedRect(rect(), 8, 8);
    }
    const QColor ink = current_ ? colors.accent : colors.secondText;
    const QRectF place(inset, (height() - glyphSize) / 2.0, glyphSize, glyphSize);
    Glyphs::paint(painter, Sections::glyph(section_), place, ink);

    QRect room = rect().adjusted(inset + glyphSize + inset, 0, -inset, 0);
    painter.setFont(theme_.font(ThemeEnvironment::Type::caption));
    painter.setPen(current_ ? colors.accent : colors.faintText);
    painter.drawText(room, Qt::AlignRight | Qt::AlignVCenter, count_);
    room.setRight(room.right() - painter.fontMetrics().horizontalAdvance(count_) - inset);

    QFont font = theme_.font(ThemeEnvironment::Type::body);
    font.setWeight(current_ ? QFont::DemiBold : QFont::Medium);
    painter.setFont(font);
    painter.setPen(ink);
    painter.drawText(room, Qt::AlignLeft | Qt::AlignVCenter,
                     painter.fontMetrics().elidedText(text(), Qt::ElideRight, room.width()));
}
