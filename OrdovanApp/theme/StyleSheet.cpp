#include "OrdovanApp/theme/StyleSheet.h"

#include "OrdovanApp/theme/ThemeEnvironment.h"

#include <QHash>
#include <QRegularExpression>
#include <QStyle>
#include <QVariant>
#include <QWidget>

using namespace Qt::StringLiterals;

namespace {

// `@name` is a color of the theme; `@12px` a length that goes with the text scale.
constexpr auto sheet = R"(
QMainWindow, QDialog { background: @window; }
QToolTip { background: @card; color: @text; border: 1px solid @hairline; padding: 5px 8px; font-size: @12px; }

QLabel[type="title"] { font-size: @22px; font-weight: 700; color: @text; }
QLabel[type="sheetTitle"] { font-size: @18px; font-weight: 700; color: @text; }
QLabel[type="heading"] { font-size: @15px; font-weight: 600; color: @text; }
QLabel[type="body"] { font-size: @13px; color: @text; }
QLabel[type="second"] { font-size: @13px; color: @secondText; }
QLabel[type="strong"] { font-size: @13px; font-weight: 600; color: @text; }
QLabel[type="caption"] { font-size: @12px; color: @secondText; }
QLabel[type="captionStrong"] { font-size: @12px; font-weight: 600; color: @secondText; }
QLabel[type="figure"] { font-size: @21px; font-weight: 700; color: @text; }
QLabel[type="figureAccent"] { font-size: @21px; font-weight: 700; color: @accentText; }

QPushButton {
  min-height: @32px; padding: 0 @14px; border: 1px solid @hairline; border-radius: 8px;
  background: @card; color: @text; font-weight: 500;
}
QPushButton:hover { background: @hover; border-color: @hairline; }
QPushButton:pressed, QPushButton:open { background: @pressed; }
QPushButton:disabled { background: @hover; color: @faintText; }
QPushButton::menu-indicator { width: 0; height: 0; image: none; }
QPushButton[kind="primary"], QDialog QPushButton:default {
  background: @accent; border-color: @accent; color: @onAccent; font-weight: 600;
}
QPushButton[kind="primary"]:hover, QDialog QPushButton:default:hover {
  background: @accentHover; border-color: @accentHover;
}
QPushButton[kind="primary"]:pressed, QDialog QPushButton:default:pressed {
  background: @accentPressed; border-color: @accentPressed;
}
QPushButton[kind="primary"]:disabled, QDialog QPushButton:default:disabled {
  background: @hover; border-color: @hairline; color: @faintText;
}
QPushButton[kind="ghost"] { background: transparent; border-color: transparent; color: @secondText; }
QPushButton[kind="ghost"]:hover { background: @pressed; color: @text; }
QPushButton[kind="ghost"]:pressed { background: @hairline; color: @text; }
QPushButton[kind="ghost"]:disabled { background: transparent; color: @faintText; }
QPushButton[kind="destructive"] {
  background: @dangerSurface; border-color: @dangerSurface; color: @danger; font-weight: 600;
}
QPushButton[kind="destructive"]:hover { border-color: @danger; background: @dangerSurface; }
QPushButton[kind="destructive"]:pressed { border-color: @danger; background: @card; }
QPushButton[kind="destructive"]:disabled { background: @hover; border-color: @hairline; color: @faintText; }
QPushButton[large="true"] { min-height: @38px; padding: 0 @20px; }
QPushButton[kind="pill"] { min-height: @30px; padding: 0 @12px; border-radius: @15px; }
QPushButton[kind="glyph"] {
  min-height: @28px; max-height: @28px; min-width: @28px; max-width: @28px; padding: 0;
  background: transparent; border-color: transparent;
}
QPushButton[kind="glyph"]:hover { background: @pressed; }
QPushButton[kind="glyph"]:pressed { background: @hairline; }
QPushButton[kind="link"] {
  min-height: @24px; padding: 0 @6px; background: transparent; border-color: transparent; color: @accentText;
  font-weight: 600;
}
QPushButton[kind="link"]:hover { background: @pressed; }
QPushButton[kind="segmentMenu"] {
  min-height: @30px; padding: 0 @12px; border-color: transparent; background: transparent; color: @secondText;
}
QPushButton[kind="segmentMenu"]:hover { background: @hover; }
QPushButton[kind="segmentMenu"][chosen="true"] { background: @tint; color: @accentText; font-weight: 600; }

QLineEdit, QSpinBox {
  min-height: @32px; padding: 0 @11px; border: 1px solid @hairline; border-radius: 8px; background: @card;
  color: @text; selection-background-color: @accent; selection-color: @onAccent;
}
QLineEdit:hover { border-color: @control; }
QLineEdit:focus { border-color: @accent; }
QLineEdit:disabled { background: @hover; color: @faintText; }
QLineEdit[role="filter"] { padding-left: @36px; padding-right: @34px; }
QComboBox QLineEdit { min-height: 0; border: none; padding: 0 4px; background: transparent; }
QTextEdit, QPlainTextEdit {
  border: 1px solid @hairline; border-radius: 8px; background: @card; color: @text;
  selection-background-color: @accent; selection-color: @onAccent;
}

QCheckBox, QRadioButton { color: @text; spacing: 8px; min-height: @24px; }
QCheckBox:disabled, QRadioButton:disabled { color: @faintText; }
QGroupBox { border: none; margin-top: @24px; font-weight: 600; }
QGroupBox::title { subcontrol-origin: margin; subcontrol-position: top left; color: @text; }

QProgressBar { min-height: 6px; max-height: 6px; border: none; border-radius: 3px; background: @hairline; }
QProgressBar::chunk { border-radius: 3px; background: @accent; }

QMenuBar { background: @sidebar; color: @secondText; border-bottom: 1px solid @hairline; padding: 2px 4px; }
QMenuBar::item { padding: 4px 9px; border-radius: 6px; background: transparent; font-size: @12px; }
QMenuBar::item:selected { background: @pressed; color: @text; }
QMenuBar::item:disabled { color: @faintText; }
QMenu { background: @card; color: @text; border: 1px solid @hairline; padding: 5px; }
QMenu::item { padding: 6px 28px 6px 12px; border-radius: 6px; min-height: @18px; }
QMenu::item:selected { background: @tint; color: @accentText; }
QMenu::item:disabled { color: @faintText; background: transparent; }
QMenu::icon { padding-left: 10px; }
QMenu::indicator { width: 16px; height: 16px; padding-left: 8px; }
QMenu::separator { height: 1px; background: @hairline; margin: 5px 8px; }

QComboBox { color: @text; }
QComboBox QAbstractItemView, QListView[role="plain"] {
  background: @card; color: @text; border: 1px solid @hairline; padding: 4px; outline: none;
  selection-background-color: @tint; selection-color: @accentText;
}
QTreeView, QListView, QTableView {
  background: @card; alternate-background-color: @hover; color: @text; border: 1px solid @hairline;
  border-radius: 8px; outline: none; selection-background-color: @tint; selection-color: @text;
}
QTreeView::item, QListView::item { min-height: @26px; }
QListView { padding: 3px 6px; }
QTreeView::item:hover, QListView::item:hover { background: @hover; }
QTreeView::item:selected, QListView::item:selected { background: @tint; color: @text; }
QHeaderView { background: @groupHead; border: none; }
QHeaderView::section {
  background: @groupHead; color: @secondText; border: none; border-bottom: 1px solid @hairline;
  padding: 6px 8px; font-size: @12px; font-weight: 600;
}
QToolButton { border: 1px solid transparent; border-radius: 6px; background: transparent; padding: 4px; color: @text; }
QToolButton:hover { background: @pressed; }
QToolButton:pressed, QToolButton:checked { background: @tint; }
QSplitter::handle { background: @window; }
QStatusBar { background: @window; color: @secondText; }

QScrollArea { background: transparent; border: none; }
QScrollBar:vertical { width: 12px; background: transparent; margin: 0; border: none; }
QScrollBar:horizontal { height: 12px; background: transparent; margin: 0; border: none; }
QScrollBar::handle { background: @control; border-radius: 3px; margin: 3px; }
QScrollBar::handle:vertical { min-height: 36px; }
QScrollBar::handle:horizontal { min-width: 36px; }
QScrollBar::handle:hover, QScrollBar::handle:pressed { background: @secondText; }
QScrollBar::add-line, QScrollBar::sub-line { width: 0; height: 0; border: none; background: transparent; }
QScrollBar::add-page, QScrollBar::sub-page { background: transparent; }
QAbstractScrollArea::corner { background: transparent; border: none; }
)";

