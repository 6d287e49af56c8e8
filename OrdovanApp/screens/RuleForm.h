#pragma once

#include "OrdovanApp/screens/AppContext.h"

#include <QWidget>

#include <optional>
#include <string>

class QLabel;
class QLineEdit;
class QPushButton;

/// Where a rule is typed: the extensions, the folder, and below them what is wrong with them.
class RuleForm : public QWidget {
    Q_OBJECT

public:
    RuleForm(const AppContext& context, QWidget* parent);

    /// Where typing begins.
    [[nodiscard]] QLineEdit* firstField() const { return extensions_; }

Q_SIGNALS:
    /// A rule was added: the last one of the store.
    void added();

private:
    enum class Message { none, error, unknownTypes };

    QLineEdit* makeField(const QString& placeholder, const QString& name);
    QPushButton* makeFolderMenu();
    void add();
    void finishAdding(const QString& extensions, const QString& folder, const std::optional<std::string>& refusal);
    void followText();
    void showMessage(Message kind, const QString& text);
    void recolor();

    AppContext context_;
    QLineEdit* extensions_;
    QLineEdit* folder_;
    QPushButton* add_;
    QLabel* message_;
    Message kind_ = Message::none;
    bool isAdding_ = false;
};
