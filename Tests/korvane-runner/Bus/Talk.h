#pragma once

#include "Messages.h"
#include "korvane-runner/Bus/Conversation.h"

#include <string>
#include <vector>

namespace korvane::test {

/// The serial that no program comes to.
inline constexpr std::uint32_t reserved = 0xFFFF'FFFF;
inline const std::string errors = "org.freedesktop.DBus.Error.";

/// What is written, each to its side: "> " the bus, "< " the client.
using Written = std::vector<std::string>;

Written toBus(const RawMessage& message);
Written toClient(const RawMessage& message);

/// An instance and one of its programs, which has said hello and is ":1.5" of process 105.
class Talk {
public:
    explicit Talk(runner::bus::Secrets secrets = runner::bus::Secrets::shared);

    runner::bus::InstanceBus& bus() { return bus_; }
    runner::bus::Conversation& conversation() { return conversation_; }
    /// Of what was said last.
    const std::string& waitsFor() const { return waitsFor_; }
    const std::string& acquired() const { return acquired_; }

    /// Says something, and shows the body only where it is asked for, as the one with the sockets
    /// does.
    Written client(const RawMessage& message) { return pass(runner::bus::Side::client, message); }
    Written fromBus(const RawMessage& message) { return pass(runner::bus::Side::bus, message); }

private:
    Written pass(runner::bus::Side from, const RawMessage& message);

    runner::bus::InstanceBus bus_;
    runner::bus::Conversation conversation_;
    std::string waitsFor_;
    std::string acquired_;
};

/// A call to the bus about a name, or about a name and a number.
RawMessage nameCall(const std::string& member, const std::string& name, char order = 'l');
RawMessage numberedNameCall(const std::string& member, const std::string& name, char order = 'l');
/// The bus tells everybody that ":1.9" has a name now.
RawMessage ownerChanged(const std::string& name, char order = 'l');

Bytes list(const std::vector<std::string>& texts, char order = 'l');

/// What is answered in the bus's place to the call of serial 7.
RawMessage injectedAnswer(char order = 'l');
RawMessage injectedNumber(std::uint32_t number, char order);
RawMessage injectedError(const std::string& name, const std::string& text);

/// The rule that is added or removed beside another.
RawMessage secondRule(const std::string& member, const std::string& rule, char order = 'l');

} // namespace korvane::test
