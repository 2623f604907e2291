#include "korvane-runner/Bus/BusRequests.h"

#include "Support/Expect.h"
#include "Talk.h"

using namespace korvane::runner::bus;
using namespace korvane::test;

TEST_CASE("names in calls to the bus become those on the bus") {
    for (const char order : {'l', 'B'}) {
        for (const std::string member :
             {"ReleaseName", "GetNameOwner", "NameHasOwner", "ListQueuedOwners",
              "GetConnectionUnixUser", "GetConnectionUnixProcessID", "GetConnectionCredentials",
              "GetAdtAuditSessionData", "GetConnectionSELinuxSecurityContext"}) {
            CAPTURE(member);
            Talk talk;
            CHECK(talk.client(nameCall(member, "org.a.b", order)) ==
                  toBus(nameCall(member, "k_One.org.a.b", order)));
            CHECK(talk.client(nameCall(member, "org.a.b", order).without(2)) ==
                  toBus(nameCall(member, "k_One.org.a.b", order).without(2)));
            CHECK(talk.client(nameCall(member, "org.a.b", order).without(6)) ==
                  toBus(nameCall(member, "k_One.org.a.b", order).without(6)));
            CHECK(talk.client(nameCall(member, ":1.9", order)) ==
                  toBus(nameCall(member, ":1.9", order)));
        }
        for (const std::string member : {"RequestName", "StartServiceByName"}) {
            CAPTURE(member);
            Talk talk;
            CHECK(talk.client(numberedNameCall(member, "org.a.b", order)) ==
                  toBus(numberedNameCall(member, "k_One.org.a.b", order)));
        }
    }
}

TEST_CASE("a name of the desktop is called and not owned") {
    const std::string name = "org.freedesktop.Notifications";
    Talk talk;
    CHECK(talk.client(nameCall("GetNameOwner", name)) == toBus(nameCall("GetNameOwner", name)));
    CHECK(talk.client(numberedNameCall("RequestName", name)) ==
          toBus(numberedNameCall("RequestName", "k_One." + name)));
    CHECK(talk.client(nameCall("ReleaseName", name)) ==
          toBus(nameCall("ReleaseName", "k_One." + name)));
    const auto item = numberedNameCall("RequestName", "org.kde.StatusNotifierItem-7-1");
    CHECK(talk.client(item) == toBus(item));
}

TEST_CASE("the name of the bus itself is nobody's to have") {
    Talk talk;
    for (const std::string member : {"RequestName", "StartServiceByName"}) {
        const auto call = numberedNameCall(member, "org.freedesktop.DBus");
        CHECK(talk.client(call) == toBus(call));
    }
    for (const std::string member : {"ReleaseName", "GetNameOwner", "GetConnectionUnixProcessID"}) {
        const auto call = nameCall(member, "org.freedesktop.DBus");
        CHECK(talk.client(call) == toBus(call));
    }
}

TEST_CASE("calls that are none of these pass as they are") {
    Talk talk;
    for (const auto& call :
         {nameCall("GetNameOwner", "no name"),
          nameCall("GetNameOwner", "org.a.b").with(2, "org.a.c"),
          nameCall("GetNameOwner", "org.a.b").with(6, "org.freedesktop.systemd1"),
          numberedNameCall("RequestName", "org.a.b").with(8, "si"),
          numberedNameCall("GetNameOwner", "org.a.b"), nameCall("RequestName", "org.a.b"),
          nameCall("Introspect", "org.a.b"), busCall("GetId"), nameCall("BecomeMonitor", "org.a.b"),
          nameCall("AddMatch", "sender='org.a.b")}) {
        CHECK(talk.client(call) == toBus(call));
    }
    auto signal = nameCall("GetNameOwner", "org.a.b");
    signal.type = 4;
    CHECK(talk.client(signal) == toBus(signal));
    auto cut = nameCall("GetNameOwner", "org.a.b");
    cut.body.pop_back();
    CHECK(talk.client(cut) == toBus(cut));
}

TEST_CASE("descriptors that somebody sends with a call to the bus stay counted") {
    Talk talk;
    const auto call = [](const std::string& name) {
        return nameCall("GetNameOwner", name).withNumber(9, 1);
    };
    CHECK(talk.client(call("org.a.b")) == toBus(call("k_One.org.a.b")));
}

