#include "korvane-runner/Bus/WireWriter.h"

#include "korvane-runner/Bus/Signature.h"

namespace korvane::runner::bus {

void WireWriter::putNumber(std::size_t position, std::uint32_t value) {
    for (std::size_t i = 0; i < 4; ++i) {
        const std::size_t shift = 8 * (order_ == ByteOrder::big ? 3 - i : i);
        bytes_[position + i] = static_cast<char>(value >> shift & 0xFF);
    }
}

void WireWriter::number(std::uint32_t value) {
    align(4);
    bytes_.append(4, '\0');
    putNumber(bytes_.size() - 4, value);
}

void WireWriter::text(std::string_view text) {
    number(static_cast<std::uint32_t>(text.size()));
    bytes_.append(text) += '\0';
}

void WireWriter::signature(std::string_view signature) {
    byte(static_cast<std::uint8_t>(signature.size()));
    bytes_.append(signature) += '\0';
}

WireWriter::Array WireWriter::beginArray(char elementType) {
    number(0);
    const auto lengthAt = bytes_.size() - 4;
    align(alignmentOf(elementType));
    return {lengthAt, bytes_.size()};
}

void WireWriter::endArray(Array array) {
    putNumber(array.lengthAt, static_cast<std::uint32_t>(bytes_.size() - array.begin));
}

} // namespace korvane::runner::bus
