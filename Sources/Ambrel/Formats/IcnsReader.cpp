#include "Ambrel/Base/BigEndian.h"
#include "Ambrel/Formats/Icns.h"
#include "Ambrel/Formats/IcnsPlanes.h"
#include "Ambrel/Formats/PictureHeader.h"

#include <algorithm>
#include <array>

namespace ambrel::icns {

namespace {

constexpr std::size_t headerSize = 8;
/// No type holds more. A JPEG 2000 of few bytes can hold any number of pixels, so that its decoder
/// must not be handed bigger claims.
constexpr std::uint32_t largestJpeg2000Side = 1024;

/// Why there is no whole element at `at`, which is before `end`; empty when there is one.
std::string defectAt(std::string_view file, std::size_t at, std::size_t end) {
    if (end - at < headerSize) return "the last element's header is cut off";
    const std::size_t length = bigEndian32(file, at + 4);
    if (length < headerSize) return "an element's length is impossible";
    if (length > end - at) return "the last element is cut off";
    return {};
}

std::string defectOfLength(std::size_t claimed, std::size_t actual) {
    if (claimed == actual) return {};
    return claimed > actual ? "it is shorter than its header says"
                            : "it is longer than its header says";
}

bool isAtMost(const PixelSize& size, std::uint32_t side) {
    return size.width <= side && size.height <= side;
}

std::optional<PixelSize> sizeOf(const Element& element, const TypeInfo& info, Payload payload) {
    const auto size = payload == Payload::png        ? pngSize(element.payload)
                      : payload == Payload::jpeg2000 ? jpeg2000Size(element.payload)
                                                     : PixelSize{info.pixels, info.pixels};
    const auto limit = payload == Payload::jpeg2000 ? largestJpeg2000Side : largestImageSide;
    return size && isAtMost(*size, limit) ? size : std::nullopt;
}

/// The first whole mask of this type; empty when there is none.
std::string_view findMask(std::span<const Element> elements, const TypeInfo& info) {
    if (info.mask == TypeCode()) return {};
    const std::size_t size = std::size_t{info.pixels} * info.pixels;
    for (const auto& element : elements) {
        const bool isWhole = element.payload.size() >= size;
        if (element.type == info.mask && isWhole) return element.payload.substr(0, size);
    }
    return {};
}

bool isAsClaimed(const Image& image, const Picture& picture) {
    return image.width == picture.width && image.height == picture.height &&
           image.pixels.size() == std::size_t{image.width} * image.height * 4;
}

} // namespace

Contents readElements(std::string_view file) {
    if (file.size() < headerSize || !file.starts_with("icns")) return {{}, "it is no icon file"};
    const std::size_t claimed = bigEndian32(file, 4);
    const auto end = std::min(claimed, file.size());
    Contents contents;
    std::size_t at = headerSize;
    while (at < end && contents.elements.size() < mostElements) {
        contents.defect = defectAt(file, at, end);
        if (!contents.defect.empty()) return contents;
        const std::size_t length = bigEndian32(file, at + 4);
        const auto payload = file.substr(at + headerSize, length - headerSize);
        contents.elements.push_back({TypeCode(bigEndian32(file, at)), at, payload});
        at += length;
    }
    contents.defect = at < end ? "it has too many elements" : defectOfLength(claimed, file.size());
    return contents;
}

Payload payloadOf(const Element& element) noexcept {
    const auto* info = findType(element.type);
    if (info == nullptr) return Payload::unknown;
    if (info->pixels == 0 || info->plain == Payload::mask) return info->plain;
    if (isPng(element.payload)) return Payload::png;
    if (isJpeg2000(element.payload)) return Payload::jpeg2000;
    // Run-length data may begin with these letters by chance.
    const bool maySayArgb = info->plain == Payload::unknown;
    if (maySayArgb && element.payload.starts_with(argbStart)) return Payload::argb;
    return info->plain;
}

std::optional<Picture> pictureOf(const Element& element, std::span<const Element> elements) {
    const auto* info = findType(element.type);
    if (info == nullptr || info->pixels == 0) return std::nullopt;
    const auto payload = payloadOf(element);
    constexpr std::array readable{Payload::png, Payload::jpeg2000, Payload::argb, Payload::rgb};
    if (std::ranges::find(readable, payload) == readable.end()) return std::nullopt;
    const auto size = sizeOf(element, *info, payload);
    if (!size) return std::nullopt;
    const auto mask = payload == Payload::rgb ? findMask(elements, *info) : std::string_view();
    return Picture{element.type, payload, size->width, size->height, element.payload, mask};
}

std::vector<Picture> pictures(std::string_view file) {
    const auto elements = readElements(file).elements;
    std::vector<Picture> result;
    for (const auto& element : elements) {
        if (const auto picture = pictureOf(element, elements)) result.push_back(*picture);
    }
    return result;
}

std::optional<Image> decode(const Picture& picture, const Decoder& decoder) {
    const bool hasPlanes = picture.payload == Payload::argb || picture.payload == Payload::rgb;
    if (hasPlanes) {
        auto decoded = decodePlanes(picture);
        return decoded ? std::optional(std::move(decoded->image)) : std::nullopt;
    }
    auto image = decoder(picture.payload, picture.bytes);
    return image && isAsClaimed(*image, picture) ? std::move(image) : std::nullopt;
}

} // namespace ambrel::icns
