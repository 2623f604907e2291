#include "korvane-runner/Bus/NameSignals.h"

#include "Support/Expect.h"
#include "Talk.h"

using namespace korvane::runner::bus;
using namespace korvane::test;

TEST_CASE("a monitor is also told by the loss of its unique name") {
    Talk talk;
    CHECK(talk.fromBus(busSignal("NameLost", ":1.5")) == toClient(busSignal("NameLost", ":1.5")));
    CHECK(talk.fromBus(ownerChanged("org.user.s")) == toClient(ownerChanged("org.user.s")));
}

TEST_CASE("signals about the instance's names have them, and those about others' are not heard") {
    for (const char order : {'l', 'B'}) {
        Talk talk;
        for (const std::string member : {"NameAcquired", "NameLost"}) {
            CHECK(talk.fromBus(busSignal(member, "k_One.org.a.b", order)) ==
                  toClient(busSignal(member, "org.a.b", order)));
            CHECK(talk.fromBus(busSignal(member, "k_One.org.freedesktop.Notifications", order)) ==
                  toClient(busSignal(member, "org.freedesktop.Notifications", order)));
        }
        CHECK(talk.fromBus(ownerChanged("k_One.org.a.b", order)) ==
              toClient(ownerChanged("org.a.b", order)));
        for (const std::string same : {":1.9", "org.freedesktop.Notifications"}) {
            CHECK(talk.fromBus(ownerChanged(same, order)) == toClient(ownerChanged(same, order)));
        }
        for (const std::string other :
             {"org.a.b", "k_Two.org.a.b", "k_One.org.freedesktop.Notifications"}) {
            CHECK(talk.fromBus(ownerChanged(other, order)).empty());
        }
    }
}

TEST_CASE("what only looks like a word of the bus passes as it is") {
    Talk talk;
    const auto forged = ownerChanged("org.user.s").with(7, ":1.9");
    CHECK(talk.fromBus(forged) == toClient(forged));
    const auto otherInterface = ownerChanged("org.user.s").with(2, "org.a.b");
    CHECK(talk.fromBus(otherInterface) == toClient(otherInterface));
    const auto otherArguments = busSignal("NameOwnerChanged", "org.user.s");
    CHECK(talk.fromBus(otherArguments) == toClient(otherArguments));
}

TEST_CASE("who has which name is known from what the bus tells") {
    Talk talk;
    talk.fromBus(busSignal("NameAcquired", ":1.5"));
    talk.fromBus(busSignal("NameAcquired", "k_One.org.a.b"));
    CHECK(talk.bus().owners.processOf("k_One.org.a.b") == 105);

    talk.fromBus(busSignal("NameLost", "k_One.org.a.b").with(6, ":1.9"));
    CHECK(talk.bus().owners.isOwned("k_One.org.a.b"));
    talk.fromBus(busSignal("NameLost", "k_One.org.a.b").with(7, ":1.9"));
    CHECK(talk.bus().owners.isOwned("k_One.org.a.b"));
    talk.fromBus(busSignal("NameLost", "k_One.org.a.b"));
    CHECK_FALSE(talk.bus().owners.isOwned("k_One.org.a.b"));
}

TEST_CASE("what waits for a name is told when a program has it") {
    Talk talk;
    for (const std::string name : {"org.a.b", "org.freedesktop.Notifications"}) {
        talk.fromBus(busSignal("NameAcquired", "k_One." + name));
        CHECK(talk.acquired() == name);
    }
    talk.fromBus(busSignal("NameLost", "k_One.org.a.b"));
    CHECK(talk.acquired().empty());
    talk.fromBus(busSignal("NameAcquired", ":1.5"));
    CHECK(talk.acquired().empty());
    talk.fromBus(busSignal("NameAcquired", "k_One.org.a.b").with(6, ":1.9"));
    CHECK(talk.acquired().empty());
    talk.fromBus(busSignal("NameAcquired", "k_One.org.a.b").with(7, ":1.9"));
    CHECK(talk.acquired().empty());
    talk.fromBus(ownerChanged("k_One.org.a.b"));
    CHECK(talk.acquired().empty());
}
