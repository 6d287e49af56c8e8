#pragma once

#include "OrdovanApp/theme/Glyph.h"
#include "OrdovanApp/theme/ThemeEnvironment.h"

#include <QWidget>

class QLabel;

/// One thing worth knowing: a glyph and a sentence on a quiet surface of their own. Part of empty states and sheets.
class PointBox : public QWidget {
    Q_OBJECT

public:
    PointBox(const ThemeEnvironment& theme, Glyph glyph, const QString& text, QWidget* parent = nullptr);
    /// Whether it lies on a card or on the window, which are of different colors. Default: on a card.
    void setOnCard(bool onCard);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    void recolor();

    const ThemeEnvironment& theme_;
    Glyph glyph_;
    QLabel* picture_;
    bool onCard_ = true;
};
