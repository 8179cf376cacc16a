// SPDX-License-Identifier: Apache-2.0
#include "session/output_check.h"

#include <cerrno>
#include <cstring>
#include <poll.h>

namespace quarbel::session {

std::string flushProblem(std::FILE* stream, std::string_view name) {
    errno = 0;
    const bool flushed = std::fflush(stream) == 0;
    const int error = errno;
    if (flushed && std::ferror(stream) == 0) return {};
    std::string text = "cannot write to " + std::string(name);
    // An error of an earlier write leaves only the stream's error flag behind.
    if (!flushed && error != 0) text += std::string(": ") + std::strerror(error);
    return text;
}

bool readerGone(int fd) {
    // Error and hang-up are reported whatever events are asked for; asking for none
    // leaves a healthy descriptor silent.
    pollfd entry{fd, 0, 0};
    return ::poll(&entry, 1, 0) > 0 && (entry.revents & (POLLERR | POLLHUP)) != 0;
}

} // namespace quarbel::session
