#include "korvane-runner/Bus/MessageBody.h"
#include "korvane-runner/Bus/MessageHeader.h"

#include <cstdlib>

using namespace korvane::runner::bus;

/// A header that can be read is the same when it is written again, and so is a body.
// NOLINTNEXTLINE(readability-identifier-naming): the name that fuzzing engines call
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view message(reinterpret_cast<const char*>(data), size);
    const auto header = MessageHeader::read(message);
    if (!header) return 0;
    const auto length = frameOf(message)->header;
    if (header->rebuilt({}) != message.substr(0, length)) std::abort();
    const auto other = header->rebuilt({.destination = "org.example.Other"});
    const auto again = MessageHeader::read(other);
    if (!again || again->fieldsBefore != header->fieldsBefore) std::abort();
    if (again->fieldsBehind != header->fieldsBehind) std::abort();
    if (!header->destination.empty() && again->destination != "org.example.Other") std::abort();

    const auto body = message.substr(length);
    const auto values = tryReadBody(header->order, header->signature, body);
    if (values && writtenBody(header->order, *values) != body) std::abort();
    const auto changed = tryExchangeNumber(header->order, body, "ProcessID", 7);
    if (changed && changed->size() != body.size()) std::abort();
    return 0;
}
