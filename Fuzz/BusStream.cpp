#include "korvane-runner/Bus/MessageStream.h"

#include <cstdlib>

using namespace korvane::runner::bus;

namespace {

/// Collects what has an odd serial, and keeps all that it gets.
class Keeper final : public MessageReceiver {
public:
    Checked<Body> beginMessage(const MessageHeader& header, std::string_view head) override {
        bytes += head;
        return header.serial % 2 == 0 ? Body::streamed : Body::collected;
    }
    Fault message(const MessageHeader& header, std::string_view whole) override {
        if (whole.size() < header.bodyLength) std::abort();
        bytes += whole.substr(whole.size() - header.bodyLength);
        return {};
    }
    void bodyPart(std::string_view part, Part) override { bytes += part; }

    std::string bytes;
};

} // namespace

/// Messages are the same however they are cut into pieces, of which the first byte tells the size.
// NOLINTNEXTLINE(readability-identifier-naming): the name that fuzzing engines call
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::string_view all(reinterpret_cast<const char*>(data) + 1, size - 1);
    Keeper whole;
    MessageStream stream;
    const auto fault = stream.take(all, whole);
    if (!all.starts_with(whole.bytes)) std::abort();
    if (fault == Fault{} && stream.isBetweenMessages() && whole.bytes != all) std::abort();

    Keeper pieces;
    MessageStream second;
    auto found = Fault{};
    const std::size_t step = data[0] + std::size_t{1};
    for (std::size_t i = 0; i < all.size() && found == Fault{}; i += step) {
        found = second.take(all.substr(i, step), pieces);
    }
    if (found != fault || pieces.bytes != whole.bytes) std::abort();
    return 0;
}
