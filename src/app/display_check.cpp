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

DisplayCheck checkDisplay(int argc, const char* const* argv) {
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (argument == "-platform" || argument == "--platform" || argument.starts_with("-platform="))
            return {};
    }
    if (isSet("QT_QPA_PLATFORM") || isSet("WAYLAND_DISPLAY")) return {};
    if (!isSet("DISPLAY")) return {"no display is set (DISPLAY is empty)", nullptr};
    const std::string display = std::getenv("DISPLAY");
    std::shared_ptr<void> connection(xcb_connect(display.c_str(), nullptr),
                                     [](void* c) { xcb_disconnect(static_cast<xcb_connection_t*>(c)); });
    if (xcb_connection_has_error(static_cast<xcb_connection_t*>(connection.get())) != 0)
        return {"the display \"" + display + "\" cannot be reached", nullptr};
    return {std::nullopt, std::move(connection)};
}

std::optional<std::string> missingDisplayProblem(int argc, const char* const* argv) {
    return checkDisplay(argc, argv).problem;
}

} // namespace quarbel::app
