#include "OrdovanApp/controller/FileLooks.h"

#include "OrdovanCore/testing/MemoryContentReader.h"
#include "tests/support/ManualTaskRunner.h"
#include "tests/support/QtTestMain.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <memory>
#include <string>
#include <vector>

using namespace ordovan::test;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

class Looks : public ::testing::Test {
protected:
    void look(const std::string& path, std::size_t limit = 10) {
        looks->look(
            Url::file(path), limit,
            [this](const FileBeginning& found) {
                seen.push_back(found.bytes + (found.isWhole ? " whole" : "") + (found.couldRead ? "" : " unreadable"));
            },
            [this, path] { done.push_back(path); });
    }

    ordovan::testing::MemoryContentReader reader;
    ManualTaskRunner tasks;
    std::unique_ptr<FileLooks> looks = std::make_unique<FileLooks>(tasks, &reader);
    std::vector<std::string> seen;
    std::vector<std::string> done;
};

}  // namespace

TEST_F(Looks, ReadNoMoreThanTheLimit) {
    reader.write("/a", "0123456789");
    reader.write("/b", "0123456789X");
    look("/a");
    tasks.finish();
    look("/b");
    tasks.finish();
    EXPECT_THAT(seen, ElementsAre("0123456789 whole", "0123456789"));
    EXPECT_THAT(done, ElementsAre("/a", "/b"));
}

TEST_F(Looks, GatherWhatComesInSmallPieces) {
    reader.write("/a", "01234");
    reader.setLongestRead(2);
    look("/a");
    tasks.finish();
    EXPECT_THAT(seen, ElementsAre("01234 whole"));
}

TEST_F(Looks, SayWhatCanNotBeOpenedOrRead) {
    reader.failOpening("/pipe", EINVAL);
    reader.write("/bad", "01234");
    reader.failReading("/bad", 2, EIO);
    reader.setLongestRead(2);
    look("/pipe");
    tasks.finish();
    look("/bad");
    tasks.finish();
    EXPECT_THAT(seen, ElementsAre(" unreadable", " unreadable"));
}

TEST_F(Looks, ReadNothingWithoutAReader) {
    looks = std::make_unique<FileLooks>(tasks, nullptr);
    look("/a");
    tasks.finish();
    EXPECT_THAT(seen, ElementsAre(" unreadable"));
}

TEST_F(Looks, CountOnlyTheLastAndWorkOnOneAtATime) {
    for (const char* path : {"/a", "/b", "/c"}) reader.write(path, path);
    look("/a");
    look("/b");
    look("/c");
    EXPECT_EQ(tasks.waiting(), 1U);
    tasks.finish();
    EXPECT_THAT(seen, ElementsAre("/c whole"));
    EXPECT_THAT(done, ElementsAre("/c"));
}

TEST_F(Looks, GiveUpBetweenTwoPieces) {
    reader.write("/a", "0123456789");
    reader.setLongestRead(2);
    int reads = 0;
    reader.setBeforeRead([&](std::string_view, std::int64_t) {
        if (++reads == 2) looks->cancel();
    });
    look("/a");
    tasks.finish();
    EXPECT_EQ(reads, 2);
    EXPECT_THAT(seen, IsEmpty());
    EXPECT_THAT(done, IsEmpty());
}

TEST_F(Looks, CallNobodyOnceTheyAreGone) {
    reader.write("/a", "1");
    look("/a");
    tasks.work();
    looks.reset();
    tasks.finish();
    EXPECT_THAT(done, IsEmpty());
}
