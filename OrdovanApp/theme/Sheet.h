#pragma once

#include "OrdovanApp/theme/Glyph.h"
#include "OrdovanApp/theme/ThemeEnvironment.h"

#include <QPointer>
#include <QWidget>

class QLabel;
class QPushButton;
class QVBoxLayout;
class QVariantAnimation;

/// A question over a window: a card on a scrim that covers `host` and holds the focus. A dialog to assistive
/// technologies, named by its title.
///
/// Esc and "Cancel" give it up; Return confirms, unless what is confirmed is destructive: then "Cancel" has the focus.
/// Hides itself when it is answered and gives the focus back. Can be opened again.
class Sheet : public QWidget {
    Q_OBJECT

public:
    /// `host` is what is covered, as a rule the window's central widget; the sheet is its child. When `parent` goes,
    /// so does the sheet.
    Sheet(const ThemeEnvironment& theme, QWidget* host, QObject* parent = nullptr);

    void setTitle(const QString& text);
    void setMessage(const QString& text);
    void addPoint(Glyph glyph, const QString& text);
    void clearPoints();
    void setConfirm(const QString& text, bool destructive = false);
    void open();

    [[nodiscard]] QPushButton* confirmButton() const { return confirm_; }
    [[nodiscard]] QPushButton* cancelButton() const { return cancel_; }

Q_SIGNALS:
    void confirmed();
    void cancelled();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override;
    bool focusNextPrevChild(bool next) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    class SheetCard;

    void build();
    void answer(bool yes);
    void placeCard();
    void fadeIn();
    void keepFocus(QWidget* now);

    const ThemeEnvironment& theme_;
    QPointer<QWidget> host_;
    QPointer<QWidget> focusBefore_;
    SheetCard* card_;
    QLabel* title_;
    QLabel* message_;
    QVBoxLayout* points_;
    QPushButton* cancel_;
    QPushButton* confirm_;
    QVariantAnimation* fade_;
    double shown_ = 1;
    bool destructive_ = false;
    quint64 returnUp_ = 0;  ///< when Return was let go, by the clock of its events; 0: never, or not told
};
