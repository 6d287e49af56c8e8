#pragma once

#include "OrdovanCore/Url.h"

#include <functional>

namespace ordovan {

/// A file-system port of which some moves may take more than one step, so that one that is cut off leaves something,
/// and so may one that fails: at the new place a second name of the item or an empty file, beside the old one a hidden
/// name of the item. Used by the port's one thread.
class StepwiseMoves {
public:
    virtual ~StepwiseMoves() = default;

    /// What is told of such moves; empty where nobody listens.
    struct Listener {
        /// Before the first step of each move of an item to its new place or to the Trash: where the item is, and the
        /// hidden name (`OrdovanPartialName`) under which it may be left; empty for none.
        std::function<void(const Url& item, const Url& hidden)> begins = {};
        /// Behind a move, in steps or to take one back, of which something may be left though it was to go: the item
        /// may have two names by now, or stand where no answer says so.
        std::function<void()> leavesSomething = {};
    };
    virtual void tellTo(Listener listener) = 0;
};

}  // namespace ordovan
