#pragma once

#include "OrdovanApp/theme/ThemeEnvironment.h"

#include <QStringList>
#include <QWidget>

class QMenu;
class QPushButton;

/// One choice of a few, side by side. Those that find no room are in a menu at the end. Each is a radio button to
/// assistive technologies; the arrow keys choose, Tab goes in and out.
class Segments : public QWidget {
    Q_OBJECT

public:
    explicit Segments(const ThemeEnvironment& theme, QWidget* parent = nullptr);

    /// Replaces the segments; `helps` are their tool tips (may be shorter or empty). Keeps the chosen text where it is
    /// still among them, else chooses the first; tells only when the chosen index changes. The same texts again change
    /// nothing but the helps.
    void setSegments(const QStringList& texts, const QStringList& helps = {});
    /// The index of the chosen segment; -1 without segments.
    [[nodiscard]] int current() const { return current_; }
    /// Chooses a segment. An index outside is ignored.
    void setCurrent(int index);
    [[nodiscard]] QStringList texts() const { return texts_; }
    /// What the segments take of the widget: all but the room behind the last one.
    [[nodiscard]] QRect outline() const { return {0, 0, used_, height()}; }

    /// How much of a room the segments need to look as they would look in all of it.
    [[nodiscard]] int widthWithin(int room) const { return fitting(room).needed; }

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

Q_SIGNALS:
    void currentChanged(int index);

protected:
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    class Segment;
    /// How many segments have room, how much they take with the menu of the others, and how much they need so that
    /// this menu has room for its text, whichever is chosen.
    struct Fit {
        int shown = 0;
        int used = 0;
        int needed = 0;
    };

    void rebuild();
    void place();
    void fillMenu();
    void markCurrent();
    void step(int by);
    [[nodiscard]] int widthOf(int count) const;
    [[nodiscard]] Fit fitting(int room) const;

    const ThemeEnvironment& theme_;
    QStringList texts_;
    QStringList helps_;
    QList<Segment*> segments_;
    QPushButton* more_;
    QMenu* menu_;
    int shown_ = 0;
    int used_ = 0;
    int current_ = -1;
};
