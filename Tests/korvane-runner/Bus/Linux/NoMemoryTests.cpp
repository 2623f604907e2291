#include "Allocations.h"
#include "ServiceCalls.h"

#include <poll.h>
#include <sys/socket.h>
#include <utility>

using namespace korvane::runner::bus;
using namespace korvane::test;

namespace {

/// Whether it has been answered the last of what it has said, or its connection was ended.
bool isDone(const RawClient& client, std::string& got) {
    pollfd source{client.socket(), POLLIN, 0};
    while (::poll(&source, 1, 0) == 1) {
        std::string piece(4096, '\0');
        const auto size = ::recv(client.socket(), piece.data(), piece.size(), MSG_DONTWAIT);
        if (size <= 0) return true;
        got += piece.substr(0, static_cast<std::size_t>(size));
    }
    return got.find("org.freedesktop.DBus.Error.") != std::string::npos;
}

} // namespace

TEST_CASE("a header takes no memory to read, however many fields it has") {
    RawMessage message = callTo("org.example.Editor");
    for (int i = 0; i < 1000; ++i) message.with(200, "y", "x");
    const auto bytes = message.bytes();

    allocationsLeft = 1;
    const auto header = MessageHeader::read(bytes);
    const bool isNoneTaken = std::exchange(allocationsLeft, -1) == 1;

    CHECK(header);
    CHECK(isNoneTaken);
}

TEST_CASE("a program that there is no memory for costs nobody else anything") {
    ProxyWorld world({.services = {service}});
    world.services().reason = "Permission denied";
    RawClient other(world);
    other.join();
    const auto words = handshake() + hello().bytes() + requestNameCall("org.example.Name").bytes() +
                       callTo(service).bytes();
    bool isEnough = false;
    int lost = 0;
    for (long failing = 1; !isEnough; ++failing) {
        CAPTURE(failing);
        RawClient client(world);
        REQUIRE(client.sendSome(words) == words.size());
        std::string got;

        long left = failing;
        while (!isDone(client, got)) {
            allocationsLeft = left;
            const bool runs = world.loop().runOnce(std::chrono::seconds(30));
            left = std::exchange(allocationsLeft, -1);
            REQUIRE(runs);
        }
        isEnough = left > 0;
        lost += got.find("Spawn.ExecFailed") == std::string::npos ? 1 : 0;

        CHECK(other.ask(busCall("GetId")).header.type == MessageType::methodReturn);
        client.close();
        world.waitUntil([&] { return world.proxy().counts().programs <= 1; });
    }
    CHECK(lost > 20);
    RawClient again(world);
    CHECK(again.join().requestName("org.example.Name") == 1);
}
