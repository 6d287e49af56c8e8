#pragma once

#include <QString>

class Desktop;
class TidyViewModel;

/// Whether a command has something to act on. Cheap enough to be asked at every change.
namespace CommandAvailability {

/// Why a command (one of `Commands`) can not act now, as a sentence for the user; empty when it can.
[[nodiscard]] QString reasonAgainst(QStringView command, const TidyViewModel& model, const Desktop& desktop);

}  // namespace CommandAvailability
