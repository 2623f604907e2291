#include "Support/Programs.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <grp.h>
#include <poll.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace fs = std::filesystem;

namespace korvane::test {
namespace {

constexpr uid_t nobody = 65534;

std::array<int, 2> makePipe(int flags) {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC | flags) != 0) throw std::runtime_error("No pipe");
    return ends;
}

[[noreturn]] void becomeProgram(const ProgramSetup& setup, int output, int error) {
    ::dup2(output, 1);
    ::dup2(error, 2);
    for (const int stream : setup.closedStreams) ::close(stream);
    for (const int signal : setup.ignoredSignals) ::signal(signal, SIG_IGN);
    for (const auto& [name, value] : setup.environment) ::setenv(name.c_str(), value.c_str(), 1);
    if (!setup.currentDirectory.empty() && ::chdir(setup.currentDirectory.c_str()) != 0) {
        ::_exit(126);
    }
    std::vector<char*> arguments;
    for (const auto& argument : setup.command) {
        arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    ::execvp(arguments[0], arguments.data());
    ::_exit(127);
}

/// Takes one read off the pipe; false at its end.
bool take(int fd, std::string& bytes) {
    std::array<char, 65536> buffer{};
    ssize_t count = 0;
    do count = ::read(fd, buffer.data(), buffer.size());
    while (count < 0 && errno == EINTR);
    bytes.assign(buffer.data(), static_cast<std::size_t>(count > 0 ? count : 0));
    return count > 0;
}

} // namespace

RunningProgram::RunningProgram(const ProgramSetup& setup) {
    const auto output = makePipe(0);
    const auto error = makePipe(O_DIRECT); // each write stays one packet
    pid_ = ::fork();
    if (pid_ == 0) becomeProgram(setup, output[1], error[1]);
    ::close(output[1]);
    ::close(error[1]);
    output_ = output[0];
    error_ = error[0];
    if (pid_ < 0) throw std::runtime_error("Cannot fork");
}

RunningProgram::~RunningProgram() {
    if (pid_ > 0) {
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
    }
    ::close(output_);
    ::close(error_);
}

void RunningProgram::send(int signal) const { ::kill(pid_, signal); }

ProgramResult RunningProgram::wait() {
    ProgramResult result;
    std::array<pollfd, 2> streams{{{output_, POLLIN, 0}, {error_, POLLIN, 0}}};
    int open = 2;
    while (open > 0) {
        if (::poll(streams.data(), streams.size(), -1) < 0) continue;
        for (auto& stream : streams) {
            if (stream.fd < 0 || stream.revents == 0) continue;
            std::string bytes;
            if (!take(stream.fd, bytes)) {
                stream.fd = -1;
                --open;
            } else if (stream.fd == output_) {
                result.output += bytes;
            } else {
                result.error += bytes;
                result.errorWrites.push_back(bytes);
            }
        }
    }
    int status = 0;
    while (::waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
    }
    pid_ = -1;
    if (WIFSIGNALED(status)) result.signal = WTERMSIG(status);
    if (WIFEXITED(status)) result.status = WEXITSTATUS(status);
    return result;
}

ProgramResult run(const ProgramSetup& setup) {
    RunningProgram program(setup);
    return program.wait();
}

std::string asOrdinaryUser(const std::function<std::string()>& action) {
    const auto ends = makePipe(0);
    const pid_t child = ::fork();
    if (child == 0) {
        std::string text;
        if (::geteuid() == 0 &&
            (::setgroups(0, nullptr) != 0 || ::setresgid(nobody, nobody, nobody) != 0 ||
             ::setresuid(nobody, nobody, nobody) != 0)) {
            text = "cannot become another user";
        } else {
            try {
                text = action();
            } catch (const std::exception& error) {
                text = std::string("threw: ") + error.what();
            }
        }
        const auto written = ::write(ends[1], text.data(), text.size());
        ::_exit(written == static_cast<ssize_t>(text.size()) ? 0 : 1);
    }
    ::close(ends[1]);
    std::string text;
    for (std::string bytes; take(ends[0], bytes);) text += bytes;
    ::close(ends[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    if (status != 0) throw std::runtime_error("The ordinary user's process failed");
    return text;
}

void giveToOrdinaryUser(const Path& path) {
    if (::geteuid() != 0) return;
    const auto give = [](const Path& item) {
        if (::lchown(item.c_str(), nobody, nobody) != 0) {
            throw std::runtime_error("Cannot give away " + item);
        }
    };
    give(path);
    if (!isRealFolder(path)) return;
    for (const auto& entry : fs::recursive_directory_iterator(path)) give(entry.path().string());
}

std::vector<std::string> commandAsOrdinaryUser(std::vector<std::string> command) {
    if (::geteuid() == 0) {
        const std::vector<std::string> user{"setpriv", "--reuid=65534", "--regid=65534",
                                            "--clear-groups"};
        command.insert(command.begin(), user.begin(), user.end());
    }
    return command;
}

std::vector<std::string> commandInMountNamespace(const std::string& script,
                                                 const std::vector<std::string>& command) {
    std::vector<std::string> whole{"unshare", "-rm", "/bin/sh", "-ec", script + "\nexec \"$@\"",
                                   "sh"};
    whole.insert(whole.end(), command.begin(), command.end());
    return whole;
}

std::string quoted(const std::string& text) {
    std::string result = "'";
    for (const char character : text) {
        result += character == '\'' ? std::string("'\\''") : std::string(1, character);
    }
    return result + "'";
}

} // namespace korvane::test
