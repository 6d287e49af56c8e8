#include "OrdovanCore/Planner.h"

#include <gtest/gtest.h>

#include <random>

using ordovan::text::TimeZone;
using Lines = std::vector<std::string>;
using Ids = std::unordered_set<std::string>;

namespace {

const Url root = Url::file("/root");
const Url output = root.appending(OrdovanOutput::folderName);

OrdovanInventoryEntry file(std::string_view name, std::optional<double> modified = std::nullopt) {
    return {.url = root.appending(name), .modifiedEpoch = modified};
}

struct Options {
    std::unordered_set<std::string> preexisting = {};
    bool caseInsensitive = false;
    bool groupByMonth = false;
    std::string zone = "UTC";
};

OrdovanPlanResult plan(const std::vector<OrdovanInventoryEntry>& files, const Options& options = {}) {
    return OrdovanPlanner::plan(files, root, output, options.preexisting, options.caseInsensitive, {},
                                options.groupByMonth, TimeZone::named(options.zone).value());
}

/// A plan in words: what goes where, what is contested, what is left out.
Lines lines(const OrdovanPlanResult& plan) {
    Lines lines;
    const auto relative = [](const Url& url) { return std::string(url.path().substr(root.path().size() + 1)); };
    for (const auto& p : plan.proposals)
        lines.push_back(relative(p.source) + " > " + relative(p.destination).substr(9));
    for (const auto& c : plan.conflicts) lines.push_back(relative(c.source) + " ! " + std::string(rawValue(c.kind)));
    for (const auto& s : plan.skipped) lines.push_back(relative(s.source) + " - " + s.reason.str());
    return lines;
}

}  // namespace

TEST(Plan, OfNoFilesIsEmpty) {
    EXPECT_EQ(plan({}), OrdovanPlanResult{});
    EXPECT_TRUE(plan({}).categoriesTouched().empty());
}

TEST(Plan, LetsNoTwoFilesCompeteForOneDestination) {
    EXPECT_EQ(lines(plan({file("a/x.pdf"), file("b/x.pdf"), file("y.pdf")})),
              (Lines{"y.pdf > Documents/y.pdf", "a/x.pdf ! duplicateDestination", "b/x.pdf ! duplicateDestination"}));
}

TEST(Plan, TakesNamesThatDifferInCaseForOneOnlyWhereTheVolumeDoes) {
    const std::vector files = {file("a/X.pdf"), file("b/x.pdf")};
    EXPECT_EQ(lines(plan(files)), (Lines{"a/X.pdf > Documents/X.pdf", "b/x.pdf > Documents/x.pdf"}));
    EXPECT_EQ(lines(plan(files, {.caseInsensitive = true})),
              (Lines{"a/X.pdf ! duplicateDestination", "b/x.pdf ! duplicateDestination"}));
}

TEST(Plan, TakesComposedAndDecomposedNamesForOne) {
    EXPECT_EQ(lines(plan({file("a/e\u0301.pdf"), file("b/\u00e9.pdf")})),
              (Lines{"a/e\u0301.pdf ! duplicateDestination", "b/\u00e9.pdf ! duplicateDestination"}));
}

TEST(Plan, ProposesNoDestinationThatExists) {
    EXPECT_EQ(lines(plan({file("x.pdf")}, {.preexisting = {"/root/ordovan+/Documents/x.pdf"}})),
              Lines{"x.pdf ! destinationOccupied"});
    EXPECT_EQ(lines(plan({file("x.pdf")}, {.preexisting = {"/root/ordovan+/Documents/X.PDF"}})),
              Lines{"x.pdf > Documents/x.pdf"});
    EXPECT_EQ(
        lines(plan({file("x.pdf")}, {.preexisting = {"/root/ordovan+/Documents/X.PDF"}, .caseInsensitive = true})),
        Lines{"x.pdf ! destinationOccupied"});
}

TEST(Plan, ReportsAnOccupiedAndContestedDestinationOnceAsOccupied) {
    EXPECT_EQ(lines(plan({file("a/x.pdf"), file("b/x.pdf")}, {.preexisting = {"/root/ordovan+/Documents/x.pdf"}})),
              (Lines{"a/x.pdf ! destinationOccupied", "b/x.pdf ! destinationOccupied"}));
}

