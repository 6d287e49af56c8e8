#include "tests/support/QtTestMain.h"
#include "tests/support/TrashWorld.h"

#include <gmock/gmock.h>

#include <string>
#include <utility>

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

namespace {

constexpr const char* putBack = "Put back.";
constexpr const char* trashFolder = "/home/user/.local/share/Trash/files";

using TidyRestore = ordovan::test::TrashWorld;

TEST_F(TidyRestore, GivesTheFolderBack) {
    tree({"a = 1", "b = 1", "sub/c = 1", "d = 2"});
    const auto before = memory.snapshot("/r");
    const auto model = searched();
    finished(model->trashExtras());
    now += 60;
    EXPECT_TRUE(finished(model->restore()));
    EXPECT_THAT(messages(*model->lastTrashReport()), ElementsAre(putBack, putBack));
    EXPECT_EQ(memory.snapshot("/r"), before);
    EXPECT_THAT(model->trashRecord()->entries, IsEmpty());
    EXPECT_THAT(storedTrash()->entries, IsEmpty());
    EXPECT_EQ(model->history().records.front().kind, OrdovanRunRecord::Kind::restoreTrash);
    EXPECT_EQ(model->history().records.front().epoch, now);
    EXPECT_THAT(model->inventory()->files, SizeIs(4));
    EXPECT_FALSE(model->restore());
}

TEST_F(TidyRestore, OfOneFileLeavesTheOthersInTheRecord) {
    tree({"a = 1", "b = 2", "c = 3"});
    const auto model = trashed({"a", "b", "c"});
    EXPECT_FALSE(model->restore({"/r/z"}));
    EXPECT_TRUE(finished(model->restore({"/r/b"})));
    EXPECT_EQ(memory.read("/r/b"), "2");
    EXPECT_THAT(originals(*model->trashRecord()), ElementsAre("a", "c"));
    EXPECT_EQ(storedTrash(), *model->trashRecord());
}

TEST_F(TidyRestore, ConcernsTheChosenFolderOnly) {
    tree({"a = 1"});
    build(memory, "/s", {"b = 2"});
    build(memory, "/rs", {"c = 3"});
    const auto model = trashed({"a"});
    for (const auto& [folder, file] : {std::pair("/s", "/s/b"), std::pair("/rs", "/rs/c")}) {
        model->chooseFolder(Url::file(folder));
        tasks.finish();
        finished(model->trashBigFiles({{Url::file(file), 1}}));
    }
    model->chooseFolder(Url::file("/r"));
    tasks.finish();
    EXPECT_THAT(model->restorableEntries(), ElementsAre(model->trashRecord()->entries.at(0)));
    EXPECT_FALSE(model->restore({"/s/b"}));
    EXPECT_EQ(model->recoverableCount(), 0U);
    model->countRecoverable();
    tasks.finish();
    EXPECT_EQ(model->recoverableCount(), 1U);
    EXPECT_THAT(model->restorableEntries(), ElementsAre(model->trashRecord()->entries.at(0)));
    EXPECT_TRUE(finished(model->restore()));
    EXPECT_THAT(messages(*model->lastTrashReport()), ElementsAre(putBack));
    EXPECT_THAT(originals(*storedTrash()), ElementsAre("/s/b", "/rs/c"));
}

TEST_F(TidyRestore, KeepsWhatItRefusesInTheRecord) {
    tree({"a = 1", "b = 2", "c = 3", "d = 4"});
    const auto model = trashed({"a", "b", "c", "d"});
    memory.removeTree(std::string(trashFolder) + "/a");
    memory.write(std::string(trashFolder) + "/b", "x");
    memory.write("/r/c", "new");
    EXPECT_TRUE(finished(model->restore()));
    EXPECT_THAT(
        messages(*model->lastTrashReport()),
        ElementsAre(putBack, "Something now occupies the original location; restore skipped.",
                    "The trashed file changed; restore skipped.", "No longer in the Trash (emptied or moved)."));
    EXPECT_THAT(originals(*storedTrash()), ElementsAre("a", "b", "c"));
    EXPECT_EQ(memory.read("/r/c"), "new");
}

TEST_F(TidyRestore, WithoutAFolderOrAnEntryDoesNothing) {
    tree({"a = 1"});
    EXPECT_FALSE(make()->restore());
    EXPECT_THAT(make()->restorableEntries(), IsEmpty());
    EXPECT_FALSE(previewed()->restore());
}

}  // namespace
