#pragma once

#include "OrdovanApp/stores/AppTheme.h"
#include "OrdovanApp/stores/BackgroundWork.h"
#include "OrdovanApp/stores/KeyValueStore.h"

#include <QObject>
#include <QString>
#include <QVariant>

/// The user's preferences; one for the application, on the controller's thread.
///
/// Each change is stored at once. A setter says false when the value could not be stored; it holds until the program
/// ends all the same. Setting the current value does nothing and says true. `saved` tells it as well.
class AppSettings : public QObject {
    Q_OBJECT

public:
    /// Missing and unusable values read as their defaults.
    explicit AppSettings(ordovan::KeyValueStore& store, QObject* parent = nullptr);

    /// From now on changes are stored through `work`. A setter then says true before it is known how that goes.
    void storeThrough(ordovan::BackgroundWork work);

    /// Files go into a folder named by their month. Default false.
    [[nodiscard]] bool groupByMonth() const { return groupByMonth_; }
    bool setGroupByMonth(bool on);
    /// Hidden files are organized too. Default false.
    [[nodiscard]] bool includeHidden() const { return includeHidden_; }
    bool setIncludeHidden(bool on);
    /// Default `lagoon`.
    [[nodiscard]] AppTheme theme() const { return theme_; }
    bool setTheme(AppTheme theme);

Q_SIGNALS:
    void groupByMonthChanged();
    void includeHiddenChanged();
    void themeChanged();
    /// The attempt to store a change has ended.
    void saved(bool isSaved);

private:
    bool store(const QString& key, const QVariant& value);

    ordovan::KeyValueStore& store_;
    ordovan::BackgroundWork background_;
    bool groupByMonth_;
    bool includeHidden_;
    AppTheme theme_;
};
