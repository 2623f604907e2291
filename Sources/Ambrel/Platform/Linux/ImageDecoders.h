#pragma once

#include "Ambrel/Graphics/Image.h"

#include <optional>
#include <string_view>
#include <vector>

/// The decoders of single formats. Each takes the bytes of a file of that format; what does not
/// decode is absent.
namespace ambrel::images {

std::optional<Image> decodePng(std::string_view file);
std::optional<Image> decodeJpeg2000(std::string_view file);
std::optional<Image> decodeWebP(std::string_view file);
std::vector<Image> decodeTiff(std::string_view file);
/// Every other format that GdkPixbuf knows.
std::optional<Image> decodeWithPixbuf(std::string_view file);

/// Whether a picture of this size may be decoded from `fileSize` bytes. Compressed pictures have
/// some thousand pixels a byte at most; small ones cost so little that they may claim anything.
constexpr bool isPlausibleSize(std::uint64_t width, std::uint64_t height, std::size_t fileSize) {
    constexpr std::uint64_t longestSide = 32768;
    constexpr std::uint64_t mostPixels = 128ULL * 1024 * 1024;
    constexpr std::uint64_t harmlessPixels = 1024 * 1024;
    constexpr std::uint64_t mostPixelsPerByte = 8192;
    if (width == 0 || height == 0 || width > longestSide || height > longestSide) return false;
    const auto pixels = width * height;
    return pixels <= mostPixels && pixels <= harmlessPixels + fileSize * mostPixelsPerByte;
}

/// An image of the size, its pixels zero. The size must be plausible.
inline Image emptyImage(std::uint32_t width, std::uint32_t height) {
    return {width, height, std::vector<std::uint8_t>(std::size_t(width) * height * 4)};
}

} // namespace ambrel::images
