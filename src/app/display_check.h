// Whether the desktop program will find a display for its windows. Qt ends the process
// with an abort and a hint to reinstall when it finds none; checking first lets the
// program say what is missing and leave with an ordinary exit code.
#pragma once

#include <optional>
#include <string>

namespace quarbel::app {

// What stands in the way of opening a window, or nothing. A platform chosen explicitly
// (-platform, QT_QPA_PLATFORM) or a Wayland session is left to Qt; otherwise the X display
// named by DISPLAY must accept a connection.
std::optional<std::string> missingDisplayProblem(int argc, const char* const* argv);

} // namespace quarbel::app
