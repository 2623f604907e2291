// A program for tests to start, on the bus that it is told: "REPORT STEP...", each step one after
// another, with a line to the pipe REPORT of what came of it. "own:NAME" asks for a name;
// "ping:NAME" has whoever has a name answer; "say:TEXT"; "process" says its id; "wait:FIFO" until
// somebody writes; "fork:STATUS" ends with that status and goes on as another process; "orphan" has
// a process below another one that ends, and says whose child it is then; "detach" goes on in
// another thread when the first has ended; "serve" answers until a signal ends it, "serve:FIFO"
// until somebody writes; "exit:STATUS" ends.
#include <array>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <fstream>
#include <gio/gio.h>
#include <pthread.h>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

std::string reportTo;

void say(const std::string& text) {
    const auto line = text + "\n";
    const int report = ::open(reportTo.c_str(), O_WRONLY);
    if (::write(report, line.data(), line.size()) < 0) std::exit(99);
    ::close(report);
}

GDBusConnection* bus() {
    static GDBusConnection* const connection = [] {
        GError* error = nullptr;
        auto* made = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, &error);
        if (made == nullptr) {
            say(std::string("no bus: ") + error->message);
            std::exit(98);
        }
        g_dbus_connection_set_exit_on_close(made, FALSE);
        return made;
    }();
    return connection;
}

/// What is answered, or the error's name.
std::string answerOf(const char* name, const char* interface, const char* method,
                     GVariant* arguments) {
    GError* error = nullptr;
    GVariant* answer =
        g_dbus_connection_call_sync(bus(), name, "/", interface, method, arguments, nullptr,
                                    G_DBUS_CALL_FLAGS_NONE, -1, nullptr, &error);
    char* text =
        answer != nullptr ? g_variant_print(answer, FALSE) : g_dbus_error_get_remote_error(error);
    return text != nullptr ? text : "gone";
}

void own(const std::string& name) {
    say("own " + answerOf("org.freedesktop.DBus", "org.freedesktop.DBus", "RequestName",
                          g_variant_new("(su)", name.c_str(), 0U)));
}

void ping(const std::string& name) {
    say("ping " + answerOf(name.c_str(), "org.freedesktop.DBus.Peer", "Ping", nullptr));
}

void awaitLine(const std::string& fifo) {
    char byte = 0;
    const int waiting = ::open(fifo.c_str(), O_RDONLY);
    if (::read(waiting, &byte, 1) != 1) std::exit(97);
    ::close(waiting);
}

gboolean quit(gpointer loop) {
    g_main_loop_quit(static_cast<GMainLoop*>(loop));
    return G_SOURCE_REMOVE;
}

void serve(const std::string& until) {
    GMainLoop* loop = g_main_loop_new(nullptr, FALSE);
    std::thread waiter;
    if (!until.empty()) {
        waiter = std::thread([&] {
            awaitLine(until);
            g_idle_add(quit, loop); // g_main_loop_quit() is lost on one that does not run yet
        });
    }
    g_main_loop_run(loop);
    if (waiter.joinable()) waiter.join();
}

void forkAway(int status) {
    if (::fork() != 0) ::_exit(status);
}

/// Returns when all has been said.
void leaveOrphan() {
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0) std::exit(96);
    const pid_t above = ::fork();
    if (above == 0) {
        const pid_t self = ::getpid();
        if (::fork() != 0) ::_exit(0);
        while (::getppid() == self) std::this_thread::yield();
        say("parent " + std::to_string(::getppid()));
        ::_exit(0);
    }
    ::close(ends[1]);
    char byte = 0;
    if (::waitpid(above, nullptr, 0) != above || ::read(ends[0], &byte, 1) != 0) std::exit(95);
    ::close(ends[0]);
}

void act(const std::string& step) {
    const auto colon = std::min(step.find(':'), step.size());
    const auto what = step.substr(0, colon);
    const auto with = colon < step.size() ? step.substr(colon + 1) : "";
    if (what == "own") own(with);
    if (what == "ping") ping(with);
    if (what == "say") say(with);
    if (what == "process") say(std::to_string(::getpid()));
    if (what == "wait") awaitLine(with);
    if (what == "fork") forkAway(std::stoi(with));
    if (what == "orphan") leaveOrphan();
    if (what == "serve") serve(with);
    if (what == "exit") std::_Exit(std::stoi(with));
}

/// Whether the process looks to others as if it had ended.
bool hasFirstThreadEnded() {
    std::ifstream stat("/proc/self/stat");
    std::string text;
    std::getline(stat, text);
    return text.compare(text.rfind(')'), 3, ") Z") == 0;
}

void actAll(char** step) {
    for (; *step != nullptr; ++step) {
        if (*step == std::string("detach")) {
            std::thread([rest = step + 1] {
                while (!hasFirstThreadEnded()) std::this_thread::yield();
                actAll(rest);
                std::_Exit(0);
            }).detach();
            ::pthread_exit(nullptr);
        }
        act(*step);
    }
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 2) return 2;
    reportTo = argv[1];
    actAll(argv + 2);
    return 0;
}
