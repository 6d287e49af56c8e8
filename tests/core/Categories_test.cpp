#include "OrdovanCore/Categories.h"

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <utility>
#include <vector>

using enum OrdovanFileCategory;
using OrdovanFileCategories::forExtension;

TEST(Categories, IgnoreTheCaseOfAnExtension) {
    EXPECT_EQ(forExtension("PDF"), documents);
    EXPECT_EQ(forExtension("Pdf"), documents);
    EXPECT_EQ(forExtension("pdf"), documents);
}

TEST(Categories, DoNotStripADot) {
    EXPECT_EQ(forExtension(".pdf"), other);
}

TEST(Categories, FileTheDoubtfulExtensionsAsDecided) {
    EXPECT_EQ(forExtension(""), other);
    EXPECT_EQ(forExtension("tgz"), archives);
    EXPECT_EQ(forExtension("ts"), code);
    EXPECT_EQ(forExtension("raw"), images);
    EXPECT_EQ(forExtension("key"), documents);
    EXPECT_EQ(forExtension("tar.gz"), other);
    EXPECT_EQ(forExtension(" pdf"), other);
    EXPECT_EQ(forExtension("svg"), design);
    EXPECT_EQ(forExtension("json"), code);
    EXPECT_EQ(forExtension("iso"), installers);
}

TEST(Categories, AreExactlyTheseFoldersWithTheseExtensions) {
    const std::vector<std::pair<std::string, std::string>> expected = {
        {"Documents", "pdf doc docx txt rtf md pages odt key ppt pptx"},
        {"Spreadsheets", "csv xls xlsx numbers ods tsv"},
        {"Images", "jpg jpeg png heic heif webp gif tiff tif bmp raw dng cr2 nef"},
        {"Design", "psd ai fig sketch xd svg afdesign afphoto indd"},
        {"Videos", "mp4 mov m4v avi mkv webm"},
        {"Audio", "mp3 m4a wav aiff aif flac aac ogg"},
        {"Archives", "zip gz tgz tar 7z rar bz2 xz"},
        {"Installers", "dmg pkg mpkg iso"},
        {"Code", "swift py js ts tsx jsx java kt c h cpp m go rs rb php sh json yaml yml toml html css sql ipynb"},
        {"Fonts", "ttf otf woff woff2 ttc"},
        {"Books", "epub mobi azw3 ibooks cbz"},
        {"Other", ""},
    };
    const auto known = OrdovanFileCategories::knownExtensions();
    std::vector<std::pair<std::string, std::string>> table;
    for (const OrdovanFileCategory category : OrdovanFileCategories::allCases) {
        std::string row;
        for (const auto& [of, extensions] : known) {
            if (of != category) continue;
            for (const std::string_view extension : extensions) row.append(row.empty() ? "" : " ").append(extension);
        }
        table.emplace_back(rawValue(category), row);
    }
    EXPECT_EQ(table, expected);
}

TEST(Categories, AreTwelveWithOtherLast) {
    EXPECT_EQ(OrdovanFileCategories::allCases.size(), 12U);
    EXPECT_EQ(OrdovanFileCategories::allCases.back(), other);
    EXPECT_EQ(OrdovanFileCategories::knownExtensions().size(), 11U);
}

TEST(Categories, ListEachOf101ExtensionsOnceAndFindIt) {
    std::set<std::string_view> seen;
    std::size_t row = 0;
    for (const auto& [category, extensions] : OrdovanFileCategories::knownExtensions()) {
        EXPECT_EQ(category, OrdovanFileCategories::allCases[row++]);
        for (const std::string_view extension : extensions) {
            EXPECT_TRUE(seen.insert(extension).second) << extension;
            EXPECT_EQ(forExtension(extension), category) << extension;
        }
    }
    EXPECT_EQ(seen.size(), 101U);
}

TEST(Categories, AreFoundByTheirExactFolderName) {
    for (const OrdovanFileCategory category : OrdovanFileCategories::allCases) {
        EXPECT_EQ(OrdovanFileCategories::fromRawValue(rawValue(category)), category);
    }
    EXPECT_EQ(OrdovanFileCategories::fromRawValue("documents"), std::nullopt);
    EXPECT_EQ(rawValue(installers), "Installers");
}
