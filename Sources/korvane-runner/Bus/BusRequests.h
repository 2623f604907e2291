#pragma once

#include "korvane-runner/Bus/BusClient.h"

namespace korvane::runner::bus {

/// The method calls of a client to the bus itself: which names they are about, which signals the
/// client wants to hear of, what it has to be told without the bus.
class BusRequests {
public:
    /// `client` must outlive it.
    explicit BusRequests(BusClient& client) : client_(client) {}

    /// What becomes of a call that busCallOf() knows. `body` is empty where it is longer than
    /// `longestReadBody`. Arguments that are not what their signature says go to the bus, which
    /// ends the connection for it.
    Verdict verdict(const MessageHeader& header, const BusCall& call, std::string_view body);

private:
    Verdict aboutName(const MessageHeader& header, const BusCall& call,
                      std::vector<BodyValue> values);
    Verdict start(const MessageHeader& header, const std::string& asked,
                  const std::string& name) const;
    Verdict aboutRule(const MessageHeader& header, std::vector<BodyValue> values);
    Verdict tooLongRule(const MessageHeader& header) const;
    Verdict becomeMonitor(const MessageHeader& header, const BusCall& call,
                          std::vector<BodyValue> values);
    Verdict updateEnvironment(const MessageHeader& header, const std::vector<BodyValue>& values);
    void await(const MessageHeader& header, const BusCall& call, std::string name = {});
    static bool isAwaited(const MessageHeader& header, const BusCall& call);

    BusClient& client_;
};

} // namespace korvane::runner::bus
