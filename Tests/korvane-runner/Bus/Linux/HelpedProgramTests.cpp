#include "korvane-runner/Bus/Linux/HelpedProgram.h"

#include "Ambrel/Platform/ChildEnd.h"
#include "Support/Expect.h"
#include "Support/Waiting.h"

#include <csignal>
#include <functional>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace korvane::runner::bus;
using namespace korvane::test;
using ambrel::ChildEnd;
using Kind = HelperMessage::Kind;
using std::chrono::milliseconds;

namespace {

constexpr milliseconds noTime{0};
constexpr milliseconds anyTime{60000};

/// A helper without a program, played by a process that does `act` with its end of the channel and
/// then waits to be killed.
class Played {
public:
    explicit Played(const std::function<void(HelperChannel&)>& act = [](HelperChannel&) {})
        : channels_(HelperChannel::makePair()), id_(::fork()) {
        REQUIRE(id_ >= 0);
        if (id_ != 0) {
            channels_.second = HelperChannel::makePair().second; // the other end is the process's
            return;
        }
        channels_.first = HelperChannel::makePair().first;
        act(channels_.second);
        while (true) ::pause();
    }
    Played(const Played&) = delete;
    Played& operator=(const Played&) = delete;
    ~Played() {
        ::kill(id_, SIGKILL);
        ::waitpid(id_, nullptr, 0);
    }

    HelpedProgram program(int process = 1, std::uint64_t missed = 0) {
        return {std::move(channels_.first),
                id_,
                {.kind = Kind::started, .number = process, .signals = signalBit(SIGINT)},
                missed,
                Subreaping()};
    }
    void kill() const { REQUIRE(::kill(id_, SIGKILL) == 0); }
    int id() const { return id_; }

private:
    std::pair<HelperChannel, HelperChannel> channels_;
    pid_t id_;
};

/// A child of this process that ends with `status` when it is let go.
int child(const std::string& command) {
    const pid_t id = ::fork();
    REQUIRE(id >= 0);
    if (id == 0) {
        ::execl("/bin/sh", "sh", "-c", command.c_str(), nullptr);
        ::_exit(127);
    }
    return id;
}

} // namespace

TEST_CASE("messages come as they were sent, and the other end's end after them") {
    auto ends = HelperChannel::makePair();
    auto& one = ends.first;
    const HelperMessage messages[] = {
        {.kind = Kind::started, .number = 12, .signals = ~std::uint64_t{0}},
        {.kind = Kind::failed, .text = "Cannot start it: no"},
        {.kind = Kind::ended, .number = -1},
    };
    CHECK_FALSE(one.receive(HelperChannel::Wait::no));
    CHECK_FALSE(one.isOver());
    for (const auto& message : messages) CHECK(ends.second.send(message));
    ends.second = HelperChannel::makePair().second;

    for (const auto& message : messages) CHECK(one.receive(HelperChannel::Wait::yes) == message);
    CHECK_FALSE(one.receive(HelperChannel::Wait::yes));
    CHECK(one.isOver());
    CHECK_FALSE(one.send(messages[0]));
}

TEST_CASE("a sentence of any length comes, cut where it is no sentence any more") {
    auto [one, other] = HelperChannel::makePair();
    CHECK(other.send({.kind = Kind::failed, .text = std::string(10'000'000, 'x')}));

    const auto message = one.receive(HelperChannel::Wait::yes);

    REQUIRE(message);
    CHECK(message->text.size() > 8192);
}

TEST_CASE("a program's end is told by its helper, and by the descriptor that was opened before") {
    for (const auto kind : {Kind::ended, Kind::moved}) {
        Played helper([&](HelperChannel& channel) {
            channel.receive(HelperChannel::Wait::yes);
            channel.send({.kind = kind, .number = 7});
            if (kind == Kind::ended) return;
            channel.receive(HelperChannel::Wait::yes);
            channel.send({.kind = Kind::ended, .number = 8});
        });
        auto program = helper.program();
        const ChildEnd end(program);
        CHECK(program.isRunning());
        CHECK_FALSE(end.wait(noTime));

        program.sendSignal(SIGTERM);
        REQUIRE(end.wait(anyTime));
        if (kind == Kind::moved) {
            CHECK(program.isRunning());
            CHECK_FALSE(end.wait(noTime)); // what was told is told
            program.sendSignal(SIGTERM);
            REQUIRE(end.wait(anyTime));
        }

        CHECK_FALSE(program.isRunning());
        CHECK(program.terminationStatus() == (kind == Kind::moved ? 8 : 7));
        CHECK(end.wait(noTime)); // and remains so
        CHECK(ChildEnd(program).wait(noTime));
    }
}

