#include "OrdovanCore/Url.h"

#include <gtest/gtest.h>

TEST(Url, KeepsThePathByteForByte) {
    EXPECT_EQ(Url::file("/a/\xff\nb ").path(), "/a/\xff\nb ");
}

TEST(Url, IsAFileUrlUnlessItHasAnotherScheme) {
    EXPECT_TRUE(Url::file("/a").isFile());
    EXPECT_TRUE(Url::parse("/a").isFile());
    EXPECT_TRUE(Url::parse("file:///a").isFile());
    EXPECT_FALSE(Url::parse("https://example.org/a").isFile());
    EXPECT_EQ(Url::parse("https://example.org/a").scheme(), "https");
    EXPECT_EQ(Url::parse("Coap+tcp-2.0://example.org/a").scheme(), "Coap+tcp-2.0");
    EXPECT_TRUE(Url::parse("no scheme://a").isFile());
    EXPECT_TRUE(Url::parse("://a").isFile());
}

TEST(Url, DecodesPercentEncodingInTheTextFormOnly) {
    EXPECT_EQ(Url::parse("file:///a%20b%2fc%zz%4").path(), "/a b/c%zz%4");
    EXPECT_EQ(Url::parse("file://localhost/x").path(), "/x");
    EXPECT_EQ(Url::file("/a%20b").path(), "/a%20b");
    EXPECT_EQ(Url::parse("/a%20b").path(), "/a%20b");
}

TEST(Url, TellsTheLastComponent) {
    EXPECT_EQ(Url::file("/a/b.txt").lastPathComponent(), "b.txt");
    EXPECT_EQ(Url::file("/a/b//").lastPathComponent(), "b");
    EXPECT_EQ(Url::file("/").lastPathComponent(), "/");
    EXPECT_EQ(Url::file("b").lastPathComponent(), "b");
    EXPECT_EQ(Url::file("").lastPathComponent(), "");
}

TEST(Url, TakesTheExtensionFromTheLastDotInsideTheName) {
    EXPECT_EQ(Url::file("/x/backup.tar.gz").pathExtension(), "gz");
    EXPECT_EQ(Url::file("/x/.bashrc").pathExtension(), "");
    EXPECT_EQ(Url::file("/x/name.").pathExtension(), "");
    EXPECT_EQ(Url::file("/x.d/README").pathExtension(), "");
    EXPECT_EQ(Url::file("/x/..a").pathExtension(), "a");
    EXPECT_EQ(Url::file("/x/.hidden.PDF").pathExtension(), "PDF");
}

TEST(Url, StepsToTheFolderThatHoldsIt) {
    EXPECT_EQ(Url::file("/a/b").deletingLastPathComponent().path(), "/a");
    EXPECT_EQ(Url::file("/a").deletingLastPathComponent().path(), "/");
    EXPECT_EQ(Url::file("/").deletingLastPathComponent().path(), "/");
    EXPECT_EQ(Url::file("/a//b/").deletingLastPathComponent().path(), "/a");
}

TEST(Url, AppendsOneComponent) {
    EXPECT_EQ(Url::file("/a").appending("b").path(), "/a/b");
    EXPECT_EQ(Url::file("/").appending("b").path(), "/b");
    EXPECT_EQ(Url::file("/a/").appending("b").path(), "/a/b");
}

TEST(Url, StandardizesTextually) {
    EXPECT_EQ(Url::file("/a/./b/../c/").standardized().path(), "/a/c");
    EXPECT_EQ(Url::file("/..").standardized().path(), "/");
    EXPECT_EQ(Url::file("").standardized().path(), "/");
    EXPECT_EQ(Url::file("/a/..b/.c").standardized().path(), "/a/..b/.c");
}

TEST(NormalPath, IsRecognized) {
    for (const char* path : {"/", "/a", "/a/b", "/.a", "/..a", "/a./b..", "/..."}) {
        EXPECT_TRUE(ordovan::isNormalPath(path)) << path;
        EXPECT_EQ(ordovan::normalizedPath(path), path);
    }
    for (const char* path : {"", "a", "/a/", "//", "//a", "/a//b", "/.", "/..", "/a/./b", "/a/../b", "/a/.", "/a/.."}) {
        EXPECT_FALSE(ordovan::isNormalPath(path)) << path;
    }
}

TEST(SharedText, ComparesByContentAndSharesStorageBetweenCopies) {
    const ordovan::SharedText text("abc");
    const ordovan::SharedText copy = text;
    const ordovan::SharedText same(std::string("abc"));
    EXPECT_EQ(text, same);
    EXPECT_TRUE(text.sharesStorageWith(copy));
    EXPECT_FALSE(text.sharesStorageWith(same));
}

TEST(SharedText, OfNothingIsEmpty) {
    EXPECT_TRUE(ordovan::SharedText().empty());
    EXPECT_EQ(ordovan::SharedText(""), ordovan::SharedText());
}

TEST(SharedText, JoinsPiecesIncludingNulBytes) {
    EXPECT_EQ(ordovan::SharedText::joined({"a", "", std::string_view("\0", 1), "b"}), std::string("a\0b", 3));
}
