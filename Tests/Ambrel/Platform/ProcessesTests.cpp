#include "Ambrel/Platform/Processes.h"

#include "Support/Expect.h"
#include "Support/Waiting.h"

#include <algorithm>
#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

namespace korvane::test {

using ambrel::FileIdentity;
using ambrel::ProcessHandle;
using ambrel::ProcessSeen;

namespace {

std::optional<ProcessSeen> seen(int id) {
    const auto all = ambrel::runningProcesses();
    const auto found = std::ranges::find(all, id, &ProcessSeen::id);
    return found == all.end() ? std::nullopt : std::optional(*found);
}

/// A child that has ended and was not waited for.
class Zombie {
public:
    Zombie() : id_(::fork()) {
        if (id_ == 0) ::_exit(0);
        siginfo_t info{};
        REQUIRE(::waitid(P_PID, static_cast<id_t>(id_), &info, WEXITED | WNOWAIT) == 0);
    }
    Zombie(const Zombie&) = delete;
    Zombie& operator=(const Zombie&) = delete;
    ~Zombie() { ::waitpid(id_, nullptr, 0); }

    int id() const { return id_; }

private:
    pid_t id_;
};

} // namespace

TEST_CASE("a process is seen with its parent, its program, its output and its home") {
    const TempDir tmp;
    const auto log = tmp / "log (deleted)";
    const Waiting process({{"HOME", "/some where"}}, "exec >" + quoted(log));

    const auto found = seen(process.id());

    REQUIRE(found);
    CHECK(found->parent == ::getpid());
    CHECK(found->isUsers);
    CHECK(found->home == "/some where");
    CHECK_FALSE(found->isStartedByBus);
    REQUIRE(found->executable);
    CHECK(found->executable->identity == FileIdentity::ofFileAt("/bin/sh"));
    REQUIRE(found->output);
    CHECK(found->output->identity == FileIdentity::ofFileAt(log));
    CHECK(found->output->path == log);
    CHECK_FALSE(found->output->isRemoved);
    CHECK_FALSE(found->error); // a pipe
}

TEST_CASE("a process is seen to be started by a bus of the session, and by no other") {
    for (const std::string kind : {"session", "system", ""}) {
        CAPTURE(kind);
        const Waiting process(Waiting::Variables{{"DBUS_STARTER_BUS_TYPE", kind}});
        const auto found = seen(process.id());
        REQUIRE(found);
        CHECK(found->isStartedByBus == (kind == "session"));
    }
}

TEST_CASE("a file that a process holds is known by its place after it was removed") {
    const TempDir tmp;
    const auto log = tmp / "log";
    const Waiting process({}, "exec 2>" + quoted(log));
    REQUIRE(::unlink(log.c_str()) == 0);
    writeFile(log, "another");

    const auto found = seen(process.id());

    REQUIRE(found);
    REQUIRE(found->error);
    CHECK(found->error->isRemoved);
    CHECK(found->error->path == log);
    CHECK(found->error->isOrWas(log, FileIdentity::ofFileAt(log)));
    CHECK_FALSE(found->error->isOrWas(tmp / "other", FileIdentity::ofFileAt(log)));
}

TEST_CASE("what has ended is not seen, also where nobody has asked for its status") {
    const Zombie zombie;

    CHECK_FALSE(seen(zombie.id()));
    CHECK(seen(::getpid()));
    CHECK(ambrel::ownProcessId() == ::getpid());
}

TEST_CASE("looking at processes that come and go all the time does not fail") {
    const TempDir tmp;
    const auto stop = tmp / "stop";
    RunningProgram restless(
        {.command = {"/bin/sh", "-c",
                     "while ! [ -e " + quoted(stop) + " ]; do /bin/true & /bin/true; wait; done"}});

    for (int count = 0; count < 50; ++count) {
        const auto all = ambrel::runningProcesses();
        CHECK(std::ranges::is_sorted(all, {}, &ProcessSeen::id));
        CHECK(std::ranges::count(all, ::getpid(), &ProcessSeen::id) == 1);
    }

    writeFile(stop);
    CHECK(restless.wait().status == 0);
}

TEST_CASE("a device has no identity as a file") {
    CHECK(FileIdentity::at("/dev/null"));
    CHECK_FALSE(FileIdentity::ofFileAt("/dev/null"));
    CHECK_FALSE(FileIdentity::at("/gone"));
}

TEST_CASE("a process that is held is asked to end, and its end is waited for") {
    Waiting process;
    std::vector<ProcessHandle> handles;
    handles.push_back(ProcessHandle::open(process.id()).value());

    CHECK(handles.front().id() == process.id());
    CHECK_FALSE(handles.front().hasEnded());
    CHECK_FALSE(ProcessHandle::waitForAny(handles, ProcessHandle::Clock::now()));
    CHECK(handles.front().requestEnd());
    CHECK(ProcessHandle::waitForAny(handles, ProcessHandle::Clock::time_point::max()));
    CHECK(handles.front().hasEnded());
}

TEST_CASE("a process that was held and has gone is not asked to end, nor is another of its id") {
    Waiting process;
    const auto handle = ProcessHandle::open(process.id()).value();
    process.letGo();

    CHECK(handle.hasEnded());
    CHECK_FALSE(handle.requestEnd());
}

} // namespace korvane::test
