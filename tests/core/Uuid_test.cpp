#include "OrdovanCore/Uuid.h"

#include <gtest/gtest.h>

#include <set>

using ordovan::Uuid;

namespace {

constexpr std::string_view upper = "0123ABCD-4567-89AB-CDEF-FEDCBA987654";

TEST(Uuid, ReadsEitherCaseAndWritesUpperCase) {
    const std::optional<Uuid> fromUpper = Uuid::parse(upper);
    const std::optional<Uuid> fromLower = Uuid::parse("0123abcd-4567-89ab-cdef-fedcba987654");
    ASSERT_TRUE(fromUpper && fromLower);
    EXPECT_EQ(*fromUpper, *fromLower);
    EXPECT_EQ(fromLower->text(), upper);
    EXPECT_EQ(fromLower->bytes[0], 0x01);
    EXPECT_EQ(fromLower->bytes[15], 0x54);
}

TEST(Uuid, OfZeroesIsTheDefault) {
    EXPECT_EQ(Uuid{}.text(), "00000000-0000-0000-0000-000000000000");
    EXPECT_EQ(Uuid::parse("00000000-0000-0000-0000-000000000000"), Uuid{});
}

TEST(Uuid, RefusesEveryOtherText) {
    for (std::size_t length = 0; length < upper.size(); ++length) {
        EXPECT_EQ(Uuid::parse(upper.substr(0, length)), std::nullopt) << length;
    }
    for (std::size_t place = 0; place < upper.size(); ++place) {
        for (const char wrong : {'g', 'G', ' ', '\0', '/', ':', '@', '`', upper[place] == '-' ? 'A' : '-'}) {
            std::string text(upper);
            text[place] = wrong;
            EXPECT_EQ(Uuid::parse(text), std::nullopt) << text;
        }
    }
    EXPECT_EQ(Uuid::parse(std::string(upper) + "0"), std::nullopt);
    EXPECT_EQ(Uuid::parse("{" + std::string(upper) + "}"), std::nullopt);
    EXPECT_EQ(Uuid::parse("0123ABCD456789ABCDEFFEDCBA987654"), std::nullopt);
}

TEST(Uuid, RandomOnesDifferAndBearTheirVersion) {
    std::set<Uuid> made;
    for (int i = 0; i < 1000; ++i) {
        const Uuid uuid = Uuid::random();
        const std::string text = uuid.text();
        EXPECT_EQ(text[14], '4');
        EXPECT_NE(std::string_view("89AB").find(text[19]), std::string_view::npos) << text;
        EXPECT_EQ(Uuid::parse(text), uuid);
        made.insert(uuid);
    }
    EXPECT_EQ(made.size(), 1000U);
}

}  // namespace
