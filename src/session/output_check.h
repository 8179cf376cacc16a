// SPDX-License-Identifier: Apache-2.0
// Whether what the command line prints actually arrives: a full disk, a closed pipe or a
// hung-up terminal make writes fail, and the user must hear of it.
#pragma once

#include <cstdio>
#include <string>
#include <string_view>

namespace quarbel::session {

// Flushes `stream`: empty when everything written to it so far arrived, else
// "cannot write to <name>: <reason>".
std::string flushProblem(std::FILE* stream, std::string_view name);

// True when the pipe, socket or terminal behind `fd` can no longer be written: its
// reader closed it or the line hung up. Never blocks.
bool readerGone(int fd);

} // namespace quarbel::session
