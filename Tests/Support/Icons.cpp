#include "Support/Icons.h"

#include <algorithm>
#include <array>
#include <stdexcept>

namespace korvane::test {

using ambrel::Image;

namespace {

char byteOf(std::uint32_t number) { return static_cast<char>(static_cast<unsigned char>(number)); }

std::uint32_t crc32(std::string_view bytes) {
    std::uint32_t crc = 0xFFFFFFFF;
    for (const char byte : bytes) {
        crc ^= static_cast<unsigned char>(byte);
        for (int bit = 0; bit < 8; ++bit) crc = (crc >> 1) ^ ((crc & 1) != 0 ? 0xEDB88320 : 0);
    }
    return ~crc;
}

std::uint32_t adler32(std::string_view bytes) {
    std::uint32_t low = 1;
    std::uint32_t high = 0;
    for (const char byte : bytes) {
        low = (low + static_cast<unsigned char>(byte)) % 65521;
        high = (high + low) % 65521;
    }
    return (high << 16) | low;
}

/// A zlib stream of blocks that are stored as they are.
std::string stored(std::string_view bytes) {
    constexpr std::size_t longest = 0xFFFF;
    std::string stream = "\x78\x01";
    for (std::size_t at = 0; at < bytes.size(); at += longest) {
        const auto block = bytes.substr(at, longest);
        const auto length = static_cast<std::uint32_t>(block.size());
        stream += byteOf(at + longest >= bytes.size() ? 1 : 0);
        for (const auto number : {length, ~length}) {
            stream += byteOf(number);
            stream += byteOf(number >> 8);
        }
        stream += block;
    }
    return stream + bigEndian(adler32(bytes));
}

std::string chunk(const std::string& type, const std::string& data) {
    return bigEndian(static_cast<std::uint32_t>(data.size())) + type + data +
           bigEndian(crc32(type + data));
}

std::string pngStart(std::uint32_t width, std::uint32_t height) {
    const std::string rgba8("\x08\x06\0\0\0", 5);
    return "\x89PNG\r\n\x1A\n" + chunk("IHDR", bigEndian(width) + bigEndian(height) + rgba8);
}

std::string box(const std::string& type, const std::string& data) {
    return bigEndian(static_cast<std::uint32_t>(data.size() + 8)) + type + data;
}

} // namespace

std::string bigEndian(std::uint32_t number) {
    return {byteOf(number >> 24), byteOf(number >> 16), byteOf(number >> 8), byteOf(number)};
}

Image samplePicture(std::uint32_t width, std::uint32_t height) {
    Image image{width, height, {}};
    for (std::uint32_t y = 0; y < height; ++y) {
        for (std::uint32_t x = 0; x < width; ++x) {
            const auto alpha = 255 - (x + y) * 254 / (width + height);
            for (const auto value : {x * 255 / width, y * 255 / height, x ^ y, alpha}) {
                image.pixels.push_back(static_cast<std::uint8_t>(value));
            }
        }
    }
    return image;
}

std::string pngOf(const Image& image) {
    std::string rows;
    for (std::size_t y = 0; y < image.height; ++y) {
        rows += '\0';
        const auto row = image.pixels.begin() + static_cast<std::ptrdiff_t>(y * image.width * 4);
        rows.append(row, row + static_cast<std::ptrdiff_t>(image.width) * 4);
    }
    return pngStart(image.width, image.height) + chunk("IDAT", stored(rows)) + chunk("IEND", "");
}

std::string pngClaiming(std::uint32_t width, std::uint32_t height) {
    return pngStart(width, height) + bigEndian(0x3FFFFFFF) + "IDAT\x78\x9C";
}

std::string codestreamClaiming(std::uint32_t width, std::uint32_t height) {
    const auto zero = bigEndian(0);
    return std::string("\xFF\x4F\xFF\x51\0\x32\0\0", 8) + bigEndian(width) + bigEndian(height) +
           zero + zero + bigEndian(width) + bigEndian(height) + zero + zero;
}

std::string jpeg2000Claiming(std::uint32_t width, std::uint32_t height) {
    const auto imageHeader = box("ihdr", bigEndian(height) + bigEndian(width) + bigEndian(0x40707));
    return box("jP  ", "\r\n\x87\n") + box("ftyp", "jp2 ") + box("jp2h", imageHeader) +
           box("jp2c", codestreamClaiming(width, height));
}

std::string planesOf(const Image& image, std::string_view colors) {
    constexpr std::size_t longestLiteral = 128;
    std::string bytes;
    for (const char color : colors) {
        const auto place = std::string_view("RGBA").find(color);
        std::string plane;
        for (auto at = place; at < image.pixels.size(); at += 4) {
            plane += static_cast<char>(image.pixels[at]);
        }
        for (std::size_t at = 0; at < plane.size(); at += longestLiteral) {
            const auto part = plane.substr(at, longestLiteral);
            bytes += static_cast<char>(part.size() - 1);
            bytes += part;
        }
    }
    return bytes + '\0';
}

std::string maskOf(const Image& image) {
    std::string bytes;
    for (std::size_t at = 3; at < image.pixels.size(); at += 4) {
        bytes += static_cast<char>(image.pixels[at]);
    }
    return bytes;
}

IcnsBuilder& IcnsBuilder::element(std::string_view type, std::string_view payload) {
    if (type.size() != 4) throw std::logic_error("A type has four bytes");
    elements_ += type;
    elements_ += bigEndian(static_cast<std::uint32_t>(payload.size() + 8));
    elements_ += payload;
    return *this;
}

IcnsBuilder& IcnsBuilder::raw(std::string_view bytes) {
    elements_ += bytes;
    return *this;
}

std::string IcnsBuilder::file() const {
    return "icns" + bigEndian(static_cast<std::uint32_t>(elements_.size() + 8)) + elements_;
}

} // namespace korvane::test
