#include "korvane-runner/Bus/BusReplies.h"

#include "Support/Expect.h"
#include "Talk.h"

using namespace korvane::runner::bus;
using namespace korvane::test;

TEST_CASE("an answer to the reserved serial is the program's where it has come so far itself") {
    Talk talk;
    const auto answer = busAnswer(reserved);
    CHECK(talk.fromBus(answer) == toClient(answer));

    talk.client(nameCall("AddMatch", "member=NameLost,arg0namespace='org.a'"));
    CHECK(talk.fromBus(answer).empty());
    const auto forged = RawMessage(answer).with(7, ":1.9");
    CHECK(talk.fromBus(forged) == toClient(forged));

    auto last = busCall("GetId");
    last.serial = reserved;
    talk.client(last);
    CHECK(talk.fromBus(answer) == toClient(answer));
}

TEST_CASE("who is refused as a monitor is none") {
    Talk talk;
    talk.client(busCall("BecomeMonitor").withBody("asu", list({}).number(0)).without(2));
    talk.fromBus(busError(7, errors + "AccessDenied", "no"));

    CHECK(talk.fromBus(ownerChanged("org.user.s")).empty());
}

TEST_CASE("what is no unique name is not taken for the program's") {
    for (const std::string none : {"", ":1>5", "org.a.b", ":1.", "\u00E4"}) {
        CAPTURE(none);
        InstanceBus bus{InstanceNames{PrivateNames("k_One"), NamePolicy(Secrets::shared)}};
        Conversation conversation(bus, 7);
        const auto hello = busCall("Hello").bytes();
        const auto answer = busAnswer(7).withBody("s", Bytes().text(none));
        const auto answerBytes = answer.bytes();
        conversation.fromClient(*MessageHeader::read(hello), "");
        conversation.fromBus(*MessageHeader::read(answerBytes), answer.body);
        CHECK(conversation.uniqueName().empty());
    }
}

TEST_CASE("a program has its unique name though it wanted no reply, which dbus-daemon gives it") {
    InstanceBus bus{InstanceNames{PrivateNames("k_One"), NamePolicy(Secrets::shared)}};
    Conversation conversation(bus, 7);
    auto hello = busCall("Hello");
    hello.flags = noReplyExpected;
    const auto bytes = hello.bytes();
    const auto answer = busAnswer(7).withBody("s", Bytes().text(":1.5"));
    const auto answerBytes = answer.bytes();

    conversation.fromClient(*MessageHeader::read(bytes), "");
    conversation.fromBus(*MessageHeader::read(answerBytes), answer.body);

    CHECK(conversation.uniqueName() == ":1.5");
}

TEST_CASE("lists of names are those of the instance and of the desktop") {
    for (const char order : {'l', 'B'}) {
        Talk talk;
        const auto names =
            list({"org.freedesktop.DBus", ":1.5", "k_One.org.a.b", "org.user.s", "k_Two.org.a.b",
                  "org.mpris.MediaPlayer2.vlc", "org.mpris.MediaPlayer2.vlc.k_One"},
                 order);
        const auto known =
            list({"org.freedesktop.DBus", ":1.5", "org.a.b", "org.mpris.MediaPlayer2.vlc"}, order);

        talk.client(busCall("ListNames"));
        CHECK(talk.fromBus(busAnswer(7, order).withBody("as", names)) ==
              toClient(busAnswer(7, order).withBody("as", known)));
    }
}

TEST_CASE("what can be started is what the instance can start, and the desktop") {
    Talk talk;
    talk.bus().activatable = {"org.a.b", "org.freedesktop.Notifications"};
    talk.client(busCall("ListActivatableNames"));
    const auto all = list({"org.freedesktop.Notifications", "org.user.s"});
    const auto known = list({"org.freedesktop.Notifications", "org.a.b"});

    CHECK(talk.fromBus(busAnswer(7).withBody("as", all)) ==
          toClient(busAnswer(7).withBody("as", known)));
}

TEST_CASE("processes of the instance have their own numbers, and those of others too") {
    for (const char order : {'l', 'B'}) {
        Talk talk;
        const auto number = [order](std::uint32_t process) {
            return busAnswer(7, order).withBody("u", Bytes(order).number(process));
        };
        const auto credentials = [order](std::uint32_t process) {
            Bytes entries(order);
            entries.text("ProcessID").signature("u").number(process);
            return busAnswer(7, order).withBody("a{sv}", Bytes(order).array(entries.str(), 8));
        };
        talk.fromBus(busSignal("NameAcquired", "k_One.org.a.b"));
        for (const std::string name : {":1.5", "org.a.b"}) {
            talk.client(nameCall("GetConnectionUnixProcessID", name));
            CHECK(talk.fromBus(number(99)) == toClient(number(105)));
            talk.client(nameCall("GetConnectionCredentials", name));
            CHECK(talk.fromBus(credentials(99)) == toClient(credentials(105)));
        }
        for (const std::string name : {":1.9", "org.freedesktop.DBus", "org.a.c"}) {
            talk.client(nameCall("GetConnectionUnixProcessID", name));
            CHECK(talk.fromBus(number(99)) == toClient(number(99)));
            talk.client(nameCall("GetConnectionCredentials", name));
            CHECK(talk.fromBus(credentials(99)) == toClient(credentials(99)));
        }
    }
}

