// Several programs work at once in one folder, and in a folder inside it: each waits or says that another is at work,
// and nothing is lost, whoever comes first.

#include "tests/proofs/Proof.h"
#include "tests/proofs/SharedFolders.h"

#include <gtest/gtest.h>

using namespace ordovan::proofs;

namespace {

/// Two to four programs at once, chosen by seed, round after round in the same folders, and the user's changes between.
TEST(Processes, AtOnceInNestedFoldersLoseNothing) {
    const std::size_t count = rounds(25, 1'000);
    Tally tally;
    for (std::uint64_t seed = 1; seed <= count; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Dice dice(seed);
        SharedFolders folders;
        const auto contents = folders.contents();
        for (int round = 0; round < 3; ++round) {
            folders.runAtOnce(chosen(dice, 2 + dice.below(3)), tally);
            ASSERT_EQ(folders.contents(), contents) << folders.list();
        }
        folders.takeAllBack();
        ASSERT_EQ(folders.files(), folders.original()) << folders.list();
    }
    EXPECT_GT(tally.done, count);
    tell("processes at once", tally.all, "programs in shared and nested folders, all files where they were at the end");
    tell("processes at once: held back", tally.refused, "of them, which said that another run holds the folder");
}

}  // namespace
