#include "OrdovanCore/platform/RunFileSystem.h"

#include "OrdovanCore/ExecutionScope.h"
#include "OrdovanCore/TrashPlace.h"
#include "OrdovanCore/platform/Failure.h"
#include "OrdovanCore/platform/FileCopy.h"
#include "OrdovanCore/platform/FileHash.h"
#include "OrdovanCore/platform/Folders.h"
#include "OrdovanCore/platform/MovedItem.h"
#include "OrdovanCore/platform/SameFile.h"
#include "OrdovanCore/platform/SystemPath.h"
#include "OrdovanCore/platform/TrashInfo.h"

#include <algorithm>
#include <utility>

namespace ordovan {

namespace {

/// The last piece of a path, ended by NUL as the path is.
const char* nameIn(const SystemPath& path) {
    return lastPathComponent(path.view()).data();
}

/// Gives what was moved its old name back, which was free a moment ago. Should it be taken now, the item stays whole
/// under its new name, and that is told.
void takeBack(FolderEntry fresh, FolderEntry old, bool& leavesSomething) {
    if (moveExclusively(fresh, old, {.hidesOldName = false}) == 0) return;
    struct ::stat there;
    if (fresh.examine(there) || errno != ENOENT) leavesSomething = true;
}

}  // namespace

RunFileSystem::RunFileSystem(const Url& root, ConfinedFolders::Entering entering)
    : root_(root.path()), folders_(root.path(), entering) {}

// Looking.

const RunFileSystem::Look& RunFileSystem::lookAt(const Url& url, Question question) {
    const SystemPath path(url);
    if (path.error() == 0 && look_.path == path.view() && (look_.answered & question) == 0) {
        look_.answered |= question;
        return look_;
    }
    look_.path = path.view();
    look_.error = path.error();
    const bool isOnWay = !way_.path.empty() && parentPath(path.view()) == way_.path;
    const FolderEntry item = isOnWay ? FolderEntry(way_.folder, nameIn(path)) : FolderEntry(path.text());
    if (look_.error == 0 && !item.examine(look_.facts)) look_.error = errno;
    look_.answered = question;
    way_.path.clear();
    if (look_.error == 0 && S_ISREG(look_.facts.st_mode)) regular_ = {look_.path, look_.facts};
    return look_;
}

/// Whether a folder, and so each one above it, was just entered without following a link, or is now.
bool RunFileSystem::isWithoutLinks(const Url& folder) {
    const SystemPath path(folder);
    const std::string_view text = path.view();
    if (text.size() < way_.asked && way_.path.starts_with(text) && way_.path[text.size()] == '/') {
        way_.asked = text.size();
        return true;
    }
    way_.path.clear();
    if (path.error() != 0 || look_.path == text || hasDotDotPiece(text) || !folders_.leadsBelow(text)) return false;
    const auto entered = folders_.openAnew(text);
    if (entered) way_ = {std::string(text), text.size(), (*entered)->descriptor.get()};
    return entered.has_value();
}

void RunFileSystem::remember(std::string_view path, const struct ::stat& facts) {
    look_.path = path;
    look_.error = 0;
    look_.facts = facts;
    look_.answered = 0;
}

bool RunFileSystem::exists(const Url& url) {
    const Look& look = lookAt(url, existing);
    return look.error == 0 && (!S_ISLNK(look.facts.st_mode) || SystemFileSystem::exists(url));
}

bool RunFileSystem::isRegularFile(const Url& url) {
    const Look& look = lookAt(url, regular);
    return look.error == 0 && S_ISREG(look.facts.st_mode);
}

bool RunFileSystem::isSymlink(const Url& url) {
    if (isWithoutLinks(url)) return false;
    const Look& look = lookAt(url, link);
    return look.error == 0 && S_ISLNK(look.facts.st_mode);
}

OrdovanResult<std::int64_t> RunFileSystem::fileSize(const Url& url) {
    const Look& look = lookAt(url, size);
    if (look.error != 0) return std::unexpected(OrdovanSystemError::cocoa(OrdovanSystemError::fileReadNoSuchFile));
    return look.facts.st_size;
}

OrdovanResult<std::string> RunFileSystem::fileIdentity(const Url& url) {
    const Look& look = lookAt(url, identity);
    if (look.error != 0 || S_ISLNK(look.facts.st_mode)) return SystemFileSystem::fileIdentity(url);
    return identityText(look.facts);
}

std::optional<::dev_t> RunFileSystem::knownDevice(const Url& url) {
    const SystemPath path(url);
    if (const struct ::stat* const facts = vouchedFor(path.view())) return facts->st_dev;
    const ConfinedFolders::Folder* const folder = folders_.held(path.view());
    return folder == nullptr ? std::nullopt : std::optional(folder->facts.st_dev);
}

bool RunFileSystem::sameVolume(const Url& a, const Url& b) {
    // The answer is no promise, so what was seen a moment ago will do; a rename that is refused after all is EXDEV.
    const std::optional<::dev_t> first = knownDevice(a);
    const std::optional<::dev_t> second = first ? knownDevice(b) : std::nullopt;
    return second ? first == second : SystemFileSystem::sameVolume(a, b);
}

// What was hashed.

bool RunFileSystem::vouch(const Url& file, const struct ::stat& facts) {
    const SystemPath path(file);
    if (path.error() != 0) return false;
    const bool isSeen = regular_.path == path.view();
    regular_.path.clear();
    if (!isSeen && !FolderEntry(path.text()).examine(regular_.facts)) return false;
    if (!isUntouched(facts, regular_.facts)) return false;
    vouchFor(path.view(), facts);
    remember(path.view(), facts);
    return true;
}

std::function<bool(const Url& file, const struct ::stat& facts)> RunFileSystem::voucher(OrdovanFileSystem& port) {
    auto* const run = dynamic_cast<RunFileSystem*>(&port);
    if (run == nullptr) return {};
    return [run](const Url& file, const struct ::stat& facts) { return run->vouch(file, facts); };
}

std::string RunFileSystem::rootOf(const OrdovanFileSystem& port) {
    const auto* const run = dynamic_cast<const RunFileSystem*>(&port);
    return run == nullptr ? std::string() : run->root_;
}

const struct ::stat* RunFileSystem::vouchedFor(std::string_view path) const {
    const auto found = std::ranges::find(vouched_, path, &Seen::path);
    return path.empty() || found == vouched_.end() ? nullptr : &found->facts;
}

void RunFileSystem::vouchFor(std::string_view path, const struct ::stat& facts) {
    auto found = std::ranges::find(vouched_, path, &Seen::path);
    if (found == vouched_.end()) {
        found = vouched_.begin() + static_cast<std::ptrdiff_t>(nextVouched_);
        nextVouched_ = (nextVouched_ + 1) % vouched_.size();
        found->path = path;
    }
    found->facts = facts;
}

void RunFileSystem::unvouch(std::string_view path) {
    const auto found = std::ranges::find(vouched_, path, &Seen::path);
    if (found != vouched_.end()) found->path.clear();
}

// Acting.

/// Through which folders a path is entered: those below the root, or those of the Trash in which it lies. Null for any
/// other path. Good until another path was asked about.
ConfinedFolders* RunFileSystem::foldersTo(std::string_view path) {
    if (folders_.leadsBelow(path)) return &folders_;
    if (!trashInfoPath(path)) return nullptr;
    if (trashes_[0] && trashes_[0]->leadsBelow(path)) return &*trashes_[0];
    // An item may go from one to another.
    std::swap(trashes_[0], trashes_[1]);
    if (!trashes_[0] || !trashes_[0]->leadsBelow(path)) trashes_[0].emplace(parentPath(parentPath(path)));
    return &*trashes_[0];
}

/// The folder of an item that is held, without a look whether its path leads to it still. Null when none is.
const ConfinedFolders::Folder* RunFileSystem::heldFolderOf(const SystemPath& path) {
    ConfinedFolders* const folders = hasDotDotPiece(path.view()) ? nullptr : foldersTo(path.view());
    return folders == nullptr ? nullptr : folders->held(parentPath(path.view()));
}

/// The item as the system calls are to name it. The folder is one that its path leads to at this moment.
RunFileSystem::Entry RunFileSystem::entryOf(const SystemPath& path) {
    if (hasDotDotPiece(path.view())) return std::unexpected(EINVAL);
    ConfinedFolders* const folders = foldersTo(path.view());
    if (folders == nullptr) return FolderEntry(path.text());
    const auto folder = folders->open(parentPath(path.view()));
    if (!folder) return std::unexpected(folder.error());
    return FolderEntry((*folder)->descriptor.get(), nameIn(path));
}

/// The same for an item that is acted on for good: if it was hashed, it is the one that was hashed.
RunFileSystem::Entry RunFileSystem::provenEntryOf(const SystemPath& path) {
    Entry entry = entryOf(path);
    const struct ::stat* const was = vouchedFor(path.view());
    if (!entry || was == nullptr) return entry;
    struct ::stat now;
    if (!entry->examine(now)) return std::unexpected(errno);
    if (!isUntouched(*was, now)) return std::unexpected(EBUSY);
    return entry;
}

/// The same for an item that is renamed. What arrives is looked at as well, and so one look by the path, which finds
/// what was hashed, is proof enough that the folder held is the one that the path leads to.
RunFileSystem::Entry RunFileSystem::sourceEntryOf(const SystemPath& path) {
    const struct ::stat* const was = vouchedFor(path.view());
    const auto* const folder = was == nullptr ? nullptr : heldFolderOf(path);
    struct ::stat now;
    if (folder != nullptr && FolderEntry(path.text()).examine(now) && isUntouched(*was, now)) {
        return FolderEntry(folder->descriptor.get(), nameIn(path));
    }
    return provenEntryOf(path);
}

/// The same for the new place of an item that was hashed: where it arrives is looked at by the path, and so the folder
/// held will do.
RunFileSystem::Entry RunFileSystem::targetEntryOf(const SystemPath& path) {
    const auto* const folder = heldFolderOf(path);
    return folder == nullptr ? entryOf(path) : FolderEntry(folder->descriptor.get(), nameIn(path));
}

OrdovanResult<void> RunFileSystem::createDirectory(const Url& url) {
    forgetLook();
    const SystemPath path(url);
    if (path.error() != 0) return failure(path.error());
    if (hasDotDotPiece(path.view())) return failure(EINVAL);
    if (!folders_.leadsBelow(path.view())) return SystemFileSystem::createDirectory(url);
    return outcome(folders_.make(path.view(), 0777));
}

OrdovanResult<void> RunFileSystem::move(const Url& from, const Url& to) {
    forgetLook();
    const SystemPath source(from), target(to);
    if (source.error() != 0) return failure(source.error());
    if (target.error() != 0) return failure(target.error());
    const std::function<void(const std::string&)> announce = [&](const std::string& name) { announceMove(from, name); };
    // In a Trash an item belongs to its info file by its name, and keeps that.
    const bool isBound = isInTrash(source.view());
    bool leavesSomething = false;
    const int error = moveTo(target, source,
                             {.hidesOldName = !isBound,
                              .announce = listener_.begins ? &announce : nullptr,
                              .leavesSomething = &leavesSomething});
    tellRemains(leavesSomething);
    if (error == 0) forgetTrashInfo(source.view(), target.view());
    return outcome(error);
}

void RunFileSystem::announceMove(const Url& item, const std::string& hiddenName) const {
    listener_.begins(item, hiddenName.empty() ? Url() : item.deletingLastPathComponent().appending(hiddenName));
}

void RunFileSystem::tellRemains(bool leavesSomething) const {
    if (leavesSomething && listener_.leavesSomething) listener_.leavesSomething();
}

int RunFileSystem::moveTo(const SystemPath& target, const SystemPath& source, const MoveWays& ways) {
    const auto old = sourceEntryOf(source);
    if (!old) return old.error();
    const bool isProved = vouchedFor(source.view()) != nullptr;
    auto fresh = isProved ? targetEntryOf(target) : entryOf(target);
    if (!fresh) return fresh.error();
    int error = moveExclusively(*old, *fresh, ways);
    if (error == ENOENT && isProved) {
        // The folder held may have been removed and made anew.
        fresh = entryOf(target);
        if (!fresh) return fresh.error();
        error = moveExclusively(*old, *fresh, ways);
    }
    if (error != 0) return error;
    unvouch(target.view());
    if (const struct ::stat* const vouched = vouchedFor(source.view())) {
        const struct ::stat was = *vouched;
        unvouch(source.view());
        error = checkLanding(target, *fresh, *old, was, *ways.leavesSomething);
        if (error != 0) {
            // Back under its old name it is still what was hashed, with another time of status change.
            struct ::stat now;
            if (old->examineAfresh(now) && isMoved(was, now, *old)) vouchFor(source.view(), now);
            return error;
        }
    }
    if (!OrdovanPartialName::isPartial(source.view())) return 0;
    error = syncFolderOf(*fresh);
    if (error == 0) return 0;
    takeBack(*fresh, *old, *ways.leavesSomething);
    unvouch(target.view());
    forgetLook();
    return error;
}

/// Looks whether the file that was hashed has arrived, by the path that is going to be recorded; else takes what was
/// moved back and returns why.
int RunFileSystem::checkLanding(const SystemPath& target, FolderEntry fresh, FolderEntry old, const struct ::stat& was,
                                bool& leavesSomething) {
    const FolderEntry place(target.text());
    struct ::stat there;
    if (place.examineAfresh(there)) {
        if (isMoved(was, there, place)) {
            vouchFor(target.view(), there);
            remember(target.view(), there);
            return 0;
        }
    } else if (errno != ENOENT && errno != ENOTDIR && errno != ELOOP) {
        return 0;  // no sight is no proof of anything; the caller will look as well
    }
    const bool isIt = fresh.examine(there) && isMoved(was, there, fresh);
    takeBack(fresh, old, leavesSomething);
    if (ConfinedFolders* const folders = foldersTo(target.view())) folders->forget(parentPath(target.view()));
    if (!isIt) return EBUSY;
    // Its folder was exchanged: by what, the next attempt to enter it tells.
    const Entry again = entryOf(target);
    return again ? ENOENT : again.error();
}

OrdovanResult<void> RunFileSystem::copy(const Url& from, const Url& to) {
    forgetLook();
    const SystemPath source(from), target(to);
    if (source.error() != 0) return failure(source.error());
    if (target.error() != 0) return failure(target.error());
    const Entry original = entryOf(source);
    if (!original) return failure(original.error());
    const Entry place = entryOf(target);
    if (!place) return failure(place.error());
    unvouch(target.view());
    return outcome(copyExclusively(*original, *place, {.sync = syncFolderOf},
                                   {.was = vouchedFor(source.view()), .writers = &writers_}));
}

OrdovanResult<void> RunFileSystem::remove(const Url& url) {
    forgetLook();
    const SystemPath path(url);
    if (path.error() != 0) return failure(path.error());
    const Entry entry = provenEntryOf(path);
    if (!entry) return failure(entry.error());
    if (entry->unlink() != 0) return failure(errno);
    unvouch(path.view());
    forgetTrashInfo(path.view(), std::nullopt);
    return {};
}

/// Opens a file that is going to be hashed, unless another program is writing it. Returns 0 or the errno.
int RunFileSystem::openToHash(const SystemPath& path, RegularFile& file) {
    forgetLook();
    if (path.error() != 0) return path.error();
    unvouch(path.view());
    const Entry entry = entryOf(path);
    if (!entry) return entry.error();
    const int error = file.open(*entry, RegularFile::Look::afresh);
    if (error != 0) return error;
    return writers_.isWrittenAtStart(file) ? EBUSY : 0;
}

/// Looks whether the file is what it was when it was opened, and the one that the path leads to. Returns 0 or the
/// errno.
int RunFileSystem::endHashing(const SystemPath& path, const RegularFile& file) {
    forgetLook();
    struct ::stat now;
    const bool isStill = FolderEntry(path.text()).examineAfresh(now) && isUntouched(file.facts, now);
    if (!isStill || writers_.isWrittenAtEnd(file)) return EBUSY;
    vouchFor(path.view(), now);
    remember(path.view(), now);
    return 0;
}

OrdovanResult<std::string> RunFileSystem::contentHash(const Url& url) {
    const SystemPath path(url);
    RegularFile file;
    int error = openToHash(path, file);
    if (error != 0) return failure(error);
    auto hash = hashOfOpenFile(file.descriptor.get(), {}, file.facts.st_size);
    if (!hash) return hash;
    error = endHashing(path, file);
    if (error != 0) return failure(error);
    return hash;
}

/// A file that is read in pieces.
class RunFileSystem::Content final : public OrdovanOpenContent {
public:
    Content(RunFileSystem& run, Url url, RegularFile file) : run_(run), url_(std::move(url)), file_(std::move(file)) {}

