#include "OrdovanApp/controller/StoppableFileSystem.h"

#include "OrdovanCore/testing/MemoryContentReader.h"
#include "OrdovanCore/testing/MemoryFileSystem.h"
#include "tests/support/QtTestMain.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>

namespace {

/// One large and one small file, seen by a file system and by a content reader.
class StoppableFileSystemTest : public ::testing::Test {
protected:
    StoppableFileSystemTest() {
        memory.write("/large", content);
        contents.write("/large", content);
        memory.write("/small", "1");
    }
    static OrdovanResult<std::string> cancelled() { return std::unexpected(OrdovanSystemError::posix(ECANCELED)); }

    const std::string content = std::string(StoppableFileSystem::largeFile + 1, 'x');
    ordovan::testing::MemoryFileSystem memory;
    ordovan::testing::MemoryContentReader contents;
    CancelFlag flag;
    StoppableFileSystem fs{memory, &contents, flag};
    const Url large = Url::file("/large");
    const Url small = Url::file("/small");
};

TEST_F(StoppableFileSystemTest, HashesLargeFilesInPiecesAndOthersAsBefore) {
    contents.setLongestRead(1'000'000);
    EXPECT_EQ(fs.contentHash(large), ordovan::testing::digestOf(content));
    EXPECT_EQ(contents.bytesRead(), content.size());
    EXPECT_EQ(fs.contentHash(small), ordovan::testing::digestOf("1"));
    EXPECT_EQ(contents.opens(), 1u);
}

TEST_F(StoppableFileSystemTest, GivesAHashUpInTheMiddleOfALargeFile) {
    contents.setBeforeRead([&](auto, std::int64_t offset) {
        if (offset > 0) flag.cancel();
    });
    EXPECT_EQ(fs.contentHash(large), cancelled());
    EXPECT_LT(contents.bytesRead(), content.size() / 10);
    EXPECT_FALSE(fs.beginFile());
}

TEST_F(StoppableFileSystemTest, BeginsNoHashOnceStopped) {
    flag.cancel();
    EXPECT_EQ(fs.contentHash(small), cancelled());
    EXPECT_EQ(fs.contentHash(large), cancelled());
    EXPECT_EQ(contents.opens(), 0u);
}

TEST_F(StoppableFileSystemTest, FinishesAFileThatItHasBegunToChange) {
    EXPECT_TRUE(fs.beginFile());
    EXPECT_TRUE(fs.copy(small, Url::file("/copy")));
    flag.cancel();
    EXPECT_EQ(fs.contentHash(Url::file("/copy")), ordovan::testing::digestOf("1"));
    EXPECT_EQ(fs.contentHash(large), ordovan::testing::digestOf(content));
    EXPECT_FALSE(fs.beginFile());
    EXPECT_EQ(fs.contentHash(Url::file("/copy")), cancelled());
}

TEST_F(StoppableFileSystemTest, PassesTheReadersErrorsOn) {
    contents.failReading("/large", 5'000'000, EIO);
    EXPECT_EQ(fs.contentHash(large), OrdovanResult<std::string>(std::unexpected(OrdovanSystemError::posix(EIO))));
    contents.failOpening("/large", EACCES);
    EXPECT_EQ(fs.contentHash(large), OrdovanResult<std::string>(std::unexpected(OrdovanSystemError::posix(EACCES))));
}

TEST_F(StoppableFileSystemTest, LeavesEveryHashToTheFileSystemWithoutAReader) {
    StoppableFileSystem plain(memory, nullptr, flag);
    EXPECT_EQ(plain.contentHash(large), ordovan::testing::digestOf(content));
}

}  // namespace
