#include "process.h"

#include <chrono>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace quarbel::test {

ProcessResult runProcess(const std::vector<std::string>& args, const std::vector<std::string>& extraEnv,
                         const std::string& interruptAfterText, int timeoutMs) {
    int outPipe[2];
    int errPipe[2];
    if (pipe2(outPipe, O_CLOEXEC) != 0 || pipe2(errPipe, O_CLOEXEC) != 0) return {};
    std::vector<std::string> env;
    for (char** e = environ; *e != nullptr; ++e)
        env.emplace_back(*e);
    env.insert(env.end(), extraEnv.begin(), extraEnv.end());

    const pid_t pid = fork();
    if (pid == 0) {
        dup2(outPipe[1], STDOUT_FILENO);
        dup2(errPipe[1], STDERR_FILENO);
        std::vector<char*> argv;
        for (const auto& a : args)
            argv.push_back(const_cast<char*>(a.c_str()));
        argv.push_back(nullptr);
        std::vector<char*> envp;
        for (const auto& e : env)
            envp.push_back(const_cast<char*>(e.c_str()));
        envp.push_back(nullptr);
        execve(argv[0], argv.data(), envp.data());
        _exit(127);
    }
    close(outPipe[1]);
    close(errPipe[1]);

    ProcessResult result;
    bool interrupted = false;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    pollfd fds[2] = {{outPipe[0], POLLIN, 0}, {errPipe[0], POLLIN, 0}};
    int open = 2;
    while (open > 0 && std::chrono::steady_clock::now() < deadline) {
        if (poll(fds, 2, 100) <= 0) continue;
        for (int i = 0; i < 2; ++i) {
            if (fds[i].fd < 0 || (fds[i].revents & (POLLIN | POLLHUP)) == 0) continue;
            char buffer[4096];
            const ssize_t n = read(fds[i].fd, buffer, sizeof buffer);
            if (n <= 0) {
                close(fds[i].fd);
                fds[i].fd = -1;
                --open;
                continue;
            }
            (i == 0 ? result.out : result.err).append(buffer, static_cast<std::size_t>(n));
        }
        if (!interrupted && !interruptAfterText.empty() &&
            result.out.find(interruptAfterText) != std::string::npos) {
            kill(pid, SIGINT);
            interrupted = true;
        }
    }
    if (open > 0) kill(pid, SIGKILL);
    for (auto& fd : fds) {
        if (fd.fd >= 0) close(fd.fd);
    }
    int status = 0;
    waitpid(pid, &status, 0);
    result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return result;
}

} // namespace quarbel::test
