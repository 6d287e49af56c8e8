#include "OrdovanApp/screens/RulesView.h"

#include "OrdovanApp/models/Formats.h"
#include "OrdovanApp/screens/RuleForm.h"
#include "OrdovanApp/theme/Announcer.h"
#include "OrdovanApp/theme/Banner.h"
#include "OrdovanApp/theme/Buttons.h"
#include "OrdovanApp/theme/Card.h"
#include "OrdovanApp/theme/EmptyState.h"
#include "OrdovanApp/theme/FilterField.h"
#include "OrdovanApp/theme/RowsView.h"
#include "OrdovanApp/theme/ScreenHeader.h"
#include "OrdovanApp/theme/StyleSheet.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr int margin = 28;
constexpr int typeRowHeight = 46;
constexpr int leastTypesHeight = 90;
constexpr int lowView = 420;
constexpr int folderColumn = 120;

}  // namespace

RulesView::RulesView(const AppContext& context, QWidget* parent)
    : QWidget(parent),
      context_(context),
      model_(context.model, context.rules, context.theme),
      types_(context.theme),
      header_(new ScreenHeader(context.theme, tr("Rules"), this)),
      problem_(new Banner(context.theme, Banner::Kind::error, this)),
      form_(new RuleForm(context, this)),
      rest_(new QWidget(this)) {
    setObjectName(u"rules"_s);
    problem_->setObjectName(u"ruleProblem"_s);
    problem_->hide();
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(margin, 0, margin, 20);
    layout->setSpacing(10);
    layout->addWidget(header_);
    layout->addWidget(problem_);
    layout->addWidget(form_);
    layout->addWidget(makeNoRules());
    layout->addWidget(makeRules());
    layout->addWidget(makeNote());
    layout->addWidget(makeTypesBar());
    layout->addWidget(makeTypes(), 1);
    layout->addWidget(rest_, 1);
    connect(&model_, &RulesModel::modelReset, this, &RulesView::refresh);
    connect(form_, &RuleForm::added, list_, &RowsView::scrollToBottom);
    refresh();
    refreshRoom();
    showTypes(false);
}

// Making.

QWidget* RulesView::makeNoRules() {
    noRules_ = new Card(context_.theme, this);
    noRules_->setObjectName(u"noRules"_s);
    auto* title = new QLabel(tr("Your rules, in order"), noRules_);
    StyleSheet::setType(title, StyleSheet::LabelType::strong);
    auto* message = new QLabel(tr("No rules yet. Type extensions and a folder name above to add one."), noRules_);
    message->setWordWrap(true);
    StyleSheet::setType(message, StyleSheet::LabelType::second);
    auto* layout = new QVBoxLayout(noRules_);
    layout->setContentsMargins(16, 14, 16, 14);
    layout->setSpacing(4);
    layout->addWidget(title);
    layout->addWidget(message);
    return noRules_;
}

QWidget* RulesView::makeRules() {
    list_ = new RowsView(context_.theme, RowsView::Style::sections, this);
    list_->setObjectName(u"rulesList"_s);
    list_->setAccessibleName(tr("Your rules, in order"));
    list_->setReorderable(true);
    list_->setHeightFollowsRows(true);
    list_->setModel(&model_);
    connect(list_, &RowsView::moveRequested, this, &RulesView::moveRule);
    connect(list_, &RowsView::actionTriggered, this, [this](int row, int action) {
        if (action == RulesModel::deleteRule) removeRule(row);
    });
    return list_;
}

QWidget* RulesView::makeNote() {
    note_ = new QLabel(
        tr("The first matching rule wins. Files without a rule use the built-in folders (Documents, Images…)."), this);
    note_->setObjectName(u"rulesNote"_s);
    note_->setWordWrap(true);
    StyleSheet::setType(note_, StyleSheet::LabelType::second);
    return note_;
}

