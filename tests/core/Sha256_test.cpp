#include "OrdovanCore/platform/Sha256.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <thread>
#include <vector>

using ordovan::sha256;
using ordovan::Sha256;

namespace {

// The examples of FIPS 180-4.
const std::string ofNothing = "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855";
const std::string ofAbc = "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";
const std::string ofAMillionA = "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0";

TEST(Sha256Digest, IsThatOfTheStandard) {
    EXPECT_EQ(sha256(""), ofNothing);
    EXPECT_EQ(sha256("abc"), ofAbc);
    EXPECT_EQ(sha256(std::string(1'000'000, 'a')), ofAMillionA);
}

/// By the library, and by the processor's own instructions where it has them.
class EachWayToDigest : public ::testing::TestWithParam<bool> {
protected:
    void SetUp() override {
        if (GetParam() && !ordovan::ShaNi::isAvailable()) GTEST_SKIP() << "this processor has no instructions for it";
    }

    Sha256 digest{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(Of, EachWayToDigest, ::testing::Bool(),
                         [](const auto& way) { return way.param ? "Instructions" : "Library"; });

TEST_P(EachWayToDigest, DoesNotDependOnThePieces) {
    const std::string bytes(1'000'000, 'a');
    for (const std::size_t piece : {1U, 63U, 64U, 65U, 1000U, 4096U}) {
        ASSERT_TRUE(digest.begin());
        for (std::size_t at = 0; at < bytes.size(); at += piece) {
            ASSERT_TRUE(digest.add(bytes.data() + at, std::min(piece, bytes.size() - at)));
        }
        EXPECT_EQ(digest.finish(), ofAMillionA) << piece;
    }
}

TEST_P(EachWayToDigest, IsThatOfTheLibraryForEveryLength) {
    Sha256 library(false);
    std::string bytes;
    for (int size = 0; size < 300; ++size) {
        ASSERT_TRUE(digest.begin() && digest.add(bytes.data(), bytes.size()));
        ASSERT_TRUE(library.begin() && library.add(bytes.data(), bytes.size()));
        ASSERT_EQ(digest.finish(), library.finish()) << size;
        bytes += static_cast<char>(size * 7);
    }
}

TEST_P(EachWayToDigest, StartsAfreshEachTime) {
    ASSERT_TRUE(digest.begin());
    ASSERT_TRUE(digest.add("forgotten", 9));
    ASSERT_TRUE(digest.begin());
    ASSERT_TRUE(digest.add("abc", 3));
    EXPECT_EQ(digest.finish(), ofAbc);
    ASSERT_TRUE(digest.begin());
    EXPECT_EQ(digest.finish(), ofNothing);
}

TEST(Sha256Digest, MayBeTakenOnManyThreads) {
    std::vector<std::string> digests(4);
    {
        std::vector<std::jthread> threads;
        for (std::string& one : digests) threads.emplace_back([&] { one = *sha256(std::string(1'000'000, 'a')); });
    }
    EXPECT_EQ(digests, std::vector<std::string>(4, ofAMillionA));
}

}  // namespace
