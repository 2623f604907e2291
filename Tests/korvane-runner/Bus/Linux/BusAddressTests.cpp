#include "korvane-runner/Bus/Linux/BusAddress.h"

#include "Support/Files.h"
#include "Support/TempDir.h"

#include <cstring>
#include <doctest/doctest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <vector>

namespace korvane::test {

using namespace korvane::runner::bus;

namespace {

/// "file NAME", "abstract NAME" or "none".
std::string told(const std::optional<BusAddress>& address) {
    if (!address) return "none";
    return (address->kind == BusAddress::Kind::file ? "file " : "abstract ") + address->name;
}

ambrel::OwnedFd listeningAt(const BusAddress& place) {
    ambrel::OwnedFd socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const bool isFile = place.kind == BusAddress::Kind::file;
    std::memcpy(address.sun_path + (isFile ? 0 : 1), place.name.data(), place.name.size());
    const auto size = offsetof(sockaddr_un, sun_path) + place.name.size() + 1;
    REQUIRE(::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address),
                   static_cast<socklen_t>(size)) == 0);
    REQUIRE(::listen(socket.get(), 1) == 0);
    return socket;
}

} // namespace

TEST_CASE("the first address that is a socket's is the bus's") {
    struct Row {
        std::string text;
        std::string expected;
    };
    const std::vector<Row> rows{
        {"unix:path=/run/user/1/bus", "file /run/user/1/bus"},
        {"unix:path=/run/user/1/bus,guid=0123", "file /run/user/1/bus"},
        {"unix:guid=0123,path=/run/user/1/bus", "file /run/user/1/bus"},
        {"unix:abstract=/tmp/dbus-x,guid=0123", "abstract /tmp/dbus-x"},
        {"unix:runtime=yes", "file /run/user/7/bus"},
        {"unix:runtime=no", "none"},
        {"unix:path=/a%20b%2Fc", "file /a b/c"},
        {"unix:path=/a%2", "none"},
        {"unix:path=/a%zz", "none"},
        {"unix:path=/a%00b", "none"},
        {"tcp:host=localhost,port=1;unix:path=/b", "file /b"},
        {"autolaunch:", "none"},
        {"unixexec:path=/bin/x", "none"},
        {"unix:dir=/tmp", "none"},
        {"unix:path=relative", "none"},
        {"unix:path=", "none"},
        {"unix:path=/" + std::string(106, 'a'), "file /" + std::string(106, 'a')},
        {"unix:path=/" + std::string(107, 'a'), "none"},
        {"unix:path=/" + std::string(107, 'a') + ";unix:path=/b", "file /b"},
        {";;unix:path=/b;", "file /b"},
        {"unix", "none"},
        {"", "none"},
    };
    for (const auto& row : rows) {
        CAPTURE(row.text);
        CHECK(told(BusAddress::parse(row.text, "/run/user/7")) == row.expected);
    }
    CHECK(told(BusAddress::parse("unix:runtime=yes", "")) == "none");
}

TEST_CASE("an address is told so that it is read the same") {
    for (const auto& address : {BusAddress{BusAddress::Kind::file, "/run/a b,c;d=e%f\xC3\xA4"},
                                BusAddress{BusAddress::Kind::abstract, "/tmp/x"}}) {
        CHECK(BusAddress::parse(address.text(), "") == address);
    }
    CHECK(BusAddress{BusAddress::Kind::file, "/run/a b"}.text() == "unix:path=/run/a%20b");
}

TEST_CASE("without an address the bus is the socket in the runtime folder, if it is there") {
    const TempDir tmp;

    CHECK(told(BusAddress::ofSession("", tmp.path())) == "none");
    writeFile(tmp / "bus", "no socket");
    CHECK(told(BusAddress::ofSession("", tmp.path())) == "none");
    REQUIRE(::remove((tmp / "bus").c_str()) == 0);
    const auto socket = listeningAt({BusAddress::Kind::file, tmp / "bus"});
    CHECK(told(BusAddress::ofSession("", tmp.path())) == "file " + (tmp / "bus"));
    CHECK(told(BusAddress::ofSession("unix:path=/b", tmp.path())) == "file /b");
    CHECK(told(BusAddress::ofSession("autolaunch:", tmp.path())) == "none");
    CHECK(told(BusAddress::ofSession("", "")) == "none");
}

TEST_CASE("both kinds of sockets are connected to without waiting") {
    const TempDir tmp;
    for (const auto& address : {BusAddress{BusAddress::Kind::file, tmp / "bus"},
                                BusAddress{BusAddress::Kind::abstract, tmp / "abstract"}}) {
        CHECK(connectTo(address).error != 0);
        const auto listening = listeningAt(address);

        std::vector<Connecting> all;
        do {
            all.push_back(connectTo(address));
        } while (all.back().socket);

        // More than those that nobody takes are not let in.
        CHECK(all.size() > 1);
        CHECK(all.back().error == EAGAIN);
    }
}

} // namespace korvane::test
