// Replays the corpora of the fuzz targets that need more than the engine.

#include "fuzz/CommandLineDecoder.h"
#include "fuzz/SettingsDecoder.h"
#include "tests/support/QtTestMain.h"

#include <filesystem>
#include <fstream>
#include <iterator>

namespace {

/// Puts every input of a corpus, and every `step`-th beginning of a short one, through a check; the number of inputs.
std::size_t replay(const char* name, std::size_t step, std::string (*check)(std::string_view)) {
    std::size_t inputs = 0;
    for (const auto& file :
         std::filesystem::directory_iterator(ORDOVAN_SOURCE_DIR "/fuzz/corpus/" + std::string(name))) {
        std::ifstream in(file.path(), std::ios::binary);
        const std::string input{std::istreambuf_iterator<char>(in), {}};
        EXPECT_EQ(check(input), "") << file.path();
        for (std::size_t size = 0; size < std::min<std::size_t>(input.size(), 300); size += step) {
            EXPECT_EQ(check(std::string_view(input).substr(0, size)), "") << file.path() << " cut to " << size;
        }
        ++inputs;
    }
    return inputs;
}

TEST(FuzzCorpus, OfCommandLinesHoldsWhatMustHold) {
    EXPECT_GE(replay("command-line", 1, ordovan::fuzz::commandLine), 20U);
}

TEST(FuzzCorpus, OfSettingsHoldsWhatMustHold) {
    EXPECT_GE(replay("settings", 40, ordovan::fuzz::settings), 20U);
}

}  // namespace