TEST_CASE("rules are translated when they are added, and in the same way when they are removed") {
    for (const char order : {'l', 'B'}) {
        for (const std::string member : {"AddMatch", "RemoveMatch"}) {
            Talk talk;
            CHECK(talk.client(nameCall(member, "sender='org.a.b'", order)) ==
                  toBus(nameCall(member, "sender='k_One.org.a.b'", order)));
            CHECK(talk.client(nameCall(member, "type='signal'", order)) ==
                  toBus(nameCall(member, "type='signal'", order)));
        }
    }
}

TEST_CASE("a rule for a name space has a second one, of which the program hears nothing") {
    for (const char order : {'l', 'B'}) {
        for (const std::string member : {"AddMatch", "RemoveMatch"}) {
            CAPTURE(member);
            Talk talk;
            const auto call = nameCall(member, "member=NameLost,arg0namespace='org.a'", order);
            const auto second =
                secondRule(member, "member=NameLost,arg0namespace='k_One.org.a'", order);

            CHECK(talk.client(call) == Written{"> " + call.bytes(), "> " + second.bytes()});
            CHECK(talk.fromBus(busAnswer(7)) == toClient(busAnswer(7)));
            CHECK(talk.fromBus(busAnswer(reserved)).empty());
            CHECK(talk.fromBus(busError(reserved, errors + "MatchRuleInvalid", "no")).empty());
        }
    }
}

TEST_CASE("a monitor watches the instance's names and sees everything untranslated from then on") {
    for (const char order : {'l', 'B'}) {
        Talk talk;
        const auto monitor = [order](const std::vector<std::string>& rules) {
            auto call = busCall("BecomeMonitor", order).with(2, "org.freedesktop.DBus.Monitoring");
            return call.withBody("asu", list(rules, order).number(0));
        };
        CHECK(talk.client(monitor({"sender='org.a.b'", "member=NameLost,arg0namespace='org'"})) ==
              toBus(monitor({"sender='k_One.org.a.b'", "member=NameLost,arg0namespace='org'",
                             "member=NameLost,arg0namespace='k_One.org'"})));
        CHECK(talk.fromBus(ownerChanged("k_One.org.a.b")) == toClient(ownerChanged("org.a.b")));

        CHECK(talk.fromBus(busAnswer(7)) == toClient(busAnswer(7)));

        CHECK(talk.fromBus(ownerChanged("k_One.org.a.b")) ==
              toClient(ownerChanged("k_One.org.a.b")));
        CHECK(talk.fromBus(ownerChanged("org.user.s")) == toClient(ownerChanged("org.user.s")));
    }
}

TEST_CASE("the environment of services is kept from the user's") {
    for (const char order : {'l', 'B'}) {
        Talk talk;
        const auto pairs =
            Bytes(order).text("A").text("1").pad(8).text("").text("x").pad(8).text("B=C").text("x");
        auto call = busCall("UpdateActivationEnvironment", order);
        call.withBody("a{ss}", Bytes(order).array(pairs.str(), 8));

        CHECK(talk.client(call) == toClient(injectedAnswer(order)));
        CHECK(talk.bus().environment.size() == 1);
        CHECK(talk.bus().environment["A"] == "1");

        call.flags = noReplyExpected;
        CHECK(talk.client(call).empty());
        call.with(1, "/");
        CHECK(talk.client(call) == toBus(call));
    }
}

TEST_CASE("the environment does not grow without an end") {
    Talk talk;
    const auto call = [](int first, int end, std::size_t size) {
        Bytes pairs;
        for (int i = first; i < end; ++i) {
            pairs.pad(8).text("V" + std::to_string(i)).text(std::string(size, 'x'));
        }
        auto message = busCall("UpdateActivationEnvironment");
        return message.withBody("a{ss}", Bytes().array(pairs.str(), 8));
    };
    const auto refused = [](const std::string& text) {
        return toClient(injectedError("LimitsExceeded", text));
    };
    constexpr std::size_t longest = 128 * 1024 - 4; // with "V0=" and the end

    CHECK(talk.client(call(0, 1, longest + 1)) == refused("A variable is longer than 128 KiB"));
    for (int i = 0; i < 2; ++i) {
        CHECK(talk.client(call(0, 8, longest)) == toClient(injectedAnswer()));
    }
    CHECK(talk.client(call(8, 9, 0)) == refused("The environment is longer than 1 MiB"));
    CHECK(talk.client(call(0, 4096, 0)) == toClient(injectedAnswer()));
    CHECK(talk.client(call(4096, 4097, 0)) == refused("There are more than 4096 variables"));
    CHECK(talk.bus().environment.size() == 4096);
}

