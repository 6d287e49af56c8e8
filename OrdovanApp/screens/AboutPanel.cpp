#include "OrdovanApp/screens/AboutPanel.h"

#include "OrdovanApp/theme/Glyph.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

constexpr int iconSize = 72;

}  // namespace

AboutPanel::AboutPanel(const ThemeEnvironment& theme, QWidget* parent)
    : QWidget(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint),
      theme_(theme) {
    setObjectName(u"about"_s);
    setWindowTitle(tr("About ordovan+"));
    auto* icon = new QLabel(this);
    icon->setPixmap(Glyphs::application().pixmap(QSize(iconSize, iconSize), devicePixelRatioF()));
    icon->setAlignment(Qt::AlignCenter);
    auto* name = new QLabel(u"ordovan+"_s, this);
    auto* version = new QLabel(tr("Version %1").arg(QCoreApplication::applicationVersion()), this);
    auto* credits = new QLabel(tr("Careful folder organizing for macOS."), this);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(56, 32, 56, 36);
    layout->setSpacing(4);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    layout->addWidget(icon);
    layout->addSpacing(12);
    const auto recolor = [&theme, name, version, credits] {
        const auto set = [](QLabel* label, const QFont& font, const QColor& color) {
            label->setFont(font);
            QPalette palette = label->palette();
            palette.setColor(QPalette::WindowText, color);
            label->setPalette(palette);
        };
        set(name, theme.font(ThemeEnvironment::Type::title), theme.colors().text);
        set(version, theme.font(ThemeEnvironment::Type::caption), theme.colors().secondText);
        set(credits, theme.font(ThemeEnvironment::Type::body), theme.colors().text);
    };
    for (QLabel* label : {name, version, credits}) {
        label->setAlignment(Qt::AlignCenter);
        label->setTextInteractionFlags(Qt::TextSelectableByMouse);
        if (label == credits) layout->addSpacing(8);
        layout->addWidget(label);
    }
    connect(&theme, &ThemeEnvironment::changed, this, recolor);
    recolor();
}

void AboutPanel::keyPressEvent(QKeyEvent* event) {
    if (event->matches(QKeySequence::Cancel) || event->matches(QKeySequence::Close)) {
        close();
        return;
    }
    QWidget::keyPressEvent(event);
}

void AboutPanel::paintEvent(QPaintEvent*) {
    QPainter(this).fillRect(rect(), theme_.colors().window);
}
