#include "OrdovanApp/stores/AppSettings.h"

#include <QPointer>

#include <memory>
#include <utility>

namespace {

QString key(const char* name) {
    return QStringLiteral("ordovan.settings.") + QLatin1String(name);
}

/// Booleans come back from a settings file as text.
bool boolean(const std::optional<QVariant>& stored) {
    if (!stored) return false;
    const QString text = stored->toString();
    return text == QLatin1String("true") || text == QLatin1String("1");
}

AppTheme theme(const std::optional<QVariant>& stored) {
    if (!stored) return AppTheme::lagoon;
    return AppThemes::fromRawValue(stored->toString().toStdString()).value_or(AppTheme::lagoon);
}

}  // namespace

AppSettings::AppSettings(ordovan::KeyValueStore& store, QObject* parent)
    : QObject(parent),
      store_(store),
      groupByMonth_(boolean(store.value(key("groupByMonth")))),
      includeHidden_(boolean(store.value(key("includeHidden")))),
      theme_(::theme(store.value(key("theme")))) {}

void AppSettings::storeThrough(ordovan::BackgroundWork work) {
    background_ = std::move(work);
}

bool AppSettings::store(const QString& key, const QVariant& value) {
    if (!background_) {
        const bool isSaved = store_.setValue(key, value);
        Q_EMIT saved(isSaved);
        return isSaved;
    }
    auto isSaved = std::make_shared<bool>(false);
    background_([&store = store_, key, value, isSaved] { *isSaved = store.setValue(key, value); },
                [self = QPointer(this), isSaved] {
                    if (self) Q_EMIT self->saved(*isSaved);
                });
    return true;
}

bool AppSettings::setGroupByMonth(bool on) {
    if (on == groupByMonth_) return true;
    groupByMonth_ = on;
    const bool stored = store(key("groupByMonth"), on);
    Q_EMIT groupByMonthChanged();
    return stored;
}

bool AppSettings::setIncludeHidden(bool on) {
    if (on == includeHidden_) return true;
    includeHidden_ = on;
    const bool stored = store(key("includeHidden"), on);
    Q_EMIT includeHiddenChanged();
    return stored;
}

bool AppSettings::setTheme(AppTheme theme) {
    if (theme == theme_) return true;
    theme_ = theme;
    const std::string_view name = rawValue(theme);
    const bool stored = store(key("theme"), QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size())));
    Q_EMIT themeChanged();
    return stored;
}