TEST_CASE("arguments that are too long are refused without having been collected") {
    Talk talk;
    auto call = nameCall("AddMatch", "x");
    call.bodyLength = static_cast<std::uint32_t>(longestReadBody) + 1;
    const auto bytes = call.bytes();

    CHECK_FALSE(talk.conversation().needsBody(Side::client, *MessageHeader::read(bytes)));
    CHECK(talk.client(call) ==
          toClient(injectedError("LimitsExceeded", "The arguments are longer than 4 MiB")));
}

TEST_CASE("a call to start a service is answered without the bus, which does not know of it") {
    for (const char order : {'l', 'B'}) {
        Talk talk;
        talk.bus().activatable = {"org.a.b"};
        auto call = numberedNameCall("StartServiceByName", "org.a.b", order);

        CHECK(talk.client(call) == toClient(injectedNumber(1, order)));
        CHECK(talk.waitsFor() == "org.a.b");
        call.flags = noReplyExpected;
        CHECK(talk.client(call).empty());
        CHECK(talk.waitsFor() == "org.a.b");

        talk.fromBus(busSignal("NameAcquired", "k_One.org.a.b"));
        CHECK(talk.client(call).empty());
        CHECK(talk.waitsFor().empty());
        call.flags = 0;
        CHECK(talk.client(call) == toClient(injectedNumber(2, order)));
        CHECK(talk.waitsFor().empty());
    }
}

TEST_CASE("statistics are about the instance's names, and tell of nobody's rules") {
    const auto stats = [](RawMessage call) {
        return call.with(2, "org.freedesktop.DBus.Debug.Stats");
    };
    const std::string text = "What others listen to is not told to programs of an instance";
    for (const char order : {'l', 'B'}) {
        Talk talk;
        const auto ofName = [order](const std::string& name) {
            return nameCall("GetConnectionStats", name, order);
        };
        CHECK(talk.client(stats(ofName("org.a.b"))) == toBus(stats(ofName("k_One.org.a.b"))));
        CHECK(talk.client(ofName("org.a.b").without(2)) ==
              toBus(ofName("k_One.org.a.b").without(2)));
        CHECK(talk.client(ofName("org.a.b")) ==
              toBus(ofName("org.a.b"))); // which has no such method
        const auto all = stats(busCall("GetStats", order));
        CHECK(talk.client(all) == toBus(all));
    }
    Talk talk;
    const auto rules = busCall("GetAllMatchRules");
    CHECK(talk.client(stats(rules)) == toClient(injectedError("AccessDenied", text)));
    CHECK(talk.client(RawMessage(rules).without(2)) ==
          toClient(injectedError("AccessDenied", text)));
    CHECK(talk.client(rules) == toBus(rules));
    auto quiet = stats(rules);
    quiet.flags = noReplyExpected;
    CHECK(talk.client(quiet).empty());
}

TEST_CASE("a rule that is much longer than any bus takes is refused before it is taken apart") {
    const auto refused =
        toClient(injectedError("LimitsExceeded", "A match rule is longer than 16 KiB"));
    const std::string rule = "sender='org.a.b',path='/" + std::string(16 * 1024 - 25, 'x') + "'";
    Talk talk;
    for (const std::string member : {"AddMatch", "RemoveMatch"}) {
        CHECK(talk.client(nameCall(member, rule)) != refused);
        CHECK(talk.client(nameCall(member, rule + " ")) == refused);
    }
    const auto monitor = [](const std::vector<std::string>& rules) {
        return busCall("BecomeMonitor").without(2).withBody("asu", list(rules).number(0));
    };
    CHECK(talk.client(monitor({"", rule})) != refused);
    CHECK(talk.client(monitor({"", rule + " "})) == refused);
}
