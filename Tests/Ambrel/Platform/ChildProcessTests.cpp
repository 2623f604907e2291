#include "Ambrel/Platform/ChildProcess.h"

#include "Ambrel/Platform/DetachedProcess.h"
#include "Ambrel/Platform/Pipe.h"
#include "Support/Environment.h"
#include "Support/Expect.h"
#include "Support/Programs.h"
#include "Support/Report.h"

#include <csignal>
#include <fcntl.h>
#include <future>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

using namespace ambrel;
using namespace korvane::test;
using Fault = ChildProcessError::Fault;

namespace {

const Path probe = KORVANE_TEST_PROBE;

int statusOf(ChildProcess& child) {
    child.launch();
    child.waitUntilExit();
    return child.terminationStatus();
}

int statusOf(const Path& executable, const Strings& arguments) {
    ChildProcess child({.executable = executable, .arguments = arguments});
    return statusOf(child);
}

ChildProcessError launchErrorOf(const ChildProcess::Setup& setup) {
    return expectThrow<ChildProcessError>([&] {
        ChildProcess child(setup);
        child.launch();
    });
}

/// Another disposition of a signal until the end of the scope.
class ScopedSignal {
public:
    ScopedSignal(int signal, sighandler_t handler)
        : signal_(signal), before_(std::signal(signal, handler)) {}
    ScopedSignal(const ScopedSignal&) = delete;
    ScopedSignal& operator=(const ScopedSignal&) = delete;
    ~ScopedSignal() { std::signal(signal_, before_); }

private:
    int signal_;
    sighandler_t before_;
};

} // namespace

TEST_CASE("a child gets its arguments and its own path in front of them") {
    const TempDir tmp;
    const auto report = tmp / "report";

    CHECK(statusOf(probe, {"report", report, "a b", "", "\xff", "-n", "\"$x\""}) == 0);

    CHECK(Report(report).lines("argv0") == Strings{probe});
    CHECK(Report(report).lines("arg") == Strings{"a b", "", "\xff", "-n", "\"$x\""});
}

TEST_CASE("a child gets the process name of its setup in place of its path") {
    const TempDir tmp;
    const auto report = tmp / "report";
    for (const std::string name : {"org.example.Work", "-x", "a b\xff", "/else/where", ""}) {
        ChildProcess child(
            {.executable = probe, .arguments = {"report", report, "x"}, .processName = name});
        child.launch();
        child.waitUntilExit();
        CHECK(child.terminationStatus() == 0);
        CHECK(Report(report).lines("argv0") == Strings{name});
        CHECK(Report(report).lines("arg") == Strings{"x"});
    }
}

TEST_CASE("a child's termination status is its exit status or the signal that ended it") {
    CHECK(statusOf("/bin/sh", {"-c", "exit 0"}) == 0);
    CHECK(statusOf("/bin/sh", {"-c", "exit 3"}) == 3);
    CHECK(statusOf("/bin/sh", {"-c", "exit 255"}) == 255);
    CHECK(statusOf("/bin/sh", {"-c", "kill -KILL $$"}) == SIGKILL);
    CHECK(statusOf("/bin/sh", {"-c", "kill -TERM $$"}) == SIGTERM);
    CHECK(statusOf("/bin/sh", {"-c", "ulimit -c 0; kill -SEGV $$"}) == SIGSEGV);
}

TEST_CASE("terminating a child ends it and says so, and later signals reach nobody") {
    const TempDir tmp;
    REQUIRE(::mkfifo((tmp / "fifo").c_str(), 0600) == 0);
    // Opening a pipe that nobody writes to waits for ever.
    ChildProcess child(
        {.executable = "/bin/sh", .arguments = {"-c", "read x < \"$0\"", tmp / "fifo"}});
    child.launch();
    CHECK(child.isRunning());
    CHECK(child.processIdentifier() > 0);

    child.sendSignal(SIGKILL);
    child.waitUntilExit();

    CHECK_FALSE(child.isRunning());
    CHECK(child.terminationStatus() == SIGKILL);
    child.terminate();
    child.sendSignal(SIGKILL);
    child.waitUntilExit();
    CHECK(child.terminationStatus() == SIGKILL);
}

