#include "HelperScene.h"

#include <cstring>
#include <poll.h>
#include <set>
#include <sys/socket.h>
#include <sys/un.h>

// The header of glibc 2.36 does not say that its functions are C.
extern "C" {
#include <sys/pidfd.h>
}

namespace korvane::test {

using ambrel::OwnedFd;

namespace {

bool connect(const OwnedFd& socket, const Path& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strcpy(address.sun_path, path.c_str());
    return ::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) ==
           0;
}

OwnedFd newSocket() { return OwnedFd(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)); }

} // namespace

void expectBoth(BusStage& stage, const std::string& one, const std::string& other) {
    const auto first = stage.report.line();
    const auto second = stage.report.line();
    CHECK(std::set{first, second} == std::set{one, other});
}

StartedActor::StartedActor(BusStage& stage, const std::string& word, const Strings& steps)
    : Started(stage.act(steps)) {
    REQUIRE(stage.report.line() == word);
}

void configureProbe(BusStage& stage, int last) {
    stage.runCommand("exec " + quoted(probe) + " signals " + quoted(stage.report.path()) + " " +
                     std::to_string(last));
}

void awaitEnd(int process) {
    const OwnedFd end(::pidfd_open(process, 0));
    pollfd source{end.get(), POLLIN, 0};
    REQUIRE((!end || ::poll(&source, 1, -1) == 1));
}

OwnedFd connectedTo(const Path& path) {
    auto socket = newSocket();
    REQUIRE(connect(socket, path));
    return socket;
}

bool isAnswering(const Path& path) { return connect(newSocket(), path); }

} // namespace korvane::test
