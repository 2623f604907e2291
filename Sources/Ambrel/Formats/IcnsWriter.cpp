#include "Ambrel/Base/BigEndian.h"
#include "Ambrel/Formats/Icns.h"
#include "Ambrel/Formats/IcnsRunLength.h"
#include "Ambrel/Formats/PictureHeader.h"

#include <algorithm>
#include <array>
#include <limits>
#include <stdexcept>

namespace ambrel::icns {

namespace {

constexpr std::size_t headerSize = 8;

struct Home {
    std::uint32_t side;
    TypeCode type;
};

// One home for each size: the one that shows in a bundle and that other readers know.
constexpr auto pngHomes = std::to_array<Home>(
    {{1024, "ic10"}, {512, "ic09"}, {256, "ic08"}, {128, "ic07"}, {64, "ic12"}});
constexpr auto runLengthHomes = std::to_array<Home>({{32, "il32"}, {16, "is32"}});

const TypeCode* homeOf(std::span<const Home> homes, std::uint32_t width, std::uint32_t height) {
    const auto found = std::ranges::find(homes, width, &Home::side);
    return width == height && found != homes.end() ? &found->type : nullptr;
}

std::string planesOf(const Image& image) {
    const std::size_t count = std::size_t{image.width} * image.height;
    std::string bytes;
    for (const std::size_t color : {0U, 1U, 2U}) {
        appendRunLength(bytes, {image.pixels.data() + color, count, 4});
    }
    // Without it Macs with Arm processors lose the last blue value of an icon in a bundle.
    bytes += '\0';
    return bytes;
}

std::string maskOf(const Image& image) {
    std::string bytes;
    for (std::size_t at = 3; at < image.pixels.size(); at += 4) {
        bytes += static_cast<char>(image.pixels[at]);
    }
    return bytes;
}

} // namespace

bool Writer::takesPng(std::uint32_t side) noexcept {
    return homeOf(pngHomes, side, side) != nullptr;
}

void Writer::addPng(std::string_view png) {
    const auto size = pngSize(png);
    const auto* type = size ? homeOf(pngHomes, size->width, size->height) : nullptr;
    if (type == nullptr) throw std::invalid_argument("No PNG of a size that an icon has");
    addElement(*type, png);
}

void Writer::addRunLength(const Image& image) {
    const auto* type = homeOf(runLengthHomes, image.width, image.height);
    if (type == nullptr) throw std::invalid_argument("No picture of 32 or 16 pixels");
    if (image.pixels.size() != std::size_t{image.width} * image.height * 4) {
        throw std::invalid_argument("A picture with too many or too few pixels");
    }
    addElement(*type, planesOf(image));
    addElement(findType(*type)->mask, maskOf(image));
}

void Writer::addElement(TypeCode type, std::string_view payload) {
    const auto length = headerSize + payload.size();
    if (length > std::numeric_limits<std::uint32_t>::max() - headerSize - elements_.size()) {
        throw std::length_error("An icon file is shorter than 4 GB");
    }
    appendBigEndian32(elements_, type.number);
    appendBigEndian32(elements_, static_cast<std::uint32_t>(length));
    elements_ += payload;
}

std::string Writer::file() const {
    std::string bytes = "icns";
    appendBigEndian32(bytes, static_cast<std::uint32_t>(headerSize + elements_.size()));
    return bytes += elements_;
}

} // namespace ambrel::icns
