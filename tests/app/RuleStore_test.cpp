#include "OrdovanApp/stores/RuleStore.h"

#include "tests/support/QtTestMain.h"

#include <gmock/gmock.h>

#include <QByteArray>
#include <QObject>

#include <functional>
#include <set>
#include <string>
#include <vector>

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

namespace {

/// A store whose writes can be refused, and into which another process writes as told.
class SharedStore final : public ordovan::KeyValueStore {
public:
    [[nodiscard]] std::optional<QVariant> value(const QString& key) const override { return inner.value(key); }
    [[nodiscard]] bool update(const std::function<void(Values& values)>& edit) override {
        ++updates;
        Values before, after;
        EXPECT_TRUE(inner.update([&](Values& values) { before = values; }));
        after = before;
        edit(after);
        writes += after == before ? 0 : 1;
        return !refuses && inner.update([&](Values& values) { values = after; });
    }
    void refresh() override {}

    ordovan::MemoryKeyValueStore inner;
    int writes = 0;
    int updates = 0;
    bool refuses = false;
};

class RuleStoreTest : public ::testing::Test {
protected:
    void store(std::string_view document) {
        EXPECT_TRUE(values.inner.setValue(QStringLiteral("ordovan.rules.v1"),
                                          QByteArray(document.data(), static_cast<qsizetype>(document.size()))));
    }
    [[nodiscard]] std::string stored() const {
        return values.value(QStringLiteral("ordovan.rules.v1")).value_or(QVariant()).toByteArray().toStdString();
    }
    static std::vector<std::string> folders(const RuleStore& rules) {
        std::vector<std::string> names;
        for (const OrdovanRule& rule : rules.ruleSet().rules) names.push_back(rule.folderName);
        return names;
    }
    static void fill(RuleStore& rules, const std::vector<std::string>& names) {
        for (const std::string& name : names) EXPECT_EQ(rules.add("dmg", name), std::nullopt);
    }

