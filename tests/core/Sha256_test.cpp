#include "OrdovanCore/platform/Sha256.h"

#include <gtest/gtest.h>

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

TEST(Sha256Digest, DoesNotDependOnThePieces) {
    Sha256 digest;
    ASSERT_TRUE(digest.begin());
    for (int i = 0; i < 1000; ++i) ASSERT_TRUE(digest.add(std::string(1000, 'a').data(), 1000));
    EXPECT_EQ(digest.finish(), ofAMillionA);
}

TEST(Sha256Digest, StartsAfreshEachTime) {
    Sha256 digest;
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
