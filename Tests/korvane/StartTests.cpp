#include "Ambrel/Platform/FileSystem.h"
#include "Manager.h"
#include "Support/Report.h"
#include "Support/Waiting.h"

#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <poll.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace korvane::test {

namespace {

/// Blocks until a program has opened the named pipe, written to it and closed it.
std::string readFifo(const Path& fifo) { return readFile(fifo); }

/// An instance that writes a line, waits, writes many more and does what `end` says.
struct Shown {
    explicit Shown(const std::string& end) {
        manager.create({"command", "Work", "/bin/sh", "--", "-c",
                        "echo first; read x <" + quoted(go) + "; seq 100000" + end});
    }

    /// Runs it with what it shows going to `output`, as a shell has it.
    ProgramSetup setup(const std::string& output) const {
        auto setup = manager.setup({"run", "Work"});
        setup.command[2] = "exec \"$@\" </dev/null >" + output;
        return setup;
    }
    void goOn() const { writeFile(go, "x\n"); }

    Manager manager;
    const Path go = makeFifo(manager.tmp / "go");
    const Path out = makeFifo(manager.tmp / "out");
};

} // namespace

TEST_CASE("run hands on the program's exit status") {
    const Manager manager;
    manager.create({"command", "Seven", "/bin/sh", "--", "-c", "exit 7"});
    manager.create({"command", "Zero", aProgram});

    CHECK(manager.run({"run", "Seven"}).status == 7);
    CHECK(manager.run({"run", "Zero"}).status == 0);
}

TEST_CASE("run shows what the runner says, and nothing of its own") {
    const Manager manager;
    manager.installApp("Mail", "org.example.mail");
    manager.create({"app", "Fixed", "Mail", "--strategy", "unsupported"});

    const auto done = manager.run({"run", "Fixed"});

    CHECK(done.status == 1);
    CHECK(done.output.empty());
    CHECK(done.error == "runner: failed to launch instance — App not clonable: org.example.mail\n");
}

TEST_CASE("run shows what the program writes now, byte for byte, and the log keeps it") {
    const Manager manager;
    manager.create({"command", "Work", "/bin/sh", "--", "-c",
                    "printf 'a\\0\\377'; echo err >&2; printf 'no end'; exit 3"});

    const auto first = manager.run({"run", "Work"});
    const auto second = manager.run({"run", "Work"});

    const std::string bytes = std::string("a\0\xff", 3) + "err\nno end";
    CHECK(first.status == 3);
    CHECK(first.output == bytes);
    CHECK(first.error.empty());
    CHECK(second.output == bytes);
    CHECK(manager.result({"logs", "Work"}) == bytes + bytes);
}

TEST_CASE("run shows what is written while the program runs, and loses nothing of much") {
    const Shown shown("");

    RunningProgram program(shown.setup(quoted(shown.out)));
    std::ifstream lines(shown.out);
    std::string line;
    std::getline(lines, line);
    CHECK(line == "first"); // the program still waits
    shown.goOn();
    int expected = 0;
    while (std::getline(lines, line)) {
        if (line != std::to_string(++expected)) break;
    }

    CHECK(expected == 100000);
    CHECK(program.wait().status == 0);
}

TEST_CASE("a program is not harmed when nobody reads what run shows") {
    const Shown shown("; exit 6");

    RunningProgram program(shown.setup(quoted(shown.out)));
    {
        std::ifstream lines(shown.out);
        std::string line;
        std::getline(lines, line);
    }
    shown.goOn();

    CHECK(program.wait().status == 6);
    CHECK(shown.manager.result({"logs", "Work"}).ends_with("\n100000\n"));
    RunningProgram closed(shown.setup("&-"));
    shown.goOn();
    CHECK(closed.wait().status == 6);
}

TEST_CASE("run does not write into the log what it reads there") {
    const Manager manager;
    manager.create({"command", "Work", "/bin/echo", "--", "one"});
    manager.run({"run", "Work"});
    const auto log = manager.instanceHome("Work") + "/korvane-instance.log";
    auto setup = manager.setup({"run", "Work"});
    setup.command[2] = "exec \"$@\" </dev/null >>" + quoted(log);

    CHECK(run(setup).status == 0);

    CHECK(readFile(log) == "one\none\n");
}

TEST_CASE("a signal that ends run reaches the program") {
    const Manager manager;
    const auto fifo = makeFifo(manager.tmp / "fifo");
    manager.create(
        {"command", "Probe", KORVANE_TEST_PROBE, "--", "signals", fifo, std::to_string(SIGTERM)});

    RunningProgram program(manager.setup({"run", "Probe"}));
    const int reader = ::open(fifo.c_str(), O_RDONLY);
    char ready[6];
    REQUIRE(::read(reader, ready, sizeof ready) == 6);
    program.send(SIGTERM);

    CHECK(program.wait().status == 40);
    ::close(reader);
}

