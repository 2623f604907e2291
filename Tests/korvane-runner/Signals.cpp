#include "korvane-runner/Signals.h"

#include "Support/Expect.h"

#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <stdexcept>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace korvane::test {

namespace {

/// Returns once an interrupt has been typed at this process's terminal and waits for it.
void awaitInterruptUntaken() {
    sigset_t interrupt;
    sigemptyset(&interrupt);
    sigaddset(&interrupt, SIGINT);
    sigprocmask(SIG_BLOCK, &interrupt, nullptr);
    char byte = '!';
    if (::write(STDOUT_FILENO, &byte, 1) != 1) ::_exit(126);
    // The line that is typed behind the interrupt.
    if (::read(STDIN_FILENO, &byte, 1) != 1) ::_exit(126);
}

} // namespace

Fifo::Fifo(Path path) : path_(std::move(path)) {
    if (::mkfifo(path_.c_str(), 0600) != 0) throw std::runtime_error("Cannot make a pipe");
    fd_ = ::open(path_.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
}

Fifo::~Fifo() { ::close(fd_); }

std::string Fifo::line() {
    std::string text;
    for (char byte = 0; byte != '\n';) {
        pollfd waiting{fd_, POLLIN, 0};
        if (::poll(&waiting, 1, 60000) <= 0) throw std::runtime_error("No line came: " + text);
        const auto count = ::read(fd_, &byte, 1);
        if (count == 0) return text + "(end)";
        if (count == 1 && byte != '\n') text += byte;
    }
    return text;
}

ProgramOnTerminal::ProgramOnTerminal(const std::vector<std::string>& command, Start start) {
    std::vector<char*> arguments;
    for (const auto& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    pid_ = ::forkpty(&terminal_, nullptr, nullptr, nullptr);
    if (pid_ == 0) {
        if (start == Start::interruptTypedBefore) awaitInterruptUntaken();
        ::execv(arguments[0], arguments.data());
        ::_exit(127);
    }
    REQUIRE(pid_ > 0);
    if (start == Start::plain) return;
    char byte = 0;
    REQUIRE(::read(terminal_, &byte, 1) == 1); // the interrupt is blocked by now
    type("\x03\n");
}

ProgramOnTerminal::~ProgramOnTerminal() {
    closeTerminal();
    if (pid_ <= 0) return;
    ::kill(pid_, SIGKILL);
    ::waitpid(pid_, nullptr, 0);
}

void ProgramOnTerminal::type(const std::string& keys) const {
    REQUIRE(::write(terminal_, keys.data(), keys.size()) == static_cast<ssize_t>(keys.size()));
}

void ProgramOnTerminal::closeTerminal() {
    if (terminal_ >= 0) ::close(terminal_);
    terminal_ = -1;
}

void ProgramOnTerminal::send(int signal) const { REQUIRE(::kill(pid_, signal) == 0); }

void ProgramOnTerminal::stop() const {
    send(SIGSTOP);
    int status = 0;
    REQUIRE(::waitpid(pid_, &status, WUNTRACED) == pid_);
    REQUIRE(WIFSTOPPED(status));
}

int ProgramOnTerminal::wait() {
    int status = 0;
    REQUIRE(::waitpid(pid_, &status, 0) == pid_);
    pid_ = -1;
    CHECK(WIFEXITED(status));
    return WEXITSTATUS(status);
}

} // namespace korvane::test
