#include "korvane-runner/Bus/Conversation.h"

#include "korvane-runner/Bus/BusReplies.h"
#include "korvane-runner/Bus/BusRequests.h"
#include "korvane-runner/Bus/NameSignals.h"
#include "korvane-runner/Bus/ServiceManager.h"

namespace korvane::runner::bus {

bool Conversation::needsBody(Side from, const MessageHeader& header) const {
    if (header.bodyLength == 0 || header.bodyLength > longestReadBody) return false;
    if (from == Side::client) return busCallOf(header).has_value();
    if (!isFromBus(header) || isOverheard(header)) return false;
    return NameSignals::isOne(header) || BusReplies::needsBody(client_, header);
}

Verdict Conversation::fromClient(const MessageHeader& header, std::string_view body) {
    if (header.serial == reservedSerial) client_.isReservedOurs = false;
    if (changesUsersServices(header, client_.bus.owners)) {
        return refused(header, "AccessDenied",
                       "The environment of your own services is not changed from an instance");
    }
    if (!isToBus(header)) return toProgram(header);
    const auto call = busCallOf(header);
    if (!call) return Verdict::unchanged(Side::bus);
    return BusRequests(client_).verdict(header, *call, body);
}

Verdict Conversation::toProgram(const MessageHeader& header) {
    const auto& destination = header.destination;
    if (destination.empty() || isUniqueName(destination)) return Verdict::unchanged(Side::bus);
    auto name = client_.bus.names.toBus(destination, NameUse::call);
    if (name == destination) return Verdict::unchanged(Side::bus);

    const bool mayStart = header.type == MessageType::methodCall &&
                          (header.flags & noAutoStart) == 0 && client_.bus.canStart(destination) &&
                          !client_.bus.owners.isOwned(name);
    auto verdict = Verdict::withHeader(Side::bus, header.rebuilt({.destination = std::move(name)}));
    if (mayStart) verdict.waitsFor = destination;
    return verdict;
}

// A monitor is told what others send each other, and wants it as it is. What the bus says to itself
// is translated still: that a client is a monitor is told by a serial that it has chosen.
bool Conversation::isOverheard(const MessageHeader& header) const {
    return client_.isMonitor && !client_.isAddressed(header);
}

Verdict Conversation::fromBus(const MessageHeader& header, std::string_view body) {
    if (isOverheard(header)) return Verdict::unchanged(Side::client);
    if (!isFromBus(header)) return client_.told(header);
    if (NameSignals::isOne(header)) return NameSignals(client_).verdict(header, body);
    if (header.replySerial != 0) return BusReplies(client_).verdict(header, body);
    return client_.told(header);
}

} // namespace korvane::runner::bus
