#include "OrdovanApp/theme/DesktopPreferences.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QFile>
#include <QMap>

using namespace Qt::StringLiterals;

namespace {

using Settings = QMap<QString, QVariantMap>;

// Asking for the bus where there is none would start one.
bool hasSessionBus() {
    if (qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS")) return true;
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    return !runtime.isEmpty() && QFile::exists(runtime + u"/bus"_s);
}

constexpr auto service = "org.freedesktop.portal.Desktop";
constexpr auto path = "/org/freedesktop/portal/desktop";
constexpr auto interface = "org.freedesktop.portal.Settings";

// org.freedesktop.appearance color-scheme: 0 no preference, 1 dark, 2 light.
std::optional<bool> darkOf(const QVariant& scheme) {
    if (scheme.toUInt() == 1) return true;
    if (scheme.toUInt() == 2) return false;
    return std::nullopt;
}

}  // namespace

DesktopPreferences::DesktopPreferences(QObject* parent) : QObject(parent) {}

void DesktopPreferences::follow() {
    if (!hasSessionBus()) return;
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return;
    qDBusRegisterMetaType<Settings>();
    bus.connect(QLatin1String(service), QLatin1String(path), QLatin1String(interface), u"SettingChanged"_s, this,
                SLOT(settingChanged(QString, QString, QDBusVariant)));
    QDBusMessage question = QDBusMessage::createMethodCall(QLatin1String(service), QLatin1String(path),
                                                           QLatin1String(interface), u"ReadAll"_s);
    question << QStringList{u"org.freedesktop.appearance"_s, u"org.gnome.desktop.interface"_s};
    auto* answer = new QDBusPendingCallWatcher(bus.asyncCall(question), this);
    connect(answer, &QDBusPendingCallWatcher::finished, this, &DesktopPreferences::takeAll);
}

void DesktopPreferences::takeAll(QDBusPendingCallWatcher* answer) {
    answer->deleteLater();
    const QDBusPendingReply<Settings> reply = *answer;
    if (reply.isError()) return;
    const Settings all = reply.value();
    for (auto group = all.cbegin(); group != all.cend(); ++group) {
        for (auto setting = group->cbegin(); setting != group->cend(); ++setting) {
            take(group.key(), setting.key(), setting.value());
        }
    }
}

void DesktopPreferences::settingChanged(const QString& nameSpace, const QString& key, const QDBusVariant& value) {
    take(nameSpace, key, value.variant());
}

void DesktopPreferences::take(const QString& nameSpace, const QString& key, const QVariant& value) {
    const auto set = [this](auto& field, const auto& to) {
        if (field == to) return;
        field = to;
        Q_EMIT changed();
    };
    if (nameSpace == u"org.freedesktop.appearance"_s) {
        if (key == u"color-scheme"_s) set(dark_, darkOf(value));
        if (key == u"reduced-motion"_s) set(reducedMotion_, value.toUInt() == 1);
    } else if (nameSpace == u"org.gnome.desktop.interface"_s) {
        if (key == u"enable-animations"_s) set(animations_, value.toBool());
        if (key == u"text-scaling-factor"_s && value.toDouble() > 0) {
            set(textScale_, std::optional<double>(value.toDouble()));
        }
    }
}
