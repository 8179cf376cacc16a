// SPDX-License-Identifier: Apache-2.0
// Whether the desktop program will find a display for its windows. Qt ends the process
// with an abort and a hint to reinstall when it finds none; checking first lets the
// program say what is missing and leave with an ordinary exit code.
#pragma once

#include <memory>
#include <optional>
#include <string>

namespace quarbel::app {

// What stands in the way of opening a window, or nothing. A platform chosen explicitly
// (-platform, QT_QPA_PLATFORM) or a Wayland session is left to Qt; otherwise the X display
// named by DISPLAY must accept a connection.
std::optional<std::string> missingDisplayProblem(int argc, const char* const* argv);

// The same check, with its connection to the display kept open until `connection` is let go:
// an X server whose last client leaves resets itself and refuses new connections meanwhile,
// so closing the check's connection before Qt opens its own could make Qt abort after all.
struct DisplayCheck {
    std::optional<std::string> problem;
    std::shared_ptr<void> connection; // release once the application has connected
};
DisplayCheck checkDisplay(int argc, const char* const* argv);

} // namespace quarbel::app
