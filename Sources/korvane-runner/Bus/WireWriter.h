#pragma once

#include "korvane-runner/Bus/WireReader.h"

#include <string>

namespace korvane::runner::bus {

/// Puts values into a message in the byte order of whoever reads it (D-Bus Specification,
/// "Marshaling"), each behind the padding that its type has. What is given is valid, and short
/// enough for a message.
class WireWriter {
public:
    explicit WireWriter(ByteOrder order) : order_(order) {}

    void byte(std::uint8_t value) { bytes_ += static_cast<char>(value); }
    void number(std::uint32_t value);
    void text(std::string_view text);
    void signature(std::string_view signature);
    /// Bytes as they stand.
    void raw(std::string_view bytes) { bytes_ += bytes; }
    /// Fills up to a multiple of `size` with zeros.
    void align(std::size_t size) { bytes_.append((size - bytes_.size() % size) % size, '\0'); }

    /// Begins an array; what is given back is for endArray(), when its elements are written.
    struct Array {
        std::size_t lengthAt;
        std::size_t begin;
    };
    Array beginArray(char elementType);
    void endArray(Array array);

    const std::string& bytes() const { return bytes_; }
    std::string take() { return std::move(bytes_); } ///< nothing more is written then

private:
    void putNumber(std::size_t position, std::uint32_t value);

    ByteOrder order_;
    std::string bytes_;
};

} // namespace korvane::runner::bus
