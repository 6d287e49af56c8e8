#pragma once

#include <gtest/gtest.h>

#include <QCoreApplication>

/// The entry of a test program whose tests need Qt's application object. Include it once in the program.
int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
