#include "app/display_check.h"

#include <xcb/xcb.h>

#include <cstdlib>
#include <string_view>

namespace quarbel::app {
namespace {

bool isSet(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr && *value != '\0';
}

} // namespace

std::optional<std::string> missingDisplayProblem(int argc, const char* const* argv) {
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (argument == "-platform" || argument == "--platform" || argument.starts_with("-platform="))
            return std::nullopt;
    }
    if (isSet("QT_QPA_PLATFORM") || isSet("WAYLAND_DISPLAY")) return std::nullopt;
    if (!isSet("DISPLAY")) return "no display is set (DISPLAY is empty)";
    const std::string display = std::getenv("DISPLAY");
    xcb_connection_t* connection = xcb_connect(display.c_str(), nullptr);
    const bool failed = xcb_connection_has_error(connection) != 0;
    xcb_disconnect(connection);
    if (failed) return "the display \"" + display + "\" cannot be reached";
    return std::nullopt;
}

} // namespace quarbel::app
