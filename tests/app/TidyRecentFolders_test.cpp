#include "tests/support/QtTestMain.h"
#include "tests/support/TidyWorld.h"

#include <gmock/gmock.h>

#include <string>
#include <utility>

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Phase = TidyViewModel::Phase;

namespace {

using TidyRecentFolders = ordovan::test::TidyWorld;

TEST_F(TidyRecentFolders, AreTheLastFive) {
    const auto model = make();
    for (const std::string name : {"/1", "/2", "/3", "/4", "/5", "/6", "/3"}) {
        memory.makeDirectory(name);
        model->chooseFolder(Url::file(name));
        tasks.finish();
    }
    EXPECT_THAT(model->recentFolders(),
                ElementsAre(Url::file("/3"), Url::file("/6"), Url::file("/5"), Url::file("/4"), Url::file("/2")));
    EXPECT_EQ(make()->recentFolders(), model->recentFolders());
}

TEST_F(TidyRecentFolders, AreForgottenAtTheNextStartWhenTheyAreGone) {
    const auto model = make();
    for (const std::string name : {"/1", "/2"}) {
        memory.makeDirectory(name);
        model->chooseFolder(Url::file(name));
        tasks.finish();
    }
    memory.removeTree("/2");
    EXPECT_THAT(make()->recentFolders(), ElementsAre(Url::file("/1")));
}

TEST_F(TidyRecentFolders, AreLookedUpInTheBackground) {
    tree({"x.pdf = 1"});
    const auto model = make();
    model->chooseFolder(Url::file("/r"));
    tasks.work();
    memory.clearLog();
    tasks.deliver();
    EXPECT_EQ(model->phase().kind, Phase::Case::ready);
    EXPECT_THAT(memory.log(), IsEmpty());
    EXPECT_THAT(model->recentFolders(), IsEmpty());
    tasks.finish();
    EXPECT_THAT(model->recentFolders(), ElementsAre(Url::file("/r")));
}

TEST_F(TidyRecentFolders, KeepThoseOfAnotherProcess) {
    const auto first = make(), second = make();
    for (const auto& [model, name] : {std::pair(first.get(), "/1"), std::pair(second.get(), "/2")}) {
        memory.makeDirectory(name);
        model->chooseFolder(Url::file(name));
        tasks.finish();
    }
    EXPECT_THAT(second->recentFolders(), ElementsAre(Url::file("/2"), Url::file("/1")));
    EXPECT_EQ(make()->recentFolders(), second->recentFolders());
}

}  // namespace
