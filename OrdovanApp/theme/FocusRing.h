#pragma once

#include <QObject>
#include <QPointer>
#include <QWidget>

class ThemeEnvironment;

/// The ring around the widget that has the focus, once the keyboard is used, and around every text field: 2 pixels of
/// the accent, 2 pixels off. One for the application; it goes where the focus goes, into whichever window.
///
/// A widget that shows its own focus sets the property `ownFocus` to true; one that is rounder than a button sets
/// `ringRadius` (logical pixels).
class FocusRing : public QObject {
    Q_OBJECT

public:
    explicit FocusRing(const ThemeEnvironment& theme);
    ~FocusRing() override;

    /// The widget that the ring is around, or null where none is shown.
    [[nodiscard]] QWidget* target() const;
    /// Whether a key was the last thing that was pressed, not a button of the pointer.
    [[nodiscard]] bool usesKeyboard() const { return keyboard_; }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    class Overlay;

    void follow(QWidget* widget);
    void place();
    void hide();

    const ThemeEnvironment& theme_;
    QPointer<QWidget> target_;
    QPointer<Overlay> overlay_;
    bool keyboard_ = false;
};
