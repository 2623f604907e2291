#include "RawClient.h"

#include "Support/Sweep.h"

namespace korvane::test {

using namespace korvane::runner::bus;

namespace {

/// A message of any length to whoever has the name "org.example.Editor".
RawMessage messageToEditor(std::size_t size, char order = 'l') {
    auto message = callTo("org.example.Editor", order);
    message.flags = noReplyExpected; // of a caller that has left the bus passes on only these
    return message.withBody("ay", Bytes(order).array(std::string(size, 'x')));
}

} // namespace

TEST_CASE("a program that says everything at once is answered everything") {
    ProxyWorld world;
    RawClient client(world);

    client.send(handshake() + hello().bytes() + requestNameCall("org.example.Editor").bytes());

    CHECK(client.receiveLine().starts_with("OK "));
    CHECK(client.receiveLine() == "AGREE_UNIX_FD");
    const auto name = client.receiveAnswer().text();
    CHECK(name.starts_with(":1."));
    CHECK(client.receive().text() == name); // NameAcquired
    const auto acquired = client.receive();
    CHECK(acquired.header.member == "NameAcquired");
    CHECK(acquired.text() == "org.example.Editor");
    CHECK(client.receiveAnswer().number() == 1);
    RawClient user(world, At::bus);
    CHECK(user.join()
              .ask(busCall("GetNameOwner").withBody("s", Bytes().text("k_One.org.example.Editor")))
              .text() == name);
}

TEST_CASE("a program that says everything byte by byte is answered the same") {
    ProxyWorld world;
    RawClient client(world);

    for (const char byte :
         handshake() + hello().bytes() + requestNameCall("org.example.Editor", 'B').bytes()) {
        client.send(std::string(1, byte));
        world.turn(); // it is read before the next one is written
        world.turn();
    }

    CHECK(client.receiveLine().starts_with("OK "));
    CHECK(client.receiveLine() == "AGREE_UNIX_FD");
    CHECK(client.receiveAnswer().text().starts_with(":1."));
    CHECK(client.receiveAnswer().number() == 1);
}

TEST_CASE("programs of either byte order reach each other by the instance's names") {
    for (const char order : {'l', 'B'}) {
        CAPTURE(order);
        ProxyWorld world;
        RawClient editor(world);
        RawClient caller(world);
        REQUIRE(editor.join().requestName("org.example.Editor", order) == 1);
        caller.join();

        caller.send(messageToEditor(3, order).bytes());

        const auto message = editor.receive();
        CHECK(message.header.destination == "org.example.Editor");
        CHECK(message.header.sender == caller.uniqueName());
        CHECK(message.header.order == static_cast<ByteOrder>(order));
        CHECK(message.body() == Bytes(order).array("xxx").str());
    }
}

TEST_CASE("the user's program of the same name is another") {
    ProxyWorld world;
    RawClient editor(world);
    RawClient users(world, At::bus);

    CHECK(editor.join().requestName("org.example.Editor") == 1);
    CHECK(users.join().requestName("org.example.Editor") == 1);
}

TEST_CASE("a long message passes without being collected") {
    constexpr std::size_t size = 40'000'000;
    ProxyWorld world;
    RawClient editor(world);
    RawClient caller(world);
    REQUIRE(editor.join().requestName("org.example.Editor") == 1);
    caller.join();

    caller.send(messageToEditor(size).bytes());
    const auto message = editor.receive();

    CHECK(message.body() == Bytes().array(std::string(size, 'x')).str());
    CHECK(world.highestLoad() > 0);
    CHECK(world.highestLoad() < 512 * 1024);
}

TEST_CASE("whoever does not read makes nobody else wait, and takes no memory here") {
    ProxyWorld world;
    RawClient editor(world);
    RawClient caller(world);
    RawClient third(world);
    REQUIRE(editor.join().requestName("org.example.Editor") == 1);
    caller.join();
    third.join();

    for (int i = 0; i < 200; ++i) caller.send(messageToEditor(100'000).bytes());
    waitForBus(caller);
    waitForBus(third);

    CHECK(world.highestLoad() > 256 * 1024);
    CHECK(world.highestLoad() < 1024 * 1024); // of both programs together
    // All of it is there when it reads nevertheless.
    for (int i = 0; i < 200; ++i) REQUIRE(editor.receive().header.bodyLength == 100'004);
}

TEST_CASE("answers to whoever does not read any are bounded") {
    ProxyWorld world;
    RawClient client(world);
    client.join();
    const auto call =
        busCall("UpdateActivationEnvironment").withBody("a{ss}", Bytes().array("", 8)).bytes();
    std::string calls;
    for (int i = 0; i < 1000; ++i) calls += call;

    std::size_t sent = 0;
    constexpr std::size_t most = 500'000'000;
    for (int idle = 0; sent < most && idle < 100;) {
        // Only whole ones: what is cut off here would not be sent.
        const auto part = client.sendSome(std::string_view(calls).substr(sent % calls.size()));
        sent += part;
        idle = part > 0 ? 0 : idle + 1;
        world.turn();
    }

    CHECK(sent < most);
    CHECK(world.proxy().load() < 6 * 1024 * 1024);
}

TEST_CASE("a program that ends amid a message leaves nothing of it") {
    ProxyWorld world;
    const auto descriptors = openDescriptors();
    RawClient editor(world);
    REQUIRE(editor.join().requestName("org.example.Editor") == 1);
    const auto message = messageToEditor(100'000).bytes();

    for (int i = 0; i < 200; ++i) {
        RawClient caller(world);
        caller.join();
        caller.send(message.substr(0, i % 2 == 0 ? 90 : 60'000));
    }

    world.waitUntil([&] { return world.proxy().counts().programs == 1; });
    waitForBus(editor);
    CHECK(openDescriptors() == descriptors + 3);
}

TEST_CASE("what a program sent before it left arrives") {
    ProxyWorld world;
    RawClient editor(world);
    REQUIRE(editor.join().requestName("org.example.Editor") == 1);
    {
        RawClient caller(world);
        caller.join().send(messageToEditor(3'000'000).bytes() + messageToEditor(3).bytes());
    }

    CHECK(editor.receive().header.bodyLength == 3'000'004);
    CHECK(editor.receive().header.bodyLength == 7);
    world.waitUntil([&] { return world.proxy().counts().programs == 1; });
}

TEST_CASE("what the proxy answers does not come between the bytes of another message") {
    ProxyWorld world;
    RawClient editor(world);
    RawClient caller(world);
    REQUIRE(editor.join().requestName("org.example.Editor") == 1);
    caller.join();
    const auto longMessage = messageToEditor(5'000'000).bytes();
    caller.send(longMessage);
    waitForBus(caller);
    // It has come to the editor in part when the proxy waits for the editor to read.
    world.waitUntil([&] { return world.proxy().load() > 256 * 1024; });

    auto call = busCall("UpdateActivationEnvironment").withBody("a{ss}", Bytes().array("", 8));
    call.serial = 50;
    editor.send(call.bytes());
    auto second = busCall("GetId");
    second.serial = 51;
    editor.send(second.bytes());

    CHECK(editor.receive().header.bodyLength == 5'000'004);
    const auto answer = editor.receive();
    CHECK(answer.header.replySerial == 50);
    CHECK(answer.header.type == MessageType::methodReturn);
    CHECK(editor.receive().header.replySerial == 51);
}

TEST_CASE("a message that is none ends the connection, after what came before it") {
    ProxyWorld world;
    RawClient editor(world);
    RawClient caller(world);
    REQUIRE(editor.join().requestName("org.example.Editor") == 1);
    caller.join();
    auto wrong = messageToEditor(3);
    wrong.version = 9;

    caller.send(messageToEditor(3).bytes() + wrong.bytes());

    CHECK(editor.receive().header.bodyLength == 7);
    CHECK(caller.isEnded());
    waitForBus(editor);
}

TEST_CASE("no message of others ends a program's connection") {
    const std::string longText(70'000, 'x');
    auto ofAnotherType = callTo("");
    ofAnotherType.type = 9;
    const std::vector<std::pair<std::string, RawMessage>> messages{
        {"a long path", callTo("").with(1, "/" + longText)},
        {"a long field of no meaning", callTo("").with(20, "s", longText)},
        {"a type that is still to come", ofAnotherType}};
    ProxyWorld world;
    RawClient editor(world);
    RawClient user(world, At::bus);
    editor.join();
    user.join();
    for (auto [name, message] : messages) {
        const auto& label = name; // a binding is captured by few compilers
        CAPTURE(label);
        message.flags = noReplyExpected;

        user.send(message.with(6, editor.uniqueName()).bytes());

        waitForBus(user);
        waitForBus(editor);
    }
}

TEST_CASE("when the bus ends programs see that, and new ones find the next bus") {
    ProxyWorld world;
    RawClient before(world);
    before.join();

    world.bus().end();
    CHECK(before.isEnded());
    RawClient meanwhile(world);
    meanwhile.send(handshake());
    CHECK(meanwhile.isEnded());
    world.bus().start();
    RawClient after(world);

    CHECK(after.join().requestName("org.example.Editor") == 1);
    world.waitUntil([&] { return world.proxy().counts().programs == 1; });
}

} // namespace korvane::test
