#include "korvane-runner/Bus/MessageHeader.h"

#include "korvane-runner/Bus/NameSyntax.h"
#include "korvane-runner/Bus/Signature.h"
#include "korvane-runner/Bus/WireWriter.h"

#include <algorithm>

namespace korvane::runner::bus {

namespace {

constexpr std::string_view localPath = "/org/freedesktop/DBus/Local";
constexpr std::string_view localInterface = "org.freedesktop.DBus.Local";

constexpr std::size_t padded(std::size_t size) { return (size + 7) / 8 * 8; }

bool isByteOrder(char letter) { return letter == 'l' || letter == 'B'; }

std::string_view textIf(bool (*isRight)(std::string_view), WireReader& reader) {
    const auto text = reader.text();
    if (!reader.hasFailed() && !isRight(text)) reader.fail("A name in the header is not valid");
    return text;
}

std::uint32_t positiveNumber(WireReader& reader) {
    const auto number = reader.number();
    if (number == 0) reader.fail("The serial of what is answered is 0");
    return number;
}

/// The type of what a field has; empty where any will do.
std::string_view typeOf(HeaderField field) {
    switch (field) {
    case HeaderField::path:
        return "o";
    case HeaderField::interface:
    case HeaderField::member:
    case HeaderField::errorName:
    case HeaderField::destination:
    case HeaderField::sender:
        return "s";
    case HeaderField::signature:
        return "g";
    case HeaderField::replySerial:
    case HeaderField::unixFds:
        return "u";
    }
    return {};
}

void readValue(WireReader& reader, MessageHeader& header, HeaderField field,
               std::string_view type) {
    switch (field) {
    case HeaderField::path:
        header.path = reader.objectPath();
        break;
    case HeaderField::interface:
        header.interface = textIf(isInterfaceName, reader);
        break;
    case HeaderField::member:
        header.member = textIf(isMemberName, reader);
        break;
    case HeaderField::errorName:
        header.errorName = textIf(isErrorName, reader);
        break;
    case HeaderField::replySerial:
        header.replySerial = positiveNumber(reader);
        break;
    case HeaderField::destination:
        header.destination = textIf(isBusName, reader);
        break;
    case HeaderField::sender:
        header.sender = textIf(isBusName, reader);
        break;
    case HeaderField::signature:
        header.signature = reader.signature();
        break;
    case HeaderField::unixFds:
        header.unixFds = reader.number();
        break;
    default:
        reader.skip(type);
    }
}

void readField(WireReader& reader, MessageHeader& header, HeaderField field) {
    if (field == HeaderField{0}) return reader.fail("A field of the header has the number 0");
    const auto type = reader.signature();
    if (reader.hasFailed()) return;
    if (!isSingleType(type)) return reader.fail("A variant is not of one type");
    const auto expected = typeOf(field);
    if (!expected.empty() && type != expected) {
        return reader.fail("A field of the header has a wrong type");
    }
    readValue(reader, header, field, type);
}

/// Divides the fields, of which that of the destination has the bytes from `begin` to `end`, or
/// none.
void divideFields(std::string_view bytes, std::size_t begin, std::size_t end,
                  MessageHeader& header) {
    header.fieldsBefore = bytes.substr(frameStart, begin - frameStart);
    header.destinationField = bytes.substr(begin, end - begin);
    header.fieldsBehind = bytes.substr(std::min(padded(end), bytes.size()));
}

/// Reads until the end of `bytes`, which is the end of the fields.
Fault readFields(std::string_view bytes, MessageHeader& header) {
    WireReader reader(header.order, bytes, frameStart);
    divideFields(bytes, bytes.size(), bytes.size(), header);
    unsigned seen = 0;
    while (!reader.isAtEnd()) {
        reader.align(8);
        const auto begin = reader.position();
        const auto field = static_cast<HeaderField>(reader.byte());
        readField(reader, header, field);
        if (reader.hasFailed()) break;
        if (!typeOf(field).empty()) {
            const unsigned bit = 1U << static_cast<unsigned>(field);
            if ((seen & bit) != 0) return {"A field of the header is there twice"};
            seen |= bit;
        }
        if (field == HeaderField::destination) {
            divideFields(bytes, begin, reader.position(), header);
        }
    }
    return reader.fault();
}

bool hasRequired(const MessageHeader& header) {
    switch (header.type) {
    case MessageType::methodCall:
        return !header.path.empty() && !header.member.empty();
    case MessageType::methodReturn:
        return header.replySerial != 0;
    case MessageType::error:
        return header.replySerial != 0 && !header.errorName.empty();
    case MessageType::signal:
        return !header.path.empty() && !header.interface.empty() && !header.member.empty();
    }
    return true; // of a type that is still to come
}

/// What is wrong with fields that are right one by one.
Fault faultOf(const MessageHeader& header) {
    if (!hasRequired(header)) return {"A field that the type of message needs is missing"};
    // Libraries use these for what they tell a program themselves, so that nobody else may.
    if (header.path == localPath || header.interface == localInterface) {
        return {"The path or the interface is kept for libraries"};
    }
    if (header.bodyLength > 0 && header.signature.empty()) {
        return {"There is a body without a signature"};
    }
    return {};
}

} // namespace

Checked<MessageFrame> frameOf(std::string_view start) {
    if (start.size() < frameStart) return Fault{"The message is cut off"};
    if (!isByteOrder(start[0])) return Fault{"The byte order is none"};
    if (start[1] == 0) return Fault{"The type of message is 0"};
    if (start[3] != protocolVersion) return Fault{"The version of the protocol is not 1"};
    WireReader reader(static_cast<ByteOrder>(start[0]), start, 4);
    const std::size_t body = reader.number();
    if (reader.number() == 0) return Fault{"The serial is 0"};
    const std::size_t fields = reader.number();
    if (fields > longestArray) return Fault{"An array is longer than 64 MiB"};
    const MessageFrame frame{.header = padded(frameStart + fields), .body = body};
    if (frame.length() > longestMessage) return Fault{"The message is longer than 128 MiB"};
    return frame;
}

Checked<MessageHeader> MessageHeader::read(std::string_view bytes) {
    const auto frame = frameOf(bytes);
    if (!frame) return Fault{frame.fault()};
    if (bytes.size() < frame->header) return Fault{"The message is cut off"};

    MessageHeader header;
    header.order = static_cast<ByteOrder>(bytes[0]);
    header.type = static_cast<MessageType>(bytes[1]);
    header.flags = static_cast<std::uint8_t>(bytes[2]);
    header.bodyLength = frame->body;
    WireReader numbers(header.order, bytes, 8);
    header.serial = numbers.number();
    const auto end = frameStart + numbers.number();

    if (const auto fault = readFields(bytes.substr(0, end), header); fault != Fault{}) return fault;
    WireReader padding(header.order, bytes.substr(0, frame->header), end);
    padding.align(8);
    if (padding.hasFailed()) return padding.fault();
    if (const auto fault = faultOf(header); fault != Fault{}) return fault;
    return header;
}

void MessageHeader::writeDestination(WireWriter& writer, const HeaderChanges& changes) const {
    if (!changes.destination) return writer.raw(destinationField);
    writer.byte(static_cast<std::uint8_t>(HeaderField::destination));
    writer.signature("s");
    writer.text(*changes.destination);
}

std::string MessageHeader::rebuilt(const HeaderChanges& changes) const {
    WireWriter writer(order);
    writer.byte(static_cast<std::uint8_t>(order));
    writer.byte(static_cast<std::uint8_t>(type));
    writer.byte(changes.flags.value_or(flags));
    writer.byte(protocolVersion);
    writer.number(static_cast<std::uint32_t>(changes.bodyLength.value_or(bodyLength)));
    writer.number(changes.serial.value_or(serial));
    const auto array = writer.beginArray('(');
    // Each field begins at a multiple of 8, so that its bytes are the same wherever that is.
    writer.raw(fieldsBefore);
    if (!destinationField.empty()) {
        writer.align(8);
        writeDestination(writer, changes);
    }
    if (!fieldsBehind.empty()) {
        writer.align(8);
        writer.raw(fieldsBehind);
    }
    writer.endArray(array);
    writer.align(8);
    return writer.take();
}

} // namespace korvane::runner::bus