QWidget* RulesView::makeTypesBar() {
    auto* bar = new QWidget(this);
    typesToggle_ = Buttons::quiet(QString(), bar);
    typesToggle_->setObjectName(u"builtInTypes"_s);
    connect(typesToggle_, &QPushButton::clicked, this, [this] { showTypes(typesStack_->isHidden()); });
    search_ = new FilterField(context_.theme, tr("Search types, e.g. pdf"), bar);
    search_->setObjectName(u"typeSearch"_s);
    connect(search_, &QLineEdit::textChanged, this, [this](const QString& text) {
        types_.setQuery(text);
        showTypesOrNothing();
    });
    auto* layout = new QHBoxLayout(bar);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(8);
    layout->addWidget(typesToggle_);
    layout->addStretch(1);
    layout->addWidget(search_);
    return bar;
}

QWidget* RulesView::makeTypes() {
    typesStack_ = new QStackedWidget(this);
    typesList_ = new RowsView(context_.theme, RowsView::Style::sections, typesStack_);
    typesList_->setObjectName(u"typesList"_s);
    typesList_->setAccessibleName(tr("Built-in types"));
    typesList_->setRowHeight(typeRowHeight);
    typesList_->setColumnWidths({folderColumn});
    typesList_->setModel(&types_);
    noType_ = new EmptyState(context_.theme, Glyph::search, typesStack_);
    noType_->setObjectName(u"noType"_s);
    noType_->setTitle(tr("not a built-in type"));
    noType_->setMessage(tr("Files of this type go to Other, unless a rule of yours sends them elsewhere."));
    typesStack_->addWidget(typesList_);
    typesStack_->addWidget(noType_);
    typesStack_->setMinimumHeight(leastTypesHeight);
    return typesStack_;
}

/// On little room what is explained goes, so that nothing that is used is cut off.
void RulesView::refreshRoom() {
    const bool isLow = height() < context_.theme.scaled(lowView);
    header_->setLede(isLow ? QString()
                           : tr("Send file types to folders you name, like .dmg and .pkg to Installers. Rules change "
                                "the preview only; nothing moves until you apply."));
    note_->setVisible(!isLow);
}

void RulesView::resizeEvent(QResizeEvent*) {
    refreshRoom();
}

// What the store has.

void RulesView::refresh() {
    const bool isEmpty = model_.rowCount() == 0;
    noRules_->setVisible(isEmpty);
    list_->setVisible(!isEmpty);
}

void RulesView::showTypes(bool shown) {
    typesToggle_->setText(shown ? tr("Hide Built-in Types") : tr("Show Built-in Types"));
    search_->setVisible(shown);
    typesStack_->setVisible(shown);
    rest_->setVisible(!shown);
    if (shown) search_->setFocus();
}

void RulesView::showTypesOrNothing() {
    typesStack_->setCurrentWidget(types_.rowCount() == 0 ? static_cast<QWidget*>(noType_) : typesList_);
}

void RulesView::moveRule(int row, int before) {
    const int position = before > row ? before - 1 : before;
    model_.move(row, before, [self = QPointer(this), rule = model_.title(row), position](bool isDone) {
        if (self) self->tellMoved(rule, position, isDone);
    });
}

void RulesView::tellMoved(const QString& rule, int position, bool isDone) {
    if (!isDone) return tellProblem(tr("The rules couldn't be put in another order."));
    problem_->hide();
    context_.announcer.say(
        tr("%1 is now rule %2 of %3.").arg(rule, Formats::count(position), Formats::count(model_.rowCount() - 1)));
}

void RulesView::removeRule(int row) {
    model_.remove(row, [self = QPointer(this), rule = model_.title(row), row](bool isDone) {
        if (self) self->tellRemoved(rule, row, isDone);
    });
}

/// The rule that takes the deleted one's place becomes the current one.
void RulesView::tellRemoved(const QString& rule, int row, bool isDone) {
    if (!isDone) return tellProblem(tr("The rule couldn't be deleted."));
    problem_->hide();
    const int next = std::min(row, model_.rowCount() - 1);
    if (next > 0)
        list_->setCurrentIndex(model_.index(next));
    else
        form_->firstField()->setFocus();
    context_.announcer.say(tr("The rule %1 was deleted.").arg(rule));
}

void RulesView::tellProblem(const QString& text) {
    problem_->setText(text);
    problem_->show();
    context_.announcer.say(text);
}
