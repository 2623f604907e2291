#include "korvane-runner/Bus/BusCall.h"

#include <algorithm>
#include <array>

namespace korvane::runner::bus {

namespace {

using Kind = BusCallKind;

constexpr std::string_view monitoring = "org.freedesktop.DBus.Monitoring";
constexpr std::string_view statistics = "org.freedesktop.DBus.Debug.Stats";

constexpr std::array<BusCall, 19> calls{{
    {"Hello", "", Kind::hello},
    {"RequestName", "su", Kind::name, NameUse::own},
    {"ReleaseName", "s", Kind::name, NameUse::own},
    {"GetNameOwner", "s", Kind::name},
    {"NameHasOwner", "s", Kind::name},
    {"ListQueuedOwners", "s", Kind::name},
    {"GetConnectionUnixUser", "s", Kind::name},
    {"GetAdtAuditSessionData", "s", Kind::name},
    {"GetConnectionSELinuxSecurityContext", "s", Kind::name},
    {"GetConnectionUnixProcessID", "s", Kind::process},
    {"GetConnectionCredentials", "s", Kind::credentials},
    {"StartServiceByName", "su", Kind::start},
    {"AddMatch", "s", Kind::rule},
    {"RemoveMatch", "s", Kind::rule},
    {"BecomeMonitor", "asu", Kind::monitor, NameUse::call, monitoring},
    {"GetConnectionStats", "s", Kind::name, NameUse::call, statistics},
    {"GetAllMatchRules", "", Kind::allRules, NameUse::call, statistics},
    {"UpdateActivationEnvironment", "a{ss}", Kind::environment},
    {"ListActivatableNames", "", Kind::activatableNames},
}};

} // namespace

bool BusCall::isAnswerChanged() const {
    switch (kind) {
    case Kind::hello:
    case Kind::activatableNames:
    case Kind::process:
    case Kind::credentials:
    case Kind::monitor:
        return true;
    default:
        return false;
    }
}

// What has no destination is for whoever reads it, and that is the bus.
bool isToBus(const MessageHeader& header) {
    return header.type == MessageType::methodCall &&
           (header.destination.empty() || header.destination == busName);
}

std::optional<BusCall> busCallOf(const MessageHeader& header) {
    if (!isToBus(header)) return std::nullopt;
    const auto call = std::ranges::find(calls, header.member, &BusCall::member);
    if (call == calls.end() || call->signature != header.signature) return std::nullopt;
    if (!header.interface.empty() && header.interface != call->interface) return std::nullopt;
    // The bus refuses this one at other paths.
    if (call->kind == Kind::environment && header.path != busPath) return std::nullopt;
    return *call;
}

} // namespace korvane::runner::bus
