#include "korvane-runner/Bus/Linux/MessageFlow.h"

#include "korvane-runner/Bus/Activation.h"

#include <utility>

namespace korvane::runner::bus {

namespace {

using Content = Delivery::Content;
using Message = OutputQueue::Message;

/// So many can have come with one message that is not complete, and the beginning of the next.
constexpr std::size_t mostArrived = 2 * mostDescriptors;

std::string_view bodyOf(const MessageHeader& header, std::string_view bytes) {
    return bytes.substr(bytes.size() - header.bodyLength);
}

} // namespace

// What the bus passes on is as anybody on it wrote it. Were a long path of a stranger's a fault, he
// could end every program of the instance.
MessageFlow::MessageFlow(Side from, LinkParts parts)
    : from_(from), parts_(parts),
      stream_(from == Side::client ? longestOwnHeader : longestMessage) {}

// A descriptor comes with a byte of its message. Where no message has begun, what is left belongs
// to none: it must not be taken for one of the next.
Fault MessageFlow::take(std::string_view bytes) {
    const auto fault = stream_.take(bytes, *this);
    if (fault != Fault{}) return fault;
    if (stream_.isBetweenMessages()) source().arrived().clear();
    if (source().arrived().size() > mostArrived) return {"There are too many descriptors"};
    return {};
}

bool MessageFlow::hasDescriptors(const MessageHeader& header) const {
    return source().arrived().size() >= header.unixFds;
}

Verdict MessageFlow::ask(const MessageHeader& header, std::string_view body) {
    return from_ == Side::client ? parts_.conversation.fromClient(header, body)
                                 : parts_.conversation.fromBus(header, body);
}

Checked<MessageFlow::Body> MessageFlow::beginMessage(const MessageHeader& header,
                                                     std::string_view head) {
    if (header.unixFds > mostDescriptors) return Fault{"There are too many descriptors"};
    if (!hasDescriptors(header)) {
        if (header.bodyLength > longestReadBody)
            return Fault{"Descriptors come behind a long body"};
        return Body::collected;
    }
    if (header.bodyLength == 0 || parts_.conversation.needsBody(from_, header)) {
        return Body::collected;
    }
    const auto verdict = ask(header, {});
    if (verdict.waitsFor.empty()) {
        beginStreamed(header, head, verdict);
        return Body::streamed;
    }
    // Asked once more when all of it is there, for by then somebody may have the name.
    if (reserve(header, head)) return Body::collected;
    source().takeArrived(header.unixFds);
    refuse(header, verdict.waitsFor);
    bodyTo_ = nullptr;
    return Body::streamed;
}

void MessageFlow::beginStreamed(const MessageHeader& header, std::string_view head,
                                const Verdict& verdict) {
    auto descriptors = source().takeArrived(header.unixFds);
    bodyTo_ = nullptr;
    for (const auto& delivery : verdict.deliveries) {
        auto& queue = queueTo(delivery.to);
        if (deliverWhole(queue, delivery, descriptors)) continue;
        queue.push(delivery.content == Content::header ? delivery.bytes : head,
                   std::exchange(descriptors, {}), Message::goesOn);
        bodyTo_ = &queue;
    }
}

/// False where what came is delivered: with another header, or as it is.
bool MessageFlow::deliverWhole(OutputQueue& queue, const Delivery& delivery,
                               Descriptors& descriptors) {
    if (delivery.content == Content::injected) {
        queue.insert(delivery.bytes);
    } else if (delivery.content == Content::message) {
        queue.push(delivery.bytes, std::exchange(descriptors, {}));
    } else {
        return false;
    }
    return true;
}

void MessageFlow::bodyPart(std::string_view bytes, Part part) {
    if (bodyTo_ == nullptr) return;
    bodyTo_->push(bytes, {}, part == Part::last ? Message::ends : Message::goesOn);
}

Fault MessageFlow::message(const MessageHeader& header, std::string_view bytes) {
    giveBack();
    if (!hasDescriptors(header)) return {"Descriptors are missing"};
    const bool isRead = parts_.conversation.needsBody(from_, header);
    const auto verdict = ask(header, isRead ? bodyOf(header, bytes) : std::string_view());
    auto descriptors = source().takeArrived(header.unixFds);
    if (verdict.waitsFor.empty()) {
        deliver(header, bytes, verdict, std::move(descriptors));
    } else {
        hold(header, bytes, verdict, std::move(descriptors));
    }
    if (!verdict.acquired.empty()) parts_.room.acquired(verdict.acquired);
    return {};
}

void MessageFlow::deliver(const MessageHeader& header, std::string_view bytes,
                          const Verdict& verdict, Descriptors descriptors) {
    for (const auto& delivery : verdict.deliveries) {
        auto& queue = queueTo(delivery.to);
        if (deliverWhole(queue, delivery, descriptors)) continue;
        if (delivery.content == Content::unchanged) {
            queue.push(bytes, std::exchange(descriptors, {}));
        } else {
            queue.push(delivery.bytes, std::exchange(descriptors, {}), Message::goesOn);
            queue.push(bodyOf(header, bytes));
        }
    }
}

void MessageFlow::hold(const MessageHeader& header, std::string_view bytes, const Verdict& verdict,
                       Descriptors descriptors) {
    HeldMessage held{.head = std::string(bytes.substr(0, bytes.size() - header.bodyLength)),
                     .descriptors = std::move(descriptors)};
    if (!verdict.deliveries.empty()) {
        const auto& delivery = verdict.deliveries.front();
        held.to = delivery.to;
        held.bytes = delivery.content == Content::unchanged ? std::string(bytes) : delivery.bytes;
        if (delivery.content == Content::header) held.bytes += bodyOf(header, bytes);
        if (delivery.content == Content::injected) held.descriptors.clear();
    }
    if (!parts_.room.hold(parts_.client, verdict.waitsFor, std::move(held))) {
        refuse(header, verdict.waitsFor);
    }
}

// As much as it takes when it waits: one that begins is counted as one that is there, for many
// programs could begin many.
bool MessageFlow::reserve(const MessageHeader& header, std::string_view head) {
    const auto bytes = 2 * head.size() + header.bodyLength;
    if (!parts_.room.reserve(bytes)) return false;
    reserved_ = bytes;
    return true;
}

void MessageFlow::giveBack() noexcept {
    if (reserved_ > 0) parts_.room.giveBack(std::exchange(reserved_, 0));
}

void MessageFlow::refuse(const MessageHeader& header, const std::string& service) {
    const auto error = ActivationError::full(service);
    for (const auto& delivery :
         parts_.conversation.refused(header, error.name, error.text).deliveries) {
        queueTo(delivery.to).insert(delivery.bytes);
    }
}

} // namespace korvane::runner::bus
