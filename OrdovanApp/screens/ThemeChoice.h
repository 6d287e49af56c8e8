#pragma once

#include "OrdovanApp/theme/ThemeEnvironment.h"

#include <QRadioButton>

/// One theme to choose: its color and its name, with a check on the chosen one.
class ThemeChoice : public QRadioButton {
    Q_OBJECT

public:
    ThemeChoice(const ThemeEnvironment& theme, AppTheme offered, QWidget* parent);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;
    [[nodiscard]] bool hitButton(const QPoint& point) const override { return rect().contains(point); }

private:
    const ThemeEnvironment& theme_;
    AppTheme offered_;
};
