// SPDX-License-Identifier: Apache-2.0
#include "process.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <poll.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace quarbel::test {
namespace {

// Children keep their history and run marks here, out of the user's home and out of sight of
// other test programs and real runs; the folder goes when the test program ends.
const std::string& privateDataHome() {
    static const TempDir home;
    static const std::string path = [] {
        ::mkdir((home.path() / "runtime").c_str(), 0700);
        return home.path().string();
    }();
    return path;
}

} // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& args, const std::vector<std::string>& extraEnv,
                           const std::function<void()>& inChild) {
    int outPipe[2], errPipe[2];
    if (pipe2(outPipe, O_CLOEXEC) != 0 || pipe2(errPipe, O_CLOEXEC) != 0)
        return;                   // the test fails on no output
    std::vector<std::string> env; // a later variable replaces an earlier one of its name
    const auto add = [&env](const std::string& variable) {
        const std::string name = variable.substr(0, variable.find('=') + 1);
        std::erase_if(env, [&](const std::string& e) { return e.starts_with(name); });
        env.push_back(variable);
    };
    for (char** e = environ; *e != nullptr; ++e)
        env.emplace_back(*e);
    add("XDG_DATA_HOME=" + privateDataHome());
    add("XDG_RUNTIME_DIR=" + privateDataHome() + "/runtime");
    add("QUARBEL_RUN_LOCK_DIR=" + privateDataHome() + "/runtime/quarbel");
    for (const auto& variable : extraEnv)
        add(variable);
    const auto pointers = [](const std::vector<std::string>& strings) {
        std::vector<char*> list;
        for (const auto& s : strings)
            list.push_back(const_cast<char*>(s.c_str()));
        list.push_back(nullptr);
        return list;
    };
    std::vector<char*> argv = pointers(args), envp = pointers(env);

    pid_ = fork();
    if (pid_ == 0) {
        dup2(outPipe[1], STDOUT_FILENO);
        dup2(errPipe[1], STDERR_FILENO);
        if (inChild) inChild();
        execve(argv[0], argv.data(), envp.data());
        _exit(127);
    }
    close(outPipe[1]);
    close(errPipe[1]);
    fds_[0] = outPipe[0];
    fds_[1] = errPipe[0];
}

ChildProcess::~ChildProcess() {
    for (int& fd : fds_) {
        if (fd >= 0) close(fd);
        fd = -1;
    }
    if (pid_ > 0) {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
}

bool ChildProcess::readUntil(const std::function<bool()>& done, int timeoutMs) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    while (!done()) {
        if (std::chrono::steady_clock::now() >= deadline || (fds_[0] < 0 && fds_[1] < 0)) return false;
        pollfd entries[2] = {{fds_[0], POLLIN, 0}, {fds_[1], POLLIN, 0}};
        if (poll(entries, 2, 10) <= 0) continue;
        for (int i = 0; i < 2; ++i) {
            if (fds_[i] < 0 || (entries[i].revents & (POLLIN | POLLHUP)) == 0) continue;
            char buffer[4096];
            const ssize_t n = read(fds_[i], buffer, sizeof buffer);
            if (n <= 0) {
                close(fds_[i]);
                fds_[i] = -1;
                continue;
            }
            (i == 0 ? result_.out : result_.err).append(buffer, static_cast<std::size_t>(n));
        }
    }
    return true;
}

void ChildProcess::closeStdout() {
    if (fds_[0] >= 0) close(fds_[0]);
    fds_[0] = -1;
}

void ChildProcess::signal(int signalNumber) {
    if (pid_ > 0) kill(pid_, signalNumber);
}

ProcessResult ChildProcess::wait(int timeoutMs) {
    readUntil([] { return false; }, timeoutMs);
    if (pid_ <= 0) return result_;
    if (fds_[0] >= 0 || fds_[1] >= 0) kill(pid_, SIGKILL);
    int status = 0;
    waitpid(pid_, &status, 0);
    pid_ = -1;
    result_.killedBy = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    result_.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + result_.killedBy;
    return result_;
}

ProcessResult runProcess(const std::vector<std::string>& args, const std::vector<std::string>& extraEnv,
                         const std::string& interruptAfterText, int timeoutMs) {
    ChildProcess child(args, extraEnv);
    if (!interruptAfterText.empty() &&
        child.readUntil([&] { return child.out().find(interruptAfterText) != std::string::npos; }, timeoutMs))
        child.signal(SIGINT);
    return child.wait(timeoutMs);
}

ProcessResult runQuarbel(const std::vector<std::string>& args, const std::vector<std::string>& extraEnv) {
    std::vector<std::string> command{kQuarbel};
    command.insert(command.end(), args.begin(), args.end());
    return runProcess(command, extraEnv);
}

ProcessResult runQuarbelOk(const std::vector<std::string>& args, const std::vector<std::string>& extraEnv) {
    ProcessResult result = runQuarbel(args, extraEnv);
    EXPECT_EQ(result.exitCode, 0) << "quarbel " << args.front() << "\n" << result.out << result.err;
    return result;
}

std::string expandAt(std::string text, const std::string& at) {
    for (auto i = text.find('@'); i != std::string::npos; i = text.find('@', i + at.size()))
        text.replace(i, 1, at);
    return text;
}

std::vector<std::string> words(const std::string& command) {
    std::vector<std::string> args;
    for (std::size_t start = 0, end = 0; end != std::string::npos; start = end + 1)
        args.push_back(command.substr(start, (end = command.find(' ', start)) - start));
    return args;
}

void expectAnswers(const std::vector<Answer>& rows, const std::vector<std::string>& extraEnv,
                   const std::string& at) {
    for (const Answer& row : rows) {
        const std::string command = expandAt(row.command, at);
        const ProcessResult result = runQuarbel(words(command), extraEnv);
        EXPECT_EQ(result.exitCode, row.exitCode) << "quarbel " << command << "\n" << result.err;
        EXPECT_TRUE(mentions(result.err, expandAt(row.err, at))) << "quarbel " << command << "\n"
                                                                 << result.err;
        EXPECT_TRUE(row.exitCode != 2 || result.out.empty()) << "quarbel " << command << ": nothing may run";
    }
}

std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

std::size_t count(const std::string& text, const std::string& part) {
    std::size_t n = 0;
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size()))
        ++n;
    return n;
}

} // namespace quarbel::test
