#include "OrdovanCore/KeepPolicy.h"

#include <gtest/gtest.h>

#include <algorithm>

using enum OrdovanKeepPolicy;
using Dates = std::unordered_map<std::string, double>;
using Paths = std::vector<std::string>;

namespace {

/// The path that stays of a group of these files; "" where there is none.
std::string kept(OrdovanKeepPolicy policy, const Paths& paths, const Dates& modified = {}) {
    OrdovanDuplicateGroup group{.contentHash = "h", .byteSize = 1, .files = {}};
    for (const std::string& path : paths) group.files.push_back(Url::file(path));
    const std::optional<Url> url = OrdovanKeepPolicies::keep(policy, group, modified);
    return url ? std::string(url->path()) : "";
}

}  // namespace

TEST(KeepPolicy, KeepsNothingOfAnEmptyGroupAndTheOnlyFileOfOne) {
    for (const OrdovanKeepPolicy policy : OrdovanKeepPolicies::allCases) {
        EXPECT_EQ(kept(policy, {}), "");
        EXPECT_EQ(kept(policy, {"/a"}), "/a");
    }
}

TEST(KeepPolicy, OldestKeepsTheEarliestDateWhereverItStands) {
    const Dates dates = {{"/a", 3.0}, {"/long name", -5.5}, {"/c", 4.0}};
    EXPECT_EQ(kept(oldest, {"/a", "/long name", "/c"}, dates), "/long name");
    EXPECT_EQ(kept(oldest, {"/long name", "/c", "/a"}, dates), "/long name");
}

TEST(KeepPolicy, NewestKeepsTheLatestDate) {
    EXPECT_EQ(kept(newest, {"/a", "/long name", "/c"}, {{"/a", 3}, {"/long name", 5}, {"/c", 4}}), "/long name");
}

TEST(KeepPolicy, KeepsADatedFileBeforeUndatedOnes) {
    for (const OrdovanKeepPolicy policy : {oldest, newest}) {
        EXPECT_EQ(kept(policy, {"/a", "/b", "/folder/dated"}, {{"/folder/dated", 7}}), "/folder/dated");
        EXPECT_EQ(kept(policy, {"/folder/dated", "/a", "/b"}, {{"/folder/dated", 7}}), "/folder/dated");
    }
}

TEST(KeepPolicy, WithoutDatesKeepsTheShortestThenSmallestPath) {
    EXPECT_EQ(kept(newest, {"/ccc", "/bb", "/ba"}), "/ba");
    EXPECT_EQ(kept(oldest, {"/ba", "/bb", "/ccc"}), "/ba");
}

TEST(KeepPolicy, DecidesEqualDatesByThePathAndNotByTheOrder) {
    const Dates dates = {{"/b", 7}, {"/a", 7}, {"/aa", 7}};
    for (const OrdovanKeepPolicy policy : {oldest, newest}) {
        EXPECT_EQ(kept(policy, {"/b", "/a", "/aa"}, dates), "/a");
        EXPECT_EQ(kept(policy, {"/aa", "/a", "/b"}, dates), "/a");
    }
}

TEST(KeepPolicy, ShortestPathKeepsTheFewestComponentsThenTheShortest) {
    EXPECT_EQ(kept(shortestPath, {"/a/x/f.txt", "/b/f.txt"}), "/b/f.txt");
    EXPECT_EQ(kept(shortestPath, {"/a/x/f", "/b/a very long name.txt"}), "/b/a very long name.txt");
    EXPECT_EQ(kept(shortestPath, {"/a/ff.txt", "/b/f.txt"}), "/b/f.txt");
    EXPECT_EQ(kept(shortestPath, {"/b/f.txt", "/a/f.txt"}), "/a/f.txt");
}

TEST(KeepPolicy, DeepestPathKeepsTheMostComponentsThenTheShortest) {
    EXPECT_EQ(kept(deepestPath, {"/a/long name.txt", "/b/c/f"}), "/b/c/f");
    EXPECT_EQ(kept(deepestPath, {"/a/b/cc/f.txt", "/a/b/c/f.txt"}), "/a/b/c/f.txt");
}

TEST(KeepPolicy, IgnoresDatesWhenItGoesByPath) {
    EXPECT_EQ(kept(shortestPath, {"/b", "/a"}, {{"/b", 1}}), "/a");
}

TEST(KeepPolicy, CountsCharactersAsTheUserSeesThem) {
    // Four bytes and one character against two bytes and two characters.
    EXPECT_EQ(kept(shortestPath, {"/ab", "/\U0001F600"}), "/\U0001F600");
    // A letter with its combining accent is one character.
    EXPECT_EQ(kept(shortestPath, {"/zz", "/e\u0301"}), "/e\u0301");
}

TEST(KeepPolicy, OrdersPathsOfOneLengthByCodePointWithCaseAndAccents) {
    EXPECT_EQ(kept(shortestPath, {"/a", "/B"}), "/B");
    EXPECT_EQ(kept(shortestPath, {"/a10", "/a09"}), "/a09");
    EXPECT_EQ(kept(shortestPath, {"/\u00e9", "/z"}), "/z");
    EXPECT_EQ(kept(shortestPath, {"/\U0001F600", "/\uFF5E"}), "/\uFF5E");
}

TEST(KeepPolicy, DoesNotDependOnTheOrderOfTheFiles) {
    const Dates dates = {{"/a/b", 2}, {"/c", 2}, {"/a/b/c", 1}, {"/d", 1}};
    for (const OrdovanKeepPolicy policy : OrdovanKeepPolicies::allCases) {
        Paths paths = {"/a/b", "/a/b/c", "/c", "/d", "/e", "/f/g"};
        const std::string first = kept(policy, paths, dates);
        while (std::ranges::next_permutation(paths).found) ASSERT_EQ(kept(policy, paths, dates), first);
    }
}

TEST(KeepPolicy, TakesThePathAsItIsForItsDate) {
    EXPECT_EQ(kept(oldest, {"/\xff", "/a"}, {{"/\xff", 5}}), "/\xff");
}

TEST(KeepPolicy, IsNamedAsShownAndStored) {
    Paths names;
    for (const OrdovanKeepPolicy policy : OrdovanKeepPolicies::allCases) {
        names.emplace_back(rawValue(policy));
        EXPECT_EQ(OrdovanKeepPolicies::fromRawValue(names.back()), policy);
    }
    EXPECT_EQ(names, (Paths{"Oldest", "Newest", "Shortest path", "Deepest path"}));
    for (const char* other : {"oldest", "Shortest Path", "", "Oldest "}) {
        EXPECT_EQ(OrdovanKeepPolicies::fromRawValue(other), std::nullopt) << other;
    }
}
