#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace ambrel {

struct PixelSize {
    std::uint32_t width = 0;
    std::uint32_t height = 0;

    bool operator==(const PixelSize&) const = default;
};

bool isPng(std::string_view bytes) noexcept;
/// Both the file form and the bare codestream.
bool isJpeg2000(std::string_view bytes) noexcept;

/// The size that the header of a PNG claims, without decoding anything. Absent for what is no PNG,
/// for sizes of nothing, and for more pixels than bytes of this number can hold however well they
/// are compressed.
std::optional<PixelSize> pngSize(std::string_view bytes) noexcept;

/// The size that the header of a JPEG 2000 claims. Absent for what is none and for sizes of
/// nothing.
std::optional<PixelSize> jpeg2000Size(std::string_view bytes) noexcept;

} // namespace ambrel