TEST_CASE("a child without an environment of its own inherits this process's") {
    const TempDir tmp;
    const ScopedVariable variable("KORVANE_TEST_MARK", "seen");

    statusOf(probe, {"report", tmp / "report"});

    CHECK(Report(tmp / "report").environment().at("KORVANE_TEST_MARK") == "seen");
}

TEST_CASE("a child's own environment replaces the inherited one as a whole") {
    const TempDir tmp;
    const ScopedVariable variable("KORVANE_TEST_MARK", "seen");
    ChildProcess child({.executable = probe,
                        .arguments = {"report", tmp / "report"},
                        .environment = Environment{{"A", "1"}, {"B", ""}, {"C", "x=y\xff"}}});

    CHECK(statusOf(child) == 0);

    CHECK(Report(tmp / "report").environment() ==
          std::map<std::string, std::string>{{"A", "1"}, {"B", ""}, {"C", "x=y\xff"}});
}

TEST_CASE("a child starts in its current directory, or in this process's") {
    const TempDir tmp;
    makeFolder(tmp / "own");
    const WorkingDirectory inside(tmp.path());
    ChildProcess child({.executable = probe,
                        .arguments = {"report", tmp / "own-report"},
                        .currentDirectory = tmp / "own"});

    CHECK(statusOf(child) == 0);
    CHECK(statusOf(probe, {"report", tmp / "report"}) == 0);

    CHECK(Report(tmp / "own-report").lines("cwd") == Strings{tmp / "own"});
    CHECK(Report(tmp / "report").lines("cwd") == Strings{tmp.path()});
}

TEST_CASE("a relative executable lies below this process's folder, not the child's") {
    const TempDir tmp;
    copyProgram(probe, tmp / "here/program");
    makeFolder(tmp / "there");
    const WorkingDirectory inside(tmp / "here");
    ChildProcess child({.executable = "program",
                        .arguments = {"report", tmp / "report"},
                        .currentDirectory = tmp / "there"});

    CHECK(statusOf(child) == 0);

    CHECK(Report(tmp / "report").lines("argv0") == Strings{tmp / "here/program"});
    CHECK(Report(tmp / "report").lines("cwd") == Strings{tmp / "there"});
}

TEST_CASE("a bare name is not looked up in PATH") {
    const TempDir tmp;
    const WorkingDirectory inside(tmp.path());

    const auto error = launchErrorOf({.executable = "true", .arguments = {}});

    CHECK(error.fault == Fault::executable);
}

TEST_CASE("an executable that cannot be started is at fault, with the reason and the path") {
    const TempDir tmp;
    writeFile(tmp / "plain", "no program");
    writeFile(tmp / "garbage", "\x7f"
                               "ELF nonsense");
    setMode(tmp / "garbage", 0755);
    writeFile(tmp / "orphan", "#!/nonexistent/interpreter\n");
    setMode(tmp / "orphan", 0755);
    makeFolder(tmp / "folder");
    makeLink(tmp / "dangling", tmp / "nowhere");
    struct Row {
        std::string name, reason;
    };
    const std::vector<Row> table{
        {"missing", "No such file or directory"},
        {"plain", "Permission denied"},
        {"garbage", "Exec format error"},
        {"orphan", "interpreter"},
        {"folder", "Is a directory"},
        {"dangling", "No such file or directory"},
        {"plain/below", "Not a directory"},
    };
    for (const auto& row : table) {
        CAPTURE(row.name);
        const auto error = launchErrorOf({.executable = tmp / row.name, .arguments = {}});
        CHECK(error.fault == Fault::executable);
        CHECK(error.path == tmp / row.name);
        CHECK(contains(error.description(), tmp / row.name));
        CHECK(contains(error.description(), row.reason));
        CHECK(isOneLine(error.description()));
    }
    CHECK(launchErrorOf({.executable = "", .arguments = {}}).fault == Fault::executable);
}

