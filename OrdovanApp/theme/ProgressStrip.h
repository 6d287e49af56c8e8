#pragma once

#include "OrdovanApp/theme/Card.h"

class ElidedLabel;
class QPushButton;

/// Long work as it goes: what is done, how far, and a "Cancel" button. Its height never changes.
class ProgressStrip : public Card {
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
    /// Makes it ready for the next work: busy, no detail, "Cancel" enabled.
    void reset();

Q_SIGNALS:
    /// "Cancel" was pressed; the button is disabled until `reset`.
    void cancelled();

private:
    class Bar;

    ElidedLabel* text_;
    ElidedLabel* detail_;
    Bar* bar_;
    QPushButton* cancel_;
};
