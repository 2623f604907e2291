#include "korvane-runner/StatusItem/StatusIcon.h"

#include "Ambrel/Application/DeclaredIcon.h"
#include "Ambrel/Graphics/Scaling.h"
#include "Ambrel/Icon/ImageReader.h"
#include "Ambrel/Platform/FileSystem.h"
#include "korvane-runner/StatusItem/GenericIcon.h"

#include <algorithm>
#include <exception>
#include <optional>
#include <utility>

namespace korvane::runner {

namespace {

using namespace ambrel;

std::optional<Image> readPicture(const Path& file) noexcept {
    try {
        return sufficientImageIn(fileSystem::read(file), statusSides.back());
    } catch (const std::exception&) {
        return std::nullopt; // the next picture stands in for it
    }
}

std::optional<Image> readAppPicture(const Path& app) noexcept {
    try {
        const auto icon = app.empty() ? std::nullopt : declaredIcon(app);
        return icon ? readPicture(*icon) : std::nullopt;
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

/// `image` in the middle of a transparent square.
Image squared(const Image& image, std::uint32_t side) {
    if (image.width == side && image.height == side) return image;
    Image square{side, side, std::vector<std::uint8_t>(std::size_t{side} * side * 4)};
    const std::size_t left = (side - image.width) / 2;
    const std::size_t top = (side - image.height) / 2;
    const std::size_t row = std::size_t{image.width} * 4;
    for (std::size_t y = 0; y < image.height; ++y) {
        const auto* source = image.pixels.data() + y * row;
        std::copy_n(source, row, square.pixels.data() + ((top + y) * side + left) * 4);
    }
    return square;
}

/// The whole picture with its proportions.
StatusImage imageOf(const Image& picture, bool isTemplate) {
    const std::uint64_t longest = std::max(picture.width, picture.height);
    Scaler scaler(picture);
    StatusImage image{{}, isTemplate};
    for (auto side = statusSides.rbegin(); side != statusSides.rend(); ++side) {
        const auto scaled = [&](std::uint64_t length) {
            return static_cast<std::uint32_t>(
                std::max((length * *side + longest / 2) / longest, std::uint64_t{1}));
        };
        image.sizes.push_back(
            squared(scaler.scaledTo(scaled(picture.width), scaled(picture.height)), *side));
    }
    std::ranges::reverse(image.sizes);
    return image;
}

std::optional<StatusImage> tryMake(const std::optional<Image>& picture, bool isTemplate) noexcept {
    try {
        return picture ? std::optional(imageOf(*picture, isTemplate)) : std::nullopt;
    } catch (const std::exception&) {
        return std::nullopt; // too large for this machine
    }
}

} // namespace

StatusImage menuBarImage(const StatusIconFiles& files, bool isTemplate) noexcept {
    auto image = tryMake(readPicture(files.own), isTemplate);
    if (!image) image = tryMake(readAppPicture(files.app), isTemplate);
    return image ? std::move(*image)
                 : imageOf(genericIcon(statusSides.back(), isTemplate), isTemplate);
}

} // namespace korvane::runner
