#pragma once

#include "OrdovanCore/platform/Sha256.h"
#include "OrdovanCore/platform/SystemFileSystem.h"
#include "tests/support/Attacker.h"
#include "tests/support/SecondVolume.h"
#include "tests/support/TempFolder.h"
#include "tests/support/ToldRun.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ordovan::test {

/// What an attack has achieved, by what is found at rest.
struct Damage {
    std::size_t escapes = 0;  ///< files that are outside and were not, or were and are not
    std::size_t missing = 0;  ///< contents that are nowhere
    std::size_t doubled = 0;  ///< contents that are in two places
    std::size_t wrong = 0;    ///< places at which a record tells of another content
    friend bool operator==(const Damage&, const Damage&) = default;
};

inline void PrintTo(const Damage& damage, std::ostream* out) {
    *out << damage.escapes << " escapes, " << damage.missing << " missing, " << damage.doubled << " doubled, "
         << damage.wrong << " wrong";
}

/// Volumes of memory on which a run works in "root" while an attacker is at work; beside it, in "decoy", is what
/// nothing may reach or come from. Files have contents of their own, and all one size.
class RaceWorld : public ::testing::Test {
protected:
    void SetUp() override {
        if (!SecondVolume::available()) GTEST_SKIP() << SecondVolume::unavailable;
        volume_ = std::make_unique<SecondVolume>();
        build();
        decoyBefore_ = filesBelow(decoys());
    }
    /// Fills the volume.
    virtual void build() = 0;
    /// Where the decoys are.
    [[nodiscard]] virtual std::vector<std::string> decoys() const { return {volume_->path("decoy")}; }
    /// Where the files may be that are the run's.
    [[nodiscard]] virtual std::vector<std::string> homes() const = 0;

    [[nodiscard]] Url root() const { return volume_->url("root"); }
    [[nodiscard]] std::string path(std::string_view name) const { return volume_->path(name); }

    /// Content of a file; of that name outside as well, where it is another.
    static std::string content(std::string_view whose, int number) {
        const std::string name = std::to_string(number);
        return std::string(whose) + std::string(4 - name.size(), ' ') + name + std::string(2000, '.');
    }
    void write(std::string_view name, int number) {
        volume_->root().write(name, content("mine", number));
        ++written_;
    }
    void writeDecoy(std::string_view name, int number) const { volume_->root().write(name, content("evil", number)); }

    using Files = std::map<std::string, std::string>;

    /// Every regular file below some folders, by path.
    static Files filesBelow(const std::vector<std::string>& folders) {
        Files found;
        for (const std::string& folder : folders) {
            if (!std::filesystem::exists(folder)) continue;
            for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
                if (!entry.is_regular_file() || entry.is_symlink()) continue;
                std::string text(entry.file_size(), '\0');
                std::ifstream(entry.path(), std::ios::binary).read(text.data(), std::ssize(text));
                found[entry.path()] = std::move(text);
            }
        }
        return found;
    }
    [[nodiscard]] Files files() const { return filesBelow(homes()); }

    /// How many of the files outside are not there, are others, or were not there. The folders of the run need not be
    /// at rest.
    [[nodiscard]] std::size_t escapes() const {
        std::size_t count = 0;
        const Files outside = filesBelow(decoys());
        for (const auto& [place, text] : outside) count += decoyBefore_.contains(place) ? 0 : 1;
        for (const auto& [place, text] : decoyBefore_) {
            const auto now = outside.find(place);
            count += now != outside.end() && now->second == text ? 0 : 1;
        }
        return count;
    }
    [[nodiscard]] Damage damage() const {
        Damage damage{.escapes = escapes(), .wrong = wrong_};
        std::map<std::string, std::size_t> places;
        for (const auto& [place, text] : files()) {
            if (text.starts_with("mine")) ++places[text];
            if (text.starts_with("evil")) ++damage.escapes;
        }
        damage.missing = written_ - std::min(written_, places.size());
        for (const auto& [text, count] : places) damage.doubled += count - 1;
        return damage;
    }
    static bool isAt(const Files& found, std::string_view place, std::string_view hash) {
        const auto file = found.find(std::string(place));
        return file != found.end() && sha256(file->second) == std::string(hash);
    }
    /// Notes whether a file is where a record tells.
    void expectAt(const Files& found, std::string_view place, std::string_view hash) {
        wrong_ += isAt(found, place, hash) ? 0 : 1;
    }

    /// The disk, which takes every path as it comes.
    OrdovanFileSystem& byPath() {
        Attacker::letInto(byPath_);
        return byPath_;
    }

    std::unique_ptr<SecondVolume> volume_;
    std::size_t written_ = 0;
    std::size_t wrong_ = 0;
    Files decoyBefore_;

private:
    SystemFileSystem disk_;
    testing::FaultyFileSystem byPath_{disk_};
};

}  // namespace ordovan::test
