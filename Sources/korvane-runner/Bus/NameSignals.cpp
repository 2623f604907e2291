#include "korvane-runner/Bus/NameSignals.h"

namespace korvane::runner::bus {

bool NameSignals::isOne(const MessageHeader& header) {
    if (header.type != MessageType::signal || header.interface != busName) return false;
    if (header.member == "NameOwnerChanged") return header.signature == "sss";
    return (header.member == "NameAcquired" || header.member == "NameLost") &&
           header.signature == "s";
}

/// Notes what the bus says about the client's own names.
void NameSignals::noteOwn(const MessageHeader& header, const std::string& name) {
    auto& owners = client_.bus.owners;
    if (header.member == "NameAcquired") return owners.acquired(name, client_.uniqueName);
    owners.lost(name, client_.uniqueName);
    // Only a monitor loses this name while it is connected.
    if (name == client_.uniqueName) client_.isMonitor = true;
}

Verdict NameSignals::verdict(const MessageHeader& header, std::string_view body) {
    auto values = tryReadBody(header.order, header.signature, body);
    if (!values) return {}; // no bus writes that, and nobody could tell whose name it is about
    auto& name = std::get<std::string>((*values)[0]);
    const bool isAddressed = client_.isAddressed(header);
    const bool isOwn = header.member != "NameOwnerChanged";
    if (isOwn && isAddressed) noteOwn(header, name);
    auto known = client_.bus.names.fromBus(name, isOwn ? NameUse::own : NameUse::call);
    if (!known) return {};

    std::optional<std::string> changed;
    if (*known != name) {
        name = *known;
        changed = writtenBody(header.order, *values);
    }
    auto verdict = client_.told(header, std::move(changed));
    if (header.member == "NameAcquired" && isAddressed && !isUniqueName(*known)) {
        verdict.acquired = std::move(*known);
    }
    return verdict;
}

} // namespace korvane::runner::bus
