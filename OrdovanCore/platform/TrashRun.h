#pragma once

#include "OrdovanCore/platform/SystemFileSystem.h"
#include "OrdovanCore/platform/Trash.h"

namespace ordovan {

/// The real disk for one run that moves many files to the Trash: the Trash is found once for a volume and kept open, as
/// `TrashSession` says. Used by one thread; destroy it when the run is over, so that volumes can be unmounted.
class TrashRunFileSystem final : public SystemFileSystem {
public:
    OrdovanResult<Url> trash(const Url& url) override { return session_.move(url); }

private:
    TrashSession session_;
};

}  // namespace ordovan
