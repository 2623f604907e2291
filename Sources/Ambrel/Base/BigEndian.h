#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace ambrel {

/// The number in the four bytes from `offset`, which must exist.
constexpr std::uint32_t bigEndian32(std::string_view bytes, std::size_t offset) noexcept {
    std::uint32_t number = 0;
    for (const char byte : bytes.substr(offset, 4)) {
        number = (number << 8) | static_cast<unsigned char>(byte);
    }
    return number;
}

inline void appendBigEndian32(std::string& bytes, std::uint32_t number) {
    for (const int shift : {24, 16, 8, 0}) bytes += static_cast<char>((number >> shift) & 0xFF);
}

} // namespace ambrel
