#pragma once

#include "korvane-runner/Bus/MessageHeader.h"
#include "korvane-runner/Bus/NamePolicy.h"
#include "korvane-runner/Bus/NameSyntax.h"

namespace korvane::runner::bus {

inline constexpr std::string_view busPath = "/org/freedesktop/DBus";

/// What is done about a call to the bus itself, or about its answer.
enum class BusCallKind {
    name,             ///< its first argument is a name
    start,            ///< likewise, and whoever has it may have to be started
    rule,             ///< its argument is a match rule
    monitor,          ///< likewise a list of them
    environment,      ///< its argument is for services that are started later
    hello,            ///< the answer is the client's unique name
    allRules,         ///< the answer tells what other programs listen to
    activatableNames, ///< the answer is a list of names, which lacks those of the instance
    process,          ///< its argument is a name, the answer the number of a process
    credentials,      ///< likewise among other things
};

/// A method of the bus itself (D-Bus Specification, "Message Bus Messages") that cannot be passed
/// on without a thought.
struct BusCall {
    std::string_view member;
    std::string_view signature; ///< of its arguments
    BusCallKind kind;
    NameUse use = NameUse::call; ///< of the name, where its first argument is one
    std::string_view interface = busName;

    /// Whether something becomes of the reply that depends on the call.
    bool isAnswerChanged() const;
    bool operator==(const BusCall&) const = default;
};

/// Whether a message goes to the bus itself.
bool isToBus(const MessageHeader& header);
/// Whether a message comes from the bus itself. Nobody else can say so: it writes the sender.
constexpr bool isFromBus(const MessageHeader& header) { return header.sender == busName; }

/// What a call to the bus is, where it cannot pass as it stands. Absent for all others, and for
/// those with other arguments than they have, for which the bus has an error.
std::optional<BusCall> busCallOf(const MessageHeader& header);

} // namespace korvane::runner::bus
