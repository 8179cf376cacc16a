// SPDX-License-Identifier: Apache-2.0
// GoogleTest entry point for the result-card tests: a QGuiApplication on Qt's offscreen
// platform, as the command line draws its cards (fonts need an application, not a display).
#include <QGuiApplication>

#include <gtest/gtest.h>

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