    [[nodiscard]] Identity identity() const override { return {file_.facts.st_dev, file_.facts.st_ino}; }
    [[nodiscard]] std::uint64_t linkCount() const override { return file_.facts.st_nlink; }

    OrdovanResult<std::size_t> read(std::int64_t offset, std::span<char> into) override {
        ::ssize_t got = -1;
        do {
            got = ::pread(file_.descriptor.get(), into.data(), into.size(), offset);
        } while (got < 0 && errno == EINTR);
        if (got < 0) return failure(errno);
        const int error = got == 0 && !into.empty() ? run_.endHashing(SystemPath(url_), file_) : 0;
        if (error != 0) return failure(error);
        return static_cast<std::size_t>(got);
    }

private:
    RunFileSystem& run_;
    Url url_;
    RegularFile file_;
};

OrdovanResult<std::unique_ptr<OrdovanOpenContent>> RunFileSystem::open(const Url& url) {
    RegularFile file;
    const int error = openToHash(SystemPath(url), file);
    if (error != 0) return failure(error);
    return std::make_unique<Content>(*this, url, std::move(file));
}

OrdovanResult<Url> RunFileSystem::trash(const Url& url) {
    forgetLook();
    const SystemPath path(url);
    if (path.error() != 0) return failure(path.error());
    if (hasDotDotPiece(path.view())) return failure(EINVAL);
    const std::function<void(const std::string&)> announce = [&](const std::string& name) { announceMove(url, name); };
    bool leavesSomething = false;
    auto trashed = session_.move(url, {.confined = &folders_,
                                       .was = vouchedFor(path.view()),
                                       .announce = listener_.begins ? &announce : nullptr,
                                       .leavesSomething = &leavesSomething});
    tellRemains(leavesSomething);
    if (trashed) unvouch(path.view());
    return trashed;
}

}  // namespace ordovan
