#include "OrdovanCore/platform/Sha256Streams.h"

#include "OrdovanCore/platform/Sha256.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>

using ordovan::Sha256Job;
using ordovan::Sha256Prefix;
using ordovan::Sha256Streams;

namespace {

/// By the library, and by the processor's own instructions where it has them.
std::vector<bool> ways() {
    return ordovan::ShaNi::isAvailable() ? std::vector{false, true} : std::vector{false};
}

std::string randomBytes(std::size_t size, std::mt19937& random) {
    std::string bytes(size, '\0');
    for (char& byte : bytes) byte = static_cast<char>(random());
    return bytes;
}

std::string digest(Sha256Streams& streams, std::string_view bytes) {
    Sha256Prefix prefix;
    const Sha256Job job{&prefix, bytes, true};
    EXPECT_TRUE(streams.add({&job, 1}));
    return ordovan::hexadecimal(prefix.state());
}

}  // namespace

TEST(Sha256Streams, GiveThePublishedDigests) {
    for (const bool byInstructions : ways()) {
        Sha256Streams streams(byInstructions);
        EXPECT_EQ(digest(streams, ""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
        EXPECT_EQ(digest(streams, "abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
        EXPECT_EQ(digest(streams, "abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
                  "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
    }
}

TEST(Sha256Streams, AgreeWithTheLibraryForEveryLength) {
    std::mt19937 random(1);
    const std::string bytes = randomBytes(400, random);
    for (const bool byInstructions : ways()) {
        Sha256Streams streams(byInstructions);
        for (std::size_t size = 0; size <= bytes.size(); ++size) {
            const std::string_view some = std::string_view(bytes).substr(0, size);
            ASSERT_EQ(digest(streams, some), ordovan::sha256(some).value()) << size;
        }
    }
}

TEST(Sha256Streams, HashAnyNumberOfMessagesOfAnyLengthsInStep) {
    std::mt19937 random(2);
    for (const bool byInstructions : ways()) {
        Sha256Streams streams(byInstructions);
        for (std::size_t count = 0; count < 20; ++count) {
            std::vector<std::string> messages;
            for (std::size_t i = 0; i < count; ++i) messages.push_back(randomBytes(random() % 2000, random));
            std::vector<Sha256Prefix> prefixes(count);
            std::vector<Sha256Job> jobs;
            for (std::size_t i = 0; i < count; ++i) jobs.push_back({&prefixes[i], messages[i], true});
            ASSERT_TRUE(streams.add(jobs));
            for (std::size_t i = 0; i < count; ++i) {
                ASSERT_EQ(ordovan::hexadecimal(prefixes[i].state()), ordovan::sha256(messages[i]).value());
            }
        }
    }
}

TEST(Sha256Streams, GoOnFromCopiesOfABeginning) {
    std::mt19937 random(3);
    const std::string beginning = randomBytes(4096, random);
    for (const bool byInstructions : ways()) {
        Sha256Streams streams(byInstructions);
        Sha256Prefix prefix;
        const Sha256Job job{&prefix, beginning, false};
        ASSERT_TRUE(streams.add({&job, 1}));
        for (const std::string& end : {std::string(), std::string("x"), randomBytes(5000, random)}) {
            Sha256Prefix copy = prefix;
            const Sha256Job last{&copy, end, true};
            ASSERT_TRUE(streams.add({&last, 1}));
            EXPECT_EQ(ordovan::hexadecimal(copy.state()), ordovan::sha256(beginning + end).value());
        }
    }
}

TEST(Sha256Streams, TellBeginningsApartAndNoOthers) {
    for (const bool byInstructions : ways()) {
        Sha256Streams streams(byInstructions);
        const std::string one(128, '1'), two(128, '2');
        std::vector<Sha256Prefix> prefixes(3);
        const std::vector<Sha256Job> jobs = {
            {&prefixes[0], one, false}, {&prefixes[1], two, false}, {&prefixes[2], one, false}};
        ASSERT_TRUE(streams.add(jobs));
        EXPECT_EQ(prefixes[0].state(), prefixes[2].state());
        EXPECT_NE(prefixes[0].state(), prefixes[1].state());
    }
}
