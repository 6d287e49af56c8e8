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
};

TEST_P(TrashContract, AnItemMovedOutTakesItsInfoFileAlong) {
    for (const std::string trash : {"Trash", ".Trash-1000", ".Trash/1000"}) {
        const std::string text = trash + "/info/a.trashinfo = [Trash Info]";
        const std::string item = trash + "/files/a = one", other = trash + "/files/b = two";
        const std::string otherInfo = trash + "/info/b.trashinfo = [Trash Info]";
        build({text, item, other, otherInfo});
        ASSERT_TRUE(fs_.move(at(trash + "/files/a"), at("back")));
        EXPECT_FALSE(has(trash + "/info/a.trashinfo"));
        EXPECT_TRUE(has(trash + "/info/b.trashinfo"));
        ASSERT_TRUE(fs_.remove(at(trash + "/files/b")));
        EXPECT_FALSE(has(trash + "/info/b.trashinfo"));
        ASSERT_TRUE(fs_.remove(at("back")));
    }
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

TEST_P(TrashContract, AnEmptyInfoFileGoesAndAnythingElseOfThatNameStays) {
    build({"Trash/files/a = 1", "Trash/info/a.trashinfo", "Trash/files/b = 2", "Trash/info/b.trashinfo = a diary",
           "Trash/files/c = 3", "Trash/info/c.trashinfo -> b.trashinfo", "Trash/files/d = 4",
           "Trash/info/d.trashinfo/"});
    for (const char* name : {"a", "b", "c", "d"}) {
        EXPECT_TRUE(fs_.move(at(std::string("Trash/files/") + name), at(name)));
    }
    EXPECT_FALSE(has("Trash/info/a.trashinfo"));
    for (const char* name : {"b", "c", "d"}) {
        EXPECT_TRUE(has(std::string("Trash/info/") + name + ".trashinfo")) << name;
    }
}

TEST_P(TrashContract, WhatOnlyLooksAlikeTakesNothingAlong) {
    const std::string_view info = " = [Trash Info]";
    for (const std::string place : {"Trash/files/below/a", "Bin/files/a", "Trash/filed/a", "Trash/info/a"}) {
        const std::string folder(place.substr(0, place.find('/')));
        const std::string beside = folder + "/info/a.trashinfo", item = place + " = one";
        build({beside + std::string(info), item});
        ASSERT_TRUE(fs_.remove(at(place))) << place;
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
