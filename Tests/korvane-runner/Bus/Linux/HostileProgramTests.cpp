#include "RawClient.h"

#include <algorithm>

/// A program of an instance that wants to know, or to have, what is the user's. The bus is a real
/// one, which has the last word on what it answers and when.
namespace korvane::test {

using namespace korvane::runner::bus;

namespace {

constexpr std::string_view secret = "org.example.Secret";

RawMessage withSerial(RawMessage message, std::uint32_t serial) {
    message.serial = serial;
    return message;
}

RawMessage nameCall(const std::string& member, std::string_view name) {
    return busCall(member).withBody("s", Bytes().text(name));
}

/// All that the client is told until the bus has done what it has asked for.
std::vector<Received> heard(RawClient& client) {
    client.send(withSerial(busCall("GetId"), 99).bytes());
    std::vector<Received> all;
    do {
        all.push_back(client.receive());
    } while (all.back().header.replySerial != 99);
    return all;
}

bool isAnybodyNamed(const std::vector<Received>& all, std::string_view name) {
    return std::ranges::any_of(all, [name](const Received& message) {
        return message.bytes->find(name) != std::string::npos;
    });
}

/// The bus, the instance before it, and a program of the user's that has a name.
struct UsersWorld {
    ProxyWorld world;
    RawClient user{world, At::bus};
    RawClient client{world};

