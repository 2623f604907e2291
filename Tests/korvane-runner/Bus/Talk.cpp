#include "Talk.h"

#include "Support/Expect.h"

using namespace korvane::runner::bus;

namespace korvane::test {

namespace {

std::string whole(const Delivery& delivery, const RawMessage& message) {
    switch (delivery.content) {
    case Delivery::Content::unchanged:
        return message.bytes();
    case Delivery::Content::header:
        return delivery.bytes + message.body;
    default:
        return delivery.bytes;
    }
}

} // namespace

Written toBus(const RawMessage& message) { return {"> " + message.bytes()}; }
Written toClient(const RawMessage& message) { return {"< " + message.bytes()}; }

Talk::Talk(Secrets secrets)
    : bus_{InstanceNames{PrivateNames("k_One"), NamePolicy(secrets)}}, conversation_(bus_, 105) {
    auto hello = busCall("Hello");
    hello.serial = 1;
    client(hello);
    fromBus(busAnswer(1).withBody("s", Bytes().text(":1.5")));
}

Written Talk::pass(Side from, const RawMessage& message) {
    const auto bytes = message.bytes();
    const auto header = MessageHeader::read(bytes);
    REQUIRE(header);
    const auto body = conversation_.needsBody(from, *header) ? message.body : std::string();
    const auto verdict = from == Side::client ? conversation_.fromClient(*header, body)
                                              : conversation_.fromBus(*header, body);
    waitsFor_ = verdict.waitsFor;
    acquired_ = verdict.acquired;
    Written written;
    for (const auto& delivery : verdict.deliveries) {
        written.push_back((delivery.to == Side::bus ? "> " : "< ") + whole(delivery, message));
    }
    return written;
}

RawMessage nameCall(const std::string& member, const std::string& name, char order) {
    return busCall(member, order).withBody("s", Bytes(order).text(name));
}

RawMessage numberedNameCall(const std::string& member, const std::string& name, char order) {
    return busCall(member, order).withBody("su", Bytes(order).text(name).number(4));
}

RawMessage ownerChanged(const std::string& name, char order) {
    auto signal = busSignal("NameOwnerChanged", "", order).without(6);
    return signal.withBody("sss", Bytes(order).text(name).text("").text(":1.9"));
}

Bytes list(const std::vector<std::string>& texts, char order) {
    Bytes content(order);
    for (const auto& text : texts) content.text(text);
    return Bytes(order).array(content.str());
}

/// What is answered in the bus's place.
RawMessage injectedAnswer(char order) {
    RawMessage message{.order = order, .type = 2, .flags = 1, .serial = 1};
    return message.with(6, ":1.5").withNumber(5, 7).with(7, "org.freedesktop.DBus");
}

RawMessage injectedNumber(std::uint32_t number, char order) {
    return injectedAnswer(order)
        .without(7)
        .withBody("u", Bytes(order).number(number))
        .with(7, "org.freedesktop.DBus");
}

RawMessage injectedError(const std::string& name, const std::string& text) {
    RawMessage message{.type = 3, .flags = 1, .serial = 1};
    message.with(6, ":1.5").with(4, errors + name).withNumber(5, 7);
    return message.withBody("s", Bytes().text(text)).with(7, "org.freedesktop.DBus");
}

/// The rule that is added or removed beside another.
RawMessage secondRule(const std::string& member, const std::string& rule, char order) {
    RawMessage message{.order = order, .flags = 1, .serial = reserved};
    message.with(1, "/org/freedesktop/DBus").with(2, "org.freedesktop.DBus").with(3, member);
    return message.with(6, "org.freedesktop.DBus").withBody("s", Bytes(order).text(rule));
}

} // namespace korvane::test
