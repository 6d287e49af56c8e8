#pragma once

#include "OrdovanApp/theme/ThemeColors.h"

#include <QFont>
#include <QObject>

/// The theme as it is handed down the tree of views: colours, type and whether to move. One for the application; on
/// its thread.
///
/// Changing it changes the application's palette, type and style sheet, then tells.
class ThemeEnvironment : public QObject {
    Q_OBJECT

public:
    /// Takes light or dark and reduced motion from the desktop, and follows it. `ORDOVAN_COLOR_SCHEME` ("light" or
    /// "dark") in the environment overrides it.
    explicit ThemeEnvironment(AppTheme theme, QObject* parent = nullptr);

    [[nodiscard]] AppTheme theme() const { return theme_; }
    void setTheme(AppTheme theme);
    [[nodiscard]] const ThemeColors& colors() const { return colors_; }
    void setDark(bool dark);

    /// The four sizes of type, in the system's face.
    enum class Type { title, heading, body, bodyStrong, caption, captionStrong, figure };
    [[nodiscard]] QFont font(Type type) const;
    /// The length of an animation in milliseconds; 0 when the desktop asks for reduced motion.
    [[nodiscard]] int motion(int milliseconds) const { return reducedMotion_ ? 0 : milliseconds; }

Q_SIGNALS:
    void changed();

private:
    void apply();
    void followDesktop();

    AppTheme theme_;
    ThemeColors colors_;
    bool reducedMotion_ = false;
    bool forced_ = false;
};
