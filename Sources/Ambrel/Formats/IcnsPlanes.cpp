#include "Ambrel/Formats/IcnsPlanes.h"

#include "Ambrel/Formats/IcnsRunLength.h"

#include <algorithm>
#include <array>

namespace ambrel::icns {

namespace {

/// The planes behind what stands before them.
std::string_view planesOf(const Picture& picture) {
    using namespace std::string_view_literals;
    auto bytes = picture.bytes;
    if (picture.payload == Payload::argb) bytes.remove_prefix(argbStart.size());
    if (picture.type == TypeCode("it32") && bytes.starts_with("\0\0\0\0"sv)) bytes.remove_prefix(4);
    return bytes;
}

} // namespace

std::optional<DecodedPlanes> decodePlanes(const Picture& picture) {
    // The place of each plane among the bytes of a pixel, in the order of the file.
    constexpr std::array<std::size_t, 4> argbPlaces{3, 0, 1, 2};
    const bool hasAlpha = picture.payload == Payload::argb;
    const auto places = std::span(argbPlaces).subspan(hasAlpha ? 0 : 1);
    const std::size_t count = std::size_t{picture.width} * picture.height;
    auto bytes = planesOf(picture);
    if (!couldHoldPlanes(bytes.size(), places.size(), count)) return std::nullopt;

    Image image{picture.width, picture.height, std::vector<std::uint8_t>(count * 4, 0xFF)};
    for (const auto place : places) {
        if (!takeRunLength(bytes, {image.pixels.data() + place, count, 4})) return std::nullopt;
    }
    for (std::size_t i = 0; i < std::min(count, picture.mask.size()); ++i) {
        image.pixels[i * 4 + 3] = static_cast<std::uint8_t>(picture.mask[i]);
    }
    return DecodedPlanes{std::move(image), bytes.size()};
}

} // namespace ambrel::icns
