#include "OrdovanApp/controller/FolderRun.h"
#include "tests/support/QtTestMain.h"
#include "tests/support/TrashWorld.h"

#include <gmock/gmock.h>

#include <span>
#include <string>
#include <vector>

using ::testing::ElementsAre;

using ::testing::UnorderedElementsAre;
using Kind = OrdovanRunRecord::Kind;

namespace {

std::vector<std::string> paths(std::span<const Url> items) {
    std::vector<std::string> result;
    for (const Url& item : items) result.emplace_back(item.path());
    return result;
}

class TrashFlushes : public ordovan::test::TrashWorld {
protected:
    /// Moves a file to the Trash as a run does.
    static void trash(OrdovanFileSystem& disk, const std::string& path) {
        const Url file = Url::file(path);
        EXPECT_TRUE(disk.fileSize(file) && disk.contentHash(file) && disk.trash(file));
    }
};

TEST_F(TrashFlushes, PutTheItemsTheirInfoFilesAndTheVacatedFoldersOnTheDiskBeforeTheRecord) {
    tree({"a = 1", "x/b = 2", "c = 3"});
    std::vector<std::string> arrivals, departures;
    TidyPorts all = ports();
    all.recording.syncMoves = [&](std::span<const Url> to, std::span<const Url> from) {
        arrivals = paths(to);
        departures = paths(from);
        return true;
    };
    FolderRun::Record record(all, Kind::trash, Url::file("/r"), 100);
    for (const char* file : {"/r/a", "/r/x/b", "/r/c"}) record.add(Url::file(file), {});
    OrdovanFileSystem& disk = record.begin(fs, nullptr);
    trash(disk, "/r/a");
    trash(disk, "/r/x/b");
    record.endNotes();
    const std::string place = "/home/user/.local/share/Trash";
    EXPECT_THAT(arrivals, ElementsAre(place + "/files/a", place + "/info/a.trashinfo", place + "/files/b"));
    EXPECT_THAT(departures, UnorderedElementsAre("/r/a", "/r/x/b")) << "the third was left alone";
}

}  // namespace
