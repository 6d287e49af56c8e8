#pragma once

#include <QObject>
#include <QString>

/// The names of the notifications that commands post.
namespace Commands {

inline constexpr QStringView chooseFolder = u"ordovanChooseFolder";
inline constexpr QStringView previewFolder = u"ordovanPreviewFolder";
inline constexpr QStringView organize = u"ordovanOrganize";
inline constexpr QStringView undoOrganize = u"ordovanUndoOrganize";
inline constexpr QStringView findDuplicates = u"ordovanFindDuplicates";
inline constexpr QStringView exportPlan = u"ordovanExportPlan";
inline constexpr QStringView previewAgain = u"ordovanPreviewAgain";
inline constexpr QStringView showRecovery = u"ordovanShowRecovery";

}  // namespace Commands

/// Where commands go: a menu posts a name, whatever shows the window's content observes it. Neither knows the other.
/// One for the application, on its thread.
class CommandCenter : public QObject {
    Q_OBJECT

public:
    using QObject::QObject;

    /// Tells every observer at once, in the order of connection. A name that nobody knows has no effect.
    void post(QStringView name);

Q_SIGNALS:
    void posted(const QString& name);
};
