#include "AllDescriptors.h"
#include "RawClient.h"
#include "Support/Sweep.h"

#include <array>
#include <fcntl.h>
#include <unistd.h>

namespace korvane::test {

using namespace korvane::runner::bus;

namespace {

struct PipeEnds {
    ambrel::OwnedFd read;
    ambrel::OwnedFd write;
};

PipeEnds newPipe() {
    std::array<int, 2> ends{};
    REQUIRE(::pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) == 0);
    return {ambrel::OwnedFd(ends[0]), ambrel::OwnedFd(ends[1])};
}

/// Whether both are the same pipe.
bool isWriteEndOf(const ambrel::OwnedFd& write, const PipeEnds& pipe) {
    char byte = 0;
    return ::write(write.get(), "x", 1) == 1 && ::read(pipe.read.get(), &byte, 1) == 1;
}

/// That the pipe's end has come with the message, and nothing else.
void checkBrings(const Received& message, const PipeEnds& pipe) {
    REQUIRE(message.descriptors.size() == 1);
    CHECK(isWriteEndOf(message.descriptors[0], pipe));
}

RawMessage withDescriptors(std::uint32_t count, std::size_t body = 0) {
    auto message = callTo("org.example.Editor").withNumber(9, count);
    message.flags = noReplyExpected; // so that the bus takes the same serial again
    if (body > 0) message.withBody("ay", Bytes().array(std::string(body, 'x')));
    return message;
}

/// Two programs that are in, one of which has the name "org.example.Editor".
struct Pair {
    explicit Pair(ProxyWorld& world) : editor(world), caller(world) {
        REQUIRE(editor.join().requestName("org.example.Editor") == 1);
        caller.join();
    }

    RawClient editor;
    RawClient caller;
};

} // namespace

TEST_CASE("descriptors arrive with their messages, and none is left here") {
    ProxyWorld world;
    Pair programs(world);
    const auto descriptors = openDescriptors();
    {
        const auto first = newPipe();
        const auto second = newPipe();
        const auto third = newPipe();

        programs.caller.send(withDescriptors(2).bytes() + withDescriptors(0).bytes(),
                             {first.write.get(), second.write.get()});
        programs.caller.send(withDescriptors(1, 300'000).bytes(), {third.write.get()});

        const auto two = programs.editor.receive();
        REQUIRE(two.descriptors.size() == 2);
        CHECK(isWriteEndOf(two.descriptors[0], first));
        CHECK(isWriteEndOf(two.descriptors[1], second));
        CHECK(programs.editor.receive().descriptors.empty());
        const auto one = programs.editor.receive();
        CHECK(one.header.bodyLength == 300'004);
        checkBrings(one, third);
    }
    CHECK(openDescriptors() == descriptors);
}

TEST_CASE("as many descriptors as a write takes arrive") {
    ProxyWorld world;
    Pair programs(world);
    const std::vector<int> many(mostDescriptors, 0);

    programs.caller.send(withDescriptors(mostDescriptors).bytes(), many);
    programs.caller.send(withDescriptors(mostDescriptors).bytes(), many);

    CHECK(programs.editor.receive().descriptors.size() == mostDescriptors);
    CHECK(programs.editor.receive().descriptors.size() == mostDescriptors);
}

TEST_CASE("descriptors reach the user's own programs, and come from there") {
    ProxyWorld world;
    RawClient users(world, At::bus);
    RawClient own(world);
    users.join();
    own.join();
    const auto pipe = newPipe();

    auto there = callTo(users.uniqueName()).withNumber(9, 1);
    own.send(there.bytes(), {pipe.write.get()});
    const auto atUsers = users.receive();
    auto back = callTo(own.uniqueName()).withNumber(9, 1);
    users.send(back.bytes(), {atUsers.descriptors[0].get()});
    const auto atOwn = own.receive();

    checkBrings(atOwn, pipe);
}

TEST_CASE("descriptors that no message counts are closed, and not taken for the next one's") {
    ProxyWorld world;
    Pair programs(world);
    const auto descriptors = openDescriptors();
    {
        const auto surplus = newPipe();
        const auto meant = newPipe();

        for (int i = 0; i < 1000; ++i) {
            programs.caller.send(withDescriptors(0).bytes(),
                                 std::vector<int>(5, surplus.write.get()));
            REQUIRE(programs.editor.receive().descriptors.empty());
        }
        programs.caller.send(withDescriptors(1).bytes(), {meant.write.get(), surplus.write.get()});

        const auto message = programs.editor.receive();
        checkBrings(message, meant);
    }
    CHECK(openDescriptors() == descriptors);
}

TEST_CASE("descriptors that come before the end of their message are not too late") {
    ProxyWorld world;
    Pair programs(world);
    const auto pipe = newPipe();
    const auto bytes = withDescriptors(1, 100'000).bytes();

    programs.caller.send(bytes.substr(0, 5000));
    world.turn();
    programs.caller.send(bytes.substr(5000), {pipe.write.get()});

    const auto message = programs.editor.receive();
    CHECK(message.body() == Bytes().array(std::string(100'000, 'x')).str());
    checkBrings(message, pipe);
}

TEST_CASE("a message without all of its descriptors ends the connection") {
    for (const std::size_t body : {0U, 100U, 5'000'000U}) {
        CAPTURE(body);
        ProxyWorld world;
        Pair programs(world);

        programs.caller.sendSome(withDescriptors(2, body).bytes(), {0});
        if (body == 100) programs.caller.sendSome(callTo("org.example.Editor").bytes());

        if (body <= 100) CHECK(programs.caller.isEnded());
        world.waitUntil([&] { return world.proxy().counts().programs == 1; });
        auto call = busCall("GetId");
        programs.editor.send(call.bytes());
        CHECK(programs.editor.receive().header.replySerial == 7); // nothing came before
    }
}

TEST_CASE("more descriptors than a message can have end the connection") {
    ProxyWorld world;
    Pair programs(world);

    const auto bytes = withDescriptors(mostDescriptors + 1, 100).bytes();
    programs.caller.sendSome(bytes.substr(0, 20), std::vector<int>(mostDescriptors, 0));
    programs.caller.sendSome(bytes.substr(20), {0});

    CHECK(programs.caller.isEnded());
}

TEST_CASE("descriptors for somebody who does not read are bounded") {
    const AllDescriptors limit;
    ProxyWorld world;
    Pair programs(world);
    const auto descriptors = openDescriptors();
    const auto message = withDescriptors(200).bytes();

    for (int i = 0; i < 30; ++i) programs.caller.send(message, std::vector<int>(200, 0));
    auto call = busCall("GetId");
    programs.caller.send(call.bytes());
    programs.caller.receiveAnswer();

    CHECK(openDescriptors() < descriptors + 800);
    for (int i = 0; i < 30; ++i) REQUIRE(programs.editor.receive().descriptors.size() == 200);
}

} // namespace korvane::test