QHash<QString, QString> namesOf(const ThemeColors& colors) {
    const std::initializer_list<std::pair<QString, QColor>> named = {
        {u"window"_s, colors.window},
        {u"sidebar"_s, colors.sidebar},
        {u"card"_s, colors.card},
        {u"groupHead"_s, colors.groupHead},
        {u"hover"_s, colors.hover},
        {u"pressed"_s, colors.pressed},
        {u"hairline"_s, colors.hairline},
        {u"control"_s, colors.control},
        {u"text"_s, colors.text},
        {u"secondText"_s, colors.secondText},
        {u"faintText"_s, colors.faintText},
        {u"accent"_s, colors.accent},
        {u"accentText"_s, colors.accentText},
        {u"onAccent"_s, colors.onAccent},
        {u"accentHover"_s, colors.accentHover},
        {u"accentPressed"_s, colors.accentPressed},
        {u"tint"_s, colors.tint},
        {u"danger"_s, colors.danger},
        {u"dangerSurface"_s, colors.surface(colors.danger)},
    };
    QHash<QString, QString> names;
    for (const auto& [name, color] : named) names.insert(name, color.name());
    return names;
}

QString nameOf(StyleSheet::LabelType type) {
    switch (type) {
        case StyleSheet::LabelType::title:
            return u"title"_s;
        case StyleSheet::LabelType::sheetTitle:
            return u"sheetTitle"_s;
        case StyleSheet::LabelType::heading:
            return u"heading"_s;
        case StyleSheet::LabelType::body:
            return u"body"_s;
        case StyleSheet::LabelType::second:
            return u"second"_s;
        case StyleSheet::LabelType::strong:
            return u"strong"_s;
        case StyleSheet::LabelType::caption:
            return u"caption"_s;
        case StyleSheet::LabelType::captionStrong:
            return u"captionStrong"_s;
        case StyleSheet::LabelType::figure:
            return u"figure"_s;
        case StyleSheet::LabelType::figureAccent:
            return u"figureAccent"_s;
    }
    return {};
}

