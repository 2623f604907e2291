#include "korvane-runner/Bus/Conversation.h"

#include "Support/Expect.h"
#include "Talk.h"

#include <algorithm>

using namespace korvane::runner::bus;
using namespace korvane::test;

TEST_CASE("a message to a private name goes to the instance's, and its body is not needed") {
    for (const char order : {'l', 'B'}) {
        for (const int type : {1, 4}) {
            Talk talk;
            auto message = callTo("org.a.b", order).withBody("s", Bytes(order).text("org.a.b"));
            message.type = type;
            message.withNumber(9, 0);
            const auto bytes = message.bytes();

            CHECK_FALSE(talk.conversation().needsBody(Side::client, *MessageHeader::read(bytes)));
            const auto written = talk.client(message);

            CHECK(written == toBus(message.with(6, "k_One.org.a.b")));
        }
    }
}

TEST_CASE("what is private is so for messages of every type, known or not") {
    for (const char order : {'l', 'B'}) {
        for (const int type : {1, 2, 3, 4, 5, 255}) {
            CAPTURE(type);
            Talk talk;
            talk.bus().activatable = {"org.a.b"};
            auto message = callTo("org.a.b", order).with(4, "org.a.Error").withNumber(5, 9);
            message.type = type;
            auto translated = message;
            translated.with(6, "k_One.org.a.b");

            CHECK(talk.client(message) == toBus(translated));
            CHECK(talk.waitsFor() == (type == 1 ? "org.a.b" : ""));
            CHECK(talk.fromBus(translated.with(7, ":1.9")) == toClient(message.with(7, ":1.9")));
        }
    }
}

TEST_CASE("the fields of a header may come in any order") {
    Talk talk;
    const auto turned = [](RawMessage message) {
        std::ranges::reverse(message.fields);
        return message;
    };
    CHECK(talk.client(turned(nameCall("GetNameOwner", "org.a.b"))) ==
          toBus(turned(nameCall("GetNameOwner", "k_One.org.a.b"))));
    CHECK(talk.client(turned(callTo("org.a.b"))) == toBus(turned(callTo("k_One.org.a.b"))));
    CHECK(talk.fromBus(turned(busSignal("NameAcquired", "k_One.org.a.b"))) ==
          toClient(turned(busSignal("NameAcquired", "org.a.b"))));
}

TEST_CASE("what is for shared and for unique names passes as it is") {
    for (const std::string name :
         {":1.9", "org.freedesktop.Notifications", "org.freedesktop.portal.Desktop"}) {
        Talk talk;
        CHECK(talk.client(callTo(name)) == toBus(callTo(name)));
    }
    Talk talk;
    const auto broadcast = callTo("a.b").without(6);
    CHECK(talk.client(broadcast) == toBus(broadcast));
}

TEST_CASE("a call to a private name that something can be started for waits") {
    Talk talk;
    talk.bus().activatable = {"org.a.b", "org.freedesktop.Notifications"};

    CHECK(talk.client(callTo("org.a.b")) == toBus(callTo("k_One.org.a.b")));
    CHECK(talk.waitsFor() == "org.a.b");

    auto quiet = callTo("org.a.b");
    quiet.flags = noAutoStart;
    talk.client(quiet);
    CHECK(talk.waitsFor().empty());
    auto signal = callTo("org.a.b");
    signal.type = 4;
    talk.client(signal);
    CHECK(talk.waitsFor().empty());
    talk.client(callTo("org.a.c"));
    CHECK(talk.waitsFor().empty());
    talk.client(callTo("org.freedesktop.Notifications"));
    CHECK(talk.waitsFor().empty());
    talk.client(nameCall("GetNameOwner", "org.a.b"));
    CHECK(talk.waitsFor().empty());

    talk.fromBus(busSignal("NameAcquired", "k_One.org.a.b"));
    talk.client(callTo("org.a.b"));
    CHECK(talk.waitsFor().empty());
}

TEST_CASE("nothing is started for secrets that are hidden, and nobody hears of them") {
    Talk talk(Secrets::hidden);
    const std::string secrets = "org.freedesktop.secrets";
    talk.bus().activatable = {secrets};

    CHECK(talk.client(callTo(secrets)) == toBus(callTo("k_One." + secrets)));
    CHECK(talk.waitsFor().empty());
    CHECK(talk.fromBus(ownerChanged(secrets)).empty());
    talk.client(busCall("ListActivatableNames"));
    CHECK(talk.fromBus(busAnswer(7).withBody("as", list({secrets}))) ==
          toClient(busAnswer(7).withBody("as", list({}))));
}

