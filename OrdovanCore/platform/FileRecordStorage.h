#pragma once

#include "OrdovanCore/RecordStorage.h"

namespace ordovan {

/// Records as files. Stateless; any thread. Two writers of one file are not coordinated here: hold a `FolderLock`.
class FileRecordStorage final : public RecordStorage {
public:
    OrdovanResult<void> read(const Url& file, const Sink& sink) override;
    OrdovanResult<void> write(const Url& file, const Producer& producer) override;
    OrdovanResult<std::unique_ptr<RunNotes>> openNotes(const Url& file) override;
    OrdovanResult<void> remove(const Url& file) override;
    OrdovanResult<void> setAside(const Url& file, const Url& to) override;
};

}  // namespace ordovan
