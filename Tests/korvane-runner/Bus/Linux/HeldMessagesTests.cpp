#include "AllDescriptors.h"
#include "ServiceCalls.h"

#include "Support/Sweep.h"

#include <algorithm>
#include <fcntl.h>
#include <malloc.h>

namespace korvane::test {

using namespace korvane::runner::bus;

namespace {

/// In bytes; nothing under a sanitizer, which has a heap of its own.
std::size_t heapInUse() {
    const auto heap = ::mallinfo2();
    return heap.uordblks + heap.hblkhd;
}

} // namespace

TEST_CASE("messages wait for their service, with their descriptors, in their order") {
    ProxyWorld world({.services = {service}});
    RawClient first(world);
    RawClient second(world);
    first.join();
    second.join();

    first.send(callToService(10).withNumber(9, 1).bytes(), {0});
    first.send(callToService(11).bytes());
    CHECK(first.ask(busCall("GetId")).header.type == MessageType::methodReturn);
    second.send(callToService(12).withBody("ay", Bytes().array(std::string(300'000, 'x'))).bytes());
    CHECK(second.ask(busCall("GetId")).header.type == MessageType::methodReturn);
    CHECK(world.services().started == std::vector<std::string>{service});
    RawClient started(world);
    CHECK(started.join().requestName(service) == 1);

    std::map<std::string, std::vector<std::uint32_t>> serials;
    for (int i = 0; i < 3; ++i) {
        const auto message = started.receive();
        CHECK(message.header.destination == service);
        CHECK(message.descriptors.size() == (message.header.serial == 10 ? 1 : 0));
        CHECK(message.header.bodyLength == (message.header.serial == 12 ? 300'004 : 0));
        serials[std::string(message.header.sender)].push_back(message.header.serial);
    }
    CHECK(serials[first.uniqueName()] == std::vector<std::uint32_t>{10, 11});
    CHECK(serials[second.uniqueName()] == std::vector<std::uint32_t>{12});
    first.send(callToService(13).bytes());
    CHECK(started.receive().header.serial == 13);
    CHECK(world.services().started.size() == 1);
}

TEST_CASE("a message that has waited does not come between the bytes of another one") {
    ProxyWorld world({.services = {service}});
    RawClient editor(world);
    RawClient caller(world);
    RawClient started(world);
    REQUIRE(editor.join().requestName("org.example.Editor") == 1);
    caller.join().send(callToService(10).bytes());
    const auto longMessage = callTo("org.example.Editor")
                                 .withBody("ay", Bytes().array(std::string(200'000, 'x')))
                                 .bytes();

    caller.send(longMessage.substr(0, 100'000));
    started.join().requestName(service);
    caller.send(longMessage.substr(100'000));

    CHECK(started.receive().header.serial == 10);
    CHECK(editor.receive().body() == Bytes().array(std::string(200'000, 'x')).str());
    CHECK(caller.ask(busCall("GetId")).header.type == MessageType::methodReturn);
}

TEST_CASE("more than may wait is refused") {
    ProxyWorld world({.services = {service}, .limits = {.messages = 2}});
    RawClient client(world);
    client.join();

    for (const std::uint32_t serial : {10U, 11U, 12U}) client.send(callToService(serial).bytes());

    const auto answer = client.receive();
    CHECK(answer.header.replySerial == 12);
    CHECK(answer.header.errorName == "org.freedesktop.DBus.Error.LimitsExceeded");
    RawClient started(world);
    started.join().requestName(service);
    CHECK(started.receive().header.serial == 10);
    CHECK(started.receive().header.serial == 11);
}

TEST_CASE("a message that is too long to wait is refused without being collected") {
    ProxyWorld world({.services = {service}});
    RawClient client(world);
    client.join();
    auto call = callToService(10).withBody("ayay", Bytes());
    call.bodyLength = 70'000'000;
    const std::string piece(1'000'000, '\0');

    client.send(call.header());
    const auto before = heapInUse();
    std::size_t most = 0;
    for (int i = 0; i < 70; ++i) {
        client.send(piece);
        most = std::max(most, heapInUse());
    }

    CHECK(most < before + 10'000'000);
    const auto answer = client.receive();
    CHECK(answer.header.replySerial == 10);
    CHECK(answer.header.errorName == "org.freedesktop.DBus.Error.LimitsExceeded");
    CHECK(client.ask(busCall("GetId")).header.type == MessageType::methodReturn);
    CHECK(world.services().started.empty());
    CHECK(world.highestLoad() < 512 * 1024);
}

TEST_CASE("messages that have only begun take the room of those that wait") {
    ProxyWorld world({.services = {service}, .limits = {.bytes = 3'000'000}});
    auto call = callToService(10).withBody("ay", Bytes());
    call.bodyLength = 2'000'000;
    const auto whole = call.header() + "\x7c\x84\x1e" + std::string(1'999'997, '\0'); // an array
    std::optional<RawClient> begins(world);
    begins->join();
    begins->send(whole.substr(0, 1'000'000));
    RawClient refused(world);
    refused.join();
    refused.send(whole);
    CHECK(refused.receive().header.errorName == "org.freedesktop.DBus.Error.LimitsExceeded");
    CHECK(world.services().started.empty());

    begins.reset();
    world.waitUntil([&] { return world.proxy().counts().programs == 1; });
    refused.send(whole);
    world.waitUntil([&] { return !world.services().started.empty(); });
    RawClient small(world);
    small.join();
    small.send(callToService(11).bytes());

    RawClient started(world);
    started.join().requestName(service);
    const auto one = started.receive().header.serial;
    const auto other = started.receive().header.serial;
    CHECK(std::minmax(one, other) == std::minmax(10U, 11U));
}

TEST_CASE("not many descriptors wait") {
    const AllDescriptors limit;
    ProxyWorld world({.services = {service}});
    RawClient client(world);
    client.join();

    for (std::uint32_t serial = 10; serial < 16; ++serial) {
        client.send(callToService(serial).withNumber(9, 200).bytes(), std::vector<int>(200, 0));
    }

    const auto answer = client.receive();
    CHECK(answer.header.replySerial == 15);
    CHECK(answer.header.errorName == "org.freedesktop.DBus.Error.LimitsExceeded");
}

TEST_CASE("no child gets a descriptor that waits here") {
    const auto inherited = [] {
        int count = 0;
        for (int fd = 0; fd < 1024; ++fd) {
            const int flags = ::fcntl(fd, F_GETFD);
            if (flags >= 0 && (flags & FD_CLOEXEC) == 0) ++count;
        }
        return count;
    };
    ProxyWorld world({.services = {service}});
    RawClient client(world);
    client.join();
    const int before = inherited();

    client.send(callToService(10).withNumber(9, 3).bytes(), {0, 0, 0});
    world.waitUntil([&] { return !world.services().started.empty(); });

    CHECK(inherited() == before);
}

TEST_CASE("what a program that has left had waiting is not sent") {
    ProxyWorld world({.services = {service}});
    RawClient client(world);
    RawClient second(world);
    client.join();
    const auto descriptors = openDescriptors();
    client.send(callToService(10).withNumber(9, 1).bytes(), {0});
    world.waitUntil([&] { return !world.services().started.empty(); });
    second.join().send(callToService(11).bytes());
    CHECK(second.ask(busCall("GetId")).header.type == MessageType::methodReturn);

    client.close();
    world.waitUntil([&] { return world.proxy().counts().programs == 1; });
    // The one that has left had three; the other has got its connection to the bus.
    CHECK(openDescriptors() == descriptors - 3 + 1);
    RawClient started(world);
    started.join().requestName(service);

    CHECK(started.receive().header.serial == 11);
}

} // namespace korvane::test
