#pragma once

#include "korvane-runner/Bus/MessageHeader.h"

#include <string>
#include <vector>

namespace korvane::runner::bus {

enum class Side { client, bus };

/// A message that is to be written because of one that was read.
struct Delivery {
    /// What `bytes` are.
    enum class Content {
        unchanged, ///< nothing: the message goes as it came
        header,    ///< what stands in place of its header; its body follows
        message,   ///< what stands in place of all of it; its descriptors go along
        injected,  ///< another message, which has no descriptors
    };

    Side to;
    Content content = Content::unchanged;
    std::string bytes{};
    bool operator==(const Delivery&) const = default;
};

/// What becomes of a message. Where it goes nowhere, its descriptors are to be closed.
struct Verdict {
    std::vector<Delivery> deliveries{};
    /// The name, as programs know it, that something has to be started for before these are
    /// written. Empty: they are at once.
    std::string waitsFor{};
    /// The name, as programs know it, that the program has from now on. Empty: none.
    std::string acquired{};

    /// The message goes as it came.
    static Verdict unchanged(Side to) { return {{{to}}}; }
    /// It goes with another header, which is already written.
    static Verdict withHeader(Side to, std::string header);
    /// It goes with another body, in the byte order that it has, of the types that it has, and with
    /// what else `changes` has for its header.
    static Verdict withBody(Side to, const MessageHeader& header, const std::string& body,
                            HeaderChanges changes = {});
    /// The client gets another message in its place.
    static Verdict injected(std::string message);
};

} // namespace korvane::runner::bus
