#pragma once

#include <QLabel>

/// A label of one line that gives up its middle where there is no room. Whenever the whole text is not in sight, it is
/// the tool tip; it always is the accessible name. Plain text.
class ElidedLabel : public QLabel {
    Q_OBJECT

public:
    explicit ElidedLabel(QWidget* parent = nullptr);
    explicit ElidedLabel(const QString& text, QWidget* parent = nullptr);

    /// The whole text; hides QLabel's, so that the accessible name goes with it.
    void setText(const QString& text);
    /// Where to elide. Default: Qt::ElideMiddle.
    void setElideMode(Qt::TextElideMode mode);
    /// A tool tip of its own instead of the whole text; empty for the whole text.
    void setFullToolTip(const QString& text);

    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    bool event(QEvent* event) override;

private:
    [[nodiscard]] bool fits() const;

    Qt::TextElideMode mode_ = Qt::ElideMiddle;
    QString fullToolTip_;
};
