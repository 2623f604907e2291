#include "korvane-runner/Bus/BusClient.h"

#include "korvane-runner/Bus/InjectedMessage.h"

namespace korvane::runner::bus {

BusClient::~BusClient() {
    if (!uniqueName.empty()) bus.owners.disconnected(uniqueName, connection);
}

bool BusClient::isAddressed(const MessageHeader& header) const {
    return uniqueName.empty() || header.destination == uniqueName;
}

Verdict BusClient::told(const MessageHeader& header, std::optional<std::string> body) const {
    HeaderChanges changes;
    if (!header.destination.empty() && !isUniqueName(header.destination)) {
        changes.destination = bus.names.fromBus(header.destination, NameUse::own);
        if (changes.destination == header.destination) changes.destination.reset();
    }
    if (body) return Verdict::withBody(Side::client, header, *body, std::move(changes));
    if (!changes.destination) return Verdict::unchanged(Side::client);
    return Verdict::withHeader(Side::client, header.rebuilt(changes));
}

Verdict BusClient::answered(const MessageHeader& call, std::string_view signature,
                            const std::vector<BodyValue>& values) const {
    if (!call.isReplyExpected()) return {};
    return Verdict::injected(injectedAnswer(call, uniqueName, signature, values));
}

Verdict BusClient::refused(const MessageHeader& call, std::string_view error,
                           const std::string& text) const {
    if (!call.isReplyExpected()) return {};
    return Verdict::injected(injectedError(call, uniqueName, error, text));
}

} // namespace korvane::runner::bus
