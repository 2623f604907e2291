#include "korvane-runner/Bus/BusReplies.h"

namespace korvane::runner::bus {

namespace {

bool isErrorText(const MessageHeader& header) {
    return header.type == MessageType::error && header.signature == "s";
}

/// The bus lists nothing else but names.
bool isList(const MessageHeader& header) {
    return header.type == MessageType::methodReturn && header.signature == "as";
}

/// What is told of a program of the instance with the process `number`. The bus only sees the
/// process in between: its number is exchanged, and its descriptor, which newer ones tell beside
/// that, is not spoken of. It still comes along, since others are counted by their places, and is
/// closed like any that a program has no use for.
std::optional<std::string> credentialsOf(const MessageHeader& header, std::string_view body,
                                         std::uint32_t number) {
    auto others = tryLeaveOut(header.order, body, "ProcessFD");
    auto exchanged = tryExchangeNumber(header.order, others ? *others : body, "ProcessID", number);
    return exchanged ? exchanged : others;
}

/// The call that a reply is to, as far as that is told.
MessageHeader callOf(const MessageHeader& reply) {
    return {.order = reply.order, .type = MessageType::methodCall, .serial = reply.replySerial};
}

} // namespace

bool BusReplies::needsBody(const BusClient& client, const MessageHeader& header) {
    if (isErrorText(header)) return true;
    return client.isAddressed(header) &&
           (isList(header) || client.pending.contains(header.replySerial));
}

Verdict BusReplies::verdict(const MessageHeader& header, std::string_view body) {
    const bool isAddressed = client_.isAddressed(header);
    if (isAddressed && header.replySerial == reservedSerial && client_.isReservedOurs) return {};
    std::optional<PendingReply> pending;
    if (isAddressed) pending = client_.pending.take(header.replySerial);
    if (header.type == MessageType::error) return error(header, body);
    if (isAddressed && isList(header)) return names(pending, header, body);
    return client_.told(header, pending ? bodyOf(*pending, header, body) : std::nullopt);
}

Verdict BusReplies::error(const MessageHeader& header, std::string_view body) const {
    if (!isErrorText(header)) return client_.told(header);
    std::string text = "The text is longer than 4 MiB";
    if (const auto values = tryReadBody(header.order, header.signature, body)) {
        const auto& told = std::get<std::string>((*values)[0]);
        text = client_.bus.names.textFromBus(told);
        if (text == told) return client_.told(header);
    }
    return client_.told(header, writtenBody(header.order, alone(std::move(text))));
}

Verdict BusReplies::names(const std::optional<PendingReply>& pending, const MessageHeader& header,
                          std::string_view body) const {
    const auto& bus = client_.bus;
    const auto values = tryReadBody(header.order, header.signature, body);
    if (!values) {
        return client_.refused(callOf(header), "LimitsExceeded",
                               "The list of names is longer than 4 MiB");
    }
    TextList names;
    for (const auto& name : std::get<TextList>((*values)[0])) {
        auto known = isBusName(name) ? bus.names.fromBus(name, NameUse::call) : name;
        if (known) names.push_back(std::move(*known));
    }
    if (pending && pending->kind == BusCallKind::activatableNames) {
        for (const auto& name : bus.activatable) {
            if (bus.canStart(name)) names.push_back(name);
        }
    }
    return client_.told(header, writtenBody(header.order, alone(std::move(names))));
}

/// What stands in place of the body of a method return; absent where it stays.
std::optional<std::string> BusReplies::bodyOf(const PendingReply& pending,
                                              const MessageHeader& header, std::string_view body) {
    switch (pending.kind) {
    case BusCallKind::hello:
        noteUniqueName(header, body);
        return std::nullopt;
    case BusCallKind::monitor:
        client_.isMonitor = true;
        return std::nullopt;
    case BusCallKind::process:
    case BusCallKind::credentials:
        return processBody(pending, header, body);
    case BusCallKind::name:
    case BusCallKind::start:
    case BusCallKind::rule:
    case BusCallKind::environment:
    case BusCallKind::allRules:
    case BusCallKind::activatableNames:
        break;
    }
    return std::nullopt;
}

/// Likewise, of what tells whose process a name is: programs of the instance are told their own.
std::optional<std::string> BusReplies::processBody(const PendingReply& pending,
                                                   const MessageHeader& header,
                                                   std::string_view body) const {
    const auto process = client_.bus.owners.processOf(pending.name);
    if (!process) return std::nullopt;
    const auto number = static_cast<std::uint32_t>(*process);
    if (pending.kind == BusCallKind::process && header.signature == "u") {
        return writtenBody(header.order, alone(number));
    }
    if (pending.kind == BusCallKind::credentials && header.signature == "a{sv}") {
        return credentialsOf(header, body, number);
    }
    return std::nullopt;
}

/// Takes the name that the bus gives the client, where it is one: it is written into messages.
void BusReplies::noteUniqueName(const MessageHeader& header, std::string_view body) {
    auto values = tryReadBody(header.order, header.signature, body);
    if (!values || header.signature != "s" || !client_.uniqueName.empty()) return;
    auto& name = std::get<std::string>((*values)[0]);
    if (!isUniqueName(name) || !isBusName(name)) return;
    client_.uniqueName = std::move(name);
    client_.connection = client_.bus.owners.connected(client_.uniqueName, client_.process);
}

} // namespace korvane::runner::bus
