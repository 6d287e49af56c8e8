#include "OrdovanCore/platform/TrashNaming.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <string>

namespace {

using ordovan::trashedName;
using ordovan::trashInfoText;

std::string repeated(std::string_view piece, int times) {
    std::string text;
    for (int i = 0; i < times; ++i) text += piece;
    return text;
}

TEST(TrashNaming, TheFirstNameIsTheItemsOwn) {
    for (const char* name : {"report.pdf", "no extension", ".bashrc", "name.", "-rf", "a\nb\xff"}) {
        EXPECT_EQ(trashedName(name, 1), name);
    }
}

TEST(TrashNaming, LaterNamesAreNumberedInFrontOfTheExtension) {
    EXPECT_EQ(trashedName("report.pdf", 2), "report 2.pdf");
    EXPECT_EQ(trashedName("archive.tar.gz", 17), "archive.tar 17.gz");
    EXPECT_EQ(trashedName("no extension", 2), "no extension 2");
    EXPECT_EQ(trashedName(".bashrc", 2), ".bashrc 2");
    EXPECT_EQ(trashedName("name.", 3), "name. 3");
}

TEST(TrashNaming, LongNamesLeaveRoomForTheInfoFilesName) {
    EXPECT_EQ(trashedName(repeated("n", 245), 1), repeated("n", 245));
    EXPECT_EQ(trashedName(repeated("n", 255), 1), repeated("n", 245));
    EXPECT_EQ(trashedName(repeated("n", 251) + ".pdf", 1), repeated("n", 241) + ".pdf");
    EXPECT_EQ(trashedName(repeated("n", 251) + ".pdf", 1000), repeated("n", 236) + " 1000.pdf");
    EXPECT_EQ(trashedName("n." + repeated("x", 253), 2), "n." + repeated("x", 241) + " 2");
}

TEST(TrashNaming, ShorterLimitsAreKept) {
    EXPECT_EQ(trashedName(repeated("n", 143), 1, 143), repeated("n", 133));
    EXPECT_EQ(trashedName(repeated("n", 139) + ".pdf", 2, 143), repeated("n", 127) + " 2.pdf");
}

TEST(TrashNaming, ACharacterIsNeverSplit) {
    EXPECT_EQ(trashedName(repeated("\u00e9", 127), 1), repeated("\u00e9", 122));
    EXPECT_EQ(trashedName("a" + repeated("\U0001f600", 63), 1), "a" + repeated("\U0001f600", 61));
    EXPECT_EQ(trashedName(repeated("\u20ac", 83) + ".pdf", 2), repeated("\u20ac", 79) + " 2.pdf");
}

TEST(TrashNaming, BytesThatAreNoTextAreCutAnywhere) {
    EXPECT_EQ(trashedName(repeated("\x80", 255), 1), repeated("\x80", 245));
    EXPECT_EQ(trashedName(repeated("\xff", 255), 1), repeated("\xff", 245));
}

TEST(TrashNaming, TheInfoTellsThePathInPercentEncodedBytesAndTheLocalTime) {
    ::setenv("TZ", "XYZ-05:30", 1);
    ::tzset();
    EXPECT_EQ(trashInfoText("/a b/100%+\u00e9\n\xff#?;=&[]~(x)", 1'700'000'000),
              "[Trash Info]\nPath=/a%20b/100%25%2B%C3%A9%0A%FF%23%3F%3B%3D%26%5B%5D~(x)\n"
              "DeletionDate=2023-11-15T03:43:20\n");
}

}  // namespace
