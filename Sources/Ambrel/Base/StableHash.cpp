#include "Ambrel/Base/StableHash.h"

#include <cstdint>

namespace ambrel {

namespace {

/// FNV-1a, 64 bits.
std::uint64_t hashOf(std::string_view text) {
    std::uint64_t hash = 0xcbf29ce484222325;
    for (const char c : text) {
        hash ^= static_cast<unsigned char>(c);
        hash *= 0x100000001b3;
    }
    return hash;
}

} // namespace

std::string stableHash(std::string_view text) {
    constexpr std::string_view digits = "0123456789abcdef";
    const auto number = hashOf(text);
    std::string result;
    for (int shift = 60; shift >= 0; shift -= 4) result += digits[number >> shift & 0xF];
    return result;
}

} // namespace ambrel
