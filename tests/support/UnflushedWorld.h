#pragma once

#include "tests/support/InterruptedWorld.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ordovan::test {

/// A world whose volumes may say that they could not flush, or be pulled out.
class UnflushedWorld : public KillableWorld {
public:
    /// `mount`: an empty folder at which another volume is mounted.
    explicit UnflushedWorld(std::string_view mount = {}) {
        if (memory.item(mount)) memory.removeTree(mount);
        if (!mount.empty()) {
            memory.addVolume(mount);
            memory.write(std::string(mount) + "/.kept", "");  // where something is mounted no folder goes
        }
        syncMoves = [this](std::span<const Url> arrivals, std::span<const Url> departures) {
            isPulledOut = !pulledAtFlush.empty();
            const auto isBroken = [this](const Url& place) { return place.path().starts_with(broken + "/"); };
            const bool meetsIt = std::ranges::any_of(arrivals, isBroken) || std::ranges::any_of(departures, isBroken);
            return isFlushed && (broken.empty() || !meetsIt);
        };
        facts = [this](const Url& url) { return factsNow(url); };
        start();
    }
    /// The volume is mounted anew, and the program started.
    void startAgain() {
        isFlushed = true;
        plugIn();
        start();
    }
    /// It answers nothing from now on, whoever asks.
    void pullOut(std::string_view volume) {
        pulledAtFlush = volume;
        unreadable.insert(std::string(volume));
        isPulledOut = true;
    }
    void plugIn() {
        unreadable.erase(std::string(pulledAtFlush));
        pulledAtFlush = {};
        isPulledOut = false;
    }
    void moveBack(const std::string& from, const std::string& to) {
        memory.makeDirectory(Url::file(to).deletingLastPathComponent().path());
        ASSERT_TRUE(memory.move(Url::file(from), Url::file(to)));
    }
    /// The journal's entries, as it is stored.
    [[nodiscard]] std::vector<std::string> stored() {
        const auto journal = storedJournal();
        return journal ? lines(*journal) : std::vector<std::string>();
    }
    void undoUpToMove(std::size_t number) {
        std::size_t moves = 0;
        fs.setBeforeCall([&](const testing::FaultyFileSystem::Call& call) {
            if (call.operation == testing::Operation::move && ++moves == number) throw Killed();
        });
        EXPECT_THROW(undo(), Killed);
        fs.setBeforeCall({});
    }

    bool isFlushed = true;
    std::string broken;  ///< a folder below which nothing can be flushed
    /// The place of a volume that is pulled out right before the next flush, which then has nothing to do. What is left
    /// there is the empty folder at which it was mounted, or nothing.
    std::string_view pulledAtFlush;
    bool leavesFolder = true;
    bool isReadable = true;

private:
    [[nodiscard]] OrdovanResult<FileFacts> factsNow(const Url& url) const {
        const bool isInside = isPulledOut && url.path().starts_with(pulledAtFlush);
        if (!isInside) return factsIn(memory, url);
        if (!isReadable) return std::unexpected(OrdovanSystemError::posix(EIO));
        const bool isTheFolder = url.path() == pulledAtFlush;
        if (!isTheFolder || !leavesFolder) return std::unexpected(OrdovanSystemError::posix(ENOENT));
        auto above = factsIn(memory, url.deletingLastPathComponent());
        if (above) above->identity += "1";
        return above;
    }

    bool isPulledOut = false;
};

}  // namespace ordovan::test
