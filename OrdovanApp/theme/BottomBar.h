#pragma once

#include "OrdovanApp/theme/ThemeEnvironment.h"

#include <QWidget>

class QHBoxLayout;
class QPushButton;

/// The foot of a screen: on the left what is chosen, on the right the buttons, the primary one last.
class BottomBar : public QWidget {
    Q_OBJECT

public:
    explicit BottomBar(const ThemeEnvironment& theme, QWidget* parent = nullptr);

    /// "STRONG REST": the first in full weight, the rest quietly after one blank. One text to assistive technologies.
    void setSummary(const QString& strong, const QString& rest = {});
    /// Adds a button at the right end. Takes it.
    void addButton(QPushButton* button);

private:
    class Summary;

    Summary* summary_;
    QHBoxLayout* right_;
};
