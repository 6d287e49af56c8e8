#pragma once

#include "OrdovanCore/RecordStorage.h"

#include <memory>
#include <mutex>
#include <vector>

namespace ordovan {

/// Records as files. Any thread. Two writers of one file are not coordinated here: hold a `FolderLock`.
class FileRecordStorage final : public RecordStorage {
public:
    /// A document that could not be used, and the name that it bears now.
    struct SetAside {
        Url file;
        Url to;
    };

    OrdovanResult<void> read(const Url& file, const Sink& sink) override;
    OrdovanResult<void> write(const Url& file, const Producer& producer) override;
    OrdovanResult<std::unique_ptr<RunNotes>> openNotes(const Url& file) override;
    OrdovanResult<void> remove(const Url& file) override;
    OrdovanResult<void> setAside(const Url& file, const Url& to) override;

    /// What was set aside through this object, in the order in which it was.
    [[nodiscard]] std::vector<SetAside> allSetAside() const;

private:
    mutable std::mutex mutex_;
    std::vector<SetAside> setAside_;
};

}  // namespace ordovan
