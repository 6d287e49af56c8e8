#include "OrdovanApp/controller/DuplicateSearch.h"
#include "OrdovanCore/testing/MemoryContentReader.h"
#include "tests/support/QtTestMain.h"
#include "tests/support/TidyWorld.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <string>
#include <vector>

using ordovan::test::SignalCount;
using ordovan::testing::Operation;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;
using ::testing::UnorderedElementsAre;

namespace {

class TidyDuplicates : public ordovan::test::TidyWorld {
protected:
    /// A controller that has searched "/r".
    std::unique_ptr<TidyViewModel> searched() {
        auto model = previewed();
        find(*model);
        return model;
    }
    bool find(TidyViewModel& model) {
        const bool started = model.findDuplicates();
        tasks.finish();
        return started;
    }
    void previewAgain(TidyViewModel& model) {
        model.preview();
        tasks.finish();
    }
    /// The files of every group, the one to keep first: "b a c".
    static std::vector<std::string> groups(const TidyViewModel& model) {
        std::vector<std::string> lines;
        for (const auto& group : model.duplicateReport()->groups) {
            const Url kept = model.keeper(group);
            std::string line = local(kept.path());
            for (const Url& file : group.files) {
                if (file != kept) line += ' ' + local(file.path());
            }
            lines.push_back(line);
        }
        return lines;
    }
    static std::string id(std::string_view content) {
        return ordovan::testing::digestOf(content) + ':' + std::to_string(content.size());
    }
};

TEST_F(TidyDuplicates, AreGroupedByContentAndKeepTheirFirstFile) {
    tree({"b = one", "a = one", "c = two", "d = three", "e = three", "sub/f = three"});
    const auto model = previewed();
    EXPECT_FALSE(model->duplicateReport());
    const SignalCount reports(*model, &TidyViewModel::duplicateReportChanged);
    const SignalCount scanning(*model, &TidyViewModel::isScanningDuplicatesChanged);
    EXPECT_TRUE(model->findDuplicates());
    EXPECT_TRUE(model->isScanningDuplicates());
    tasks.finish();
    EXPECT_FALSE(model->isScanningDuplicates());
    EXPECT_THAT(groups(*model), ElementsAre("d e sub/f", "a b"));
    EXPECT_THAT(model->duplicateKeepers(), IsEmpty());
    EXPECT_EQ(reports, 1);
    EXPECT_EQ(scanning, 2);
    find(*model);
    EXPECT_EQ(reports, 1);  // the same again
}

TEST_F(TidyDuplicates, AreNoneInAFolderWithoutIdenticalFiles) {
    tree({"a = one", "b = two", "c = three"});
    const auto model = searched();
    ASSERT_TRUE(model->duplicateReport());
    EXPECT_THAT(model->duplicateReport()->groups, IsEmpty());
}

TEST_F(TidyDuplicates, AreNotSearchedWithoutAPreviewOrTwiceAtATime) {
    tree({"a = 1", "b = 1"});
    const auto model = make();
    EXPECT_FALSE(model->findDuplicates());
    model->chooseFolder(Url::file("/r"));
    EXPECT_FALSE(model->findDuplicates());  // nothing previewed so far
    tasks.finish();
    EXPECT_TRUE(model->findDuplicates());
    EXPECT_FALSE(model->findDuplicates());
    EXPECT_EQ(tasks.waiting(), 1u);
    model->chooseFolder(Url::file("/s"));
    EXPECT_FALSE(model->findDuplicates());  // the preview is of another folder
}

TEST_F(TidyDuplicates, AreTheSameWithAReaderForTheirContents) {
    const std::vector<std::pair<std::string, std::string>> files = {
        {"a", "one"}, {"b", "one"}, {"c", "two"}, {"d", ""}, {"e", ""}, {"f", "a long one"}, {"g", "a long eno"}};
    ordovan::testing::MemoryContentReader reader;
    for (const auto& [name, content] : files) {
        memory.write("/r/" + name, content);
        reader.write("/r/" + name, content);
    }
    const auto plain = searched();
    contents = &reader;
    fs.reset();
    const auto accelerated = searched();
    EXPECT_THAT(groups(*accelerated), UnorderedElementsAre("a b", "d e"));
    EXPECT_EQ(*accelerated->duplicateReport(), *plain->duplicateReport());
    EXPECT_EQ(fs.callCount(Operation::contentHash), 0u);
}

TEST_F(TidyDuplicates, LeaveOutFilesThatCouldNotBeReadAndNameThem) {
    tree({"a = 1", "b = 1", "unopened = 1", "unread = 1", "gone = 1"});
    ordovan::testing::MemoryContentReader reader;
    for (const char* path : {"/r/a", "/r/b", "/r/unopened", "/r/unread"}) reader.write(path, "1");
    reader.failOpening("/r/unopened", EACCES);
    reader.failReading("/r/unread", 0, EIO);
    contents = &reader;
    const auto model = searched();
    EXPECT_THAT(groups(*model), ElementsAre("a b"));
    EXPECT_THAT(model->unreadFiles(), ElementsAre(Url::file("/r/unopened"), Url::file("/r/unread")));
    memory.removeTree("/r/unopened");
    previewAgain(*model);
    EXPECT_THAT(model->unreadFiles(), ElementsAre(Url::file("/r/unread")));
    reader.replace("/r/unread", "1");
    find(*model);
    EXPECT_THAT(groups(*model), ElementsAre("a b unread"));
    EXPECT_THAT(model->unreadFiles(), IsEmpty());
}

TEST_F(TidyDuplicates, ForgetWhatCouldNotBeReadInAnotherFolder) {
    tree({"a = 1", "b = 1"});
    build(memory, "/s", {"c = 1"});
    ordovan::testing::MemoryContentReader reader;
    reader.write("/r/b", "1");
    reader.failOpening("/r/a", EACCES);
    contents = &reader;
    const auto model = searched();
    EXPECT_THAT(model->unreadFiles(), ElementsAre(Url::file("/r/a")));
    model->chooseFolder(Url::file("/s"));
    tasks.finish();
    EXPECT_THAT(model->unreadFiles(), IsEmpty());
}

TEST_F(TidyDuplicates, SearchTellsItsProgress) {
    tree({"a = one", "b = one", "c = three"});
    ordovan::testing::MemoryContentReader reader;
    for (const char* path : {"/r/a", "/r/b"}) reader.write(path, "one");
    contents = &reader;
    const auto model = previewed();
    std::vector<std::pair<quint64, quint64>> files, bytes;
    QObject::connect(model.get(), &TidyViewModel::duplicateSearchProgressed,
                     [&](quint64 filesDone, quint64 filesTotal, quint64 bytesDone, quint64 bytesTotal) {
                         files.emplace_back(filesDone, filesTotal);
                         bytes.emplace_back(bytesDone, bytesTotal);
                     });
    find(*model);
    ASSERT_FALSE(files.empty());
    EXPECT_THAT(files.back(), Pair(2u, 2u));
    EXPECT_THAT(bytes.back(), Pair(6u, 6u));
}

TEST_F(TidyDuplicates, SearchIsDroppedInTheMiddleOfAFile) {
    ordovan::testing::MemoryContentReader reader;
    const std::string content(8'000'000, 'x');
    for (const char* path : {"/r/a", "/r/b"}) {
        memory.write(path, content);
        reader.write(path, content);
    }
    contents = &reader;
    const auto model = previewed();
    int told = 0;
    QObject::connect(model.get(), &TidyViewModel::duplicateSearchProgressed, [&] { ++told; });
    EXPECT_TRUE(model->findDuplicates());
    reader.setBeforeRead([&](auto, auto) { model->cancelDuplicateSearch(); });
    tasks.work();
    EXPECT_FALSE(model->isScanningDuplicates());
    tasks.deliver();
    EXPECT_LT(reader.bytesRead(), content.size());
    EXPECT_FALSE(model->duplicateReport());
    EXPECT_EQ(told, 0);
}

TEST_F(TidyDuplicates, SearchIsDroppedBetweenFilesWithoutAReader) {
    tree({"a = 1", "b = 1", "c = 1"});
    const auto model = searched();
    const auto before = model->duplicateReport();
    memory.write("/r/c", "2");
    fs.reset();
    fs.setAfterCall([&](const auto& call) {
        if (call.operation == Operation::contentHash) model->cancelDuplicateSearch();
    });
    find(*model);
    EXPECT_EQ(fs.callCount(Operation::contentHash), 1u);
    EXPECT_FALSE(model->isScanningDuplicates());
    EXPECT_EQ(model->duplicateReport(), before);
}

TEST_F(TidyDuplicates, SearchMayBeginAnewWhileADroppedOneEnds) {
    tree({"a = 1", "b = 1"});
    const auto model = previewed();
    model->findDuplicates();
    model->cancelDuplicateSearch();
    EXPECT_TRUE(model->findDuplicates());
    tasks.work(0);
    tasks.deliver();
    EXPECT_TRUE(model->isScanningDuplicates());
    tasks.finish();
    EXPECT_THAT(groups(*model), ElementsAre("a b"));
}

TEST_F(TidyDuplicates, KeepTheFileChosenByHand) {
    tree({"a = 1", "b = 1", "c = 1"});
    const auto model = searched();
    const SignalCount changes(*model, &TidyViewModel::duplicateKeepersChanged);
    EXPECT_TRUE(model->keep("/r/b", id("1")));
    EXPECT_TRUE(model->keep("/r/b", id("1")));
    EXPECT_FALSE(model->keep("/r/z", id("1")));
    EXPECT_FALSE(model->keep("/r/a", id("2")));
    EXPECT_THAT(groups(*model), ElementsAre("b a c"));
    EXPECT_EQ(changes, 1);
}

TEST_F(TidyDuplicates, KeepWhatAPolicyPicksAlsoWhereOneWasChosenByHand) {
    tree({"x/z = 1", "b = 1", "a = 1", "d = 22", "y/c = 22"});
    memory.setModified("/r/b", 5'000'000'000);
    memory.setModified("/r/x/z", 7'000'000'000);
    memory.setModified("/r/a", 6'000'000'000);
    memory.setModified("/r/d", 9'000'000'000);
    memory.setModified("/r/y/c", 8'000'000'000);
    const auto model = searched();
    model->keep("/r/a", id("1"));
    model->autoPick(OrdovanKeepPolicy::oldest);
    EXPECT_THAT(groups(*model), UnorderedElementsAre("b a x/z", "y/c d"));
    model->autoPick(OrdovanKeepPolicy::newest);
    EXPECT_THAT(groups(*model), UnorderedElementsAre("x/z a b", "d y/c"));
    model->autoPick(OrdovanKeepPolicy::deepestPath);
    EXPECT_THAT(groups(*model), UnorderedElementsAre("x/z a b", "y/c d"));
    model->autoPick(OrdovanKeepPolicy::shortestPath);
    EXPECT_THAT(groups(*model), UnorderedElementsAre("a b x/z", "d y/c"));
}

TEST_F(TidyDuplicates, WithoutAReportNothingIsKept) {
    tree({"a = 1", "b = 1"});
    const auto model = previewed();
    EXPECT_FALSE(model->keep("/r/a", id("1")));
    model->autoPick(OrdovanKeepPolicy::oldest);
    EXPECT_THAT(model->duplicateKeepers(), IsEmpty());
}

TEST_F(TidyDuplicates, LoseWhatANewPreviewDoesNotFindAnyMore) {
    tree({"a = 1", "b = 1", "c = 1", "d = 22", "e = 22", "f = 333", "g = 333", "h = 4444", "i = 4444"});
    const auto model = searched();
    model->keep("/r/b", id("1"));
    model->keep("/r/e", id("22"));
    model->keep("/r/g", id("333"));
    memory.removeTree("/r/b");
    memory.removeTree("/r/d");
    memory.write("/r/i", "44444");
    previewAgain(*model);
    EXPECT_THAT(groups(*model), UnorderedElementsAre("a c", "g f"));
    EXPECT_THAT(model->duplicateKeepers(), ElementsAre(Pair(id("333"), "/r/g")));
}

TEST_F(TidyDuplicates, StayThroughAPreviewThatFindsThemAll) {
    tree({"a = 1", "b = 1"});
    const auto model = searched();
    model->keep("/r/b", id("1"));
    const SignalCount reports(*model, &TidyViewModel::duplicateReportChanged);
    const SignalCount keepers(*model, &TidyViewModel::duplicateKeepersChanged);
    memory.write("/r/c", "1");
    previewAgain(*model);
    EXPECT_THAT(groups(*model), ElementsAre("b a"));
    EXPECT_EQ(reports, 0);
    EXPECT_EQ(keepers, 0);
}

TEST_F(TidyDuplicates, OfAnotherFolderAreForgotten) {
    tree({"a = 1", "b = 1"});
    build(memory, "/s", {"c = 1", "d = 1"});
    const auto model = searched();
    model->keep("/r/b", id("1"));
    model->chooseFolder(Url::file("/s"));
    EXPECT_FALSE(model->trashExtras());
    tasks.finish();
    EXPECT_FALSE(model->duplicateReport());
    EXPECT_THAT(model->duplicateKeepers(), IsEmpty());
}

TEST_F(TidyDuplicates, SearchEndsWhenAnotherFolderIsChosen) {
    tree({"a = 1", "b = 1"});
    build(memory, "/s", {"c = 1"});
    const auto model = previewed();
    model->findDuplicates();
    model->chooseFolder(Url::file("/s"));
    EXPECT_FALSE(model->isScanningDuplicates());
    tasks.finish();
    EXPECT_FALSE(model->duplicateReport());
}

TEST_F(TidyDuplicates, FoundWhileAPreviewEndedAreThoseItLeft) {
    tree({"a = 1", "b = 1", "c = 1"});
    const auto model = previewed();
    model->findDuplicates();
    tasks.work();
    memory.removeTree("/r/b");
    model->preview();
    tasks.work();
    ASSERT_EQ(tasks.waiting(), 0u);
    // The search's result arrives first, so it is cut by the preview; the other way round by itself.
    tasks.deliver();
    EXPECT_THAT(groups(*model), ElementsAre("a c"));

    memory.write("/r/b", "1");
    previewAgain(*model);
    model->findDuplicates();
    memory.removeTree("/r/c");
    model->preview();
    tasks.work(1);
    memory.write("/r/c", "1");
    tasks.finish();
    EXPECT_THAT(groups(*model), ElementsAre("a b"));
}

TEST_F(TidyDuplicates, SearchDoesNothingForAControllerThatIsGone) {
    tree({"a = 1", "b = 1"});
    auto model = previewed();
    model->findDuplicates();
    fs.reset();
    model.reset();
    tasks.finish();
    EXPECT_EQ(fs.callCount(Operation::contentHash), 0u);
}

TEST_F(TidyDuplicates, LargeFilesAreThoseOfThePreview) {
    tree({"a = 1", "b = 333", "c = 22", "sub/d = 333"});
    const auto model = make();
    EXPECT_THAT(model->largeFiles(10, 0), IsEmpty());
    model->chooseFolder(Url::file("/r"));
    tasks.finish();
    std::vector<std::string> names;
    for (const auto& entry : model->largeFiles(3, 2)) names.push_back(local(entry.url.path()));
    EXPECT_THAT(names, ElementsAre("b", "sub/d", "c"));
    model->chooseFolder(Url::file("/s"));
    EXPECT_THAT(model->largeFiles(10, 0), IsEmpty());
}

}  // namespace
