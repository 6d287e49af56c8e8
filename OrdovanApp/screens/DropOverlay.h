#pragma once

#include "OrdovanApp/theme/ThemeEnvironment.h"

#include <QWidget>

class QLabel;

/// Lies over the window while something is dragged across it.
class DropOverlay : public QWidget {
    Q_OBJECT

public:
    DropOverlay(const ThemeEnvironment& theme, QWidget* parent);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void recolour();

    const ThemeEnvironment& theme_;
    QLabel* text_;
};
