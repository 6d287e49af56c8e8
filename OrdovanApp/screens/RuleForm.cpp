#include "OrdovanApp/screens/RuleForm.h"

#include "OrdovanApp/models/BuiltInTypesModel.h"
#include "OrdovanApp/models/EngineTexts.h"
#include "OrdovanApp/models/Formats.h"
#include "OrdovanApp/stores/RuleStore.h"
#include "OrdovanApp/theme/Announcer.h"
#include "OrdovanApp/theme/Buttons.h"
#include "OrdovanApp/theme/StyleSheet.h"
#include "OrdovanApp/theme/ThemeEnvironment.h"

#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPointer>
#include <QPushButton>

using namespace Qt::StringLiterals;

RuleForm::RuleForm(const AppContext& context, QWidget* parent)
    : QWidget(parent),
      context_(context),
      extensions_(makeField(tr("Extensions, e.g. dmg, pkg"), u"extensions"_s)),
      folder_(makeField(tr("Folder name, e.g. Installers"), u"folderName"_s)),
      add_(Buttons::primary(tr("Add Rule"), this)) {
    setObjectName(u"ruleForm"_s);
    add_->setObjectName(u"addRule"_s);
    connect(add_, &QPushButton::clicked, this, &RuleForm::add);
    auto* example = new QLabel(tr("Try: dmg, pkg → Installers"), this);
    StyleSheet::setType(example, StyleSheet::LabelType::caption);

    auto* layout = new QGridLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setHorizontalSpacing(8);
    layout->setVerticalSpacing(4);
    layout->setColumnStretch(0, 1);
    layout->setColumnStretch(1, 1);
    layout->addWidget(extensions_, 0, 0);
    layout->addWidget(folder_, 0, 1);
    layout->addWidget(add_, 0, 2);
    layout->addWidget(example, 1, 0);
    layout->addWidget(makeFolderMenu(), 1, 1, 1, 2, Qt::AlignLeft | Qt::AlignAbsolute);
    message_ = new QLabel(this);
    message_->setObjectName(u"ruleMessage"_s);
    message_->setTextFormat(Qt::PlainText);
    message_->setWordWrap(true);
    layout->addWidget(message_, 2, 0, 1, 3);
    connect(&context_.theme, &ThemeEnvironment::changed, this, &RuleForm::recolor);
    recolor();
}

QLineEdit* RuleForm::makeField(const QString& placeholder, const QString& name) {
    auto* field = new QLineEdit(this);
    field->setObjectName(name);
    field->setPlaceholderText(placeholder);
    field->setAccessibleName(placeholder);
    connect(field, &QLineEdit::textChanged, this, &RuleForm::followText);
    connect(field, &QLineEdit::returnPressed, this, &RuleForm::add);
    return field;
}

QPushButton* RuleForm::makeFolderMenu() {
    QPushButton* button = Buttons::link(tr("Pick a folder name"), this);
    button->setObjectName(u"pickFolder"_s);
    auto* menu = new QMenu(button);
    menu->addAction(tr("Built-in folders"))->setEnabled(false);
    menu->addSeparator();
    for (const QString& folder : BuiltInTypesModel::folders()) {
        QAction* action = menu->addAction(folder);
        connect(action, &QAction::triggered, this, [this, folder] {
            folder_->setText(folder);
            folder_->setFocus();
        });
    }
    Buttons::setMenu(context_.theme, button, menu);
    return button;
}

/// A rule at a time: pressing Return twice does not add it twice.
void RuleForm::add() {
    if (isAdding_) return;
    isAdding_ = true;
    const QString extensions = extensions_->text();
    const QString folder = folder_->text();
    context_.rules.add(extensions.toStdString(), folder.toStdString(),
                       [self = QPointer(this), extensions, folder](const std::optional<std::string>& refusal) {
                           if (self) self->finishAdding(extensions, folder, refusal);
                       });
}

void RuleForm::finishAdding(const QString& extensions, const QString& folder,
                            const std::optional<std::string>& refusal) {
    isAdding_ = false;
    if (refusal) {
        const bool hasExtensions = BuiltInTypesModel::unknownIn(extensions).has_value();
        showMessage(Message::error, EngineTexts::sentence(*refusal));
        (hasExtensions ? folder_ : extensions_)->setFocus();
        context_.announcer.say(message_->text());
        return;
    }
    context_.announcer.say(tr("Rule added: files of the type %1 go to %2.").arg(extensions, folder));
    // What was typed while it was stored is the beginning of the next one.
    if (extensions_->text() == extensions) extensions_->clear();
    if (folder_->text() == folder) folder_->clear();
    extensions_->setFocus();
    Q_EMIT added();
}

/// What is typed makes another rule than the one that was refused.
void RuleForm::followText() {
    const QString unknown = BuiltInTypesModel::unknownIn(extensions_->text()).value_or(QString());
    if (unknown.isEmpty())
        showMessage(Message::none, {});
    else
        showMessage(Message::unknownTypes, tr("%1: not a built-in type").arg(unknown));
}

void RuleForm::showMessage(Message kind, const QString& text) {
    kind_ = kind;
    message_->setText(text);
    extensions_->setAccessibleDescription(text);
    recolor();
}

void RuleForm::recolor() {
    const ThemeColors& colors = context_.theme.colors();
    QPalette palette = message_->palette();
    palette.setColor(QPalette::WindowText, kind_ == Message::error ? colors.danger : colors.warning);
    message_->setPalette(palette);
    message_->setFont(context_.theme.font(ThemeEnvironment::Type::caption));
    // Room for a line, so that nothing jumps when there is one.
    message_->setMinimumHeight(message_->fontMetrics().lineSpacing());
}
