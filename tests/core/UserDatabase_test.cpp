#include "OrdovanCore/platform/UserDatabase.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <string>

namespace {

TEST(UserDatabase, KnowsAnAbsoluteHomeOrNone) {
    const auto home = ordovan::homeFromUserDatabase();
    EXPECT_TRUE(!home || home->starts_with('/'));
}

TEST(UserDatabase, KnowsNoHomeOfAStranger) {
    if (::geteuid() != 0) GTEST_SKIP() << "NOT TESTED: only root can become a user that does not exist";
    ASSERT_EQ(::seteuid(3'999'999'999u), 0);
    const auto home = ordovan::homeFromUserDatabase();
    ASSERT_EQ(::seteuid(0), 0);
    EXPECT_EQ(home, std::nullopt);
}

TEST(UserDatabase, KnowsTheHomeOfRoot) {
    if (::geteuid() != 0) GTEST_SKIP() << "NOT TESTED: these tests do not run as root";
    EXPECT_EQ(ordovan::homeFromUserDatabase(), "/root");
}

}  // namespace
