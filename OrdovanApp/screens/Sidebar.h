#pragma once

#include "OrdovanApp/screens/Section.h"
#include "OrdovanApp/theme/ThemeEnvironment.h"

#include <QWidget>

#include <map>

class QLabel;
class SidebarItem;

/// The left edge of the window: the name, the sections with their quiet counts, and the state of the preview. To
/// assistive technologies a list whose items are named by their sections.
class Sidebar : public QWidget {
    Q_OBJECT

public:
    explicit Sidebar(const ThemeEnvironment& theme, QWidget* parent = nullptr);

    [[nodiscard]] Section current() const { return current_; }
    void setCurrent(Section section);
    /// The number beside a section, and what it counts; 0 shows none.
    void setCount(Section section, qint64 count, const QString& description);
    /// The line at the foot.
    void setStatus(const QString& text);
    /// Puts the keyboard on the current section.
    void focusCurrent();

Q_SIGNALS:
    /// The user chose another section, or `setCurrent` did.
    void currentChanged(Section section);

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    [[nodiscard]] QWidget* makeBrand();
    [[nodiscard]] QWidget* makeList();
    void step(int by);
    void recolor();

    const ThemeEnvironment& theme_;
    Section current_ = Section::inbox;
    std::map<Section, SidebarItem*> items_;
    QLabel* name_;
    QLabel* status_;
};
