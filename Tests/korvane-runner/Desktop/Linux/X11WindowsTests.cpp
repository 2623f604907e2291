#include "korvane-runner/Desktop/Linux/X11Windows.h"

#include "Ambrel/Platform/OwnedFd.h"
#include "Support/Environment.h"
#include "Support/Expect.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace ambrel;
using namespace korvane::runner;
using namespace korvane::test;

namespace {

/// A display of this process, until the end of the scope, that lets programs connect and says
/// nothing.
class SilentServer {
public:
    SilentServer() {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = ::htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        auto* const any = reinterpret_cast<sockaddr*>(&address);
        REQUIRE(::bind(listening_.get(), any, length) == 0);
        REQUIRE(::listen(listening_.get(), 8) == 0);
        REQUIRE(::getsockname(listening_.get(), any, &length) == 0);
        constexpr int portOfFirst = 6000;
        const int display = ::ntohs(address.sin_port) - portOfFirst;
        REQUIRE(display >= 0);
        display_.emplace("DISPLAY", "127.0.0.1:" + std::to_string(display));
    }

    /// Returns when a program has said what it says first.
    OwnedFd accept() const {
        OwnedFd connection(::accept4(listening_.get(), nullptr, nullptr, SOCK_CLOEXEC));
        char byte = 0;
        REQUIRE(::read(connection.get(), &byte, 1) == 1);
        return connection;
    }

private:
    OwnedFd listening_{::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)};
    std::optional<ScopedVariable> display_;
};

} // namespace

TEST_CASE("a server that does not answer holds nobody up, and is asked again when it has gone") {
    const SilentServer server;
    X11Windows windows;

    windows.bringToFront({1});
    {
        const auto first = server.accept();
        windows.bringToFront({2});
        windows.bringToFront({3});
    }
    const auto second = server.accept();
}
