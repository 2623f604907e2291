#include "korvane-runner/Bus/ServiceManager.h"

#include "korvane-runner/Bus/NameSyntax.h"

namespace korvane::runner::bus {

namespace {

constexpr std::string_view managerName = "org.freedesktop.systemd1";
constexpr std::string_view managerPath = "/org/freedesktop/systemd1";
constexpr std::string_view managerInterface = "org.freedesktop.systemd1.Manager";

bool isChange(std::string_view member) {
    return member == "SetEnvironment" || member == "UnsetEnvironment" ||
           member == "UnsetAndSetEnvironment";
}

// Whose a unique name is that nobody of the instance has is not known, but no other program has an
// object like this one.
bool isForManager(const MessageHeader& header, const OwnerTable& owners) {
    if (header.destination == managerName) return true;
    return header.path == managerPath && isUniqueName(header.destination) &&
           !owners.isOwned(header.destination);
}

} // namespace

bool changesUsersServices(const MessageHeader& header, const OwnerTable& owners) {
    return header.type == MessageType::methodCall && isChange(header.member) &&
           (header.interface.empty() || header.interface == managerInterface) &&
           isForManager(header, owners);
}

} // namespace korvane::runner::bus
