#pragma once

#include <QObject>
#include <QString>
#include <QVariant>

#include <optional>

class QDBusPendingCallWatcher;
class QDBusVariant;

/// What the desktop says about its look, through the settings portal (org.freedesktop.portal.Settings). Asked without
/// waiting; silent where there is no session bus or no portal. On the main thread.
class DesktopPreferences : public QObject {
    Q_OBJECT

public:
    explicit DesktopPreferences(QObject* parent = nullptr);

    /// Asks the portal and follows it from now on.
    void follow();
    /// Takes one setting, as the portal tells it. Tells when it changes something; other settings are ignored.
    void take(const QString& nameSpace, const QString& key, const QVariant& value);

    /// Nothing: the desktop has no preference, or has not answered.
    [[nodiscard]] std::optional<bool> dark() const { return dark_; }
    [[nodiscard]] bool reducedMotion() const { return reducedMotion_ || !animations_; }
    /// Nothing: the desktop does not say.
    [[nodiscard]] std::optional<double> textScale() const { return textScale_; }

Q_SIGNALS:
    void changed();

private Q_SLOTS:
    void settingChanged(const QString& nameSpace, const QString& key, const QDBusVariant& value);

private:
    void takeAll(QDBusPendingCallWatcher* answer);

    std::optional<bool> dark_;
    std::optional<double> textScale_;
    bool reducedMotion_ = false;
    bool animations_ = true;
};