TEST_CASE("a working directory that cannot be entered is at fault, with the reason and the path") {
    const TempDir tmp;
    writeFile(tmp / "file");
    struct Row {
        std::string name, reason;
    };
    const std::vector<Row> table{{"missing", "No such file or directory"},
                                 {"file", "Not a directory"}};
    for (const auto& row : table) {
        CAPTURE(row.name);
        const auto error = launchErrorOf(
            {.executable = "/bin/true", .arguments = {}, .currentDirectory = tmp / row.name});
        CHECK(error.fault == Fault::workingDirectory);
        CHECK(error.path == tmp / row.name);
        CHECK(contains(error.description(), tmp / row.name));
        CHECK(contains(error.description(), row.reason));
    }
}

TEST_CASE("arguments that no program can get are refused before anything runs") {
    const TempDir tmp;
    const auto tooLong =
        launchErrorOf({.executable = "/bin/true", .arguments = {std::string(10000000, 'x')}});
    CHECK(tooLong.fault == Fault::arguments);
    CHECK(contains(tooLong.description(), "Argument list too long"));
    const auto withNul =
        launchErrorOf({.executable = probe, .arguments = {"report", std::string("a\0b", 3)}});
    CHECK(withNul.fault == Fault::arguments);
    launchErrorOf({.executable = std::string("/bin/true\0x", 11), .arguments = {}});
    const auto named = launchErrorOf(
        {.executable = probe, .arguments = {}, .processName = std::string("a\0b", 3)});
    CHECK(named.fault == Fault::arguments);
    launchErrorOf({.executable = "/bin/true",
                   .arguments = {},
                   .environment = Environment{{"K", std::string("a\0b", 3)}}});
    launchErrorOf({.executable = "/bin/true",
                   .arguments = {},
                   .currentDirectory = tmp.path() + std::string("\0x", 2)});
}

TEST_CASE("a child gets the three standard streams and no other descriptor") {
    const TempDir tmp;
    const OwnedFd own = OwnedFd::open("open", tmp / "own", O_RDWR | O_CREAT);
    const int leaking = ::open((tmp / "own").c_str(), O_RDONLY); // without close-on-exec
    const Pipe pipe = Pipe::make();
    REQUIRE(leaking > 2);

    statusOf(probe, {"report", tmp / "report"});
    ::close(leaking);

    Strings numbers;
    for (const auto& line : Report(tmp / "report").lines("fd")) {
        numbers.push_back(line.substr(0, line.find(' ')));
    }
    CHECK(numbers == Strings{"0", "1", "2"});
}

TEST_CASE("output and error go where the setup says and share one file") {
    const TempDir tmp;
    const auto log = std::make_shared<const OwnedFd>(
        OwnedFd::open("open", tmp / "log", O_WRONLY | O_APPEND | O_CREAT));
    ChildProcess child({.executable = "/bin/sh",
                        .arguments = {"-c", "echo out; echo err >&2; echo end"},
                        .standardOutput = log,
                        .standardError = log});

    CHECK(statusOf(child) == 0);

    CHECK(readFile(tmp / "log") == "out\nerr\nend\n");
}

TEST_CASE("a pipe catches all of a child's output") {
    Pipe pipe = Pipe::make();
    ChildProcess child({.executable = "/bin/sh",
                        .arguments = {"-c", "head -c 300000 /dev/zero; exit 4"},
                        .standardOutput = pipe.writeEnd});
    child.launch();

    const auto bytes = pipe.readToEnd();
    child.waitUntilExit();

    CHECK(bytes == std::string(300000, '\0'));
    CHECK(child.terminationStatus() == 4);
}

TEST_CASE("a child starts with default signal dispositions and an empty mask") {
    const TempDir tmp;
    const ScopedSignal pipe(SIGPIPE, SIG_IGN);
    const ScopedSignal user(SIGUSR1, SIG_IGN);
    const ScopedSignal interrupt(SIGINT, SIG_IGN);
    sigset_t blocked;
    sigset_t before;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGTERM);
    sigaddset(&blocked, SIGUSR2);
    sigprocmask(SIG_BLOCK, &blocked, &before);

    statusOf(probe, {"report", tmp / "report"});
    sigprocmask(SIG_SETMASK, &before, nullptr);

    CHECK(Report(tmp / "report").ignoredSignals() == 0);
    CHECK(Report(tmp / "report").lines("SigBlk") == Strings{"0000000000000000"});
}

