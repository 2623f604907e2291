#include "korvane-runner/Bus/ServiceManager.h"

#include "Support/Expect.h"
#include "Talk.h"

using namespace korvane::runner::bus;
using namespace korvane::test;

namespace {

const std::string manager = "org.freedesktop.systemd1";
const std::vector<std::string> changes{"SetEnvironment", "UnsetEnvironment",
                                       "UnsetAndSetEnvironment"};

/// What a program asks of the manager, which ":1.9" is.
RawMessage managerCall(const std::string& member, char order = 'l') {
    auto call = callTo(manager, order).with(1, "/org/freedesktop/systemd1");
    call.with(2, manager + ".Manager").with(3, member);
    return call.withBody("as", list({"HOME=/home/of/the/instance"}, order));
}

RawMessage denied(char order = 'l') {
    const std::string text = "The environment of your own services is not changed from an instance";
    RawMessage message{.order = order, .type = 3, .flags = 1, .serial = 1};
    message.with(6, ":1.5").with(4, errors + "AccessDenied").withNumber(5, 7);
    return message.withBody("s", Bytes(order).text(text)).with(7, "org.freedesktop.DBus");
}

} // namespace

TEST_CASE("the environment of the user's services is not changed from an instance") {
    for (const char order : {'l', 'B'}) {
        for (const auto& member : changes) {
            CAPTURE(member);
            Talk talk;
            const auto call = managerCall(member, order);
            CHECK(talk.client(call) == toClient(denied(order)));
            CHECK(talk.client(RawMessage(call).without(2)) == toClient(denied(order)));
            CHECK(talk.client(RawMessage(call).with(1, "/")) == toClient(denied(order)));
            CHECK(talk.client(RawMessage(call).with(6, ":1.9")) == toClient(denied(order)));
            CHECK(talk.client(RawMessage(call).without(2).with(6, ":1.9")) ==
                  toClient(denied(order)));
        }
    }
}

TEST_CASE("nobody is told who wants no reply, and the environment stays as it was") {
    Talk talk;
    for (const auto& member : changes) {
        auto call = managerCall(member);
        call.flags = noReplyExpected;
        CHECK(talk.client(call).empty());
    }
}

TEST_CASE("all else that programs ask of the user's manager passes as it is") {
    Talk talk;
    const auto set = managerCall("SetEnvironment");
    auto signal = set;
    signal.type = 4;
    for (const auto& message :
         {managerCall("StartTransientUnit"), managerCall("GetUnit").without(2),
          RawMessage(set).with(2, manager + ".Job"), signal,
          RawMessage(set).with(6, "org.freedesktop.Notifications"),
          RawMessage(set).with(6, ":1.9").with(1, "/")}) {
        CHECK(talk.client(message) == toBus(message));
    }
}

TEST_CASE("a program of the instance is none of the user's managers, whatever it answers to") {
    Talk talk;
    const auto own = managerCall("SetEnvironment");
    CHECK(talk.client(RawMessage(own).with(6, ":1.5")) == toBus(RawMessage(own).with(6, ":1.5")));
    CHECK(talk.client(RawMessage(own).with(6, "org.a.b")) ==
          toBus(RawMessage(own).with(6, "k_One.org.a.b")));
}
