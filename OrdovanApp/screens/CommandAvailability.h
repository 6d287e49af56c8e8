#pragma once

#include "OrdovanApp/screens/AppContext.h"

#include <QString>

#include <functional>

class QObject;
class QPushButton;

/// Whether a command has something to act on. Cheap enough to be asked at every change.
namespace CommandAvailability {

/// Why nothing can be chosen, moved or put back while a run goes on, as a sentence for the user; empty when none does.
[[nodiscard]] QString againstRun(const TidyViewModel& model);

/// Why no command is heard while a question is open, as a sentence for the user.
[[nodiscard]] QString againstWhileAsking();

/// Why a command (one of `Commands`) can not act now, as a sentence for the user; empty when it can.
[[nodiscard]] QString reasonAgainst(QStringView command, const TidyViewModel& model, const Desktop& desktop);

/// Calls `changed` whenever one of these reasons may have become another one, as long as `receiver` lives.
void watch(const TidyViewModel& model, QObject* receiver, const std::function<void()>& changed);

/// Makes a button post a command when it is pressed. It is disabled while the command can not act, with the reason as
/// its tool tip; else that is `help`.
void bind(const AppContext& context, QPushButton* button, QStringView command, const QString& help = {});

}  // namespace CommandAvailability
