#include "korvane-runner/Bus/MessageStream.h"

#include <algorithm>

namespace korvane::runner::bus {

namespace {

/// What may stay reserved between two messages.
constexpr std::size_t mostReserved = 4096;

} // namespace

Fault MessageStream::take(std::string_view bytes, MessageReceiver& receiver) {
    while (true) {
        if (streamed_ != 0) {
            if (!passStreamed(bytes, receiver)) return {};
            continue;
        }
        const auto there = gather(bytes);
        if (there.empty()) return {};
        if (const auto fault = step(there, bytes, receiver); fault != Fault{}) return fault;
    }
}

/// Whether there were any.
bool MessageStream::passStreamed(std::string_view& bytes, MessageReceiver& receiver) {
    if (bytes.empty()) return false;
    const auto part = bytes.substr(0, streamed_);
    bytes.remove_prefix(part.size());
    streamed_ -= part.size();
    using Part = MessageReceiver::Part;
    receiver.bodyPart(part, streamed_ == 0 ? Part::last : Part::middle);
    return true;
}

/// What the stage needs; empty where it has not come yet. Most messages come in one piece, and are
/// read where they are.
std::string_view MessageStream::gather(std::string_view& bytes) {
    if (kept_.empty() && bytes.size() >= wanted_) return bytes.substr(0, wanted_);
    const auto part = bytes.substr(0, wanted_ - kept_.size());
    kept_ += part;
    bytes.remove_prefix(part.size());
    return kept_.size() < wanted_ ? std::string_view() : kept_;
}

/// Goes on to the next message.
void MessageStream::consume(std::string_view& bytes) {
    if (kept_.empty()) bytes.remove_prefix(wanted_);
    kept_.clear();
    if (kept_.capacity() > mostReserved) std::string().swap(kept_); // nothing else gives it back
    stage_ = Stage::start;
    wanted_ = frameStart;
}

Fault MessageStream::step(std::string_view there, std::string_view& bytes,
                          MessageReceiver& receiver) {
    if (stage_ == Stage::header) return readHeader(there, bytes, receiver);
    if (stage_ == Stage::start) {
        const auto frame = frameOf(there);
        if (!frame) return Fault{frame.fault()};
        if (frame->header > longestHeader_) return {"The header is too long"};
        stage_ = Stage::header;
        wanted_ = frame->header;
        return {};
    }
    // Its texts are views of bytes that have moved since it was read for the first time.
    const auto header = MessageHeader::read(there);
    if (!header) return Fault{header.fault()};
    const auto fault = receiver.message(*header, there);
    consume(bytes);
    return fault;
}

Fault MessageStream::readHeader(std::string_view head, std::string_view& bytes,
                                MessageReceiver& receiver) {
    const auto header = MessageHeader::read(head);
    if (!header) return Fault{header.fault()};
    const auto body = receiver.beginMessage(*header, head);
    if (!body) return Fault{body.fault()};
    if (header->bodyLength == 0) {
        const auto fault = receiver.message(*header, head);
        consume(bytes);
        return fault;
    }
    if (*body == MessageReceiver::Body::collected) {
        stage_ = Stage::message;
        wanted_ += header->bodyLength;
        return {};
    }
    const auto length = header->bodyLength;
    consume(bytes);
    streamed_ = length;
    return {};
}

} // namespace korvane::runner::bus
