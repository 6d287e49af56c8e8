#pragma once

#include "OrdovanApp/models/Language.h"

#include <gtest/gtest.h>

#include <QApplication>

/// The entry of a test program whose tests need real widgets, in English; they are shown on no screen. Include it once
/// in the program.
int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    const Language english({});
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
