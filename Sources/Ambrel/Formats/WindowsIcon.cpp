#include "Ambrel/Formats/WindowsIcon.h"

#include "Ambrel/Formats/PictureHeader.h"

#include <algorithm>
#include <cstdint>

namespace ambrel {

namespace {

using namespace std::string_view_literals;

constexpr std::size_t headerSize = 6;
constexpr std::size_t entrySize = 16;
constexpr std::size_t lengthInEntry = 8;
constexpr std::size_t offsetInEntry = 12;
constexpr std::size_t mostPictures = 64;

std::uint32_t littleEndian(std::string_view bytes, std::size_t offset, std::size_t count) {
    std::uint32_t number = 0;
    for (std::size_t i = count; i > 0; --i) {
        number = (number << 8) | static_cast<unsigned char>(bytes[offset + i - 1]);
    }
    return number;
}

/// An icon file that holds the picture of `entry` alone.
std::string iconWithOne(std::string_view entry, std::string_view picture) {
    std::string file("\0\0\1\0\1\0"sv);
    file.append(entry.substr(0, offsetInEntry));
    file.push_back(static_cast<char>(headerSize + entrySize));
    file.append(3, '\0');
    return file.append(picture);
}

} // namespace

bool isWindowsIcon(std::string_view file) noexcept {
    return file.size() > headerSize + entrySize &&
           (file.starts_with("\0\0\1\0"sv) || file.starts_with("\0\0\2\0"sv));
}

std::vector<std::string> picturesOfWindowsIcon(std::string_view file) {
    std::vector<std::string> pictures;
    if (!isWindowsIcon(file)) return pictures;
    const auto claimed = std::min<std::size_t>(littleEndian(file, 4, 2), mostPictures);
    const auto count = std::min(claimed, (file.size() - headerSize) / entrySize);
    for (std::size_t i = 0; i < count; ++i) {
        const auto entry = file.substr(headerSize + i * entrySize, entrySize);
        const auto length = littleEndian(entry, lengthInEntry, 4);
        const auto offset = littleEndian(entry, offsetInEntry, 4);
        if (offset >= file.size() || length > file.size() - offset) continue;
        const auto picture = file.substr(offset, length);
        pictures.push_back(isPng(picture) ? std::string(picture) : iconWithOne(entry, picture));
    }
    return pictures;
}

} // namespace ambrel
