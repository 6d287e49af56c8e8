#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>

namespace ordovan::test {

/// A stored text with the first stretch of this kind replaced by another; one without it fails the test.
inline std::string altered(std::string_view sample, std::string_view from, std::string_view to) {
    std::string text(sample);
    const std::size_t at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    return at == std::string::npos ? text : text.replace(at, from.size(), to);
}

}  // namespace ordovan::test
