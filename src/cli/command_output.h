// SPDX-License-Identifier: Apache-2.0
// How each command of the command line ends: its output flushed, its exit status settled.
#pragma once

#include <string>

namespace quarbel::cli {

// The exit status once everything printed has been flushed: a failed standard output
// turns success into 1, with a message.
int afterFlushingOutput(int exitCode);

// Says "quarbel: <problem>" on standard error; returns the exit status of bad input (2).
int badInput(const std::string& problem);

// Says on standard error when the chosen Vulkan device is not the one asked for.
void warnAboutDeviceChoice();

} // namespace quarbel::cli
