#pragma once

#include "OrdovanApp/theme/ThemeEnvironment.h"

#include <QWidget>

class QLabel;

/// Lies over the window while something is dragged across it.
class DropOverlay : public QWidget {
    Q_OBJECT

public:
    DropOverlay(const ThemeEnvironment& theme, QWidget* parent);

    /// Why nothing can be dropped now, as a sentence; empty where it can.
    void setRefusal(const QString& reason);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void recolor();

    const ThemeEnvironment& theme_;
    QLabel* text_;
    bool refuses_ = false;
};
