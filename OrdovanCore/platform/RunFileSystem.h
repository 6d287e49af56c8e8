#pragma once

#include "OrdovanCore/ContentReading.h"
#include "OrdovanCore/StepwiseMoves.h"
#include "OrdovanCore/platform/ConfinedFolders.h"
#include "OrdovanCore/platform/ExclusiveMove.h"
#include "OrdovanCore/platform/SystemFileSystem.h"
#include "OrdovanCore/platform/Trash.h"
#include "OrdovanCore/platform/WriterProbe.h"

#include <sys/stat.h>
#include <sys/types.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace ordovan {

class SystemPath;

/// The real disk for one run in one folder, the root: as `SystemFileSystem`, and safe from what other programs do to
/// the tree meanwhile. Used by the run's one thread, the files that it opens included; destroy it, after those, when
/// the run is over, so that volumes can be unmounted.
///
/// **Confined.** What is below the root is created, moved, copied, removed, trashed and hashed by its name in an open
/// folder, which was entered without following a link (`ConfinedFolders`): a link on the way is ELOOP and nothing
/// changes, and one that takes a folder's name at the last instant leads nothing astray. A path with a ".." piece,
/// whose text does not tell where it leads, is EINVAL. What lies in a Trash elsewhere is reached in the same way from
/// the folder of that Trash on; anything else that is not below the root, by its path.
///
/// **What was hashed is what is moved.** A file whose content was hashed last is compared before it is renamed, copied,
/// removed or trashed: device, inode, size and times must be those of the file that was hashed, else EBUSY. After a
/// rename it is looked at again at its new place; another one that slipped in, and one that did not arrive there
/// because a folder on the way was exchanged, is taken back without replacing anything; one that does not come back is
/// told of. A file that was not hashed is not compared.
///
/// **Not while others write.** Hashing or copying a file that another program has open for writing, as far as the
/// kernel tells (`WriterProbe`), or that changes meanwhile, is EBUSY.
///
/// **One look for one item.** Different questions about one item that directly follow one another (does it exist, is it
/// regular, how large is it, which is it) are answered from one look at it, which the call before may have made. So are
/// those about the folders of one way, from the bottom up: one that can be entered without following a link has none
/// above it.
class RunFileSystem final : public SystemFileSystem, public OrdovanContentReading, public StepwiseMoves {
public:
    /// `root` is the absolute path of the folder. Nothing is opened yet.
    explicit RunFileSystem(const Url& root, ConfinedFolders::Entering entering = ConfinedFolders::Entering::atOnce);

    bool exists(const Url& url) override;
    bool isRegularFile(const Url& url) override;
    bool isSymlink(const Url& url) override;
    bool sameVolume(const Url& a, const Url& b) override;
    OrdovanResult<void> createDirectory(const Url& url) override;
    OrdovanResult<void> move(const Url& from, const Url& to) override;
    OrdovanResult<void> copy(const Url& from, const Url& to) override;
    OrdovanResult<void> remove(const Url& url) override;
    OrdovanResult<std::int64_t> fileSize(const Url& url) override;
    OrdovanResult<std::string> contentHash(const Url& url) override;
    OrdovanResult<std::string> fileIdentity(const Url& url) override;
    OrdovanResult<Url> trash(const Url& url) override;

    OrdovanResult<std::unique_ptr<OrdovanOpenContent>> open(const Url& url) override;

    void tellTo(Listener listener) override { listener_ = std::move(listener); }

    /// Tells that a regular file was hashed elsewhere: `facts` are those of the descriptor that was read. False when
    /// what was seen at the path last, or is seen there now, is another file or was changed since.
    bool vouch(const Url& file, const struct ::stat& facts);

    /// How to `vouch` to a port that is the disk of a run; empty for any other. Good as long as the port is.
    static std::function<bool(const Url& file, const struct ::stat& facts)> voucher(OrdovanFileSystem& port);

    /// The path of the folder to which a port is confined that is the disk of a run; empty for any other.
    static std::string rootOf(const OrdovanFileSystem& port);

private:
    class Content;
    enum Question : unsigned { existing = 1, regular = 2, link = 4, size = 8, identity = 16 };

    /// The item at a path as it was found last, or why it was not.
    struct Look {
        std::string path;
        int error = 0;
        struct ::stat facts{};
        unsigned answered = 0;  // the questions that this look has answered
    };
    /// A folder below the root that was entered a moment ago.
    struct Way {
        std::string path;       // empty where there is none
        std::size_t asked = 0;  // how much of the path is that of the folder that was asked about last
        int folder = -1;
    };
    /// A file that was looked at or hashed.
    struct Seen {
        std::string path;  // empty where there is none
        struct ::stat facts{};
    };
    using Entry = std::expected<FolderEntry, int>;

    const Look& lookAt(const Url& url, Question question);
    void remember(std::string_view path, const struct ::stat& facts);
    void forgetLook() {
        look_.path.clear();
        regular_.path.clear();
        way_.path.clear();
    }
    bool isWithoutLinks(const Url& folder);

    [[nodiscard]] const struct ::stat* vouchedFor(std::string_view path) const;
    void vouchFor(std::string_view path, const struct ::stat& facts);
    void unvouch(std::string_view path);

    ConfinedFolders* foldersTo(std::string_view path);
    const ConfinedFolders::Folder* heldFolderOf(const SystemPath& path);
    Entry entryOf(const SystemPath& path);
    Entry provenEntryOf(const SystemPath& path);
    Entry sourceEntryOf(const SystemPath& path);
    Entry targetEntryOf(const SystemPath& path);
    int openToHash(const SystemPath& path, RegularFile& file);
    int endHashing(const SystemPath& path, const RegularFile& file);
    void announceMove(const Url& item, const std::string& hiddenName) const;
    void tellRemains(bool leavesSomething) const;
    int moveTo(const SystemPath& target, const SystemPath& source, const MoveWays& ways);
    int checkLanding(const SystemPath& target, FolderEntry fresh, FolderEntry old, const struct ::stat& was,
                     bool& leavesSomething);
    [[nodiscard]] std::optional<::dev_t> knownDevice(const Url& url);

    std::string root_;
    ConfinedFolders folders_;
    std::array<std::optional<ConfinedFolders>, 2> trashes_;  // those used last, the last one first
    WriterProbe writers_;
    TrashSession session_;
    Listener listener_;
    Look look_;
    Seen regular_;  // the regular file that was looked at last
    Way way_;
    std::array<Seen, 8> vouched_;  // those hashed last; a step of a run deals with two at most
    std::size_t nextVouched_ = 0;
};

}  // namespace ordovan