TEST(Plan, GroupsByTheMonthOfTheTimeZone) {
    EXPECT_EQ(lines(plan({file("x.pdf", 0), file("y.pdf")}, {.groupByMonth = true})),
              (Lines{"x.pdf > Documents/1970-01/x.pdf", "y.pdf > Documents/y.pdf"}));
    EXPECT_EQ(lines(plan({file("x.pdf", 0)}, {.groupByMonth = true, .zone = "America/Los_Angeles"})),
              Lines{"x.pdf > Documents/1969-12/x.pdf"});
    EXPECT_EQ(OrdovanPlanner::monthFolder(1'709'251'199, TimeZone::utc()), "2024-02");
}

TEST(Plan, SkipsWhatIsNoRegularFile) {
    std::vector files = {file("d"), file("l"), file("p")};
    files[0].isDirectory = files[1].isSymbolicLink = files[2].isPackage = true;
    EXPECT_EQ(lines(plan(files)),
              (Lines{"d - Not a regular file.", "l - Not a regular file.", "p - Not a regular file."}));
}

TEST(Plan, SkipsAFileThatNoRecordCouldName) {
    EXPECT_EQ(lines(plan({file("\xff.pdf"), file("caf\xe9/x.pdf")})),
              (Lines{"caf\xe9/x.pdf - Could not evaluate this file.", "\xff.pdf - Could not evaluate this file."}));
}

TEST(Plan, SkipsWithTheSentenceOfTheRefusal) {
    const std::vector<OrdovanInventoryEntry> files = {{.url = root.appending("ordovan+/Documents/a.pdf")}};
    EXPECT_EQ(lines(plan(files)), Lines{"ordovan+/Documents/a.pdf - Already in the right place."});
}

TEST(Plan, OrdersProposalsByDestinationThenSource) {
    const auto ordered =
        lines(plan({file("z/B.pdf"), file("a10.pdf"), file("y/b.pdf"), file("a9.pdf"), file("a.zip")}));
    EXPECT_EQ(ordered, (Lines{"a.zip > Archives/a.zip", "a9.pdf > Documents/a9.pdf", "a10.pdf > Documents/a10.pdf",
                              "y/b.pdf > Documents/b.pdf", "z/B.pdf > Documents/B.pdf"}));
}

TEST(Plan, OrdersConflictsAndSkipsBySource) {
    std::vector files = {file("n10"), file("n9"), file("q/c.pdf"), file("P/c.pdf")};
    files[0].isDirectory = files[1].isDirectory = true;
    EXPECT_EQ(lines(plan(files)), (Lines{"P/c.pdf ! duplicateDestination", "q/c.pdf ! duplicateDestination",
                                         "n9 - Not a regular file.", "n10 - Not a regular file."}));
}

TEST(Plan, PutsEveryFileInExactlyOneList) {
    std::mt19937 random(3);
    std::vector<OrdovanInventoryEntry> files;
    for (int i = 0; i < 3000; ++i) {
        files.push_back(file("d" + std::to_string(random() % 40) + "/f" + std::to_string(random() % 200) +
                             (random() % 2 == 0 ? ".pdf" : ".PNG")));
    }
    const OrdovanPlanResult result = plan(files, {.preexisting = {"/root/ordovan+/Documents/f7.pdf"}});
    EXPECT_EQ(result.proposals.size() + result.conflicts.size() + result.skipped.size(), files.size());
    std::unordered_set<std::string> destinations;
    for (const auto& proposal : result.proposals) {
        EXPECT_TRUE(destinations.insert(proposal.destination.sharedPath().str()).second);
    }
}

TEST(PlanResult, NamesTheCategoriesTouchedInByteOrder) {
    using enum OrdovanFileCategory;
    EXPECT_EQ(plan({file("a.csv"), file("b"), file("c.mp3"), file("d.zip"), file("e.mp3")}).categoriesTouched(),
              (std::vector{archives, audio, other, spreadsheets}));
}

TEST(PlanResult, SelectsByExclusionInPlanOrder) {
    const OrdovanPlanResult result = plan({file("a.pdf"), file("b.pdf"), file("c.pdf")});
    EXPECT_EQ(result.selectedProposals({}), result.proposals);
    const auto selected = result.selectedProposals({"/root/b.pdf -> /root/ordovan+/Documents/b.pdf", "stale"});
    ASSERT_EQ(selected.size(), 2U);
    EXPECT_EQ(selected[0].source.path(), "/root/a.pdf");
    EXPECT_EQ(selected[1].source.path(), "/root/c.pdf");
}

TEST(PlanResult, TakesFilesOfUnknownAgeAndThoseAtTheCutoffForNotOlder) {
    const OrdovanPlanResult result = plan({file("a.pdf"), file("b.pdf"), file("c.pdf")});
    const auto id = [](const char* name) {
        return std::string("/root/") + name + ".pdf -> /root/ordovan+/Documents/" + name + ".pdf";
    };
    EXPECT_EQ(result.proposalIDs(100, {}), (Ids{id("a"), id("b"), id("c")}));
    EXPECT_EQ(result.proposalIDs(100, {{"/root/a.pdf", 99}, {"/root/b.pdf", 100}}), (Ids{id("b"), id("c")}));
}

TEST(PlanSkip, IsKnownByItsFile) {
    const OrdovanPlanSkip skip{Url::file("/root/a.pdf"), "Not a regular file."};
    EXPECT_EQ(skip.id(), "/root/a.pdf");
    EXPECT_FALSE(skip == (OrdovanPlanSkip{skip.source, "Could not evaluate this file."}));
}

TEST(PlanConflict, HasAnIdAndASentence) {
    const OrdovanPlanConflict conflict{root, output, OrdovanPlanConflict::Kind::destinationOccupied};
    EXPECT_EQ(conflict.id(), "/root#destinationOccupied");
    EXPECT_EQ(message(conflict.kind), "A file already exists at the destination. Will not overwrite; left untouched.");
    EXPECT_EQ(message(OrdovanPlanConflict::Kind::duplicateDestination),
              "Another file would be organized to the same location. Needs your decision; left untouched.");
}
