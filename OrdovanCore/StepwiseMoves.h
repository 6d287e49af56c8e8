#pragma once

#include "OrdovanCore/Url.h"

#include <functional>

namespace ordovan {

/// A file-system port of which some moves may take more than one step, so that one that is cut off leaves something at
/// the new place: a second name of the item, or an empty file. Used by the port's one thread.
class StepwiseMoves {
public:
    virtual ~StepwiseMoves() = default;

    /// `announce` is called before the first step of each such move of an item to its new place or to the Trash, with
    /// where the item is. Empty: nobody is told.
    virtual void announceTo(std::function<void(const Url& item)> announce) = 0;
};

}  // namespace ordovan
