#include "OrdovanApp/screens/SettingsView.h"

#include "OrdovanApp/screens/ThemeChoice.h"
#include "OrdovanApp/stores/AppSettings.h"
#include "OrdovanApp/theme/Banner.h"
#include "OrdovanApp/theme/Card.h"
#include "OrdovanApp/theme/ScreenHeader.h"
#include "OrdovanApp/theme/ThemeEnvironment.h"
#include "OrdovanCore/Categories.h"

#include <QCheckBox>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

namespace {

constexpr int contentWidth = 500;
/// Where a tick box's text begins, so that what explains it stands below.
constexpr int textIndent = 24;

/// A label that follows the theme.
QLabel* themedLabel(const ThemeEnvironment& theme, ThemeEnvironment::Type type, QColor ThemeColors::* color,
                    const QString& text, QWidget* parent) {
    auto* label = new QLabel(text, parent);
    label->setWordWrap(true);
    label->setTextFormat(Qt::PlainText);
    const auto recolor = [&theme, type, color, label] {
        label->setFont(theme.font(type));
        QPalette palette = label->palette();
        palette.setColor(QPalette::WindowText, theme.colors().*color);
        label->setPalette(palette);
    };
    QObject::connect(&theme, &ThemeEnvironment::changed, label, recolor);
    recolor();
    return label;
}

}  // namespace

SettingsView::SettingsView(const AppContext& context, QWidget* parent)
    : QWidget(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint),
      context_(context),
      warning_(new Banner(context.theme, Banner::Kind::warning, this)) {
    setObjectName(u"settings"_s);
    setWindowTitle(tr("Settings"));
    warning_->setText(tr("This setting couldn't be saved. It holds until you quit ordovan+."));
    warning_->hide();
    connect(&context.settings, &AppSettings::saved, warning_, &QWidget::setHidden);

    auto* header = new ScreenHeader(context.theme, tr("Settings"), this);
    header->setLede(tr("Settings only change the preview. Nothing moves until you choose Organize."));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(28, 0, 28, 24);
    layout->setSpacing(8);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    layout->addWidget(header);
    layout->addWidget(warning_);
    layout->addSpacing(8);
    layout->addWidget(makeHeading(tr("Organizing")));
    layout->addWidget(makeOrganizing());
    layout->addSpacing(8);
    layout->addWidget(makeHeading(tr("Theme")));
    layout->addWidget(makeThemes());
    connect(&context.theme, &ThemeEnvironment::changed, this, qOverload<>(&QWidget::update));
}

QWidget* SettingsView::makeHeading(const QString& text) {
    return themedLabel(context_.theme, ThemeEnvironment::Type::heading, &ThemeColors::text, text, this);
}

QWidget* SettingsView::makeOrganizing() {
    auto* card = new Card(context_.theme, this);
    card->setFixedWidth(context_.theme.scaled(contentWidth));
    auto* layout = new QVBoxLayout(card);
    layout->setContentsMargins(16, 14, 16, 16);
    layout->setSpacing(4);
    const auto folder = QString::fromUtf8(OrdovanOutput::folderName.data(), OrdovanOutput::folderName.size());

    AppSettings* settings = &context_.settings;
    QCheckBox* byMonth = addToggle(layout, u"setting-groupByMonth"_s, tr("Group files by month"),
                                   tr("Files go into a dated folder, for example %1/Images/2026-10.").arg(folder));
    byMonth->setChecked(settings->groupByMonth());
    connect(byMonth, &QCheckBox::toggled, settings, &AppSettings::setGroupByMonth);
    connect(settings, &AppSettings::groupByMonthChanged, byMonth,
            [byMonth, settings] { byMonth->setChecked(settings->groupByMonth()); });

    layout->addSpacing(12);
    QCheckBox* hidden = addToggle(layout, u"setting-includeHidden"_s, tr("Include hidden files"),
                                  tr("Hidden files (names starting with a dot) are left out by default."));
    hidden->setChecked(settings->includeHidden());
    connect(hidden, &QCheckBox::toggled, settings, &AppSettings::setIncludeHidden);
    connect(settings, &AppSettings::includeHiddenChanged, hidden,
            [hidden, settings] { hidden->setChecked(settings->includeHidden()); });
    return card;
}

QCheckBox* SettingsView::addToggle(QVBoxLayout* layout, const QString& name, const QString& text, const QString& help) {
    auto* toggle = new QCheckBox(text, this);
    toggle->setObjectName(name);
    toggle->setAccessibleDescription(help);
    layout->addWidget(toggle, 0, Qt::AlignLeft);
    auto* explanation =
        themedLabel(context_.theme, ThemeEnvironment::Type::caption, &ThemeColors::secondText, help, this);
    explanation->setContentsMargins(textIndent, 0, 0, 0);
    layout->addWidget(explanation);
    return toggle;
}

QWidget* SettingsView::makeThemes() {
    auto* card = new Card(context_.theme, this);
    card->setFixedWidth(context_.theme.scaled(contentWidth));
    auto* layout = new QHBoxLayout(card);
    layout->setContentsMargins(12, 12, 12, 14);
    layout->setSpacing(4);
    AppSettings* settings = &context_.settings;
    for (const AppTheme theme : AppThemes::allCases) {
        auto* choice = new ThemeChoice(context_.theme, theme, card);
        choice->setChecked(settings->theme() == theme);
        layout->addWidget(choice, 1);
        connect(choice, &ThemeChoice::toggled, settings, [settings, theme](bool on) {
            if (on) settings->setTheme(theme);
        });
        connect(settings, &AppSettings::themeChanged, choice,
                [choice, settings, theme] { choice->setChecked(settings->theme() == theme); });
    }
    return card;
}

void SettingsView::keyPressEvent(QKeyEvent* event) {
    if (event->matches(QKeySequence::Cancel) || event->matches(QKeySequence::Close)) {
        close();
        return;
    }
    QWidget::keyPressEvent(event);
}

void SettingsView::paintEvent(QPaintEvent*) {
    QPainter(this).fillRect(rect(), context_.theme.colors().window);
}
