#pragma once

#include "OrdovanApp/theme/ThemeEnvironment.h"

#include <QLineEdit>

class QPushButton;

/// A field that narrows a list: the search glyph, the placeholder (also its accessible name), and a button that clears
/// it once there is text. Esc clears it, too.
class FilterField : public QLineEdit {
    Q_OBJECT

public:
    FilterField(const ThemeEnvironment& theme, const QString& placeholder, QWidget* parent = nullptr);

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void placeClear();

    const ThemeEnvironment& theme_;
    QPushButton* clear_;
};
