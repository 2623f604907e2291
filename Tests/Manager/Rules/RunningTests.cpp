#include "Manager/Rules/Running.h"

#include "Manager/Operations/RunningScene.h"

#include <csignal>
#include <unistd.h>

namespace korvane::test {

namespace {

/// What a process that is /bin/sh is called by its file.
std::string shellName() {
    const auto file = ambrel::fileSystem::resolved("/bin/sh").value();
    return std::string(ambrel::paths::lastComponent(file));
}

} // namespace

using Kind = Refusal::Kind;

TEST_CASE("an instance runs with its runner and what that started, and no longer") {
    Started scene;
    const auto other = scene.made("Other");

    CHECK(scene.runs(scene.record) == Ids{scene.runner, scene.command});
    CHECK(Running::now(scene.user).of(scene.record).heads == Ids{scene.runner});
    CHECK(scene.runs(other).empty());

    writeFile(scene.go, "x\n");
    CHECK(scene.program.wait().status == 0);
    CHECK(scene.runs(scene.record).empty());
}

TEST_CASE("a runner is known after its bundle was moved, and after it was replaced") {
    Started scene;
    auto moved = scene.record;
    moved.bundleURL = scene.tmp / "Elsewhere.app";

    ambrel::fileSystem::move(scene.record.bundleURL, moved.bundleURL);
    CHECK(scene.runs(moved) == Ids{scene.runner, scene.command});

    ambrel::fileSystem::move(moved.bundleURL, scene.record.bundleURL);
    const auto file = scene.record.bundleURL + "/Contents/MacOS/runner";
    REQUIRE(::unlink(file.c_str()) == 0);
    copyProgram(KORVANE_TEST_RUNNER, file);
    CHECK(scene.runs(scene.record) == Ids{scene.runner, scene.command});
}

TEST_CASE("a process whose home is the instance's belongs to it, by whatever path") {
    const RunningScene scene;
    const auto work = scene.made();
    const auto other = scene.made("Other");
    makeLink(scene.tmp / "link", scene.homeOf());
    const Waiting plain({{"HOME", scene.homeOf()}});
    const Waiting linked({{"HOME", scene.tmp / "link/"}});
    const Waiting usersOwn({{"HOME", scene.home.path()}});

    auto expected = Ids{plain.id(), linked.id()};
    std::ranges::sort(expected);
    CHECK(scene.runs(work) == expected);
    CHECK(scene.runs(other).empty());
}

TEST_CASE("where the instance's home is or contains the user's own, HOME proves nothing") {
    const RunningScene scene;
    const auto work = scene.made();
    const Waiting usersOwn({{"HOME", scene.home.path()}});
    const Waiting above({{"HOME", scene.tmp.path()}});

    CHECK(scene.runs(scene.withHome(work, "~")).empty());
    CHECK(scene.runs(scene.withHome(work, scene.home.path() + "/")).empty());
    CHECK(scene.runs(scene.withHome(work, scene.tmp.path())).empty());
    const Waiting writer({}, "exec >>" + quoted(scene.home / "korvane-instance.log"));
    CHECK(scene.runs(scene.withHome(work, "~")) == Ids{writer.id()});
}

TEST_CASE("an instance without a usable home runs by its runner alone") {
    const RunningScene scene;
    const auto work = scene.made();
    const Waiting process(Waiting::Variables{{"HOME", ""}});
    const Waiting relative(Waiting::Variables{{"HOME", "relative"}});

    CHECK(scene.runs(scene.withHome(work, "")).empty());
    CHECK(scene.runs(scene.withHome(work, "relative")).empty());
}

TEST_CASE(
    "what writes into the log belongs to the instance, what reads it or lies in its folder not") {
    const RunningScene scene;
    const auto work = scene.made();
    const auto log = writeFile(scene.logOf());
    const Waiting output({}, "exec >>" + quoted(log));
    const Waiting error({}, "exec 2>>" + quoted(log));
    const Waiting reader({}, "exec <" + quoted(log));
    const Waiting pager({}, "exec 3<" + quoted(log));
    const Waiting inFolder({}, "cd " + quoted(scene.homeOf()));

    auto expected = Ids{output.id(), error.id()};
    std::ranges::sort(expected);
    CHECK(scene.runs(work) == expected);

    REQUIRE(::unlink(log.c_str()) == 0);
    CHECK(scene.runs(work) == expected);
}

TEST_CASE("a log that is no file of its own proves nothing") {
    const RunningScene scene;
    const auto work = scene.made();
    makeLink(scene.logOf(), "/dev/null");
    const Waiting process({}, "exec >/dev/null 2>&1");

    CHECK(scene.runs(work).empty());
}

TEST_CASE("what a launcher leaves behind when it ends belongs to the instance") {
    const RunningScene scene;
    const auto go = makeFifo(scene.tmp / "go");
    const auto ready = makeFifo(scene.tmp / "ready");
    const auto work = scene.made("Work", "sh -c 'echo $$ >" + ready + "; read x <" + go + "' &");

    RunningProgram launcher(scene.runnerOf(work));
    const auto left = std::stoi(readFile(ready));
    CHECK(launcher.wait().status == 0);

    const auto found = Running::now(scene.user).of(work);
    CHECK(found.ids == Ids{left});
    CHECK(found.heads == Ids{left});
    writeFile(go, "x\n");
}

TEST_CASE("an instance that was started out of another one belongs to itself alone") {
    const Started inner;
    const auto outer = inner.made("Outer");
    const auto log = writeFile(inner.logOf("Outer"));
    const auto ready = makeFifo(inner.tmp / "second");
    const auto go = makeFifo(inner.tmp / "let go");
    const auto started =
        inner.made("Started", "echo $$ $PPID >" + quoted(ready) + "; read x <" + quoted(go));
    // As a terminal in the outer instance does it: with its home and its log.
    auto setup = inner.runnerOf(started);
    setup.environment["HOME"] = inner.homeOf("Outer");
    setup.command = {"/bin/sh", "-c", "exec \"$0\" >>" + quoted(log) + " 2>&1", setup.command[0]};
    RunningProgram program(setup);
    int command = 0;
    int runner = 0;
    std::istringstream(readFile(ready)) >> command >> runner;

    CHECK(inner.runs(outer).empty());
    CHECK(inner.runs(started) == Ids{runner, command});

    program.send(SIGKILL); // its command is left without a runner, and has its log
    program.wait();
    CHECK(inner.runs(outer).empty());
    CHECK(inner.runs(started) == Ids{command});
    writeFile(go, "x\n");
}

TEST_CASE("what writes into the log belongs to the instance, whatever runner it descends from") {
    Started scene;
    const auto moved = scene.tmp / "Elsewhere.app";
    ambrel::fileSystem::move(scene.record.bundleURL, moved);

    // Another one has come to its place by now, as after the bundle was put into the trash.
    const auto again = scene.made();

    CHECK(scene.runs(again) == Ids{scene.command});
    ambrel::fileSystem::removeTree(moved);
    CHECK(scene.runs(again) == Ids{scene.command});
}

TEST_CASE("a process of another user's does not belong to an instance by its home") {
    const RunningScene scene;
    const auto work = scene.made();
    const auto ready = makeFifo(scene.tmp / "ready");
    const auto go = makeFifo(scene.tmp / "go");
    giveToOrdinaryUser(scene.tmp.path());
    RunningProgram process(
        {.command = commandAsOrdinaryUser(
             {"/bin/sh", "-c", "echo >" + quoted(ready) + "; read x <" + quoted(go)}),
         .environment = {{"HOME", scene.homeOf()}}});
    readFile(ready);

    CHECK(scene.runs(work).empty() == (::getuid() == 0)); // else it is this user's own
    writeFile(go, "x\n");
    process.wait();
}

TEST_CASE("the process that asks belongs to no instance, and does so for anybody else") {
    const RunningScene scene;
    const auto work = scene.made();
    writeFile(scene.logOf());
    giveToOrdinaryUser(scene.tmp.path());

    // In a child of this process, whose output is the log then.
    const auto found = asOrdinaryUser([&] {
        const auto log = ambrel::fileSystem::openForAppending(scene.logOf());
        ::dup2(log.get(), STDOUT_FILENO);
        const Waiting other({}, "exec >>" + quoted(scene.logOf()));
        return scene.runs(work) == Ids{other.id()} ? std::string("the other alone")
                                                   : std::string("something else");
    });

    CHECK(found == "the other alone");
}

TEST_CASE("services that the bus has started for an instance are not its program") {
    const RunningScene scene;
    auto work = scene.made();
    work.config.kind = ambrel::ShortcutKind::app;
    const Waiting service(
        Waiting::Variables{{"HOME", scene.homeOf()}, {"DBUS_STARTER_BUS_TYPE", "session"}});

    const auto alone = Running::now(scene.user).of(work);
    CHECK(alone.ids == Ids{service.id()});
    CHECK_FALSE(alone.hasProgram);
    CHECK(alone.programs.at(service.id()) == shellName());
    work.config.infoPlistOverrides = {{ambrel::sharedBusKey, "true"}};
    CHECK(Running::now(scene.user).of(work).hasProgram);
    work.config.infoPlistOverrides = {};
    work.config.environment = {{"DBUS_SESSION_BUS_ADDRESS", "unix:path=/a/bus/of/its/own"}};
    CHECK(Running::now(scene.user).of(work).hasProgram);
    work.config.environment = {};
    const Waiting program({{"HOME", scene.homeOf()}});
    CHECK(Running::now(scene.user).of(work).hasProgram);
}

TEST_CASE("a process beside the runner means that the program runs while something is below it") {
    const RunningScene scene;
    auto work = scene.made();
    work.config.kind = ambrel::ShortcutKind::app;
    const Path runner = work.bundleURL + "/Contents/MacOS/runner";
    REQUIRE(::unlink(runner.c_str()) == 0);
    copyProgram("/bin/sh", runner);
    const auto ready = makeFifo(scene.tmp / "ready");
    const auto go = makeFifo(scene.tmp / "go");
    const Path below = scene.tmp / "below";
    const auto start =
        writeFile(scene.tmp / "start", quoted(runner) + " " + quoted(below) + "\ntrue\n");
    const auto waits = "echo $$ >" + quoted(ready) + "\nread x <" + quoted(go) + "\n";
    const auto hasProgram = [&] {
        RunningProgram program({.command = {runner, start}});
        readFile(ready);
        const bool has = Running::now(scene.user).of(work).hasProgram;
        writeFile(go, "x\n");
        CHECK(program.wait().status == 0);
        return has;
    };

    writeFile(below, waits);
    CHECK_FALSE(hasProgram());

    const auto end = makeFifo(scene.tmp / "end");
    const auto service = "/bin/sh -c " + quoted("read x <" + quoted(end));
    writeFile(below, "DBUS_STARTER_BUS_TYPE=session " + service + " >/dev/null 2>&1 &\n" + waits);
    CHECK(hasProgram());
    writeFile(end, "x\n");
}

TEST_CASE("what must not happen under a running instance is refused with how to stop it") {
    const RunningScene scene;
    const auto work = scene.made();
    CHECK_NOTHROW(requireNotRunning(work, scene.user));
    const Waiting process({{"HOME", scene.homeOf()}});

    const auto refusal = refusalOf(scene, [&] { requireNotRunning(work, scene.user); });

    CHECK(refusal.kind == Kind::instanceRuns);
    CHECK(refusal.subject == "Work");
    CHECK(refusal.remedy == Remedy::stopFirst);
    CHECK(refusal.sentence() == "The instance \"Work\" is running: process " +
                                    std::to_string(process.id()) + " (" + shellName() + ").");
}

TEST_CASE("processes are told by their ids, not more than three") {
    CHECK(spokenProcesses({1}) == "process 1");
    CHECK(spokenProcesses({1, 2}) == "processes 1 and 2");
    CHECK(spokenProcesses({1, 2, 3}) == "processes 1, 2 and 3");
    CHECK(spokenProcesses({1, 2, 3, 4, 5}) == "processes 1, 2, 3 and 2 more");
    CHECK(spokenProcesses({1, 2}, {{2, "vim"}}) == "processes 1 and 2 (vim)");
    CHECK(spokenProcesses({1, 2, 3}, {{1, "runner"}, {2, "runner"}, {3, "vim"}}) ==
          "processes 3 (vim), 1 (runner) and 2 (runner)");
    CHECK(spokenProcesses({1}, {{1, "a\nb"}}) == "process 1 (a\\nb)");
}

} // namespace korvane::test
