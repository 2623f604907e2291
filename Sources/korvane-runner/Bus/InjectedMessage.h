#pragma once

#include "korvane-runner/Bus/MessageBody.h"
#include "korvane-runner/Bus/MessageHeader.h"

/// Whole messages that nobody has sent. What they are made of is valid, and short enough for one.
namespace korvane::runner::bus {

/// What the bus would answer to `call`, in the byte order of the call. `destination` is the unique
/// name of whoever has called; `values` are the answer's.
std::string injectedAnswer(const MessageHeader& call, std::string_view destination,
                           std::string_view signature, const std::vector<BodyValue>& values);

/// The error that the bus would answer; `name` is behind "org.freedesktop.DBus.Error.".
std::string injectedError(const MessageHeader& call, std::string_view destination,
                          std::string_view name, const std::string& text);

/// A call to the bus with one text, of which no answer is wanted.
std::string injectedCall(ByteOrder order, std::uint32_t serial, std::string_view member,
                         const std::string& text);

} // namespace korvane::runner::bus
