#include "../Messages.h"
#include "HelperScene.h"

#include "Support/Waiting.h"

#include <array>
#include <csignal>
#include <sstream>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace ambrel;
using namespace korvane::test;

namespace {

/// What an actor does that waits at the gate, and asks for a name then.
Strings waitingAt(const Path& gate) {
    return {"say:there", "wait:" + gate, "own:org.example.Name", "exit:0"};
}

/// How much memory the process has addresses for, in bytes. No sanitized process can be bounded so.
[[maybe_unused]] rlim_t memoryOf(int process) {
    rlim_t pages = 0;
    std::istringstream(readFile("/proc/" + std::to_string(process) + "/statm")) >> pages;
    return pages * static_cast<rlim_t>(::sysconf(_SC_PAGESIZE));
}

/// What programs say to the bus before they are in.
std::string handshake() {
    std::string user;
    for (const char digit : std::to_string(::getuid())) user += {'3', digit}; // hexadecimal
    return std::string(1, '\0') + "AUTH EXTERNAL " + user + "\r\nBEGIN\r\n";
}

/// How many of the bytes somebody takes, who may end the connection before the last one.
std::size_t writtenTo(const OwnedFd& socket, std::string_view bytes) {
    std::size_t written = 0;
    while (written < bytes.size()) {
        const auto rest = bytes.substr(written);
        const auto size = ::send(socket.get(), rest.data(), rest.size(), MSG_NOSIGNAL);
        if (size <= 0) break;
        written += static_cast<std::size_t>(size);
    }
    return written;
}

} // namespace

TEST_CASE("what a program leaves behind keeps its names, and the runner ends with the program") {
    BusStage stage;
    const auto gate = makeFifo(stage.gate("gate"));
    stage.act({"fork:3", "wait:" + gate, "own:org.example.Left", "exit:0"});

    // Its streams are read to their end, which what is left behind does not keep open.
    CHECK(run({stage.wrapper.runner}).status == 3);
    CHECK(stage.runners().size() == 1);
    stage.open(gate);

    CHECK(stage.report.line() == owned);
    stage.awaitHelpers();
    CHECK(namesIn(stage.runtime + "/korvane/bus").empty());
}

TEST_CASE("what a program leaves behind has its names though its first thread has ended") {
    BusStage stage;
    const auto gate = makeFifo(stage.gate("gate"));
    StartedActor runner(
        stage, "there",
        {"fork:3", "detach", "say:there", "wait:" + gate, "own:org.example.Left", "exit:0"});
    CHECK(runner.waitStatus() == 3);

    stage.open(gate);

    CHECK(stage.report.line() == owned);
    stage.awaitHelpers();
}

// The sanitizer of undefined behaviour looks at objects through a pipe, and takes it for a fault
// where there is no descriptor for that.
#ifndef __SANITIZE_ADDRESS__
TEST_CASE("a helper that cannot look at what a program leaves behind stays for it") {
    BusStage stage;
    const auto first = makeFifo(stage.gate("first"));
    const auto gate = makeFifo(stage.gate("gate"));
    StartedActor runner(
        stage, "there",
        {"say:there", "wait:" + first, "fork:3", "wait:" + gate, "own:org.example.Left", "exit:0"});
    const int helper = stage.helperBeside(runner.id());
    rlimit before{};
    REQUIRE(::prlimit(helper, RLIMIT_NOFILE, nullptr, &before) == 0);
    const rlimit none{0, before.rlim_max};
    REQUIRE(::prlimit(helper, RLIMIT_NOFILE, &none, nullptr) == 0);

    stage.open(first);
    CHECK(runner.waitStatus() == 3);
    REQUIRE(::prlimit(helper, RLIMIT_NOFILE, &before, nullptr) == 0);
    stage.open(gate);

    CHECK(stage.report.line() == owned);
    stage.awaitHelpers();
}
#endif

TEST_CASE("what is sent to all of a terminal's group ends no helper") {
    BusStage stage;
    const auto gate = makeFifo(stage.gate("gate"));
    StartedActor runner(stage, "there", waitingAt(gate));

    for (const int signal : {SIGINT, SIGQUIT, SIGHUP, SIGTSTP, SIGTTOU, SIGPIPE, SIGUSR1}) {
        REQUIRE(::kill(stage.helperBeside(runner.id()), signal) == 0);
    }
    stage.open(gate);

    CHECK(stage.report.line() == owned);
    CHECK(runner.waitStatus() == 0);
    stage.awaitHelpers();
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST_CASE("a helper without memory for one program serves the others") {
    BusStage stage;
    const auto gate = makeFifo(stage.gate("gate"));
    StartedActor runner(stage, "there", waitingAt(gate));
    const int helper = stage.helperBeside(runner.id());
    constexpr rlim_t mebibyte = 1024 * 1024;
    const rlimit little{memoryOf(helper) + mebibyte, RLIM_INFINITY};
    REQUIRE(::prlimit(helper, RLIMIT_AS, &little, nullptr) == 0);

    // Of what is said to the bus itself all is read before it goes on.
    auto call = busCall("AddMatch").with(8, "s");
    call.bodyLength = 4 * mebibyte;
    const auto greedy = connectedTo(stage.socketFolder() + "/socket");
    const auto said = handshake() + call.header() + std::string(call.bodyLength, 'x');
    CHECK(writtenTo(greedy, said) < said.size());
    stage.open(gate);

    CHECK(stage.report.line() == owned);
    CHECK(runner.waitStatus() == 0);
    stage.awaitHelpers();
}
#endif

TEST_CASE("who waits to be let in when the program ends is let in, also without the folder") {
    BusStage stage;
    const auto gate = makeFifo(stage.gate("gate"));
    stage.act({"process", "wait:" + gate, "exit:0"});
    Started runner(stage);
    const int program = std::stoi(stage.report.line());
    const int helper = stage.helperBeside(runner.id());

    // The helper hears of the program's end first, and of who has come since only when it looks.
    REQUIRE(::kill(helper, SIGSTOP) == 0);
    stage.open(gate);
    awaitEnd(program);
    const auto client = connectedTo(stage.socketFolder() + "/socket");
    REQUIRE(run({"/bin/rm", "-r", stage.socketFolder()}).status == 0);
    REQUIRE(::kill(helper, SIGCONT) == 0);

    CHECK(writtenTo(client, handshake()) == handshake().size());
    std::array<char, 3> answer{};
    CHECK(::recv(client.get(), answer.data(), answer.size(), MSG_WAITALL) == 3);
    CHECK(std::string(answer.data(), answer.size()) == "OK ");
    CHECK(runner.waitStatus() == 0);
    CHECK(stage.runners() == std::vector<int>{helper});
    CHECK(::shutdown(client.get(), SHUT_RDWR) == 0);
    stage.awaitHelpers();
}

TEST_CASE("a runner that is killed costs the program nothing") {
    BusStage stage;
    const auto gate = makeFifo(stage.gate("gate"));
    StartedActor runner(stage, "there", waitingAt(gate));

    runner.send(SIGKILL);
    CHECK(WIFSIGNALED(runner.wait()));
    stage.open(gate);

    CHECK(stage.report.line() == owned);
    stage.awaitHelpers();
}
