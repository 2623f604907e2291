// A program for tests to start. "report FILE": writes what it was given (arguments, folder,
// descriptors, signals, environment) to FILE, or to standard output for "-". "signals FIFO END":
// reports each signal that arrives as "NUMBER kernel" or "NUMBER user", and ends with status 40
// after the signal END. "unread WORD": writes a byte to its standard output, which is a pipe, and
// WORD too unless somebody reads the byte while this program runs.
#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <fcntl.h>
#include <fstream>
#include <iostream>
#include <sched.h>
#include <sstream>
#include <string>
#include <sys/ioctl.h>
#include <unistd.h>

extern char** environ;

namespace {

std::string descriptors() {
    std::string text;
    DIR* const folder = ::opendir("/proc/self/fd");
    const std::string own = std::to_string(::dirfd(folder));
    while (const dirent* entry = ::readdir(folder)) {
        if (entry->d_name[0] == '.' || own == entry->d_name) continue;
        std::array<char, 4096> target{};
        const auto name = std::string("/proc/self/fd/") + entry->d_name;
        if (::readlink(name.c_str(), target.data(), target.size() - 1) < 0) continue;
        text += std::string("fd ") + entry->d_name + " " + target.data() + "\n";
    }
    ::closedir(folder);
    return text;
}

std::string signalState() {
    std::ifstream status("/proc/self/status");
    std::string text;
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("SigIgn", 0) == 0 || line.rfind("SigBlk", 0) == 0) {
            text += line.substr(0, 6) + " " + line.substr(line.find_first_not_of("\t ", 7)) + "\n";
        }
    }
    return text;
}

int report(int argc, char** argv) {
    std::ostringstream text;
    const auto fds = descriptors(); // before a file of this program's own is open
    text << "argv0 " << argv[0] << "\n";
    for (int index = 3; index < argc; ++index) text << "arg " << argv[index] << "\n";
    std::array<char, 4096> folder{};
    if (::getcwd(folder.data(), folder.size()) != nullptr) text << "cwd " << folder.data() << "\n";
    text << fds << signalState();
    for (char** entry = environ; *entry != nullptr; ++entry) text << "env " << *entry << "\n";
    if (std::strcmp(argv[2], "-") == 0) {
        std::cout << text.str() << std::flush;
    } else {
        std::ofstream(argv[2]) << text.str();
    }
    return 0;
}

int signals(char** argv) {
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : {SIGHUP, SIGINT, SIGTERM, SIGUSR1}) sigaddset(&set, signal);
    sigprocmask(SIG_BLOCK, &set, nullptr);
    const int fifo = ::open(argv[2], O_WRONLY);
    ::dprintf(fifo, "ready\n");
    for (;;) {
        siginfo_t info{};
        const int signal = sigwaitinfo(&set, &info);
        if (signal < 0) continue;
        ::dprintf(fifo, "%d %s\n", signal, info.si_code == SI_KERNEL ? "kernel" : "user");
        if (signal == std::atoi(argv[3])) return 40;
    }
}

int unread(const char* word) {
    std::cout << '-' << std::flush;
    constexpr int glances = 100'000;
    for (int glance = 0; glance < glances; ++glance) {
        int waiting = 0;
        if (::ioctl(STDOUT_FILENO, FIONREAD, &waiting) != 0 || waiting != 1) return 1;
        ::sched_yield();
    }
    std::cout << word << std::flush;
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    if (argc >= 3 && std::strcmp(argv[1], "report") == 0) return report(argc, argv);
    if (argc == 4 && std::strcmp(argv[1], "signals") == 0) return signals(argv);
    if (argc >= 3 && std::strcmp(argv[1], "unread") == 0) return unread(argv[2]);
    return 2;
}
