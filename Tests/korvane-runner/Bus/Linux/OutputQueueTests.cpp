#include "korvane-runner/Bus/Linux/OutputQueue.h"

#include "Receiving.h"

#include <array>
#include <doctest/doctest.h>
#include <sys/socket.h>
#include <unistd.h>

namespace korvane::test {

using namespace korvane::runner::bus;
using Message = OutputQueue::Message;
using Written = OutputQueue::Written;

namespace {

struct Sockets {
    Sockets() {
        std::array<int, 2> ends{};
        REQUIRE(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends.data()) ==
                0);
        one = ambrel::OwnedFd(ends[0]);
        other = ambrel::OwnedFd(ends[1]);
    }

    /// What one call reads, and behind it the number of descriptors.
    std::string readOnce() const {
        std::string bytes;
        Descriptors descriptors;
        if (receiveOnce(other, 4096, bytes, descriptors) < 0) return "nothing";
        return bytes + " " + std::to_string(descriptors.size());
    }

    ambrel::OwnedFd one;
    ambrel::OwnedFd other;
};

Descriptors descriptors(int count) {
    Descriptors result;
    for (int i = 0; i < count; ++i) result.emplace_back(::dup(0));
    return result;
}

} // namespace

TEST_CASE("messages with descriptors are written apart from others") {
    const Sockets sockets;
    OutputQueue queue;
    queue.push("a");
    queue.push("b");
    queue.push("c", descriptors(2));
    queue.push("d");
    queue.push("e", descriptors(1));

    CHECK(queue.writeTo(sockets.one.get()) == Written::all);

    CHECK(queue.isEmpty());
    CHECK(queue.load() == 0);
    // Without a look at descriptors a read would have got all of it.
    CHECK(sockets.readOnce() == "abc 2");
    CHECK(sockets.readOnce() == "de 1");
}

TEST_CASE("what is inserted waits for the end of a message that goes on") {
    const Sockets sockets;
    OutputQueue queue;
    queue.insert("1");
    queue.push("begin", {}, Message::goesOn);
    queue.insert("2");
    queue.insert(std::string(100'000, '3'), descriptors(1));
    queue.push("middle", {}, Message::goesOn);
    CHECK(queue.inserted() == 100'002);

    CHECK(queue.writeTo(sockets.one.get()) == Written::all);
    CHECK(sockets.readOnce() == "1beginmiddle 0");
    queue.push("end");
    queue.push("next");
    CHECK(queue.load() > 100'000);
    CHECK(queue.writeTo(sockets.one.get()) == Written::all);

    CHECK(sockets.readOnce() == "end2" + std::string(4092, '3') + " 1");
    CHECK(queue.inserted() == 0);
}

TEST_CASE("a queue counts what it has until that is written") {
    const Sockets sockets;
    OutputQueue queue;
    queue.push(std::string(10'000'000, 'x'));
    queue.push("x", descriptors(3));
    CHECK(queue.load() == 10'000'001 + 3 * 4096);

    CHECK(queue.writeTo(sockets.one.get()) == Written::some);
    CHECK(queue.load() < 10'000'000);
    CHECK(queue.load() > 0);
    std::size_t read = 0;
    while (read < 10'000'001) {
        queue.writeTo(sockets.one.get());
        std::array<char, 65536> room{};
        const auto size = ::recv(sockets.other.get(), room.data(), room.size(), 0);
        REQUIRE(size > 0);
        read += static_cast<std::size_t>(size);
    }

    CHECK(queue.isEmpty());
    CHECK(queue.load() == 0);
}

TEST_CASE("a queue for somebody who has gone fails, and keeps nothing when it is closed") {
    Sockets sockets;
    sockets.other = {};
    OutputQueue queue;
    queue.push("x", descriptors(1));

    CHECK(queue.writeTo(sockets.one.get()) == Written::failed);
    queue.close();
    queue.push("x");
    queue.insert("x");

    CHECK(queue.isEmpty());
    CHECK(queue.load() == 0);
    CHECK(queue.inserted() == 0);
}

} // namespace korvane::test
