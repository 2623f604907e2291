#include "Ambrel/Icon/ImageReader.h"

#include "Ambrel/Formats/WindowsIcon.h"
#include "Ambrel/Platform/Images.h"

#include <algorithm>
#include <iterator>

namespace ambrel {

namespace {

void append(std::vector<Image>& images, std::vector<Image> more) {
    std::move(more.begin(), more.end(), std::back_inserter(images));
}

std::vector<Image> imagesInAppleIcon(const std::vector<icns::Picture>& pictures) {
    std::vector<Image> images;
    for (const auto& picture : pictures) {
        auto image = icns::decode(picture, decodePayload);
        if (image) images.push_back(std::move(*image));
    }
    return images;
}

std::vector<Image> imagesInWindowsIcon(std::string_view file) {
    std::vector<Image> images;
    for (const auto& picture : picturesOfWindowsIcon(file)) append(images, images::decode(picture));
    return images;
}

std::vector<Image> imagesInOtherFile(std::string_view file) {
    return isWindowsIcon(file) ? imagesInWindowsIcon(file) : images::decode(file);
}

/// Tries the widest first, by what the headers say.
std::optional<Image> widestInAppleIcon(std::vector<icns::Picture> pictures) {
    std::stable_sort(pictures.begin(), pictures.end(),
                     [](const auto& left, const auto& right) { return left.width > right.width; });
    for (const auto& picture : pictures) {
        auto image = icns::decode(picture, decodePayload);
        if (image) return image;
    }
    return std::nullopt;
}

} // namespace

std::optional<Image> decodePayload(icns::Payload payload, std::string_view bytes) {
    return payload == icns::Payload::png ? images::decodePng(bytes) : images::decodeJpeg2000(bytes);
}

std::vector<Image> imagesIn(std::string_view file) {
    const bool isAppleIcon = file.starts_with("icns");
    return isAppleIcon ? imagesInAppleIcon(icns::pictures(file)) : imagesInOtherFile(file);
}

std::optional<Image> widestImageIn(std::string_view file) {
    if (file.starts_with("icns")) return widestInAppleIcon(icns::pictures(file));
    auto images = imagesInOtherFile(file);
    // Of equal elements the first is the greatest.
    const auto widest =
        std::max_element(images.begin(), images.end(), [](const auto& left, const auto& right) {
            return left.width < right.width;
        });
    return widest == images.end() ? std::nullopt : std::optional(std::move(*widest));
}

} // namespace ambrel
