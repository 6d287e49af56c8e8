#pragma once

#include "OrdovanApp/theme/ThemeEnvironment.h"

#include <QWidget>

#include <optional>

class ElidedLabel;
class QHBoxLayout;
class QLabel;
class QPushButton;
class QVBoxLayout;

/// The head of a screen: its title, one line of what it promises, and on the right the folder and the buttons.
class ScreenHeader : public QWidget {
    Q_OBJECT

public:
    ScreenHeader(const ThemeEnvironment& theme, const QString& title, QWidget* parent = nullptr);

    /// The line below the title; wraps where it must. Empty: no line.
    void setLede(const QString& text);
    /// The folder as a pill: its name, with the whole path as tool tip and accessible description. Nothing: no pill.
    void setFolder(const std::optional<QString>& path);
    /// Adds a button at the right end. Takes it.
    void addButton(QPushButton* button);

protected:
    bool event(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    class Pill;

    void placeLede();

    const ThemeEnvironment& theme_;
    ElidedLabel* title_;
    QLabel* lede_;
    Pill* pill_;
    QVBoxLayout* whole_;
    QVBoxLayout* texts_;
    QHBoxLayout* right_;
    bool ledeHasOwnLine_ = false;
};
