#pragma once

#include "OrdovanApp/controller/SearchIndex.h"
#include "OrdovanCore/FileSystem.h"
#include "OrdovanCore/Journal.h"
#include "OrdovanCore/TrashRecord.h"
#include "OrdovanCore/Url.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

namespace ordovan {

/// What of the records could be taken back in a folder, as far as can be told without reading a file. It may change at
/// any time: undo and restore look again.
struct RecoverySurvey {
    enum class State {
        present,    ///< the file is where the record says
        missing,    ///< it is not there any more
        refused,    ///< the record names a place that such a file is never moved from or to
        elsewhere,  ///< it came from another folder, or none is chosen
    };

    std::shared_ptr<const OrdovanJournal> journal;    ///< may be null
    std::shared_ptr<const OrdovanTrashRecord> trash;  ///< never null
    std::vector<State> organized;                     ///< of each entry of the journal
    std::vector<State> trashed;                       ///< of each entry of the trash record
    SearchIndex names{};                              ///< as `namesOf` makes it; empty unless asked for

    /// How many of the files are where the record says and can go back.
    [[nodiscard]] std::size_t recoverable() const;

    /// The paths below the folder by which the files are searched: where the organized ones are, from the last to the
    /// first, then where the trashed ones were, likewise. For 150,000 files some hundred milliseconds. Any thread.
    [[nodiscard]] static SearchIndex namesOf(const std::optional<Url>& folder, const OrdovanJournal* journal,
                                             const OrdovanTrashRecord& trash);
    /// Looks at every file of both records; some microseconds each. Any thread.
    [[nodiscard]] static RecoverySurvey of(const std::optional<Url>& folder,
                                           std::shared_ptr<const OrdovanJournal> journal,
                                           std::shared_ptr<const OrdovanTrashRecord> trash, OrdovanFileSystem& fs);
};

}  // namespace ordovan
