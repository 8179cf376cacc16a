// GoogleTest entry point for tests of real windows: starts a private Xvfb and runs the tests
// on Qt's xcb platform. Where no Xvfb can be started the tests run on the offscreen
// platform, and those that need a display skip, saying why.
#include <QApplication>

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <poll.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>

namespace {

struct Xvfb {
    pid_t pid = -1;
    std::string display;
};

// Xvfb picks a free display itself and writes its number to the pipe once it is ready.
std::optional<Xvfb> startXvfb() {
    int ready[2];
    if (pipe(ready) != 0) return std::nullopt;
    const pid_t pid = fork();
    if (pid < 0) return std::nullopt;
    if (pid == 0) {
        close(ready[0]);
        const std::string fd = std::to_string(ready[1]);
        execlp("Xvfb", "Xvfb", "-displayfd", fd.c_str(), "-screen", "0", "1280x880x24", "-nolisten", "tcp",
               static_cast<char*>(nullptr));
        _exit(127);
    }
    close(ready[1]);
    std::string number;
    pollfd wait{ready[0], POLLIN, 0};
    char c = 0;
    while (poll(&wait, 1, 10'000) > 0 && read(ready[0], &c, 1) == 1 && c != '\n')
        number += c;
    close(ready[0]);
    if (number.empty()) {
        kill(pid, SIGTERM);
        waitpid(pid, nullptr, 0);
        return std::nullopt;
    }
    return Xvfb{pid, ":" + number};
}

} // namespace

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    // Listing the tests needs no display.
    const bool listing = ::testing::GTEST_FLAG(list_tests);
    std::optional<Xvfb> xvfb = listing ? std::nullopt : startXvfb();
    // Qt and the Vulkan driver's window-system probes want a private runtime directory.
    char runtime[] = "/tmp/quarbel-test-runtime-XXXXXX";
    if (qEnvironmentVariableIsEmpty("XDG_RUNTIME_DIR") && mkdtemp(runtime) != nullptr)
        qputenv("XDG_RUNTIME_DIR", runtime);
    if (xvfb) {
        qputenv("DISPLAY", xvfb->display.c_str());
        qputenv("QT_QPA_PLATFORM", "xcb");
    } else {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    int result = 0;
    {
        QApplication app(argc, argv);
        result = RUN_ALL_TESTS();
    }
    if (xvfb) {
        kill(xvfb->pid, SIGTERM);
        waitpid(xvfb->pid, nullptr, 0);
    }
    if (qgetenv("XDG_RUNTIME_DIR") == runtime) rmdir(runtime);
    return result;
}
