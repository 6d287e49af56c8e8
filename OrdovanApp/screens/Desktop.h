#pragma once

#include "OrdovanCore/PlanExport.h"
#include "OrdovanCore/Url.h"

#include <QString>

#include <functional>
#include <optional>

class QWidget;

/// What a view asks of the desktop around it. A port: tests answer in its place. On the main thread; nothing here
/// waits: answers come through the callbacks.
class Desktop {
public:
    virtual ~Desktop() = default;

    /// Asks for a folder to preview. The callback is not called when the user gives up.
    virtual void chooseFolder(QWidget* parent, std::function<void(const Url&)> chosen) = 0;
    /// Asks where to save a plan, with a message and a suggested name without extension. The user picks the format.
    virtual void choosePlanFile(QWidget* parent, const QString& message, const QString& suggestedName,
                                std::function<void(const Url&, OrdovanPlanExportFormat)> chosen) = 0;
    /// Shows a file in the desktop's file manager (org.freedesktop.FileManager1), else opens its folder.
    virtual void reveal(const Url& file) = 0;
    /// Opens the Trash in the desktop's file manager, else the folder that the file lies in.
    virtual void showTrash(const Url& trashedFile) = 0;
    /// Opens a web address. False when this desktop has no program for it.
    virtual bool openAddress(const QString& address) = 0;
    /// The user's Downloads folder (xdg-user-dirs), or nothing where there is none. Not asked of the disk each time.
    [[nodiscard]] virtual std::optional<Url> downloads() const = 0;
};
