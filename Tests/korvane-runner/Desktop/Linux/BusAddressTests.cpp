#include "korvane-runner/Desktop/Linux/BusAddress.h"

#include "Support/Environment.h"
#include "Support/Expect.h"
#include "Support/Files.h"
#include "Support/TempDir.h"

#include <cstdlib>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace ambrel;
using namespace korvane::runner;
using namespace korvane::test;

namespace {

void makeSocket(const Path& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    REQUIRE(path.size() < sizeof address.sun_path);
    path.copy(address.sun_path, path.size());
    const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    REQUIRE(::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0);
    ::close(socket);
}

} // namespace

TEST_CASE("a bus whose socket is not there is none") {
    const TempDir tmp;
    const auto socket = "unix:path=" + writeFile(tmp / "bus");
    const auto lost = "unix:path=" + tmp / "gone/bus";

    CHECK(usableBusAddress(socket) == socket);
    CHECK(usableBusAddress(socket + ",guid=0123") == socket + ",guid=0123");
    for (const auto& address : {lost, lost + ",guid=0123", lost + ";" + lost,
                                std::string("unix:path="), std::string(";"), std::string()}) {
        CAPTURE(address);
        CHECK(usableBusAddress(address).empty());
    }
}

TEST_CASE("a bus right below the root is none: its folder is handed to the engine's helper") {
    for (const char* address : {"unix:path=/usr", "unix:path=//usr", "unix:path=/./usr",
                                "unix:path=usr", "unix:path=/"}) {
        CAPTURE(address);
        CHECK(usableBusAddress(address).empty());
    }
}

TEST_CASE("of several addresses of a bus the first that is of use is taken") {
    const TempDir tmp;
    const auto socket = "unix:path=" + writeFile(tmp / "bus");
    const auto lost = "unix:path=" + tmp / "gone/bus";

    CHECK(usableBusAddress(lost + ";" + socket) == socket);
    CHECK(usableBusAddress(socket + ";" + lost) == socket);
    CHECK(usableBusAddress(lost + ";;tcp:host=localhost,port=1;" + socket) ==
          "tcp:host=localhost,port=1");
}

TEST_CASE("an address that names no file is nobody's business here") {
    for (const char* address : {"unix:abstract=/tmp/x", "autolaunch:", "disabled:", "nonsense"}) {
        CAPTURE(address);
        CHECK(usableBusAddress(address) == address);
    }
}

TEST_CASE("what is left of the buses' addresses stands in the environment") {
    const TempDir tmp;
    const auto socket = "unix:path=" + writeFile(tmp / "bus");
    const ScopedVariable session("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus");
    const ScopedVariable accessibility("AT_SPI_BUS_ADDRESS", socket);

    forgetLostBuses();

    CHECK(std::getenv("DBUS_SESSION_BUS_ADDRESS") == nullptr);
    CHECK(std::getenv("AT_SPI_BUS_ADDRESS") == socket);
}

TEST_CASE("an address of the session's bus is looked for where no bus has to be started for it") {
    const TempDir tmp;
    const auto has = [&](const std::optional<std::string>& address, const std::string& folder) {
        const ScopedVariable session("DBUS_SESSION_BUS_ADDRESS", address);
        const ScopedVariable runtime("XDG_RUNTIME_DIR", folder);
        return hasSessionBusAddress();
    };
    const auto socketFolder = makeFolder(tmp / "socket");
    makeSocket(socketFolder + "/bus");
    writeFile(tmp / "file/bus");

    CHECK(has({}, socketFolder));
    CHECK_FALSE(has({}, tmp / "file"));
    CHECK_FALSE(has({}, tmp / "gone"));
    CHECK_FALSE(has({}, ""));
    CHECK(has("unix:path=/nonexistent/bus", tmp / "gone"));
    CHECK_FALSE(has("autolaunch:", socketFolder));
    CHECK_FALSE(has("unix:path=/nonexistent/bus;autolaunch:scope=install-path", socketFolder));
}
