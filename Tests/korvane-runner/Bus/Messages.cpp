#include "Messages.h"

#include <algorithm>

namespace korvane::test {

namespace {

const std::string busName = "org.freedesktop.DBus";
const std::string busPath = "/org/freedesktop/DBus";

std::string encoded(char order, std::uint32_t value) {
    std::string bytes;
    for (int i = 0; i < 4; ++i) bytes += static_cast<char>(value >> 8 * i & 0xFF);
    if (order == 'B') std::ranges::reverse(bytes);
    return bytes;
}

std::string usualType(int code) {
    if (code == 1) return "o";
    return code == 8 ? "g" : "s";
}

} // namespace

Bytes& Bytes::pad(std::size_t size) {
    while (bytes_.size() % size != 0) bytes_ += '\0';
    return *this;
}

Bytes& Bytes::number(std::uint32_t value) {
    pad(4);
    bytes_ += encoded(order_, value);
    return *this;
}

Bytes& Bytes::text(std::string_view text) {
    number(static_cast<std::uint32_t>(text.size()));
    bytes_.append(text) += '\0';
    return *this;
}

Bytes& Bytes::signature(std::string_view text) {
    bytes_ += static_cast<char>(text.size());
    bytes_.append(text) += '\0';
    return *this;
}

Bytes& Bytes::raw(std::string_view bytes) {
    bytes_ += bytes;
    return *this;
}

Bytes& Bytes::array(std::string_view content, std::size_t size) {
    number(static_cast<std::uint32_t>(content.size()));
    return pad(size).raw(content);
}

RawMessage& RawMessage::with(int code, const std::string& fieldType, const std::string& value) {
    fields.push_back({code, fieldType, value});
    return *this;
}

RawMessage& RawMessage::with(int code, const std::string& value) {
    const auto field = std::ranges::find(fields, code, &Field::code);
    if (field == fields.end()) return with(code, usualType(code), value);
    *field = {code, usualType(code), value};
    return *this;
}

RawMessage& RawMessage::withNumber(int code, std::uint32_t value) {
    without(code);
    return with(code, "u", encoded(order, value));
}

RawMessage& RawMessage::without(int code) {
    std::erase_if(fields, [code](const Field& field) { return field.code == code; });
    return *this;
}

RawMessage& RawMessage::withBody(const std::string& signature, const Bytes& bytes) {
    body = bytes.str();
    return with(8, signature);
}

std::string RawMessage::header() const {
    Bytes array(order);
    for (const auto& field : fields) {
        array.pad(8).raw(std::string(1, static_cast<char>(field.code))).signature(field.type);
        if (field.type == "s" || field.type == "o")
            array.text(field.value);
        else if (field.type == "g")
            array.signature(field.value);
        else if (field.type == "u")
            array.pad(4).raw(field.value);
        else
            array.raw(field.value);
    }
    const auto real = [](std::uint32_t claimed, std::size_t size) {
        return claimed == 0xFFFF'FFFF ? static_cast<std::uint32_t>(size) : claimed;
    };
    std::string start{order, static_cast<char>(type), static_cast<char>(flags),
                      static_cast<char>(version)};
    start += encoded(order, real(bodyLength, body.size())) + encoded(order, serial);
    start += encoded(order, real(fieldsLength, array.str().size())) + array.str();
    while (start.size() % 8 != 0) start += padding;
    return start;
}

RawMessage busCall(const std::string& member, char order) {
    RawMessage message{.order = order};
    return message.with(1, busPath).with(2, busName).with(3, member).with(6, busName);
}

RawMessage callTo(const std::string& destination, char order) {
    RawMessage message{.order = order};
    return message.with(1, "/").with(2, "org.example.Editor").with(3, "Open").with(6, destination);
}

RawMessage busAnswer(std::uint32_t replySerial, char order) {
    RawMessage message{.order = order, .type = 2, .flags = 1, .serial = 4};
    return message.with(6, ":1.5").withNumber(5, replySerial).with(7, busName);
}

RawMessage busError(std::uint32_t replySerial, const std::string& name, const std::string& text,
                    char order) {
    auto message = busAnswer(replySerial, order);
    message.type = 3;
    return message.with(4, name).withBody("s", Bytes(order).text(text));
}

RawMessage busSignal(const std::string& member, const std::string& name, char order) {
    RawMessage message{.order = order, .type = 4, .flags = 1, .serial = 4};
    message.with(1, busPath).with(2, busName).with(3, member).with(6, ":1.5").with(7, busName);
    return message.withBody("s", Bytes(order).text(name));
}

} // namespace korvane::test
