#include "Manager/Desktop/Linux/ThemeIcons.h"

#include "Ambrel/Graphics/Scaling.h"
#include "Ambrel/Icon/ImageReader.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/Images.h"

#include <optional>

namespace korvane::registration {

namespace {

/// The PNG of the file's own picture of this size.
std::optional<std::string> pngOfSide(const std::vector<ambrel::icns::Picture>& pictures,
                                     std::uint32_t side) {
    for (const auto& picture : pictures) {
        if (picture.width != side || picture.height != side) continue;
        const auto image = ambrel::icns::decode(picture, ambrel::decodePayload);
        if (!image) continue;
        const bool isPng = picture.payload == ambrel::icns::Payload::png;
        return isPng ? std::string(picture.bytes) : ambrel::images::encodePng(*image);
    }
    return std::nullopt;
}

std::vector<ThemeIcon> iconsIn(std::string_view file) {
    const auto widest = ambrel::widestImageIn(file);
    if (!widest || widest->isEmpty()) return {};
    const auto pictures = ambrel::icns::pictures(file);
    ambrel::Scaler scaler(*widest);
    std::vector<ThemeIcon> icons;
    for (const auto side : themeSides) {
        auto png = pngOfSide(pictures, side);
        if (!png) png = ambrel::images::encodePng(scaler.scaledTo(side, side));
        icons.push_back({side, std::move(*png)});
    }
    return icons;
}

} // namespace

std::vector<ThemeIcon> themeIconsOf(const ambrel::Path& iconFile) noexcept {
    try {
        if (!ambrel::fileSystem::exists(iconFile)) return {};
        return iconsIn(ambrel::fileSystem::read(iconFile));
    } catch (const std::exception&) {
        return {}; // unreadable, or a library that reads it is missing
    }
}

} // namespace korvane::registration