TEST_CASE("only a hang-up signal that this process ignores stays ignored in the child") {
    const TempDir tmp;
    const ScopedSignal hangUp(SIGHUP, SIG_IGN);
    const ScopedSignal quit(SIGQUIT, SIG_IGN);

    statusOf(probe, {"report", tmp / "report"});

    CHECK(Report(tmp / "report").ignoredSignals() == 1U << (SIGHUP - 1));
}

TEST_CASE("the termination handler is called once, on another thread, with the status") {
    std::promise<std::pair<int, std::thread::id>> promise;
    auto future = promise.get_future();
    ChildProcess child({.executable = "/bin/sh", .arguments = {"-c", "exit 6"}});
    child.setTerminationHandler([&](int status) { // a second call would throw
        promise.set_value({status, std::this_thread::get_id()});
    });

    child.launch();
    const auto [status, thread] = future.get();
    child.waitUntilExit();

    CHECK(status == 6);
    CHECK(thread != std::this_thread::get_id());
    CHECK(child.terminationStatus() == 6);
}

TEST_CASE("the termination handler is called even when the child's owner is gone") {
    std::promise<int> promise;
    auto future = promise.get_future();
    {
        ChildProcess child({.executable = "/bin/sh", .arguments = {"-c", "exit 9"}});
        child.setTerminationHandler([&](int status) { promise.set_value(status); });
        child.launch();
    }
    CHECK(future.get() == 9);
}

TEST_CASE("a status lost because this process ignores its children's end is 1") {
    const ScopedSignal children(SIGCHLD, SIG_IGN);

    CHECK(statusOf("/bin/sh", {"-c", "exit 3"}) == 1);
}

TEST_CASE("a child keeps running when its owner moves") {
    ChildProcess first({.executable = "/bin/sh", .arguments = {"-c", "exit 5"}});
    first.launch();
    ChildProcess second(std::move(first));
    second.waitUntilExit();
    CHECK(second.terminationStatus() == 5);
    second = ChildProcess({.executable = "/bin/sh", .arguments = {"-c", "exit 8"}});
    CHECK(statusOf(second) == 8);
}

TEST_CASE("of an environment name that stands twice the first value counts") {
    char first[] = "TWICE=first";
    char second[] = "TWICE=second";
    char without[] = "NO_SEPARATOR";
    char* doubled[] = {first, second, without, nullptr};
    char** const before = environ;
    environ = doubled;

    const auto environment = processEnvironment();
    environ = before;

    CHECK(environment.at("TWICE") == "first");
    CHECK(environment.size() <= 2);
}

TEST_CASE("variables set in this process are seen in it and by its children, others stay") {
    const ScopedVariable changed("KORVANE_TEST_CHANGED", "before");
    const ScopedVariable kept("KORVANE_TEST_KEPT", "kept");
    const ScopedVariable added("KORVANE_TEST_ADDED", std::nullopt);

    setProcessVariables({{"KORVANE_TEST_CHANGED", "after"},
                         {"KORVANE_TEST_ADDED", "a=b"},
                         {"", "nameless"},
                         {"KORVANE=TEST", "two names"}});

    const auto environment = processEnvironment();
    CHECK(environment.at("KORVANE_TEST_CHANGED") == "after");
    CHECK(environment.at("KORVANE_TEST_ADDED") == "a=b");
    CHECK(environment.at("KORVANE_TEST_KEPT") == "kept");
    CHECK_FALSE(environment.contains("KORVANE"));
    CHECK(statusOf("/bin/sh", {"-c", "test \"$KORVANE_TEST_CHANGED\" = after"}) == 0);
}

TEST_CASE("a detached program gets the environment that it is given, and nothing else") {
    const TempDir tmp;
    const ScopedVariable own("KORVANE_TEST_OWN", "own");
    auto child = launchDetached(
        "/bin/sh", {"-c", "echo \"${KORVANE_TEST_OWN-unset} $GIVEN\" > " + quoted(tmp / "out")}, {},
        Environment{{"GIVEN", "given"}});
    child.waitUntilExit();
    CHECK(readFile(tmp / "out") == "unset given\n");
}
