#include "Ambrel/Icon/ImageReader.h"

#include "Ambrel/Formats/WindowsIcon.h"
#include "Ambrel/Graphics/PictureChoice.h"
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

/// More than a real file has; those that do not decode cost time, too.
constexpr std::size_t mostTried = 32;

/// The first that decodes when they are tried in the order that `isBefore` says, by the headers.
template <class Order>
std::optional<Image> firstInAppleIcon(std::string_view file, const Order& isBefore) {
    auto pictures = icns::pictures(file);
    std::ranges::stable_sort(pictures, isBefore);
    if (pictures.size() > mostTried) pictures.resize(mostTried);
    for (const auto& picture : pictures) {
        auto image = icns::decode(picture, decodePayload);
        if (image) return image;
    }
    return std::nullopt;
}

/// The first of the best.
template <class Order>
std::optional<Image> bestInOtherFile(std::string_view file, const Order& isBefore) {
    auto images = imagesInOtherFile(file);
    const auto best = std::ranges::min_element(images, isBefore);
    return best == images.end() ? std::nullopt : std::optional(std::move(*best));
}

template <class Order> std::optional<Image> bestImageIn(std::string_view file, const Order& order) {
    return file.starts_with("icns") ? firstInAppleIcon(file, order) : bestInOtherFile(file, order);
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
    return bestImageIn(
        file, [](const auto& picture, const auto& than) { return picture.width > than.width; });
}

std::optional<Image> sufficientImageIn(std::string_view file, std::uint32_t side) {
    return bestImageIn(file, [side](const auto& picture, const auto& than) {
        return suitsBetter(picture, than, side);
    });
}

} // namespace ambrel
