#include "korvane-runner/Bus/Verdict.h"

#include <utility>

namespace korvane::runner::bus {

Verdict Verdict::withHeader(Side to, std::string header) {
    return {{{to, Delivery::Content::header, std::move(header)}}};
}

Verdict Verdict::withBody(Side to, const MessageHeader& header, const std::string& body,
                          HeaderChanges changes) {
    changes.bodyLength = body.size();
    return {{{to, Delivery::Content::message, header.rebuilt(changes) + body}}};
}

Verdict Verdict::injected(std::string message) {
    return {{{Side::client, Delivery::Content::injected, std::move(message)}}};
}

} // namespace korvane::runner::bus