// A style sheet's font has no letter spacing, so the label brings it.
double spacingOf(StyleSheet::LabelType type) {
    switch (type) {
        case StyleSheet::LabelType::title:
        case StyleSheet::LabelType::figure:
        case StyleSheet::LabelType::figureAccent:
            return 98.5;
        case StyleSheet::LabelType::sheetTitle:
            return 99;
        default:
            return 100;
    }
}

}  // namespace

QString StyleSheet::of(const ThemeEnvironment& theme) {
    const QHash<QString, QString> names = namesOf(theme.colors());
    const QString source = QString::fromLatin1(sheet);
    static const QRegularExpression token(u"@(?:(\\d+)px|(\\w+))"_s);
    QString result;
    qsizetype done = 0;
    for (auto found = token.globalMatch(source); found.hasNext();) {
        const QRegularExpressionMatch match = found.next();
        result += QStringView(source).sliced(done, match.capturedStart() - done);
        result += match.hasCaptured(1) ? QString::number(theme.scaled(match.captured(1).toInt())) + u"px"_s
                                       : names.value(match.captured(2));
        done = match.capturedEnd();
    }
    result += QStringView(source).sliced(done);
    return result;
}

void StyleSheet::setType(QWidget* label, LabelType type) {
    if (label->property("type") == nameOf(type)) return;
    QFont font;
    font.setLetterSpacing(QFont::PercentageSpacing, spacingOf(type));
    label->setFont(font);
    label->setProperty("type", nameOf(type));
    label->style()->unpolish(label);
    label->style()->polish(label);
}
