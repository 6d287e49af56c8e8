#include "OrdovanCore/PlanExport.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

using OrdovanPlanExport::csv;
using OrdovanPlanExport::markdown;
using Kind = OrdovanPlanConflict::Kind;

namespace {

OrdovanFileProposal proposal(std::string_view name, std::optional<ordovan::SharedText> ruleFolder = std::nullopt) {
    const std::string path(name);
    return {Url::file("/r/" + path), Url::file("/r/ordovan+/Documents/2024-03/" + path), OrdovanFileCategory::documents,
            "", std::move(ruleFolder)};
}

OrdovanPlanConflict conflict(std::string_view name, Kind kind) {
    return {Url::file("/r/" + std::string(name)), Url::file("/r/ordovan+/Other/x"), kind};
}

OrdovanPlanResult planOf(std::string_view name) {
    return {{proposal(name)}, {}, {}};
}

/// The second field of the CSV's first row.
std::string csvName(std::string_view name) {
    const std::string text = csv(planOf(name), {});
    const std::size_t begin = text.find("\r\nyes,") + 6;
    return text.substr(begin, text.find(",\"Documents\",proposed\r\n") - begin);
}

}  // namespace

TEST(PlanExport, WritesAWholePlanAsMarkdown) {
    const OrdovanPlanResult plan{
        {proposal("a.pdf"), proposal("b.pdf", "Taxes")},
        {conflict("c.pdf", Kind::duplicateDestination), conflict("d", Kind::destinationOccupied)},
        {{Url::file("/r/e"), "Not a regular file."}}};
    EXPECT_EQ(markdown(plan, "Downloads", {plan.proposals[0].id()}),
              "# ordovan+ plan \u2014 Downloads\n\n"
              "- Proposed: 2 (selected: 1)\n"
              "- Need review: 2\n"
              "- Skipped: 1\n\n"
              "Preview only \u2014 nothing has been moved.\n\n"
              "| Selected | File | Goes to |\n|---|---|---|\n"
              "| no | a.pdf | ordovan+/Documents |\n"
              "| yes | b.pdf | ordovan+/Taxes |\n"
              "\n"
              "## Needs review\n\n"
              "- c.pdf: Another file would be organized to the same location. Needs your decision; left untouched.\n"
              "- d: A file already exists at the destination. Will not overwrite; left untouched.\n");
}

TEST(PlanExport, WritesAWholePlanAsCsv) {
    const OrdovanPlanResult plan{{proposal("a.pdf"), proposal("b.pdf", "Taxes")},
                                 {conflict("c.pdf", Kind::duplicateDestination)},
                                 {{Url::file("/r/e"), "Not a regular file."}}};
    EXPECT_EQ(csv(plan, {plan.proposals[0].id()}),
              "selected,file,destination_folder,status\r\n"
              "no,\"a.pdf\",\"Documents\",proposed\r\n"
              "yes,\"b.pdf\",\"Taxes\",proposed\r\n"
              "no,\"c.pdf\",\"\",\"needs review\"\r\n");
}

TEST(PlanExport, WritesOnlyTheSummaryOfAnEmptyPlan) {
    EXPECT_EQ(markdown({}, "Downloads", {}),
              "# ordovan+ plan \u2014 Downloads\n\n"
              "- Proposed: 0 (selected: 0)\n- Need review: 0\n- Skipped: 0\n\n"
              "Preview only \u2014 nothing has been moved.\n\n");
    EXPECT_EQ(csv({}, {}), "selected,file,destination_folder,status\r\n");
}

TEST(PlanExport, LeavesOutTheTableWhereOnlyConflictsAre) {
    const std::string text = markdown({{}, {conflict("c", Kind::destinationOccupied)}, {}}, "D", {});
    EXPECT_TRUE(
        text.ends_with("moved.\n\n## Needs review\n\n- c: A file already exists at the destination. Will not "
                       "overwrite; left untouched.\n"));
}

TEST(PlanExport, KeepsMarkdownNamesOnOneLineAndInOneCell) {
    const OrdovanPlanResult plan{{proposal("a|b\nc.pdf", "R|\nF")}, {conflict("x|\n", Kind::destinationOccupied)}, {}};
    const std::string text = markdown(plan, "My|\nfolder", {});
    EXPECT_TRUE(text.starts_with("# ordovan+ plan \u2014 My\\| folder\n\n"));
    EXPECT_NE(text.find("| yes | a\\|b c.pdf | ordovan+/R\\| F |\n"), std::string::npos);
    EXPECT_NE(text.find("- x\\| : A file"), std::string::npos);
}

TEST(PlanExport, DisarmsCsvNamesThatASpreadsheetWouldRun) {
    EXPECT_EQ(csvName("=1+1.pdf"), "\"'=1+1.pdf\"");
    EXPECT_EQ(csvName("-rf"), "\"'-rf\"");
    EXPECT_EQ(csvName("+x"), "\"'+x\"");
    EXPECT_EQ(csvName("@x"), "\"'@x\"");
    EXPECT_EQ(csvName("a=1"), "\"a=1\"");
}

TEST(PlanExport, DoublesQuotesInCsvAndKeepsCommasAndLineFeeds) {
    EXPECT_EQ(csvName("a\"b,c\nd"), "\"a\"\"b,c\nd\"");
    EXPECT_EQ(csvName("\""), "\"\"\"\"");
}

TEST(PlanExport, DisarmsAndQuotesRuleFoldersAndConflictsInCsv) {
    const OrdovanPlanResult plan{{proposal("a", "=F\"")}, {conflict("-c\"", Kind::destinationOccupied)}, {}};
    EXPECT_EQ(csv(plan, {}),
              "selected,file,destination_folder,status\r\n"
              "yes,\"a\",\"'=F\"\"\",proposed\r\n"
              "no,\"'-c\"\"\",\"\",\"needs review\"\r\n");
}

TEST(PlanExport, WritesNamesThatAreNotUtf8WithReplacementCharacters) {
    EXPECT_EQ(csvName("a\xff.pdf"), "\"a\uFFFD.pdf\"");
    EXPECT_NE(markdown(planOf("a\xff.pdf"), "D\xc3", {}).find("| yes | a\uFFFD.pdf |"), std::string::npos);
    EXPECT_TRUE(markdown({}, "D\xc3", {}).starts_with("# ordovan+ plan \u2014 D\uFFFD\n"));
}

TEST(PlanExport, CountsOnlyProposalsOfThePlanAsUnticked) {
    EXPECT_NE(markdown(planOf("a"), "D", {"/elsewhere -> /x"}).find("Proposed: 1 (selected: 1)"), std::string::npos);
}
