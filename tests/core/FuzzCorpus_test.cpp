#include "fuzz/Decoders.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

std::string contentOf(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

/// Puts every input of a corpus, and every beginning of a short one, through a check; the number of inputs.
std::size_t replay(const char* name, std::string (*check)(std::string_view)) {
    std::size_t inputs = 0;
    for (const auto& file :
         std::filesystem::directory_iterator(ORDOVAN_SOURCE_DIR "/fuzz/corpus/" + std::string(name))) {
        const std::string input = contentOf(file.path());
        EXPECT_EQ(check(input), "") << file.path();
        for (std::size_t size = 0; size < std::min<std::size_t>(input.size(), 400); ++size) {
            EXPECT_EQ(check(std::string_view(input).substr(0, size)), "") << file.path() << " cut to " << size;
        }
        ++inputs;
    }
    return inputs;
}

TEST(FuzzCorpus, OfJournalsHoldsWhatMustHold) {
    EXPECT_GE(replay("journal", ordovan::fuzz::journal), 20U);
}

TEST(FuzzCorpus, OfTrashRecordsHoldsWhatMustHold) {
    EXPECT_GE(replay("trash-record", ordovan::fuzz::trashRecord), 20U);
}

TEST(FuzzCorpus, OfHistoriesHoldsWhatMustHold) {
    EXPECT_GE(replay("history", ordovan::fuzz::history), 20U);
}

TEST(FuzzCorpus, OfRulesHoldsWhatMustHold) {
    EXPECT_GE(replay("rules", ordovan::fuzz::rules), 20U);
}

TEST(FuzzCorpus, OfRecordsOfRunsHoldsWhatMustHold) {
    EXPECT_GE(replay("run-record", ordovan::fuzz::runRecord), 40U);
    const auto whole =
        OrdovanUnfinishedRun::decoded(contentOf(ORDOVAN_SOURCE_DIR "/fuzz/corpus/run-record/notes.jsonl"));
    ASSERT_TRUE(whole);
    EXPECT_EQ(whole->notes.size(), 3U);
}

TEST(FuzzCorpus, OfWhatATrashKeepsHoldsWhatMustHold) {
    EXPECT_GE(replay("trash-info", ordovan::fuzz::trashInfo), 20U);
}

}  // namespace