    UsersWorld() {
        REQUIRE(user.join().requestName(std::string(secret)) == 1);
        client.join();
    }
};

} // namespace

TEST_CASE("no serial and no flag shows a program the names of the user's") {
    const auto quietly = [](RawMessage message) {
        message.flags = noReplyExpected;
        return message;
    };
    const std::vector<std::vector<RawMessage>> tries{
        {busCall("ListNames")},
        {busCall("GetId"), busCall("ListNames")},
        {nameCall("ListQueuedOwners", "org.freedesktop.DBus"), busCall("ListNames")},
        {callTo("org.no.x"), busCall("ListNames"), busCall("ListNames")},
        {quietly(busCall("ListNames"))},
        {busCall("ListNames").without(2)},
        {busCall("ListNames").with(1, "/")},
        {nameCall("AddMatch", "type='signal'"),
         busCall("BecomeMonitor").without(2).withBody("asu", Bytes().array("").number(1)),
         busCall("ListNames")},
        {busCall("GetAllMatchRules").without(2)},
    };
    for (std::size_t i = 0; i < tries.size(); ++i) {
        CAPTURE(i);
        UsersWorld world;
        world.user.ask(nameCall("AddMatch", "sender='" + std::string(secret) + "'"));
        std::string bytes;
        for (const auto& message : tries[i]) bytes += message.bytes();

        world.client.send(bytes);

        CHECK_FALSE(isAnybodyNamed(heard(world.client), secret));
    }
}

TEST_CASE("of more names than are looked into none is shown, and all that follows is") {
    UsersWorld world;
    const std::string rest(220, 'x');
    for (int i = 10'000; i < 28'000; ++i) { // 4.3 MB
        auto call = requestNameCall("org.example.Secret.n" + std::to_string(i) + rest);
        call.flags = noReplyExpected;
        world.user.send(call.bytes());
        if (i % 100 == 99) heard(world.user);
    }

    const auto answer = world.client.ask(busCall("ListNames"));
    CHECK(answer.header.errorName == "org.freedesktop.DBus.Error.LimitsExceeded");
    CHECK(answer.bytes->find(secret) == std::string::npos);

    CHECK(world.client.requestName("org.example.Mine") == 1);
}

TEST_CASE("whether the user has a name is told to nobody who asks for it") {
    for (const std::string member :
         {"GetNameOwner", "NameHasOwner", "ListQueuedOwners", "GetConnectionUnixUser",
          "GetConnectionUnixProcessID", "GetConnectionCredentials", "GetConnectionStats",
          "GetConnectionSELinuxSecurityContext", "GetAdtAuditSessionData"}) {
        CAPTURE(member);
        UsersWorld world;
        const auto answer = [&](std::string_view name) {
            return world.client.ask(nameCall(member, name).without(2));
        };
        const auto ofSecret = answer(secret);
        const auto ofNobody = answer("org.example.Nobody");

        CHECK(ofSecret.header.type == ofNobody.header.type);
        CHECK(ofSecret.header.errorName == ofNobody.header.errorName);
        CHECK(ofSecret.bytes->find("k_One") == std::string::npos);
        if (member == "NameHasOwner") CHECK(ofSecret.number() == 0);
    }
}

TEST_CASE("a program that is refused as a monitor cannot have a name of the user's then") {
    UsersWorld world;
    world.client.send(nameCall("AddMatch", "type='signal'").bytes() +
                      busCall("BecomeMonitor")
                          .without(2)
                          .withBody("asu", Bytes().array("").number(1)) // flags must be 0
                          .bytes());
    heard(world.client);

    CHECK(world.client.requestName("org.example.Fresh") == 1);

    const auto owner = world.user.ask(nameCall("GetNameOwner", "org.example.Fresh"));
    CHECK(owner.header.type == MessageType::error);
    CHECK(world.user.ask(nameCall("GetNameOwner", "k_One.org.example.Fresh")).text() ==
          world.client.uniqueName());
}

TEST_CASE("what becomes of the user's names is told to no program of an instance") {
    UsersWorld world;
    for (const std::string rule :
         {"", "type='signal'", "sender='org.freedesktop.DBus'", "member=NameOwnerChanged",
          "arg0='org.example.Secret'", "arg0namespace='org.example'",
          "interface=org.freedesktop.DBus,arg0namespace=org",
          "eavesdrop='true',member='NameOwnerChanged'", "path=/org/freedesktop/DBus"}) {
        CAPTURE(rule);
        REQUIRE(world.client.ask(nameCall("AddMatch", rule)).header.type ==
                MessageType::methodReturn);
    }
    world.user.ask(nameCall("ReleaseName", secret));
    REQUIRE(world.user.requestName(std::string(secret)) == 1);

    CHECK_FALSE(isAnybodyNamed(heard(world.client), secret));
}

TEST_CASE("the user's services get no variable from a program of an instance") {
    const auto pair = Bytes().text("A").text("1").str();
    for (const std::string path : {"/org/freedesktop/DBus", "/", "/a"}) {
        CAPTURE(path);
        UsersWorld world;
        const auto call = busCall("UpdateActivationEnvironment")
                              .without(2)
                              .with(1, path)
                              .withBody("a{ss}", Bytes().array(pair, 8));

        const auto answer = world.client.ask(call);

        // What does not stay here is refused by the bus.
        CHECK((answer.header.type == MessageType::methodReturn) ==
              (path == "/org/freedesktop/DBus"));
        CHECK((answer.header.serial == 1) == (path == "/org/freedesktop/DBus"));
    }
}

TEST_CASE("only the bus's replies are taken for them") {
    UsersWorld world;
    const auto list = Bytes().array(Bytes().text(secret).str());
    auto forged = RawMessage{.type = 2, .flags = noReplyExpected, .serial = 70};
    forged.with(6, world.client.uniqueName()).withNumber(5, 7).withBody("as", list);
    world.client.send(withSerial(callTo(world.user.uniqueName()), 7).bytes());
    while (world.user.receive().header.member != "Open") {
    }

    world.user.send(forged.bytes());
    world.client.send(busCall("ListNames").bytes());
    const auto all = heard(world.client);

    for (const auto& message : all) {
        const bool isOfBus = message.header.sender == "org.freedesktop.DBus";
        const bool isNamed = message.bytes->find(secret) != std::string::npos;
        CHECK_FALSE((isOfBus && isNamed));
    }
}

} // namespace korvane::test
