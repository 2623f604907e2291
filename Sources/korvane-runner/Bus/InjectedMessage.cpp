#include "korvane-runner/Bus/InjectedMessage.h"

#include "korvane-runner/Bus/BusCall.h"
#include "korvane-runner/Bus/WireWriter.h"

namespace korvane::runner::bus {

namespace {

/// Nobody answers an answer, so that it can be that of another.
constexpr std::uint32_t answerSerial = 1;

/// Writes a message field by field.
class MessageWriter {
public:
    MessageWriter(ByteOrder order, MessageType type, std::uint32_t serial, std::string body)
        : writer_(order), body_(std::move(body)) {
        writer_.byte(static_cast<std::uint8_t>(order));
        writer_.byte(static_cast<std::uint8_t>(type));
        writer_.byte(noReplyExpected);
        writer_.byte(protocolVersion);
        writer_.number(static_cast<std::uint32_t>(body_.size()));
        writer_.number(serial);
        fields_ = writer_.beginArray('(');
    }

    MessageWriter& text(HeaderField field, std::string_view type, std::string_view text) {
        if (text.empty()) return *this;
        begin(field, type);
        writer_.text(text);
        return *this;
    }
    MessageWriter& number(HeaderField field, std::uint32_t number) {
        begin(field, "u");
        writer_.number(number);
        return *this;
    }
    MessageWriter& signature(std::string_view signature) {
        if (signature.empty()) return *this;
        begin(HeaderField::signature, "g");
        writer_.signature(signature);
        return *this;
    }

    std::string message() {
        writer_.endArray(fields_);
        writer_.align(8);
        return writer_.take() + body_;
    }

private:
    void begin(HeaderField field, std::string_view type) {
        writer_.align(8);
        writer_.byte(static_cast<std::uint8_t>(field));
        writer_.signature(type);
    }

    WireWriter writer_;
    WireWriter::Array fields_{};
    std::string body_;
};

std::string answerOf(MessageType type, const MessageHeader& call, std::string_view destination,
                     std::string_view errorName, std::string_view signature,
                     const std::vector<BodyValue>& values) {
    return MessageWriter(call.order, type, answerSerial, writtenBody(call.order, values))
        .text(HeaderField::destination, "s", destination)
        .text(HeaderField::errorName, "s", errorName)
        .number(HeaderField::replySerial, call.serial)
        .signature(signature)
        .text(HeaderField::sender, "s", busName)
        .message();
}

} // namespace

std::string injectedAnswer(const MessageHeader& call, std::string_view destination,
                           std::string_view signature, const std::vector<BodyValue>& values) {
    return answerOf(MessageType::methodReturn, call, destination, "", signature, values);
}

std::string injectedError(const MessageHeader& call, std::string_view destination,
                          std::string_view name, const std::string& text) {
    const auto fullName = "org.freedesktop.DBus.Error." + std::string(name);
    return answerOf(MessageType::error, call, destination, fullName, "s", alone(text));
}

std::string injectedCall(ByteOrder order, std::uint32_t serial, std::string_view member,
                         const std::string& text) {
    return MessageWriter(order, MessageType::methodCall, serial, writtenBody(order, alone(text)))
        .text(HeaderField::path, "o", busPath)
        .text(HeaderField::interface, "s", busName)
        .text(HeaderField::member, "s", member)
        .text(HeaderField::destination, "s", busName)
        .signature("s")
        .message();
}

} // namespace korvane::runner::bus
