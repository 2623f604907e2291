#pragma once

#include <cstdint>
#include <vector>

namespace ambrel {

/// Pixels of a side beyond which no picture is decoded: what a header claims is compared with this
/// before anything is allocated.
inline constexpr std::uint32_t largestImageSide = 4096;

/// A picture in memory: straight (not premultiplied) 8-bit RGBA in sRGB, rows from top to bottom
/// without padding, so `pixels` holds width * height * 4 bytes.
struct Image {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::vector<std::uint8_t> pixels;

    bool isEmpty() const noexcept { return width == 0 || height == 0; }
    bool operator==(const Image&) const = default;
};

} // namespace ambrel
