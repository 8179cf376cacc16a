// SPDX-License-Identifier: Apache-2.0
#include "app/display_check.h"

#include <xcb/xcb.h>

#include <chrono>
#include <cstdlib>
#include <string_view>
#include <thread>

namespace quarbel::app {
namespace {

bool isSet(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr && *value != '\0';
}

} // namespace

DisplayCheck checkDisplay(int argc, const char* const* argv) {
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (argument == "-platform" || argument == "--platform" || argument.starts_with("-platform="))
            return {};
    }
    if (isSet("QT_QPA_PLATFORM") || isSet("WAYLAND_DISPLAY")) return {};
    if (!isSet("DISPLAY")) return {"no display is set (DISPLAY is empty)", nullptr};
    const std::string display = std::getenv("DISPLAY");
    // A server that is starting, or resetting after its last client left (Xvfb does), turns
    // connections away for a moment: a display is unreachable only after a second of that.
    for (int attempt = 0;; ++attempt) {
        std::shared_ptr<void> connection(xcb_connect(display.c_str(), nullptr),
                                         [](void* c) { xcb_disconnect(static_cast<xcb_connection_t*>(c)); });
        if (xcb_connection_has_error(static_cast<xcb_connection_t*>(connection.get())) == 0)
            return {std::nullopt, std::move(connection)};
        if (attempt == 10) return {"the display \"" + display + "\" cannot be reached", nullptr};
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
}

std::optional<std::string> missingDisplayProblem(int argc, const char* const* argv) {
    return checkDisplay(argc, argv).problem;
}

} // namespace quarbel::app
