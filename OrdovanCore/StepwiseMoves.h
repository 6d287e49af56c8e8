#pragma once

#include "OrdovanCore/Url.h"

#include <functional>

namespace ordovan {

/// A file-system port of which some moves may take more than one step, so that one that is cut off leaves something: at
/// the new place a second name of the item or an empty file, beside the old one a hidden name of the item. Used by the
/// port's one thread.
class StepwiseMoves {
public:
    virtual ~StepwiseMoves() = default;

    /// Takes where an item is, and the hidden name (`OrdovanPartialName`) under which it may be left; empty for none.
    using Announce = std::function<void(const Url& item, const Url& hidden)>;
    /// `announce` is called before the first step of each such move of an item to its new place or to the Trash. Empty:
    /// nobody is told.
    virtual void announceTo(Announce announce) = 0;
};

}  // namespace ordovan
