#include "Ambrel/Formats/PictureHeader.h"

#include "Ambrel/Base/BigEndian.h"

namespace ambrel {

namespace {

using namespace std::string_view_literals;

constexpr auto pngSignature = "\x89PNG\r\n\x1A\n"sv;
constexpr auto jpeg2000Signature = "\0\0\0\x0CjP  \r\n\x87\n"sv;
constexpr auto codestreamStart = "\xFF\x4F\xFF\x51"sv;

std::optional<PixelSize> nonEmpty(std::uint32_t width, std::uint32_t height) {
    if (width == 0 || height == 0) return std::nullopt;
    return PixelSize{width, height};
}

/// Bits of a pixel, by colour type; 0 for a type that does not exist.
unsigned pngPixelBits(unsigned depth, unsigned colorType) {
    switch (colorType) {
    case 0: // grey
    case 3: // palette
        return depth;
    case 2: // colour
        return 3 * depth;
    case 4: // grey with alpha
        return 2 * depth;
    case 6: // colour with alpha
        return 4 * depth;
    default:
        return 0;
    }
}

/// Deflate makes a byte of no more than 1032, so few bytes cannot stand for many rows.
bool canHold(std::size_t fileSize, PixelSize size, unsigned pixelBits) {
    constexpr std::uint64_t bestRatio = 1032;
    const auto rowBytes = (std::uint64_t{size.width} * pixelBits + 7) / 8;
    // Counted in rows, because rows * rowBytes does not always fit.
    return size.height <= fileSize * bestRatio / rowBytes;
}

/// The box of this type among those that fill `boxes`; its contents.
std::optional<std::string_view> findBox(std::string_view boxes, std::string_view type) {
    while (boxes.size() >= 8) {
        const auto length = bigEndian32(boxes, 0);
        const auto isLast = length == 0;
        if (!isLast && (length < 8 || length > boxes.size())) return std::nullopt;
        const auto box = isLast ? boxes : boxes.substr(0, length);
        if (box.substr(4, 4) == type) return box.substr(8);
        boxes.remove_prefix(box.size());
    }
    return std::nullopt;
}

std::optional<PixelSize> codestreamSize(std::string_view stream) {
    constexpr std::size_t afterOffsets = 24; // marker, length, capabilities, two sizes, two offsets
    if (!stream.starts_with(codestreamStart) || stream.size() < afterOffsets) return std::nullopt;
    const auto right = bigEndian32(stream, 8);
    const auto bottom = bigEndian32(stream, 12);
    const auto left = bigEndian32(stream, 16);
    const auto top = bigEndian32(stream, 20);
    if (right < left || bottom < top) return std::nullopt;
    return nonEmpty(right - left, bottom - top);
}

} // namespace

bool isPng(std::string_view bytes) noexcept { return bytes.starts_with(pngSignature); }

bool isJpeg2000(std::string_view bytes) noexcept {
    return bytes.starts_with(jpeg2000Signature) || bytes.starts_with(codestreamStart);
}

std::optional<PixelSize> pngSize(std::string_view bytes) noexcept {
    constexpr std::size_t headerEnd = 26; // signature, chunk length and name, size, depth, type
    if (!isPng(bytes) || bytes.size() < headerEnd || bytes.substr(12, 4) != "IHDR") {
        return std::nullopt;
    }
    const auto size = nonEmpty(bigEndian32(bytes, 16), bigEndian32(bytes, 20));
    const auto bits =
        pngPixelBits(static_cast<unsigned char>(bytes[24]), static_cast<unsigned char>(bytes[25]));
    if (!size || bits == 0 || !canHold(bytes.size(), *size, bits)) return std::nullopt;
    return size;
}

std::optional<PixelSize> jpeg2000Size(std::string_view bytes) noexcept {
    if (bytes.starts_with(codestreamStart)) return codestreamSize(bytes);
    if (!bytes.starts_with(jpeg2000Signature)) return std::nullopt;
    const auto header = findBox(bytes, "jp2h");
    const auto imageHeader = header ? findBox(*header, "ihdr") : std::nullopt;
    // The codestream has the last word on the size; where both are there they must agree.
    const auto stream = findBox(bytes, "jp2c");
    const auto size = stream ? codestreamSize(*stream) : std::nullopt;
    if (!imageHeader || imageHeader->size() < 8 || !size) return std::nullopt;
    const PixelSize claimed{bigEndian32(*imageHeader, 4), bigEndian32(*imageHeader, 0)};
    return claimed == *size ? size : std::nullopt;
}

} // namespace ambrel
