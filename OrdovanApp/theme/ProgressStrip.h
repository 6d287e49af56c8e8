#pragma once

#include "OrdovanApp/theme/ThemeEnvironment.h"

#include <QWidget>

class ElidedLabel;
class QLabel;
class QProgressBar;
class QPushButton;

/// Long work as it goes: what is done, how far, and a "Cancel" button. Its height never changes.
class ProgressStrip : public QWidget {
    Q_OBJECT

public:
    explicit ProgressStrip(const ThemeEnvironment& theme, QWidget* parent = nullptr);

    /// What is being done.
    void setText(const QString& text);
    /// What it is at (a path, bytes, a rate); elided in the middle.
    void setDetail(const QString& text);
    /// `done` of `total`, any unit. A total of 0 or less is `setBusy`.
    void setProgress(qint64 done, qint64 total);
    /// How far is not known.
    void setBusy();
    /// Whether it can be cancelled; without, there is no button. Default: it can.
    void setCancellable(bool cancellable);
    /// Enables the button again after it was pressed, for the next work.
    void reset();

Q_SIGNALS:
    /// "Cancel" was pressed; the button is disabled until `reset`.
    void cancelled();

private:
    const ThemeEnvironment& theme_;
    QLabel* text_;
    ElidedLabel* detail_;
    QProgressBar* bar_;
    QPushButton* cancel_;
};