TEST_CASE(
    "a call that nobody will answer is refused in its own byte order, where it wants an answer") {
    for (const char order : {'l', 'B'}) {
        Talk talk;
        const auto refused = [&](const RawMessage& call) {
            const auto bytes = call.bytes();
            return talk.conversation().refused(*MessageHeader::read(bytes), "Spawn.Failed", "no");
        };
        auto call = callTo("org.a.b", order);
        auto error = injectedAnswer(order).without(5).without(7).with(4, errors + "Spawn.Failed");
        error.type = 3;
        error.withNumber(5, 7)
            .withBody("s", Bytes(order).text("no"))
            .with(7, "org.freedesktop.DBus");

        REQUIRE(refused(call).deliveries.size() == 1);
        CHECK(refused(call).deliveries[0].to == Side::client);
        CHECK(refused(call).deliveries[0].bytes == error.bytes());
        call.flags = noReplyExpected;
        CHECK(refused(call).deliveries.empty());
        call.flags = 0;
        call.type = 4;
        CHECK(refused(call).deliveries.empty());
    }
}

TEST_CASE("a program that ends has no name any more") {
    InstanceBus bus{InstanceNames{PrivateNames("k_One"), NamePolicy(Secrets::shared)}};
    {
        Conversation conversation(bus, 7);
        const auto hello = busCall("Hello").bytes();
        const auto answer = busAnswer(7).withBody("s", Bytes().text(":1.5"));
        const auto answerBytes = answer.bytes();
        conversation.fromClient(*MessageHeader::read(hello), "");
        conversation.fromBus(*MessageHeader::read(answerBytes), answer.body);
        CHECK(conversation.uniqueName() == ":1.5");
        CHECK(bus.owners.processOf(":1.5") == 7);
    }
    CHECK_FALSE(bus.owners.isOwned(":1.5"));
}

TEST_CASE("what was sent to a name of the program arrives under that name") {
    for (const char order : {'l', 'B'}) {
        Talk talk;
        const auto message = [order](const std::string& name) {
            auto call = callTo(name, order).with(7, ":1.9");
            return call.withBody("s", Bytes(order).text("k_One.org.a.b"));
        };
        CHECK(talk.fromBus(message("k_One.org.a.b")) == toClient(message("org.a.b")));
        CHECK(talk.fromBus(message("org.mpris.MediaPlayer2.a.k_One")) ==
              toClient(message("org.mpris.MediaPlayer2.a")));
        for (const std::string same : {":1.5", "org.kde.StatusNotifierItem-1-1", "org.user.s"}) {
            CHECK(talk.fromBus(message(same)) == toClient(message(same)));
        }
    }
}

TEST_CASE("bodies of programs are never looked into") {
    Talk talk;
    auto answer = busAnswer(7).with(7, ":1.9").withBody("s", Bytes().text("k_One.org.a.b"));
    answer.bodyLength = 100'000'000;
    const auto bytes = answer.bytes();
    CHECK_FALSE(talk.conversation().needsBody(Side::bus, *MessageHeader::read(bytes)));
}

TEST_CASE("a program that only looks like a monitor has its names translated in both directions") {
    Talk talk;
    talk.client(nameCall("AddMatch", "type='signal'"));
    auto monitor = busCall("BecomeMonitor").without(2);
    talk.client(monitor.withBody("asu", list({"no rule"}).number(0)));
    talk.fromBus(busAnswer(7)); // to the first of both, which have the same serial
    talk.fromBus(busError(7, errors + "MatchRuleInvalid", "no"));

    CHECK(talk.client(numberedNameCall("RequestName", "org.a.b")) ==
          toBus(numberedNameCall("RequestName", "k_One.org.a.b")));
    CHECK(talk.client(callTo("org.a.b")) == toBus(callTo("k_One.org.a.b")));
    CHECK(talk.fromBus(busAnswer(7).withBody("as", list({"org.user.s", "k_One.org.a.b"}))) ==
          toClient(busAnswer(7).withBody("as", list({"org.a.b"}))));
    CHECK(talk.fromBus(busSignal("NameAcquired", "k_One.org.a.b")) ==
          toClient(busSignal("NameAcquired", "org.a.b")));
    CHECK(talk.bus().owners.isOwned("k_One.org.a.b"));
}

TEST_CASE("what a program had that becomes a monitor is nobody's") {
    Talk talk;
    talk.fromBus(busSignal("NameAcquired", "k_One.org.a.b"));
    auto monitor = busCall("BecomeMonitor").without(2);
    talk.client(monitor.withBody("asu", list({}).number(0)));

    talk.fromBus(busAnswer(7));
    CHECK(talk.fromBus(busSignal("NameLost", "k_One.org.a.b")) ==
          toClient(busSignal("NameLost", "org.a.b")));

    CHECK_FALSE(talk.bus().owners.isOwned("k_One.org.a.b"));
}
