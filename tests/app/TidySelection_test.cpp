#include "tests/support/QtTestMain.h"
#include "tests/support/TidyWorld.h"

#include <gmock/gmock.h>

using ordovan::test::SignalCount;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

namespace {

class TidySelection : public ordovan::test::TidyWorld {
protected:
    static constexpr const char* a = "/r/a.pdf -> /r/ordovan+/Documents/a.pdf";
    static constexpr const char* b = "/r/b.pdf -> /r/ordovan+/Documents/b.pdf";

    std::unique_ptr<TidyViewModel> withTwoFiles() {
        tree({"a.pdf = 1", "b.pdf = 2"});
        return previewed();
    }
    static std::vector<std::string> ticked(const TidyViewModel& model) { return lines(model.selectedProposals()); }
};

TEST_F(TidySelection, IsEverythingAtFirst) {
    const auto model = withTwoFiles();
    EXPECT_THAT(ticked(*model), ElementsAre("a.pdf -> ordovan+/Documents/a.pdf", "b.pdf -> ordovan+/Documents/b.pdf"));
}

TEST_F(TidySelection, IsEmptyWithoutAPlan) {
    EXPECT_THAT(make()->selectedProposals(), IsEmpty());
}

TEST_F(TidySelection, LosesAndRegainsAToggledFile) {
    const auto model = withTwoFiles();
    const SignalCount changes(*model, &TidyViewModel::excludedChanged);
    model->toggle(a);
    EXPECT_THAT(ticked(*model), ElementsAre("b.pdf -> ordovan+/Documents/b.pdf"));
    model->toggle(a);
    EXPECT_THAT(model->excluded(), IsEmpty());
    EXPECT_EQ(changes, 2);
}

TEST_F(TidySelection, LeavesAnUnfinishedDownloadOutUntilItIsTicked) {
    tree({"a.pdf = 1", "b.pdf.part = 2"});
    const auto model = previewed();
    EXPECT_THAT(ticked(*model), ElementsAre("a.pdf -> ordovan+/Documents/a.pdf"));
    model->toggle("/r/b.pdf.part -> /r/ordovan+/Other/b.pdf.part");
    memory.write("/r/c.crdownload", "3");
    model->preview();
    tasks.finish();
    EXPECT_THAT(ticked(*model),
                UnorderedElementsAre("a.pdf -> ordovan+/Documents/a.pdf", "b.pdf.part -> ordovan+/Other/b.pdf.part"));
}

TEST_F(TidySelection, KeepsAFileUntickedAcrossPreviews) {
    const auto model = withTwoFiles();
    model->toggle(a);
    const SignalCount changes(*model, &TidyViewModel::excludedChanged);
    model->preview();
    tasks.finish();
    EXPECT_THAT(model->excluded(), ElementsAre(a));
    EXPECT_EQ(changes, 0);
}

TEST_F(TidySelection, ForgetsAFileThatIsProposedForAnotherPlace) {
    const auto model = withTwoFiles();
    model->setExcluded({a, b, "/r/never.pdf -> /nowhere"});
    rules.add("pdf", "Papers");
    model->preview();
    tasks.finish();
    EXPECT_THAT(model->excluded(), IsEmpty());
}

TEST_F(TidySelection, ForgetsOnlyTheFilesThatAreGone) {
    const auto model = withTwoFiles();
    model->setExcluded({a, b});
    memory.removeTree("/r/a.pdf");
    model->preview();
    tasks.finish();
    EXPECT_THAT(model->excluded(), ElementsAre(b));
}

TEST_F(TidySelection, ByAgeTicksTheOlderFilesOnly) {
    tree({"new.pdf = 1", "edge.pdf = 2", "old.pdf = 3", "older.jpg = 4"});
    now = 100 * 86'400;
    const auto day = [](double days) { return static_cast<std::int64_t>(days * 86'400) * 1'000'000'000; };
    memory.setModified("/r/new.pdf", day(95));
    memory.setModified("/r/edge.pdf", day(93));
    memory.setModified("/r/old.pdf", day(93) - 1'000'000'000);
    memory.setModified("/r/older.jpg", day(1));
    const auto model = previewed();
    model->tickOlderThan(7);
    EXPECT_THAT(ticked(*model),
                ElementsAre("old.pdf -> ordovan+/Documents/old.pdf", "older.jpg -> ordovan+/Images/older.jpg"));
    model->tickOlderThan(90);
    EXPECT_THAT(ticked(*model), ElementsAre("older.jpg -> ordovan+/Images/older.jpg"));
}

TEST_F(TidySelection, ByAgeIsTheSameWithAnIndexOfThePlan) {
    tree({"new.pdf = 1", "old.pdf = 2", "a/twin.pdf = 3", "b/twin.pdf = 3"});
    now = 100 * 86'400;
    memory.setModified("/r/new.pdf", std::int64_t{95} * 86'400 * 1'000'000'000);
    memory.setModified("/r/old.pdf", std::int64_t{1} * 86'400 * 1'000'000'000);
    const auto model = previewed({.indexesPlans = true});
    model->tickOlderThan(30);
    EXPECT_THAT(ticked(*model), ElementsAre("old.pdf -> ordovan+/Documents/old.pdf"));
}

TEST_F(TidySelection, ByAgeDoesNothingWithoutAPlan) {
    const auto model = make();
    model->tickOlderThan(7);
    EXPECT_THAT(model->excluded(), IsEmpty());
}

TEST_F(TidySelection, SetToWhatItIsSendsNoSignal) {
    const auto model = withTwoFiles();
    model->setExcluded({a, b});
    const SignalCount changes(*model, &TidyViewModel::excludedChanged);
    model->setExcluded({b, a});
    EXPECT_EQ(changes, 0);
    EXPECT_THAT(model->excluded(), UnorderedElementsAre(a, b));
}

}  // namespace
