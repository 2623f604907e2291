#include "korvane-runner/Bus/Conversation.h"
#include "korvane-runner/Bus/Handshake.h"

#include <cstdlib>

using namespace korvane::runner::bus;

namespace {

/// Where the handshake ends must not depend on how it is cut into pieces.
std::string_view behindHandshake(std::string_view bytes) {
    ClientHandshake whole;
    ClientHandshake pieces;
    const auto taken = whole.take(bytes);
    for (std::size_t i = 0; i < bytes.size() && !pieces.isOver(); ++i) {
        if (!pieces.take(bytes.substr(i, 1))) break;
    }
    if (whole.isOver() != pieces.isOver()) std::abort();
    return whole.isOver() ? bytes.substr(*taken) : std::string_view();
}

/// What is written is a message, of the length that it says.
void checkVerdict(const Verdict& verdict, std::size_t bodyLength) {
    for (const auto& delivery : verdict.deliveries) {
        if (delivery.content == Delivery::Content::unchanged) continue;
        const auto frame = frameOf(delivery.bytes);
        if (!frame || !MessageHeader::read(delivery.bytes)) std::abort();
        const bool isHeader = delivery.content == Delivery::Content::header;
        if (delivery.bytes.size() + (isHeader ? bodyLength : 0) != frame->length()) std::abort();
    }
}

/// Whatever a program writes, it goes to nobody by a name that is private to the user.
void checkDestination(const Verdict& verdict, const MessageHeader& header, const InstanceBus& bus) {
    for (const auto& delivery : verdict.deliveries) {
        if (delivery.to != Side::bus) continue;
        const bool isUnchanged = delivery.content == Delivery::Content::unchanged;
        const auto written = isUnchanged ? header : *MessageHeader::read(delivery.bytes);
        const auto& name = written.destination;
        if (!name.empty() && !bus.names.fromBus(name, NameUse::call)) std::abort();
    }
}

} // namespace

/// Messages behind a handshake, each from the side that its serial says.
// NOLINTNEXTLINE(readability-identifier-naming): the name that fuzzing engines call
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    auto bytes = behindHandshake({reinterpret_cast<const char*>(data), size});
    InstanceBus bus{InstanceNames{PrivateNames("k_One"), NamePolicy(Secrets::shared)}};
    bus.activatable = {"org.example.Service"};
    Conversation conversation(bus, 7);
    while (const auto header = MessageHeader::read(bytes)) {
        const auto frame = *frameOf(bytes);
        if (frame.length() > bytes.size()) break;
        const auto from = header->serial % 2 == 0 ? Side::client : Side::bus;
        const bool isNeeded = conversation.needsBody(from, *header);
        const auto body = bytes.substr(frame.header, isNeeded ? frame.body : 0);
        const auto verdict = from == Side::client ? conversation.fromClient(*header, body)
                                                  : conversation.fromBus(*header, body);
        checkVerdict(verdict, frame.body);
        if (from == Side::client) checkDestination(verdict, *header, bus);
        bytes.remove_prefix(frame.length());
    }
    return 0;
}
