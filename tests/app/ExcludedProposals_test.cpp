#include "OrdovanApp/controller/ExcludedProposals.h"

#include "tests/support/QtTestMain.h"

#include <gmock/gmock.h>

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

namespace {

using Bits = std::vector<bool>;

/// A plan of these moves inside "/r".
std::shared_ptr<const OrdovanPlanResult> plan(std::initializer_list<std::pair<const char*, const char*>> moves) {
    auto made = std::make_shared<OrdovanPlanResult>();
    for (const auto& [source, destination] : moves) {
        made->proposals.push_back({.source = Url::file(std::string("/r/") + source),
                                   .destination = Url::file(std::string("/r/ordovan+/") + destination),
                                   .explanation = "",
                                   .ruleFolder = std::nullopt});
    }
    return made;
}

std::string id(const std::string& source, const std::string& destination) {
    return "/r/" + source + " -> /r/ordovan+/" + destination;
}

ExcludedProposals of(std::shared_ptr<const OrdovanPlanResult> plan, Bits bits) {
    ExcludedProposals excluded;
    excluded.follow(std::move(plan));
    excluded.set(std::move(bits));
    return excluded;
}

TEST(ExcludedProposals, AreTheSameAsBitsAndAsIds) {
    ExcludedProposals excluded = of(plan({{"a", "A"}, {"b", "B"}, {"c", "C"}}), {false, true, false});
    EXPECT_THAT(excluded.ids(), ElementsAre(id("b", "B")));
    EXPECT_TRUE(excluded.set({id("a", "A"), id("c", "C")}));
    EXPECT_EQ(excluded.proposals(), (Bits{true, false, true}));
    EXPECT_EQ(excluded.count(), 2U);
    ASSERT_EQ(excluded.remaining().size(), 1U);
    EXPECT_EQ(excluded.remaining()[0].source, Url::file("/r/b"));
}

TEST(ExcludedProposals, TellWhetherSettingThemChangedAnything) {
    ExcludedProposals excluded = of(plan({{"a", "A"}, {"b", "B"}}), {true, false});
    EXPECT_FALSE(excluded.set(Bits{true, false}));
    EXPECT_FALSE(excluded.set({id("a", "A")}));
    EXPECT_TRUE(excluded.set({id("a", "A"), "elsewhere"}));
    EXPECT_TRUE(excluded.set(Bits{true, false}));
}

TEST(ExcludedProposals, ToggleByPlaceAndById) {
    ExcludedProposals excluded = of(plan({{"a", "A"}, {"ab", "B"}}), {false, false});
    excluded.toggle(id("ab", "B"));
    EXPECT_EQ(excluded.proposals(), (Bits{false, true}));
    excluded.toggle(std::size_t{1});
    excluded.toggle(std::size_t{0});
    EXPECT_EQ(excluded.proposals(), (Bits{true, false}));
    EXPECT_EQ(excluded.count(), 1U);
}

TEST(ExcludedProposals, KeepIdsThatThePlanLacksUntilTheNextPlan) {
    ExcludedProposals excluded;
    excluded.toggle(id("a", "A"));
    excluded.toggle("nowhere");
    EXPECT_THAT(excluded.ids(), UnorderedElementsAre(id("a", "A"), "nowhere"));
    EXPECT_EQ(excluded.count(), 0U);
    EXPECT_TRUE(excluded.follow(plan({{"b", "B"}, {"a", "A"}})));
    EXPECT_EQ(excluded.proposals(), (Bits{false, true}));
    EXPECT_THAT(excluded.ids(), ElementsAre(id("a", "A")));
}

TEST(ExcludedProposals, FollowAFileToItsPlaceInTheNextPlan) {
    ExcludedProposals excluded = of(plan({{"a", "A"}, {"b", "B"}}), {false, true});
    EXPECT_FALSE(excluded.follow(plan({{"b", "B"}, {"c", "C"}, {"a", "A"}})));
    EXPECT_EQ(excluded.proposals(), (Bits{true, false, false}));
}

TEST(ExcludedProposals, ForgetAFileThatGoesElsewhereOrIsGone) {
    ExcludedProposals excluded = of(plan({{"a", "A"}, {"b", "B"}}), {true, true});
    EXPECT_TRUE(excluded.follow(plan({{"a", "Other"}})));
    EXPECT_EQ(excluded.proposals(), Bits{false});
    EXPECT_FALSE(excluded.follow(nullptr));
    EXPECT_THAT(excluded.ids(), IsEmpty());
}

TEST(ExcludedProposals, HoldPartialDownloadsFromTheStart) {
    ExcludedProposals excluded;
    EXPECT_TRUE(excluded.follow(plan({{"a.pdf", "A"}, {"b.iso.part", "B"}, {"c/d.CRDOWNLOAD", "C"}})));
    EXPECT_EQ(excluded.proposals(), (Bits{false, true, true}));
    EXPECT_EQ(excluded.count(), 2U);
}

TEST(ExcludedProposals, LeaveAPartialDownloadTickedThatIsProposedAgain) {
    ExcludedProposals excluded = of(plan({{"a.part", "A"}, {"b", "B"}}), {false, false});
    EXPECT_FALSE(excluded.follow(plan({{"b", "B"}, {"a.part", "A"}})));
    EXPECT_EQ(excluded.proposals(), (Bits{false, false}));
}

TEST(ExcludedProposals, HoldAPartialDownloadThatIsNewOrGoesElsewhere) {
    ExcludedProposals excluded = of(plan({{"a.part", "A"}}), {false});
    EXPECT_TRUE(excluded.follow(plan({{"a.part", "Other"}, {"new.part", "N"}})));
    EXPECT_EQ(excluded.proposals(), (Bits{true, true}));
}

TEST(ExcludedProposals, TellWhenOneIsForgottenForAnother) {
    ExcludedProposals excluded = of(plan({{"a", "A"}}), {true});
    EXPECT_TRUE(excluded.follow(plan({{"b.part", "B"}})));
    EXPECT_EQ(excluded.count(), 1U);
}

}  // namespace
