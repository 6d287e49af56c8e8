#pragma once

#include "OrdovanApp/theme/ThemeEnvironment.h"

#include <QWidget>

/// Says what this program is: its icon, name, version and credits.
class AboutPanel : public QWidget {
    Q_OBJECT

public:
    explicit AboutPanel(const ThemeEnvironment& theme, QWidget* parent = nullptr);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    const ThemeEnvironment& theme_;
};
