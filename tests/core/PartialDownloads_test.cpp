#include "OrdovanCore/PartialDownloads.h"

#include <gtest/gtest.h>

#include <string>

using OrdovanPartialDownloads::isPartialDownload;

TEST(PartialDownloads, AreKnownByTheirEndings) {
    for (const char* ending :
         {"!bt",        "!qb",     "!ut",         "aria2",        "bc!",        "crdownload", "dctmp",
          "download",   "dtapart", "fdmdownload", "filepart",     "incomplete", "jc!",        "ob!",
          "opdownload", "part",    "partial",     "partprogress", "xltd",       "ytdl"}) {
        EXPECT_TRUE(isPartialDownload("film.mkv." + std::string(ending))) << ending;
    }
}

TEST(PartialDownloads, AreKnownWhateverTheCase) {
    EXPECT_TRUE(isPartialDownload("Unconfirmed 4711.CRDOWNLOAD"));
    EXPECT_TRUE(isPartialDownload("film.mkv.!qB"));
    EXPECT_TRUE(isPartialDownload("film.mkv.Part"));
}

TEST(PartialDownloads, AreNotKnownByLess) {
    for (const char* name : {"", ".", "part", ".part", "film.part.mkv", "film.part1.rar", "film.parts", "film.part ",
                             "film.", "film.download.zip", "counterpart", "crdownload", "film.crdownloads-for-ever"}) {
        EXPECT_FALSE(isPartialDownload(name)) << name;
    }
}

TEST(PartialDownloads, AreKnownWhereTheNameIsNotText) {
    EXPECT_TRUE(isPartialDownload("\xff\xfe.part"));
    EXPECT_FALSE(isPartialDownload("film.\xff"));
    EXPECT_FALSE(isPartialDownload("film.p\xc3\x84rt"));
}
