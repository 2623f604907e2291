#pragma once

#include "korvane-runner/Bus/BusClient.h"

namespace korvane::runner::bus {

/// What the bus tells unasked about names: the signals NameAcquired and NameLost about the client's
/// own, and NameOwnerChanged about anybody's.
class NameSignals {
public:
    /// `client` must outlive it.
    explicit NameSignals(BusClient& client) : client_(client) {}

    /// Whether what comes from the bus is one of them.
    static bool isOne(const MessageHeader& header);

    /// What becomes of one; one about a name of the user or of another instance goes nowhere.
    Verdict verdict(const MessageHeader& header, std::string_view body);

private:
    void noteOwn(const MessageHeader& header, const std::string& name);

    BusClient& client_;
};

} // namespace korvane::runner::bus
