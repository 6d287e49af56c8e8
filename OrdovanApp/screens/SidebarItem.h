#pragma once

#include "OrdovanApp/screens/Section.h"
#include "OrdovanApp/theme/ThemeEnvironment.h"

#include <QAbstractButton>

/// One section in the sidebar. Only the current one is a stop of the Tab key.
class SidebarItem : public QAbstractButton {
    Q_OBJECT

public:
    SidebarItem(const ThemeEnvironment& theme, Section section, QWidget* parent);

    [[nodiscard]] bool isCurrent() const { return current_; }
    void setCurrent(bool current);
    /// The number on the right, and what it counts for those who do not see it.
    void setCount(const QString& count, const QString& description);
    [[nodiscard]] QString count() const { return count_; }

    [[nodiscard]] QSize sizeHint() const override;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    const ThemeEnvironment& theme_;
    Section section_;
    bool current_ = false;
    QString count_;
};
