#pragma once

#include <algorithm>
#include <cstdint>

namespace ambrel {

/// The byte nearest to `value`.
inline std::uint8_t nearestByte(float value) noexcept {
    constexpr float half = 0.5F; // nothing here is negative: cutting off then rounds
    return static_cast<std::uint8_t>(std::clamp(value, 0.0F, 255.0F) + half);
}

} // namespace ambrel