TEST_CASE("of a program of the instance no descriptor is told that is of another process") {
    for (const char order : {'l', 'B'}) {
        Talk talk;
        const auto answer = [order](const Bytes& entries) {
            const auto body = Bytes(order).array(entries.str(), 8);
            return busAnswer(7, order).withBody("a{sv}", body).withNumber(9, 1);
        };
        const auto user = [order] {
            return Bytes(order).text("UnixUserID").signature("u").number(1000).pad(8);
        };
        const auto told = answer(user()
                                     .text("ProcessFD")
                                     .signature("h")
                                     .number(0)
                                     .pad(8)
                                     .text("ProcessID")
                                     .signature("u")
                                     .number(99));
        const auto own = answer(user().text("ProcessID").signature("u").number(105));

        talk.client(nameCall("GetConnectionCredentials", ":1.5"));
        CHECK(talk.fromBus(told) == toClient(own));
        talk.client(nameCall("GetConnectionCredentials", ":1.9"));
        CHECK(talk.fromBus(told) == toClient(told));
        const auto alone = answer(Bytes(order).text("ProcessFD").signature("h").number(0));
        talk.client(nameCall("GetConnectionCredentials", ":1.5"));
        CHECK(talk.fromBus(alone) == toClient(answer(Bytes(order))));
    }
}

TEST_CASE("an answer is the bus's to this program, or it passes as it is") {
    Talk talk;
    talk.client(busCall("ListNames"));
    const auto answer = busAnswer(7).withBody("as", list({"k_One.org.a.b"}));

    const auto ofOther = RawMessage(answer).with(7, ":1.9");
    CHECK(talk.fromBus(ofOther) == toClient(ofOther));
    const auto toOther = RawMessage(answer).with(6, ":1.9");
    CHECK(talk.fromBus(toOther) == toClient(toOther));
    CHECK(talk.fromBus(answer) == toClient(busAnswer(7).withBody("as", list({"org.a.b"}))));
}

TEST_CASE("a serial that is used twice is answered twice") {
    Talk talk;
    talk.bus().owners.acquired("k_One.org.a.b", ":1.5");
    talk.bus().activatable = {"org.a.b"};
    talk.client(busCall("ListActivatableNames"));
    talk.client(nameCall("GetConnectionUnixProcessID", "org.a.b"));

    CHECK(talk.fromBus(busAnswer(7).withBody("as", list({"org.user.s"}))) ==
          toClient(busAnswer(7).withBody("as", list({"org.a.b"}))));
    CHECK(talk.fromBus(busAnswer(7).withBody("u", Bytes().number(99))) ==
          toClient(busAnswer(7).withBody("u", Bytes().number(105))));
}

