#pragma once

#include "korvane-runner/Bus/BusClient.h"

namespace korvane::runner::bus {

/// What the bus itself replies to a client: method returns and errors.
///
/// Which reply belongs to which call is told by the serial that the client has chosen, and it may
/// choose one for several calls. So what must not be shown is left out of every reply; the call
/// only tells of what is put in.
class BusReplies {
public:
    /// `client` must outlive it.
    explicit BusReplies(BusClient& client) : client_(client) {}

    /// Whether the body has to be there before the verdict.
    static bool needsBody(const BusClient& client, const MessageHeader& header);

    /// What becomes of a reply, whose body is empty where it is not needed or too long. A list of
    /// names that is too long becomes an error.
    Verdict verdict(const MessageHeader& header, std::string_view body);

private:
    Verdict error(const MessageHeader& header, std::string_view body) const;
    Verdict names(const std::optional<PendingReply>& pending, const MessageHeader& header,
                  std::string_view body) const;
    std::optional<std::string> bodyOf(const PendingReply& pending, const MessageHeader& header,
                                      std::string_view body);
    std::optional<std::string> processBody(const PendingReply& pending, const MessageHeader& header,
                                           std::string_view body) const;
    void noteUniqueName(const MessageHeader& header, std::string_view body);

    BusClient& client_;
};

} // namespace korvane::runner::bus
