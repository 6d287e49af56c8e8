// Which check speaks when an item breaks two at once.

#include "OrdovanCore/platform/Sha256.h"
#include "tests/support/ApplyFixture.h"

#include <gmock/gmock.h>

#include <string>
#include <string_view>

using ::testing::IsEmpty;

namespace {

namespace apply {
constexpr const char* sourceChanged = "Source changed since preview; left untouched.";
constexpr const char* outOfScope = "Path no longer within the authorized scope.";
constexpr const char* linkedParent = "A parent folder is a symlink; skipped to stay in scope.";
}  // namespace apply

namespace undo {
constexpr const char* outOfScope = "Journal entry is outside the authorized scope; undo refused.";
constexpr const char* missing = "The organized file is missing or was changed since, so it was left as it is.";
constexpr const char* linkedParent = "A parent folder is a symlink; undo skipped to stay in scope.";
constexpr const char* occupied = "Original location is occupied; undo skipped.";
constexpr const char* modified = "File was modified after organizing; undo skipped to avoid data loss.";
}  // namespace undo

class ApplyOrder : public ordovan::test::ApplyFixture {
protected:
    ~ApplyOrder() override { EXPECT_THAT(memory.changes(), IsEmpty()); }
};

class UndoOrder : public ordovan::test::ApplyFixture {
protected:
    ~UndoOrder() override { EXPECT_THAT(memory.changes(), IsEmpty()); }

    /// Undoes one entry that claims a content of "1" and, when given, an identity.
    std::string message(std::string_view source, std::string_view destination, std::string_view identity = "") {
        const OrdovanJournalEntry entry(source, destination, true, 1, ordovan::sha256("1").value(), identity);
        return OrdovanExecutor::undo({1, 0, {entry}}, Url::file("/r"), Url::file("/r/ordovan+"), fs)
            .outcomes.at(0)
            .message;
    }
};

}  // namespace

TEST_F(ApplyOrder, LooksAtTheSourceBeforeTheScope) {
    tree({"target", "link -> target"});
    EXPECT_EQ(fate(proposal("/outside/gone", "/r/ordovan+/a")), skipped(apply::sourceChanged));
    EXPECT_EQ(fate(proposal("/r/link", "/outside/a")), skipped(apply::sourceChanged));
}

TEST_F(ApplyOrder, LooksAtTheSourceBeforeLinkedParents) {
    tree({"../outside/", "old -> /outside"});
    EXPECT_EQ(fate(proposal("/r/old/gone", "/r/ordovan+/a")), skipped(apply::sourceChanged));
}

TEST_F(ApplyOrder, LooksAtTheScopeBeforeLinkedParents) {
    tree({"../outside/a = 1", "old -> /outside"});
    EXPECT_EQ(fate(proposal("/r/old/a", "/elsewhere/a")), skipped(apply::outOfScope));
}

TEST_F(ApplyOrder, LooksAtTheScopeBeforeTheDestination) {
    tree({"a = 1", "taken = 2"});
    EXPECT_EQ(fate(proposal("/r/a", "/r/taken")), skipped(apply::outOfScope));
}

TEST_F(ApplyOrder, LooksForLinkedParentsBeforeTheDestination) {
    tree({"a = 1", "../outside/a = taken", "ordovan+/Documents -> /outside", "ordovan+/b = taken", "old -> /outside"});
    EXPECT_EQ(fate(proposal("/r/a", "/r/ordovan+/Documents/a")), skipped(apply::linkedParent));
    EXPECT_EQ(fate(proposal("/r/old/a", "/r/ordovan+/b")), skipped(apply::linkedParent));
}

TEST_F(UndoOrder, LooksAtTheScopeBeforeTheOrganizedFile) {
    tree({"a"});
    EXPECT_EQ(message("/r/x", "/r/gone"), undo::outOfScope);
    EXPECT_EQ(message("/outside/x", "/r/ordovan+/gone"), undo::outOfScope);
}

TEST_F(UndoOrder, LooksForTheOrganizedFileBeforeLinkedParents) {
    tree({"../outside/", "old -> /outside"});
    EXPECT_EQ(message("/r/old/a", "/r/ordovan+/gone"), undo::missing);
}

TEST_F(UndoOrder, LooksForTheOrganizedFileBeforeTheOldPlace) {
    tree({"a = taken"});
    EXPECT_EQ(message("/r/a", "/r/ordovan+/gone"), undo::missing);
}

TEST_F(UndoOrder, LooksForLinkedParentsBeforeTheOldPlace) {
    tree({"../outside/a = taken", "old -> /outside", "ordovan+/Documents/a = 1"});
    EXPECT_EQ(message("/r/old/a", "/r/ordovan+/Documents/a"), undo::linkedParent);
}

TEST_F(UndoOrder, LooksAtTheOldPlaceBeforeTheContent) {
    tree({"a = taken", "ordovan+/Documents/a = changed"});
    EXPECT_EQ(message("/r/a", "/r/ordovan+/Documents/a"), undo::occupied);
}

TEST_F(UndoOrder, ComparesTheContentBeforeTheIdentity) {
    tree({"ordovan+/Documents/longer = changed", "ordovan+/Documents/same = 2"});
    EXPECT_EQ(message("/r/longer", "/r/ordovan+/Documents/longer", "0:0"), undo::modified);
    EXPECT_EQ(message("/r/same", "/r/ordovan+/Documents/same", "0:0"), undo::modified);
}

TEST_F(UndoOrder, LooksAtTheOldPlaceBeforeTheIdentity) {
    tree({"a = taken", "ordovan+/Documents/a = 1"});
    EXPECT_EQ(message("/r/a", "/r/ordovan+/Documents/a", "0:0"), undo::occupied);
}
