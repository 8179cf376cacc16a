// SPDX-License-Identifier: Apache-2.0
// GoogleTest entry point for widget tests: a QApplication on the main thread, on Qt's
// offscreen platform unless another one is asked for (test discovery runs without the
// test environment, and CI has no display).
#include <QApplication>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
