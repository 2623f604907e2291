// A program for tests to start: a host with GLib's event loop that attends a program, as the runner
// will. "EARLY BEFORE TASK COMMAND...": asks itself to end EARLY ("never", "beforeLaunch",
// "beforeLoop"), waits BEFORE the loop until the program is "running", "ended" or "reaped", and
// does TASK in the loop: "nothing", or what other code in the same process would do: "others" has
// GLib tell of everything it can tell of, "spawn" has it start programs that report on themselves
// to $REPORTS/WAY, "thread" has it keep a thread, which is sent each request to end once nothing
// attends the program any more. After any other task the program asks itself to end.
#include "Ambrel/Platform/ChildProcess.h"
#include "Ambrel/Platform/Pipe.h"
#include "korvane-runner/AttendedProgram.h"
#include "korvane-runner/Desktop/Linux/GLibLoop.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <gio/gio.h>
#include <glib-unix.h>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using namespace ambrel;
using namespace korvane::runner;

void askMyselfToEnd() { ::kill(::getpid(), SIGTERM); }

void await(ChildProcess& program, const std::string& moment) {
    siginfo_t info{};
    const auto id = static_cast<id_t>(program.processIdentifier());
    if (moment == "ended") ::waitid(P_PID, id, &info, WEXITED | WNOWAIT);
    if (moment == "reaped") program.waitUntilExit();
}

GPid spawned(std::vector<std::string> words, int flags, GSpawnChildSetupFunc setup = nullptr) {
    std::vector<char*> arguments;
    for (auto& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    GPid pid = 0;
    if (g_spawn_async(nullptr, arguments.data(), nullptr,
                      static_cast<GSpawnFlags>(flags | G_SPAWN_DO_NOT_REAP_CHILD), setup, nullptr,
                      &pid, nullptr) == FALSE) {
        std::exit(99);
    }
    return pid;
}

/// Counts what is still to be told; the last one asks this program to end.
class Awaited {
public:
    explicit Awaited(int count) : count_(count) {}

    void tell(const std::string& line) {
        std::printf("%s\n", line.c_str());
        std::fflush(stdout);
        if (--count_ == 0) askMyselfToEnd();
    }

private:
    int count_;
};

void tellStatus(GPid pid, gint status, gpointer awaited) {
    static_cast<Awaited*>(awaited)->tell("spawned " + std::to_string(WEXITSTATUS(status)));
    g_spawn_close_pid(pid);
}

void tellSubprocess(GObject* process, GAsyncResult* result, gpointer awaited) {
    g_subprocess_wait_finish(G_SUBPROCESS(process), result, nullptr);
    const int status = g_subprocess_get_exit_status(G_SUBPROCESS(process));
    static_cast<Awaited*>(awaited)->tell("subprocess " + std::to_string(status));
}

gboolean tellSignal(gpointer awaited) {
    static_cast<Awaited*>(awaited)->tell("own signal");
    return G_SOURCE_REMOVE;
}

int childSignalPipe = -1;
void noteChildSignal(int) {
    [[maybe_unused]] const auto written = ::write(childSignalPipe, "x", 1);
}

/// Handles SIGCHLD as libraries do that know of no descriptor for a process.
void handleChildSignal(AppLoop& loop, Awaited& awaited) {
    static Pipe pipe = Pipe::make();
    childSignalPipe = pipe.writeEnd->get();
    std::signal(SIGCHLD, noteChildSignal);
    loop.whenReadable(pipe.readEnd.get(), [&awaited] {
        awaited.tell("child signal");
        return AppLoop::Watching::ends;
    });
}

void awaitOthers(AppLoop& loop) {
    static Awaited awaited(4);
    handleChildSignal(loop, awaited);
    g_child_watch_add(spawned({"/bin/sh", "-c", "exit 3"}, 0), tellStatus, &awaited);
    static GSubprocess* const process =
        g_subprocess_new(G_SUBPROCESS_FLAGS_NONE, nullptr, "/bin/sh", "-c", "exit 4", nullptr);
    g_subprocess_wait_async(process, nullptr, tellSubprocess, &awaited);
    g_unix_signal_add(SIGUSR1, tellSignal, &awaited);
    ::kill(::getpid(), SIGUSR1);
}

void waitFor(GPid pid) {
    int status = 0;
    if (::waitpid(pid, &status, 0) != pid || status != 0) std::exit(98);
}

/// By each of the ways in which GLib starts programs.
void spawnReporters() {
    const std::string folder = g_getenv("REPORTS");
    const auto reporter = [&](const char* way) {
        return std::vector<std::string>{KORVANE_TEST_PROBE, "report", folder + "/" + way};
    };
    waitFor(spawned(reporter("posix_spawn"), G_SPAWN_LEAVE_DESCRIPTORS_OPEN));
    waitFor(spawned(reporter("fork"), 0, [](gpointer) {}));
    const auto words = reporter("subprocess");
    GSubprocess* const process =
        g_subprocess_new(G_SUBPROCESS_FLAGS_NONE, nullptr, words[0].c_str(), words[1].c_str(),
                         words[2].c_str(), nullptr);
    if (g_subprocess_wait_check(process, nullptr, nullptr) == FALSE) std::exit(97);
    g_object_unref(process);
    askMyselfToEnd();
}

/// A thread that blocks no signal, until nobody can write to the pipe any more.
std::thread waitingThread(const OwnedFd& readEnd) {
    return std::thread([&readEnd] {
        char byte = 0;
        while (::read(readEnd.get(), &byte, 1) == -1 && errno == EINTR) {
        }
    });
}

void sendRequestsTo(std::thread& thread, Pipe& pipe) {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        ::pthread_kill(thread.native_handle(), signal);
    }
    pipe.writeEnd.reset();
    thread.join();
}

} // namespace

int main(int argc, char** argv) {
    const SignalHold signals;
    if (argc < 5) return 2;
    const std::string early = argv[1];
    const std::string task = argv[3];
    if (early == "beforeLaunch") askMyselfToEnd();
    ChildProcess program({.executable = argv[4], .arguments = {argv + 5, argv + argc}});
    program.launch();
    await(program, argv[2]);
    if (early == "beforeLoop") askMyselfToEnd();
    std::thread thread;
    auto pipe = Pipe::make();
    int status = 0;
    {
        AttendedProgram attended(program, signals);
        GLibLoop loop;
        attended.attachTo(loop);
        if (task == "others") loop.post([&] { awaitOthers(loop); });
        if (task == "spawn") loop.post(spawnReporters);
        if (task == "thread") thread = waitingThread(pipe.readEnd);
        status = loop.run();
    }
    if (thread.joinable()) sendRequestsTo(thread, pipe);
    return status;
}