TEST_CASE("open starts the wrapper in a session of its own and does not wait for it") {
    const Manager manager;
    const auto go = makeFifo(manager.tmp / "go");
    const auto out = makeFifo(manager.tmp / "out");
    manager.create({"command", "Slow", "/bin/sh", "--", "-c",
                    "read x < '" + go + "'; " KORVANE_TEST_PROBE " report '" +
                        (manager.tmp / "report") + "' $(ps -o sid= -p $PPID) $PPID; echo done > '" +
                        out + "'"});

    const auto done = manager.run({"open", "Slow"});
    writeFile(go, "x\n");
    CHECK(readFifo(out) == "done\n");

    CHECK(done.status == 0);
    CHECK(done.output.empty());
    CHECK(says(done.error, "Opened \"Slow\"."));
    CHECK(says(done.error, "korvane logs -f Slow\n"));
    const Report report(manager.tmp / "report");
    const auto arguments = report.lines("arg");
    REQUIRE(arguments.size() == 2);
    CHECK(arguments[0] == arguments[1]); // the runner leads its session
    CHECK(report.lines("fd").front() == "0 /dev/null");
}

TEST_CASE("open says what ended at once, with what it wrote") {
    const Manager manager;
    manager.installApp("Mail", "org.example.mail");
    manager.create({"app", "App", "Mail", "--add-arg", "over"});
    manager.create({"command", "Fails", "/bin/sh", "--", "-c", "echo why >&2; exit 9"});
    manager.create({"command", "Fine", "/bin/echo", "--", "done"});

    CHECK(says(manager.refusal({"open", "App"}), "\"App\" ended at once with status 0"));
    CHECK(says(manager.refusal({"open", "App"}),
               "Close the copy that runs outside, or keep this one apart by an argument of its "
               "own: korvane edit App --add-arg ARG\nIt wrote:\n  over\n"));
    CHECK(manager.refusal({"open", "Fails"}) ==
          "korvane: \"Fails\" ended at once with status 9. It wrote:\n  why\n");
    const auto fine = manager.run({"open", "Fine"});
    CHECK(fine.status == 0);
    CHECK(says(fine.error, "\"Fine\" has ended already, with status 0.\n"));
    CHECK(says(fine.error, "korvane logs Fine\n"));
}

TEST_CASE("open takes several names, checks all first, and tries each") {
    const Manager manager;
    const auto mark = manager.tmp / "mark";
    manager.create({"command", "Fails", "/bin/sh", "--", "-c", "exit 9"});
    manager.create({"command", "Marks", "/bin/sh", "--", "-c", ">" + quoted(mark)});
    const auto gone = writeScript(manager.tmp / "gone", "exit 0");
    manager.create({"command", "Gone", gone});
    ambrel::fileSystem::removeItem(gone);

    manager.refusal({"open", "Marks", "Nobody"});
    manager.refusal({"open", "Marks", "Gone"});
    CHECK_FALSE(isThere(mark));

    const auto done = manager.run({"open", "Fails", "Marks"});
    CHECK(done.status == 1);
    CHECK(says(done.error, "korvane: \"Fails\" ended at once with status 9.\n"));
    CHECK(says(done.error, "\"Marks\" has ended already"));
    CHECK(isThere(mark));
}

TEST_CASE("neither open nor run makes a home or a log for a document") {
    const Manager manager;
    const auto opener =
        writeScript(manager.tmp / "opener", "echo shown; echo no handler >&2; exit $(cat " +
                                                (manager.tmp / "status") + ")");
    manager.result(
        {"create", "file", "Paper", writeFile(manager.tmp / "paper"), "--runner", opener});

    writeFile(manager.tmp / "status", "0");
    const auto opened = manager.run({"open", "Paper"});
    CHECK(opened.status == 0);
    CHECK(opened.error == "Opened \"Paper\".\n");
    CHECK(manager.run({"run", "Paper"}).output == "shown\n"); // inherited
    writeFile(manager.tmp / "status", "4");
    CHECK(manager.refusal({"open", "Paper"}) ==
          "korvane: \"Paper\" was not opened: its opener ended with status 4. It wrote:\n"
          "  no handler\n");

    CHECK_FALSE(isThere(manager.instanceHome("Paper")));
    CHECK(says(manager.refusal({"logs", "Paper"}), "opened by another program"));
}

