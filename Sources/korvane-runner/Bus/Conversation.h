#pragma once

#include "korvane-runner/Bus/BusClient.h"

namespace korvane::runner::bus {

/// The two directions between one program of an instance and its own connection to the user's bus,
/// message by message. It neither reads nor writes: whoever has the sockets asks it.
class Conversation {
public:
    /// With a client of the process `process`; `bus` must outlive the conversation.
    Conversation(InstanceBus& bus, std::int64_t process) : client_(bus, process) {}

    /// Whether the body has to be there before the verdict. All others can pass while they come.
    bool needsBody(Side from, const MessageHeader& header) const;

    /// What becomes of a message, whose body is empty where it is not needed. Messages have to be
    /// asked about in the order in which they came.
    Verdict fromClient(const MessageHeader& header, std::string_view body);
    Verdict fromBus(const MessageHeader& header, std::string_view body);

    /// What the client is told when a call of its own will not be answered by anybody: an error of
    /// the bus, without "org.freedesktop.DBus.Error." in front, or nothing where it wants no
    /// answer.
    Verdict refused(const MessageHeader& call, std::string_view error,
                    const std::string& text) const {
        return client_.refused(call, error, text);
    }

    /// The client's name on the bus; empty before it has one.
    const std::string& uniqueName() const { return client_.uniqueName; }

private:
    bool isOverheard(const MessageHeader& header) const;
    Verdict toProgram(const MessageHeader& header);

    BusClient client_;
};

} // namespace korvane::runner::bus
