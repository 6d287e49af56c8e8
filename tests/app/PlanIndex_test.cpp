#include "OrdovanApp/controller/PlanIndex.h"

#include "tests/support/QtTestMain.h"
#include "tests/support/TidyWorld.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

using ::testing::ElementsAre;

namespace {

using PlanIndexTest = ordovan::test::TidyWorld;

/// The files and folders left where they are, each with its reason.
std::vector<std::string> skips(const PlanIndex& index) {
    std::vector<std::string> lines;
    for (const PlanIndex::Skip& skip : index.skips) {
        lines.push_back(std::string(skip.url.path()) + ": " + std::string(skip.reason.view()));
    }
    return lines;
}

TEST_F(PlanIndexTest, TellsOfFoldersThatTheScanCouldNotLookInto) {
    std::string deep = "d";
    for (int level = 1; level <= 16; ++level) deep += "/d";
    tree({"a.pdf = 1", "caf\xe9.pdf = 1", "locked/x = 1"});
    memory.write("/r/" + deep + "/too deep.pdf", "1");
    unreadable = {"/r/locked"};
    const auto model = previewed();
    const auto index = PlanIndex::of(*model->plan(), *model->inventory(), Url::file("/r"));
    EXPECT_THAT(
        skips(index),
        ElementsAre("/r/caf\xe9.pdf: Could not evaluate this file.",
                    "/r/" + deep + ": This folder lies too deep to be looked into; the files in it are left untouched.",
                    "/r/locked: This folder could not be read; the files in it are left untouched."));
}

}  // namespace