TEST_CASE("signals were missed that came before the helper or before the program") {
    Played helper;
    const auto program = helper.program(1, signalBit(SIGTERM));

    CHECK(program.missed(SIGTERM));
    CHECK(program.missed(SIGINT));
    CHECK_FALSE(program.missed(SIGHUP));
    CHECK(program.processIdentifier() == helper.id());
}

TEST_CASE("what is below a helper that was killed is the runner's, with its end and its signals") {
    const TempDir tmp;
    const auto gate = makeFifo(tmp / "gate");
    Played helper;
    const int process = child("read x <" + quoted(gate) + "; exit 9");
    const auto program = helper.program(process);
    const ChildEnd end(program);

    helper.kill();
    REQUIRE(end.wait(anyTime));
    CHECK(program.isRunning());
    CHECK(program.processIdentifier() == process);
    CHECK_FALSE(end.wait(noTime));
    writeFile(gate, "x\n");

    REQUIRE(end.wait(anyTime));
    CHECK_FALSE(program.isRunning());
    CHECK(program.terminationStatus() == 9);
    CHECK(end.wait(noTime));
    CHECK(ChildEnd(program).wait(noTime));
}

TEST_CASE("what a program leaves behind after its helper was killed is not the runner's") {
    const TempDir tmp;
    const auto gate = makeFifo(tmp / "gate");
    const auto last = makeFifo(tmp / "last");
    REQUIRE(::prctl(PR_SET_CHILD_SUBREAPER, 0, 0, 0, 0) == 0);
    Played helper;
    const int process = child("read x <" + quoted(gate) + "; read x <" + quoted(last) +
                              " & echo $! >" + quoted(tmp / "orphan") + "; exit 9");
    const auto program = helper.program(process);
    const ChildEnd end(program);

    helper.kill();
    REQUIRE(end.wait(anyTime));
    REQUIRE(program.isRunning());
    writeFile(gate, "x\n");
    REQUIRE(end.wait(anyTime));
    CHECK(program.terminationStatus() == 9);
    writeFile(last, "x\n");

    // Nobody would wait for it, and it would be kept for as long as the runner is there.
    CHECK(::waitpid(std::stoi(readFile(tmp / "orphan")), nullptr, 0) == -1);
}

TEST_CASE("a process is afterwards no parent of orphans, unless it was one before") {
    for (const int before : {0, 1}) {
        CAPTURE(before);
        REQUIRE(::prctl(PR_SET_CHILD_SUBREAPER, before, 0, 0, 0) == 0);
        const auto now = [] {
            int isOne = -1;
            REQUIRE(::prctl(PR_GET_CHILD_SUBREAPER, &isOne, 0, 0, 0) == 0);
            return isOne;
        };
        {
            Subreaping first;
            const Subreaping moved(std::move(first));
            CHECK(now() == 1);
        }
        CHECK(now() == before);
    }
}

TEST_CASE("a signal that a helper took along when it was killed reaches the program all the same") {
    Played helper([](HelperChannel& channel) {
        channel.receive(HelperChannel::Wait::yes);
        channel.send({.kind = Kind::signaled});
    });
    const int process = child("kill -STOP $$; exit 9");
    int status = 0;
    REQUIRE(::waitpid(process, &status, WUNTRACED) == process);
    const auto program = helper.program(process);
    const ChildEnd end(program);
    program.sendSignal(SIGCONT); // the helper says that it passed this one on
    REQUIRE(end.wait(anyTime));
    CHECK(program.isRunning());
    program.sendSignal(SIGKILL);

    helper.kill();
    while (program.isRunning()) REQUIRE(end.wait(anyTime));

    CHECK(program.terminationStatus() == SIGKILL); // and not 9
}

TEST_CASE("the status of a program that nobody can ask about any more is lost") {
    Played helper;
    const int process = child("exit 0");
    const auto program = helper.program(process);
    REQUIRE(::waitpid(process, nullptr, 0) == process);

    helper.kill();
    const ChildEnd end(program);
    while (program.isRunning()) REQUIRE(end.wait(anyTime));

    CHECK(program.terminationStatus() == 1);
}
