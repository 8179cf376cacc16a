// SPDX-License-Identifier: Apache-2.0
// A private Xvfb for tests of real windows: it picks a free display itself and is ended
// with the object.
#pragma once

#include <csignal>
#include <optional>
#include <poll.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace quarbel::test {

class XvfbServer {
  public:
    // Starts Xvfb with one screen of `screen` ("WIDTHxHEIGHTxDEPTH"); nothing when it cannot.
    static std::optional<XvfbServer> start(const std::string& screen = "1280x880x24") {
        int ready[2];
        if (pipe(ready) != 0) return std::nullopt;
        const pid_t pid = fork();
        if (pid < 0) return std::nullopt;
        if (pid == 0) {
            close(ready[0]);
            const std::string fd = std::to_string(ready[1]);
            execlp("Xvfb", "Xvfb", "-displayfd", fd.c_str(), "-screen", "0", screen.c_str(), "-nolisten",
                   "tcp", static_cast<char*>(nullptr));
            _exit(127);
        }
        close(ready[1]);
        // Xvfb writes its display number to the pipe once it takes clients.
        std::string number;
        pollfd wait{ready[0], POLLIN, 0};
        char c = 0;
        while (poll(&wait, 1, 10'000) > 0 && read(ready[0], &c, 1) == 1 && c != '\n')
            number += c;
        close(ready[0]);
        XvfbServer server(pid, ":" + number);
        if (number.empty()) return std::nullopt; // the server goes with `server`
        return server;
    }

    XvfbServer(XvfbServer&& other) noexcept : pid_(other.pid_), display_(std::move(other.display_)) {
        other.pid_ = -1;
    }
    XvfbServer(const XvfbServer&) = delete;
    XvfbServer& operator=(const XvfbServer&) = delete;
    XvfbServer& operator=(XvfbServer&&) = delete;
    ~XvfbServer() {
        if (pid_ <= 0) return;
        kill(pid_, SIGTERM);
        waitpid(pid_, nullptr, 0);
    }

    const std::string& display() const { return display_; }

  private:
    XvfbServer(pid_t pid, std::string display) : pid_(pid), display_(std::move(display)) {}

    pid_t pid_ = -1;
    std::string display_;
};

} // namespace quarbel::test
