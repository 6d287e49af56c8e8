#pragma once

#include "tests/support/PortWorld.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <initializer_list>
#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace ordovan::test {

using MakeWorld = std::unique_ptr<PortWorld> (*)();

/// A test that holds for every implementation of the file-system port.
class FileSystemContract : public ::testing::TestWithParam<MakeWorld> {
protected:
    std::unique_ptr<PortWorld> world_ = GetParam()();
    OrdovanFileSystem& fs_ = world_->fs();

    void build(std::initializer_list<std::string_view> items) { world_->build(items); }
    [[nodiscard]] Url at(std::string_view name) const { return world_->url(name); }

    /// The errno of a refusal, 0 for success.
    template <class T>
    static int errorOf(const OrdovanResult<T>& result) {
        EXPECT_TRUE(result || result.error().domain == OrdovanSystemError::Domain::posix);
        return result ? 0 : result.error().code;
    }
    /// The errno for a way that leads through a link: `followed` for those who go through it.
    [[nodiscard]] int behindLink(int followed) const { return world_->followsLinks() ? followed : ELOOP; }
    template <class T>
    static bool notExamined(const OrdovanResult<T>& result) {
        return !result && result.error() == OrdovanSystemError::cocoa(OrdovanSystemError::fileReadNoSuchFile);
    }

    const std::string longestName_ = std::string(255, 'n');
    const std::string tooLongName_ = std::string(256, 'n');
};

inline std::unique_ptr<PortWorld> makeMemoryWorld() {
    return std::make_unique<MemoryWorld>();
}

inline std::unique_ptr<PortWorld> makeDiskWorld() {
    return std::make_unique<DiskWorld>();
}

inline std::unique_ptr<PortWorld> makeRunWorld() {
    return std::make_unique<RunWorld>(ConfinedFolders::Entering::atOnce);
}

inline std::unique_ptr<PortWorld> makeStepwiseRunWorld() {
    return std::make_unique<RunWorld>(ConfinedFolders::Entering::stepByStep);
}

}  // namespace ordovan::test

#define ORDOVAN_INSTANTIATE_CONTRACT(Suite)                                                               \
    INSTANTIATE_TEST_SUITE_P(Memory, Suite, ::testing::Values(&ordovan::test::makeMemoryWorld),           \
                             [](const auto&) { return "InMemory"; });                                     \
    INSTANTIATE_TEST_SUITE_P(Disk, Suite, ::testing::Values(&ordovan::test::makeDiskWorld),               \
                             [](const auto&) { return "OnDisk"; });                                       \
    INSTANTIATE_TEST_SUITE_P(Run, Suite, ::testing::Values(&ordovan::test::makeRunWorld),                 \
                             [](const auto&) { return "OnTheDiskOfARun"; });                              \
    INSTANTIATE_TEST_SUITE_P(StepwiseRun, Suite, ::testing::Values(&ordovan::test::makeStepwiseRunWorld), \
                             [](const auto&) { return "OnTheDiskOfARun"; })

#define SKIP_WITHOUT_MOUNTS() \
    if (!world_->canMount()) GTEST_SKIP() << ordovan::test::SecondVolume::unavailable
