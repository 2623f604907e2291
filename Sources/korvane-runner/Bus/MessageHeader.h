#pragma once

#include "korvane-runner/Bus/WireReader.h"

#include <optional>
#include <string>

namespace korvane::runner::bus {

class WireWriter;

/// Of the protocol, as every message tells it.
inline constexpr std::uint8_t protocolVersion = 1;
/// In bytes, as the D-Bus Specification has it, header included.
inline constexpr std::size_t longestMessage = 128 * 1024 * 1024;
/// The longest header that is collected of what a program of the instance writes. A bus allows 64
/// MiB; nothing that programs send comes near this limit.
inline constexpr std::size_t longestOwnHeader = 64 * 1024;
/// How much of a message has to be there before its length is known.
inline constexpr std::size_t frameStart = 16;

/// How long the parts of a message are, in bytes.
struct MessageFrame {
    std::size_t header; ///< with the padding behind it
    std::size_t body;

    std::size_t length() const { return header + body; }
    bool operator==(const MessageFrame&) const = default;
};

/// Of a message that begins with `start`, which is at least `frameStart` bytes. Nothing has to be
/// reserved before: a length that no message may have is a fault.
Checked<MessageFrame> frameOf(std::string_view start);

/// D-Bus Specification, "Message Format". A bus passes on types that are still to come.
enum class MessageType : std::uint8_t { methodCall = 1, methodReturn, error, signal };

/// Flags of a message (D-Bus Specification, "Message Format"); all others are passed on.
inline constexpr std::uint8_t noReplyExpected = 1;
inline constexpr std::uint8_t noAutoStart = 2;

/// What a field of a header is, by its number (D-Bus Specification, "Header Fields").
enum class HeaderField : std::uint8_t {
    path = 1,
    interface,
    member,
    errorName,
    replySerial,
    destination,
    sender,
    signature,
    unixFds,
};

/// What is to be another in a header that is written again. Texts are valid already.
struct HeaderChanges {
    std::optional<std::string> destination{}; ///< where there is one
    std::optional<std::uint32_t> serial{};
    std::optional<std::uint8_t> flags{};
    std::optional<std::size_t> bodyLength{};
};

/// The header of a message. Texts are views of the bytes that it was read from, and are empty where
/// the field is missing; numbers are 0 then.
struct MessageHeader {
    ByteOrder order = ByteOrder::little;
    MessageType type{}; ///< any number but 0
    std::uint8_t flags = 0;
    std::size_t bodyLength = 0;
    std::uint32_t serial = 0;

    std::string_view path{};
    std::string_view interface {};
    std::string_view member{};
    std::string_view errorName{};
    std::uint32_t replySerial = 0;
    std::string_view destination{};
    std::string_view sender{};
    std::string_view signature{};
    std::uint32_t unixFds = 0;

    /// The fields as they stand in the message, those without a meaning too: up to the one of the
    /// destination, or all where there is none, that one, and those behind it. Each part begins at
    /// a multiple of 8. What a stranger can make millions of is not counted one by one.
    std::string_view fieldsBefore{};
    std::string_view destinationField{};
    std::string_view fieldsBehind{};

    /// Of a message that begins with `bytes`, which hold its header at least. What a bus would end
    /// the connection for is a fault.
    static Checked<MessageHeader> read(std::string_view bytes);

    /// The header once more in its own byte order, padded so that the body, or another one, can
    /// follow. All that is not changed stays, fields of no known meaning and their order too.
    std::string rebuilt(const HeaderChanges& changes) const;

    bool isReplyExpected() const {
        return type == MessageType::methodCall && (flags & noReplyExpected) == 0;
    }

private:
    void writeDestination(WireWriter& writer, const HeaderChanges& changes) const;
};

} // namespace korvane::runner::bus