TEST_CASE("open refuses what could only fail unseen") {
    const Manager manager;
    manager.installApp("Mail", "org.example.mail");
    manager.create({"app", "Fixed", "Mail", "--strategy", "unsupported"});
    const auto damaged = manager.create({"command", "Damaged", aProgram});
    ::unlink((damaged + "/Contents/MacOS/runner").c_str());
    const auto moved = manager.create({"app", "Moved", "Mail"});
    ::rename((manager.applications() + "/Mail.app").c_str(), (manager.tmp / "gone").c_str());

    CHECK(says(manager.refusal({"open", "Damaged"}), "no runner"));
    CHECK(says(manager.refusal({"open", "Moved"}), "Make it again with: korvane adopt Mail\n"));
    writeFile(manager.applications() + "/Mail.app", "no bundle");
    const auto unreadable = manager.refusal({"open", "Moved"});
    CHECK(says(unreadable, "Not a readable .app bundle: "));
    CHECK_FALSE(contains(unreadable, "korvane adopt"));
    REQUIRE(::unlink((manager.applications() + "/Mail.app").c_str()) == 0);
    ::rename((manager.tmp / "gone").c_str(), (manager.applications() + "/Mail.app").c_str());
    CHECK(says(manager.refusal({"open", "Fixed"}), "App not clonable: org.example.mail"));
}

TEST_CASE("open refuses a command, a folder or a document that is not there") {
    const Manager manager;
    const auto gone = writeScript(manager.tmp / "gone", "");
    manager.create({"command", "Gone", gone});
    REQUIRE(::unlink(gone.c_str()) == 0);
    manager.create({"command", "Where", "--working-directory", manager.tmp / "where", aProgram});
    manager.create({"file", "Paper", manager.tmp / "paper.pdf"});

    CHECK(says(manager.refusal({"open", "Gone"}), manager.tmp / "gone"));
    CHECK(says(manager.refusal({"open", "Where"}), manager.tmp / "where"));
    CHECK(says(manager.refusal({"open", "Paper"}), manager.tmp / "paper.pdf"));
}

TEST_CASE("an instance of an application runs with its own home and arguments") {
    const Manager manager;
    manager.installApp("Mail", "org.mozilla.mail");
    manager.create({"app", "Work", "Mail", "--add-arg", "a b"});
    const std::string id = "app.korvane.instance.work";

    CHECK(manager.run({"run", "Work"}).status == 0);

    CHECK(manager.result({"logs", "Work"}) == "-profile\n" + manager.instanceHome("Work") +
                                                  "/FirefoxProfile\n-no-remote\n" + "--class\n" +
                                                  id + "\n--name\n" + id + "\na b\n");
}

TEST_CASE("logs shows the whole log") {
    const Manager manager;
    manager.create({"command", "Echo", "/bin/echo", "--", "one"});

    manager.run({"run", "Echo"});
    manager.run({"run", "Echo"});

    CHECK(manager.result({"logs", "Echo"}) == "one\none\n");
}

TEST_CASE("a log that is not there yet is a failure with a hint") {
    const Manager manager;
    manager.create({"command", "Echo", "/bin/echo"});
    CHECK(says(manager.refusal({"logs", "Echo"}), "korvane open Echo"));
}

TEST_CASE("a log that cannot be read is a failure with its reason") {
    const Manager manager;
    manager.create({"command", "Work", aProgram});
    manager.result({"run", "Work"});
    const auto log = manager.instanceHome("Work") + "/korvane-instance.log";
    const auto setup = manager.setupAsOrdinaryUser({"logs", "Work"});
    REQUIRE(::chmod(log.c_str(), 0) == 0);

    const auto done = run(setup);

    CHECK(done.status == 1);
    CHECK(says(done.error, "Cannot read " + log + ": Permission denied"));
}

TEST_CASE("logs follows what is written, from before the log exists until it is ended") {
    const Manager manager;
    manager.create({"command", "Echo", "/bin/echo"});
    const auto fifo = makeFifo(manager.tmp / "out");
    auto setup = manager.setup({"logs", "Echo", "-f"});
    setup.command[2] = "exec \"$@\" </dev/null >'" + fifo + "'";
    const auto log = manager.instanceHome("Echo") + "/korvane-instance.log";

    RunningProgram program(setup);
    std::ifstream lines(fifo);
    const auto append = [&](const std::string& text) {
        std::ofstream(log, std::ios::app) << text << std::flush;
    };
    std::string line;
    append("one\n");
    std::getline(lines, line);
    CHECK(line == "one");
    append("two\n");
    std::getline(lines, line);
    CHECK(line == "two");
    writeFile(log, "3\n"); // begun anew
    std::getline(lines, line);
    CHECK(line == "3");

    program.send(SIGINT);
    CHECK(program.wait().signal == SIGINT);
}

TEST_CASE("logs ends when nobody reads any more") {
    const Manager manager;
    manager.create({"command", "Echo", "/bin/echo", "--", "one"});
    manager.run({"run", "Echo"});
    const auto fifo = makeFifo(manager.tmp / "out");
    auto setup = manager.setup({"logs", "Echo", "-f"});
    setup.command[2] = "exec \"$@\" </dev/null >'" + fifo + "'";

    RunningProgram program(setup);
    {
        std::ifstream lines(fifo);
        std::string line;
        std::getline(lines, line);
        CHECK(line == "one");
    }

    CHECK(program.wait().status == 0);
}

} // namespace korvane::test
