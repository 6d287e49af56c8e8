#pragma once

#include "OrdovanApp/stores/AppTheme.h"
#include "OrdovanApp/stores/KeyValueStore.h"

#include <QObject>

/// The user's preferences; one for the application, on the controller's thread.
///
/// Each change is stored at once. A setter says false when the value could not be stored; it holds until the program
/// ends all the same. Setting the current value does nothing and says true.
class AppSettings : public QObject {
    Q_OBJECT

public:
    /// Missing and unusable values read as their defaults.
    explicit AppSettings(ordovan::KeyValueStore& store, QObject* parent = nullptr);

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

private:
    ordovan::KeyValueStore& store_;
    bool groupByMonth_;
    bool includeHidden_;
    AppTheme theme_;
};
