// What every implementation of the file-system port has to do with what leaves the Trash.

#include "tests/support/FileSystemContract.h"

#include <string>
#include <string_view>

namespace {

using ordovan::test::FileSystemContract;

/// A Trash in the tree, and items of it.
class TrashContract : public FileSystemContract {
protected:
    [[nodiscard]] bool has(std::string_view name) { return world_->snapshot().contains(std::string(name)); }

    /// What an info file says of an item that came from this place of the tree.
    [[nodiscard]] std::string infoOf(std::string_view name) {
        return "[Trash Info]\nPath=" + at(std::string(name)).sharedPath().str() + "\n";
    }
};

TEST_P(TrashContract, AnItemPutBackTakesItsInfoFileAlong) {
    for (const std::string trash : {"Trash", ".Trash-1000", ".Trash/1000"}) {
        build({trash + "/info/a.trashinfo = " + infoOf("back"), trash + "/files/a = one", trash + "/files/b = two",
               trash + "/info/b.trashinfo = [Trash Info]\nPath=deep/back%20two\n", "deep/back two = two"});
        ASSERT_TRUE(fs_.move(at(trash + "/files/a"), at("back")));
        EXPECT_FALSE(has(trash + "/info/a.trashinfo"));
        EXPECT_TRUE(has(trash + "/info/b.trashinfo"));
        ASSERT_TRUE(fs_.remove(at(trash + "/files/b")));
        EXPECT_FALSE(has(trash + "/info/b.trashinfo"));
        ASSERT_TRUE(fs_.remove(at("back")));
        ASSERT_TRUE(fs_.remove(at("deep/back two")));
    }
}

TEST_P(TrashContract, AnItemThatGoesElsewhereLeavesItsInfoFile) {
    build({"Trash/info/a.trashinfo = " + infoOf("original"), "Trash/files/a = one", "original = other",
           "Trash/info/b.trashinfo = " + infoOf("missing"), "Trash/files/b = two"});
    ASSERT_TRUE(fs_.move(at("Trash/files/a"), at("elsewhere")));
    ASSERT_TRUE(fs_.remove(at("Trash/files/b")));
    EXPECT_TRUE(has("Trash/info/a.trashinfo"));
    EXPECT_TRUE(has("Trash/info/b.trashinfo"));
}

TEST_P(TrashContract, AnItemThatStaysKeepsItsInfoFile) {
    build({"Trash/info/a.trashinfo = [Trash Info]", "Trash/files/a = one", "taken = two", "Trash/files/folder/",
           "Trash/info/folder.trashinfo = [Trash Info]"});
    const auto before = world_->snapshot();
    EXPECT_EQ(errorOf(fs_.move(at("Trash/files/a"), at("taken"))), EEXIST);
    EXPECT_EQ(errorOf(fs_.move(at("Trash/files/a"), at("missing/a"))), ENOENT);
    EXPECT_EQ(errorOf(fs_.remove(at("Trash/files/folder"))), EISDIR);
    EXPECT_EQ(world_->snapshot(), before);
}

TEST_P(TrashContract, AnItemWithoutInfoFileMayLeaveToo) {
    build({"Trash/files/a = one", "Trash/files/b = two", "Trash/info/"});
    EXPECT_TRUE(fs_.move(at("Trash/files/a"), at("a")));
    EXPECT_TRUE(fs_.remove(at("Trash/files/b")));
    EXPECT_TRUE(has("a"));
}

TEST_P(TrashContract, WhatIsNoInfoFileStays) {
    build({"Trash/files/a = 1", "Trash/info/a.trashinfo", "Trash/files/b = 2",
           "Trash/info/b.trashinfo = a diary\nPath=b\n", "Trash/files/c = 3", "Trash/info/c.trashinfo -> b.trashinfo",
           "Trash/files/d = 4", "Trash/info/d.trashinfo/"});
    for (const char* name : {"a", "b", "c", "d"}) {
        EXPECT_TRUE(fs_.move(at(std::string("Trash/files/") + name), at(name)));
        EXPECT_TRUE(has(std::string("Trash/info/") + name + ".trashinfo")) << name;
    }
}

TEST_P(TrashContract, WhatOnlyLooksAlikeTakesNothingAlong) {
    const std::string info = " = " + infoOf("back");
    for (const std::string place : {"Trash/files/below/a", "Bin/files/a", "Trash/filed/a", "Trash/info/a"}) {
        const std::string folder(place.substr(0, place.find('/')));
        const std::string beside = folder + "/info/a.trashinfo", item = place + " = one";
        build({beside + info, item});
        ASSERT_TRUE(fs_.move(at(place), at("back"))) << place;
        ASSERT_TRUE(fs_.remove(at("back")));
        EXPECT_TRUE(fs_.remove(at(beside))) << place;
    }
}

TEST_P(TrashContract, AnItemPutBackAfterTrashingLeavesNothingInTheTrash) {
    build({"folder/file = hello"});
    const auto before = world_->snapshot();
    const Url trashed = fs_.trash(at("folder/file")).value();
    ASSERT_TRUE(fs_.move(trashed, at("folder/file")));
    EXPECT_EQ(world_->snapshot(), before);
    const Url trash = trashed.deletingLastPathComponent().deletingLastPathComponent();
    EXPECT_TRUE(world_->snapshot(std::string(trash.appending("info").path())).empty());
    EXPECT_TRUE(world_->snapshot(std::string(trash.appending("files").path())).empty());
}

ORDOVAN_INSTANTIATE_CONTRACT(TrashContract);

}  // namespace
