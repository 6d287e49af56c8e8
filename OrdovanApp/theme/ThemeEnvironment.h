#pragma once

#include "OrdovanApp/theme/ThemeColors.h"

#include <QFont>
#include <QObject>
#include <QString>

#include <memory>

class DesktopPreferences;
class FocusRing;

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
    ~ThemeEnvironment() override;

    [[nodiscard]] AppTheme theme() const { return theme_; }
    void setTheme(AppTheme theme);
    [[nodiscard]] const ThemeColors& colors() const { return colors_; }
    void setDark(bool dark);

    /// The sizes of type, in the system's face.
    enum class Type { title, sheetTitle, heading, body, bodyStrong, caption, captionStrong, figure };
    [[nodiscard]] QFont font(Type type) const;
    /// A length in logical pixels that goes with the type, so that it grows with the desktop's text scale.
    [[nodiscard]] int scaled(int pixels) const;
    /// The length of an animation in milliseconds; 0 when the desktop asks for reduced motion.
    [[nodiscard]] int motion(int milliseconds) const { return reducedMotion_ ? 0 : milliseconds; }

Q_SIGNALS:
    void changed();

private:
    void apply();
    void followDesktop();
    void takePreferences();

    AppTheme theme_;
    ThemeColors colors_;
    QString family_;
    double textScale_ = 1;
    bool reducedMotion_ = false;
    bool forced_ = false;
    std::unique_ptr<DesktopPreferences> desktop_;
    std::unique_ptr<FocusRing> ring_;
};
