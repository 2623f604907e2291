#include "Allocations.h"
#include "ServiceCalls.h"
#include "korvane-runner/Bus/Linux/Entrance.h"
#include "korvane-runner/Bus/Linux/SocketEnd.h"
#include "korvane-runner/Bus/MessageStream.h"

#include <algorithm>
#include <array>
#include <fcntl.h>
#include <new>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>
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

/// Wants all messages whole.
class Collector final : public MessageReceiver {
public:
    Checked<Body> beginMessage(const MessageHeader& /*header*/,
                               std::string_view /*head*/) override {
        return Body::collected;
    }
    Fault message(const MessageHeader& /*header*/, std::string_view bytes) override {
        longest = std::max(longest, bytes.size());
        return {};
    }
    void bodyPart(std::string_view /*bytes*/, Part /*part*/) override {}

    std::size_t longest = 0;
};

/// A pipe that tells whether an end that can be written into is open in any process.
struct WatchedPipe {
    WatchedPipe() {
        std::array<int, 2> ends{};
        REQUIRE(::pipe2(ends.data(), O_CLOEXEC) == 0);
        reading = ambrel::OwnedFd(ends[0]);
        writing = ambrel::OwnedFd(ends[1]);
    }
    bool canBeWrittenInto() const {
        pollfd source{reading.get(), 0, 0};
        return ::poll(&source, 1, 0) == 0;
    }

    ambrel::OwnedFd reading;
    ambrel::OwnedFd writing;
};

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

TEST_CASE("what a long message has taken is given back when it has been read") {
    constexpr std::size_t length = 1'000'000;
    const auto bytes = callTo("org.example.Editor")
                           .withBody("ay", Bytes().array(std::string(length, 'x'), 1))
                           .bytes();
    Collector collector;
    MessageStream stream;
    const auto before = allocated;

    CHECK(stream.take(std::string_view(bytes).substr(0, length), collector) == Fault{});
    CHECK(allocated > before + length / 2);
    CHECK(stream.take(std::string_view(bytes).substr(length), collector) == Fault{});

    CHECK(collector.longest == bytes.size());
    CHECK(allocated < before + length / 100);
}

TEST_CASE("descriptors that there is no memory for are closed") {
    std::array<int, 2> sockets{};
    REQUIRE(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets.data()) == 0);
    const ambrel::OwnedFd far(sockets[0]);
    PollLoop loop;
    SocketEnd end(loop, ambrel::OwnedFd(sockets[1]), [](PollLoop::Event) {});
    WatchedPipe pipe;
    OutputQueue queue;
    Descriptors both;
    for (int i = 0; i < 2; ++i) both.emplace_back(::dup(pipe.writing.get()));
    queue.push("x", std::move(both));
    REQUIRE(queue.writeTo(far.get()) == OutputQueue::Written::all);
    pipe.writing = {};
    REQUIRE(pipe.canBeWrittenInto());
    std::array<char, 10> room{};

    allocationsLeft = 1;
    CHECK_THROWS_AS(end.read(room), std::bad_alloc);
    allocationsLeft = -1;

    CHECK_FALSE(pipe.canBeWrittenInto());
}

TEST_CASE("whoever comes where there was no memory to listen is let in later") {
    const TempDir tmp;
    PollLoop loop;
    int come = 0;
    Entrance entrance(loop, {.isOfService = [](std::int64_t) { return false; },
                             .program = [&](ambrel::OwnedFd, Entrance::Visitor) { ++come; },
                             .changed = [] {}});
    auto listening = ProxyWorld::listenAt(tmp / "socket", 1);

    allocationsLeft = 1;
    CHECK_THROWS_AS(entrance.listenOn(std::move(listening)), std::bad_alloc);
    allocationsLeft = -1;
    const auto connecting = connectTo({BusAddress::Kind::file, tmp / "socket"});
    REQUIRE(connecting.socket);
    REQUIRE(::send(connecting.socket.get(), "\0", 1, MSG_NOSIGNAL) == 1);

    constexpr std::chrono::seconds aLongTime(60);
    const auto begin = PollLoop::Clock::now();
    while (come == 0) {
        REQUIRE(loop.runOnce(aLongTime));
        REQUIRE(PollLoop::Clock::now() - begin < aLongTime);
    }
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
