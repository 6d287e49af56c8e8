#pragma once

#include "OrdovanApp/screens/AppContext.h"

#include <QWidget>

class Banner;
class QCheckBox;
class QVBoxLayout;

/// The settings, in a window of their own. Each change holds at once.
class SettingsView : public QWidget {
    Q_OBJECT

public:
    explicit SettingsView(const AppContext& context, QWidget* parent = nullptr);

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    [[nodiscard]] QWidget* makeHeading(const QString& text);
    [[nodiscard]] QWidget* makeOrganizing();
    [[nodiscard]] QWidget* makeThemes();
    QCheckBox* addToggle(QVBoxLayout* layout, const QString& name, const QString& text, const QString& help);

    AppContext context_;
    Banner* warning_;
};
