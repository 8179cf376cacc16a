// SPDX-License-Identifier: Apache-2.0
// GoogleTest entry point for tests of real windows: starts a private Xvfb and runs the tests
// on Qt's xcb platform. Where no Xvfb can be started the tests run on the offscreen
// platform, and those that need a display skip, saying why.
#include "support/xvfb_server.h"

#include <QApplication>

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <unistd.h>

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    // Listing the tests needs no display.
    const bool listing = ::testing::GTEST_FLAG(list_tests);
    std::optional<quarbel::test::XvfbServer> xvfb =
        listing ? std::nullopt : quarbel::test::XvfbServer::start();
    // Qt and the Vulkan driver's window-system probes want a private runtime directory.
    char runtime[] = "/tmp/quarbel-test-runtime-XXXXXX";
    if (qEnvironmentVariableIsEmpty("XDG_RUNTIME_DIR") && mkdtemp(runtime) != nullptr)
        qputenv("XDG_RUNTIME_DIR", runtime);
    if (xvfb) {
        qputenv("DISPLAY", xvfb->display().c_str());
        qputenv("QT_QPA_PLATFORM", "xcb");
    } else {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    int result = 0;
    {
        QApplication app(argc, argv);
        result = RUN_ALL_TESTS();
    }
    xvfb.reset();
    if (qgetenv("XDG_RUNTIME_DIR") == runtime) rmdir(runtime);
    return result;
}