    SharedStore values;
    RuleStore rules{values};
};

TEST_F(RuleStoreTest, BeginsEmpty) {
    EXPECT_THAT(rules.ruleSet().rules, IsEmpty());
    EXPECT_EQ(RuleStore::defaultsKey, "ordovan.rules.v1");
}

TEST_F(RuleStoreTest, IsEmptyWhereWhatIsStoredCanNotBeRead) {
    for (const char* const document : {"", "{", "[]", "{\"rules\":[{\"id\":\"x\"}]}"}) {
        store(document);
        EXPECT_THAT(RuleStore(values).ruleSet().rules, IsEmpty()) << document;
    }
}

TEST_F(RuleStoreTest, CutsALongerStoredListToItsFirstFifty) {
    OrdovanRuleSet set;
    for (int i = 0; i < 51; ++i) set.rules.push_back({ordovan::Uuid::random(), {"dmg"}, "F" + std::to_string(i)});
    store(set.encoded());
    const RuleStore read(values);
    ASSERT_THAT(read.ruleSet().rules, SizeIs(50));
    EXPECT_EQ(read.ruleSet().rules.back().folderName, "F49");
}

TEST_F(RuleStoreTest, AddsARuleAtTheEndAndStoresIt) {
    fill(rules, {"Apps"});
    EXPECT_EQ(rules.add(".DMG, pkg", "  Installers "), std::nullopt);
    EXPECT_THAT(folders(rules), ElementsAre("Apps", "Installers"));
    EXPECT_THAT(rules.ruleSet().rules[1].extensions, ElementsAre("dmg", "pkg"));
    EXPECT_EQ(stored(), rules.ruleSet().encoded());
    EXPECT_EQ(RuleStore(values).ruleSet(), rules.ruleSet());
}

TEST_F(RuleStoreTest, SaysWhyARuleIsRefused) {
    EXPECT_EQ(rules.add("tar.gz", "Archives"),
              "\"tar.gz\" isn't a valid extension. Use letters and numbers only, like dmg.");
    EXPECT_EQ(rules.add(" , ", "Archives"), "Add at least one file extension, like dmg or pkg.");
    EXPECT_EQ(rules.add("dmg", " "), "Give the folder a name.");
    EXPECT_EQ(rules.add("dmg", "a/b"),
              "Folder names can't contain / or :, start with a dot, or be longer than 64 characters.");
    EXPECT_THAT(rules.ruleSet().rules, IsEmpty());
    EXPECT_EQ(values.writes, 0);
}

TEST_F(RuleStoreTest, RefusesAFiftyFirstRule) {
    for (int i = 0; i < 50; ++i) fill(rules, {"F" + std::to_string(i)});
    const OrdovanRuleSet before = rules.ruleSet();
    EXPECT_EQ(rules.add("not valid!", "x"), "You can have up to 50 rules.");
    EXPECT_EQ(rules.ruleSet(), before);
    EXPECT_EQ(stored(), before.encoded());
}

TEST_F(RuleStoreTest, DeletesByPosition) {
    fill(rules, {"a", "b", "c", "d"});
    EXPECT_TRUE(rules.remove({0, 2, 99}));
    EXPECT_THAT(folders(rules), ElementsAre("b", "d"));
    EXPECT_EQ(stored(), rules.ruleSet().encoded());
}

struct Move {
    std::set<std::size_t> positions;
    std::size_t target;
    std::vector<std::string> expected;
};

class RuleStoreMove : public RuleStoreTest, public ::testing::WithParamInterface<Move> {};
INSTANTIATE_TEST_SUITE_P(OfAList, RuleStoreMove,
                         ::testing::Values(Move{{0}, 2, {"b", "a", "c", "d"}}, Move{{0}, 4, {"b", "c", "d", "a"}},
                                           Move{{3}, 0, {"d", "a", "b", "c"}}, Move{{0, 2}, 4, {"b", "d", "a", "c"}},
                                           Move{{1, 3}, 2, {"a", "b", "d", "c"}}, Move{{1}, 1, {"a", "b", "c", "d"}},
                                           Move{{1}, 2, {"a", "b", "c", "d"}}, Move{{}, 0, {"a", "b", "c", "d"}},
                                           Move{{7}, 0, {"a", "b", "c", "d"}}, Move{{0}, 99, {"b", "c", "d", "a"}},
                                           Move{{0, 1, 2, 3}, 2, {"a", "b", "c", "d"}}));

TEST_P(RuleStoreMove, PutsTheRulesInFrontOfTheTarget) {
    fill(rules, {"a", "b", "c", "d"});
    EXPECT_TRUE(rules.move(GetParam().positions, GetParam().target));
    EXPECT_EQ(folders(rules), GetParam().expected);
    EXPECT_EQ(stored(), rules.ruleSet().encoded());
}

TEST_F(RuleStoreTest, ChangesTheRulesAsAnotherProcessLeftThem) {
    fill(rules, {"a", "b", "c"});
    RuleStore other(values);
    EXPECT_TRUE(other.remove({0}));
    fill(other, {"d"});
    fill(rules, {"e"});
    EXPECT_THAT(folders(rules), ElementsAre("b", "c", "d", "e"));
    EXPECT_EQ(stored(), rules.ruleSet().encoded());
}

TEST_F(RuleStoreTest, DeletesTheRuleThatWasMeantWhenPositionsHaveShifted) {
    fill(rules, {"a", "b", "c"});
    RuleStore other(values);
    EXPECT_TRUE(other.remove({0}));
    EXPECT_TRUE(rules.remove({0, 1}));  // a, which is gone, and b
    EXPECT_THAT(folders(rules), ElementsAre("c"));
}

TEST_F(RuleStoreTest, MovesTheRuleThatWasMeantWhenPositionsHaveShifted) {
    fill(rules, {"a", "b", "c", "d"});
    RuleStore other(values);
    EXPECT_TRUE(other.remove({0}));
    EXPECT_TRUE(rules.move({3}, 1));  // d in front of b
    EXPECT_THAT(folders(rules), ElementsAre("d", "b", "c"));
}

TEST_F(RuleStoreTest, MakesEveryChangeInOneStep) {
    fill(rules, {"a"});
    rules.move({0}, 0);
    rules.remove({0});
    EXPECT_EQ(values.updates, 3);
}

TEST_F(RuleStoreTest, KeepsADocumentItCanNotReadBeforeItIsReplaced) {
    store("{damaged");
    RuleStore read(values);
    EXPECT_TRUE(read.remove({0}));
    EXPECT_EQ(stored(), "{damaged");  // nothing was changed
    fill(read, {"a"});
    EXPECT_EQ(values.value(QStringLiteral("ordovan.rules.v1.unreadable")), QByteArray("{damaged"));
    store("[damaged again");
    fill(read, {"b"});
    EXPECT_EQ(values.value(QStringLiteral("ordovan.rules.v1.unreadable")), QByteArray("{damaged"));
    EXPECT_EQ(values.value(QStringLiteral("ordovan.rules.v1.unreadable.2")), QByteArray("[damaged again"));
    EXPECT_THAT(folders(RuleStore(values)), ElementsAre("b"));
}

TEST_F(RuleStoreTest, KeepsTheRulesBeyondTheFiftiethBeforeTheListIsReplaced) {
    OrdovanRuleSet set;
    for (int i = 0; i < 51; ++i) set.rules.push_back({ordovan::Uuid::random(), {"dmg"}, "F" + std::to_string(i)});
    store(set.encoded());
    RuleStore read(values);
    EXPECT_TRUE(read.remove({0}));
    EXPECT_THAT(RuleStore(values).ruleSet().rules, SizeIs(49));
    const auto kept = values.value(QStringLiteral("ordovan.rules.v1.unreadable"));
    ASSERT_TRUE(kept);
    EXPECT_EQ(kept->toByteArray().toStdString(), set.encoded());
}

TEST_F(RuleStoreTest, StaysAsItWasWhenAChangeCanNotBeStored) {
    fill(rules, {"a", "b"});
    const OrdovanRuleSet before = rules.ruleSet();
    values.refuses = true;
    int changes = 0;
    QObject::connect(&rules, &RuleStore::ruleSetChanged, [&] { ++changes; });
    EXPECT_EQ(rules.add("dmg", "c"), "That rule couldn't be added.");
    EXPECT_FALSE(rules.remove({0}));
    EXPECT_FALSE(rules.move({0}, 2));
    EXPECT_EQ(rules.ruleSet(), before);
    EXPECT_EQ(changes, 0);
}

TEST_F(RuleStoreTest, ChangesInTheBackgroundWhatIsStoredByThen) {
    fill(rules, {"a", "b"});
    std::vector<std::function<void()>> waiting;
    rules.storeThrough([&](const auto& work, const auto& done) { waiting.insert(waiting.end(), {work, done}); });
    std::vector<std::optional<std::string>> refusals;
    const auto added = [&](const std::optional<std::string>& refusal) { refusals.push_back(refusal); };
    std::vector<bool> done;
    rules.add("pdf", "d", added);
    rules.add("!", "e", added);
    rules.remove({0}, [&](bool isDone) { done.push_back(isDone); });
    rules.move({1}, 0, [&](bool isDone) { done.push_back(isDone); });  // b in front of a, which is gone by then
    EXPECT_THAT(folders(rules), ElementsAre("a", "b"));
    RuleStore other(values);  // of another process
    EXPECT_EQ(other.add("zip", "c"), std::nullopt);
    for (const auto& call : waiting) call();
    EXPECT_THAT(refusals, ElementsAre(std::nullopt, testing::Optional(testing::HasSubstr("letters"))));
    EXPECT_THAT(done, ElementsAre(true, true));
    EXPECT_THAT(folders(rules), ElementsAre("c", "d", "b"));
    EXPECT_THAT(folders(RuleStore(values)), ElementsAre("c", "d", "b"));
}

TEST_F(RuleStoreTest, TellsWhatCouldNotBeStoredInTheBackground) {
    fill(rules, {"a"});
    rules.storeThrough([](const auto& work, const auto& done) { work(), done(); });
    values.refuses = true;
    std::optional<std::string> refusal;
    rules.add("pdf", "b", [&](const std::optional<std::string>& why) { refusal = why; });
    EXPECT_EQ(refusal, "That rule couldn't be added.");
    rules.remove({0}, [](bool isDone) { EXPECT_FALSE(isDone); });
    EXPECT_THAT(folders(rules), ElementsAre("a"));
}

TEST_F(RuleStoreTest, IsNotHeardOfOnceItIsGone) {
    std::function<void()> last;
    {
        RuleStore gone(values);
        gone.storeThrough([&](const auto& work, const auto& done) { work(), last = done; });
        gone.add("pdf", "a", [](const auto&) { ADD_FAILURE(); });
    }
    last();
    EXPECT_THAT(folders(RuleStore(values)), ElementsAre("a"));
}

TEST_F(RuleStoreTest, TellsOfChangesOnly) {
    int changes = 0;
    QObject::connect(&rules, &RuleStore::ruleSetChanged, [&] { ++changes; });
    fill(rules, {"a", "b"});
    EXPECT_EQ(changes, 2);
    values.writes = 0;
    rules.move({0}, 0);
    rules.remove({9});
    rules.add("!", "c");
    EXPECT_EQ(changes, 2);
    EXPECT_EQ(values.writes, 0);
}

}  // namespace