TEST_CASE("replies are not waited for without an end, nor where none is wanted") {
    Talk talk;
    auto quiet = busCall("ListActivatableNames");
    quiet.flags = noReplyExpected;
    const auto loud = busCall("ListActivatableNames");
    Written last;
    for (int i = 0; i < 16'385; ++i) last = talk.client(quiet);
    CHECK(last == toBus(quiet));
    for (int i = 0; i < 16'384; ++i) last = talk.client(loud);
    CHECK(last == toBus(loud));

    for (const auto& one : {loud, nameCall("GetConnectionUnixProcessID", "org.a.b")}) {
        CHECK(talk.client(one) ==
              toClient(injectedError("LimitsExceeded", "Too many replies are waited for")));
    }
    // What needs no memory is asked nevertheless.
    CHECK(talk.client(quiet) == toBus(quiet));
    CHECK(talk.client(busCall("ListNames")) == toBus(busCall("ListNames")));
    CHECK(talk.client(nameCall("GetNameOwner", "org.a.b")) ==
          toBus(nameCall("GetNameOwner", "k_One.org.a.b")));

    talk.fromBus(busAnswer(7).withBody("as", list({})));
    CHECK(talk.client(loud) == toBus(loud));
}

TEST_CASE("errors of the bus are about the names that the program knows") {
    for (const char order : {'l', 'B'}) {
        Talk talk;
        const auto error = [order](const std::string& name) {
            return busError(9, errors + "ServiceUnknown",
                            "The name " + name + " was not provided by any .service files", order);
        };
        CHECK(talk.fromBus(error("k_One.org.no.x")) == toClient(error("org.no.x")));
        CHECK(talk.fromBus(error("org.no.x")) == toClient(error("org.no.x")));
        const auto ofProgram = error("k_One.org.no.x").with(7, ":1.9");
        CHECK(talk.fromBus(ofProgram) == toClient(ofProgram));
    }
}

TEST_CASE("an error ends the wait for a reply") {
    Talk talk;
    talk.bus().activatable = {"org.a.b"};
    talk.client(busCall("ListActivatableNames"));
    talk.fromBus(busError(7, errors + "LimitsExceeded", "no"));
    const auto late = busAnswer(7).withBody("as", list({":1.9"}));

    CHECK(talk.fromBus(late) == toClient(late));
}

TEST_CASE("a list of names is never shown whole, whatever was asked for with its serial") {
    const auto all = list({"org.user.s", ":1.9", "k_One.org.a.b", "k_Two.org.a.b"});
    const auto known = list({":1.9", "org.a.b"});
    const auto names = busAnswer(7).withBody("as", all);
    const auto knownNames = toClient(busAnswer(7).withBody("as", known));

    SUBCASE("a list for which it wants no reply, and gets one") {
        Talk talk;
        auto call = busCall("ListNames");
        call.flags = noReplyExpected;
        talk.client(call);
        CHECK(talk.fromBus(names) == knownNames);
    }
    SUBCASE("something else, whose reply comes first") {
        Talk talk;
        talk.client(busCall("GetId"));
        talk.client(busCall("ListNames"));
        const auto identity = busAnswer(7).withBody("s", Bytes().text("x"));
        CHECK(talk.fromBus(identity) == toClient(identity));
        CHECK(talk.fromBus(names) == knownNames);
    }
    SUBCASE("other names, of which there is a list too") {
        Talk talk;
        talk.client(nameCall("ListQueuedOwners", "org.a.b"));
        talk.client(busCall("ListNames"));
        const auto owners = busAnswer(7).withBody("as", list({":1.5", ":1.9"}));
        CHECK(talk.fromBus(owners) == toClient(owners));
        CHECK(talk.fromBus(names) == knownNames);
    }
    SUBCASE("something of a program that is not there") {
        Talk talk;
        talk.client(callTo("org.no.x"));
        talk.client(busCall("ListNames"));
        talk.fromBus(busError(7, errors + "ServiceUnknown", "no"));
        CHECK(talk.fromBus(names) == knownNames);
    }
    SUBCASE("what can be started") {
        Talk talk;
        talk.client(busCall("GetId"));
        talk.client(busCall("ListActivatableNames"));
        talk.fromBus(busAnswer(7).withBody("s", Bytes().text("x")));
        CHECK(talk.fromBus(names) == knownNames);
    }
}

TEST_CASE("a list of texts that are no names passes") {
    Talk talk;
    const auto texts = busAnswer(7).withBody("as", list({"SELinux", "", "no name"}));
    CHECK(talk.fromBus(texts) == toClient(texts));
}

TEST_CASE("a list of names that is too long to be looked into is an error") {
    for (const std::string member : {"ListNames", "ListActivatableNames"}) {
        CAPTURE(member);
        Talk talk;
        talk.bus().activatable = {"org.a.b"};
        talk.client(busCall(member));
        auto names = busAnswer(7).withBody("as", list({"org.user.s"}));
        names.bodyLength = static_cast<std::uint32_t>(longestReadBody) + 1;

        CHECK(talk.fromBus(names) ==
              toClient(injectedError("LimitsExceeded", "The list of names is longer than 4 MiB")));

        // It is not waited for any more.
        const auto late = busAnswer(7).withBody("as", list({":1.9"}));
        CHECK(talk.fromBus(late) == toClient(late));
    }
}

TEST_CASE("an error whose text is too long to be looked into has another text") {
    Talk talk;
    talk.bus().owners.acquired("k_One.org.a.b", ":1.5");
    talk.client(nameCall("GetConnectionUnixProcessID", "org.a.b"));
    auto error = busError(7, errors + "InvalidArgs", "k_One.org.a.b");
    error.bodyLength = static_cast<std::uint32_t>(longestReadBody) + 1;

    CHECK(talk.fromBus(error) ==
          toClient(busError(7, errors + "InvalidArgs", "The text is longer than 4 MiB")));

    const auto late = busAnswer(7).withBody("u", Bytes().number(99));
    CHECK(talk.fromBus(late) == toClient(late));
}

TEST_CASE("another reply that is too long to be looked into passes, and is not waited for") {
    Talk talk;
    talk.bus().owners.acquired("k_One.org.a.b", ":1.5");
    talk.client(nameCall("GetConnectionCredentials", "org.a.b"));
    Bytes entries;
    entries.text("ProcessID").signature("u").number(99);
    const auto reply = busAnswer(7).withBody("a{sv}", Bytes().array(entries.str(), 8));
    auto longReply = reply;
    longReply.bodyLength = static_cast<std::uint32_t>(longestReadBody) + 1;

    CHECK(talk.fromBus(longReply) == toClient(longReply));
    CHECK(talk.fromBus(reply) == toClient(reply));
}
