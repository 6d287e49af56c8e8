#pragma once

#include "OrdovanApp/theme/ThemeColors.h"

#include <QFont>
#include <QObject>
#include <QString>

#include <memory>
#include <optional>

class DesktopPreferences;
class FocusRing;

/// The theme as it is handed down the tree of views: colors, type and whether to move. One for the application; on
/// its thread.
///
/// Changing it changes the application's palette, type and style sheet, then tells.
class ThemeEnvironment : public QObject {
    Q_OBJECT

public:
    /// Takes light or dark and reduced motion from the desktop, and follows it. `ORDOVAN_COLOR_SCHEME` ("light" or
    /// "dark") in the environment overrides it.
    explicit ThemeEnvironment(AppTheme theme);
    /// `desktop`: what the desktop says of its look; it is not null.
    ThemeEnvironment(AppTheme theme, std::unique_ptr<DesktopPreferences> desktop);
    ~ThemeEnvironment() override;

    [[nodiscard]] AppTheme theme() const { return theme_; }
    void setTheme(AppTheme theme);
    [[nodiscard]] const ThemeColors& colors() const { return colors_; }

    /// The sizes of type, in the system's face.
    enum class Type { title, sheetTitle, heading, body, bodyStrong, caption, captionStrong, figure };
    [[nodiscard]] QFont font(Type type) const;
    /// A length in logical pixels that goes with the type, so that it grows with the desktop's text scale.
    [[nodiscard]] int scaled(int pixels) const;
    /// The length of an animation in milliseconds; 0 when the desktop asks for reduced motion.
    [[nodiscard]] int motion(int milliseconds) const { return reducedMotion_ ? 0 : milliseconds; }
    /// Whether a key was the last thing that was pressed, not a button of the pointer: it is to be seen then what has
    /// the focus.
    [[nodiscard]] bool usesKeyboard() const;

Q_SIGNALS:
    void changed();

private:
    void apply();
    void takePreferences();
    [[nodiscard]] bool isDark() const;

    AppTheme theme_;
    ThemeColors colors_;
    QString family_;
    double textScale_ = 1;
    bool reducedMotion_ = false;
    std::unique_ptr<DesktopPreferences> desktop_;
    std::optional<bool> forced_;   ///< dark or light whatever the desktop says
    bool platformIsDark_ = false;  ///< what holds where the desktop says nothing
    std::unique_ptr<FocusRing> ring_;
};
