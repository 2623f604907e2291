#include "korvane-runner/StatusItem/StatusIcon.h"

#include "Ambrel/Application/DeclaredIcon.h"
#include "Ambrel/Graphics/Scaling.h"
#include "Ambrel/Icon/ImageReader.h"
#include "Ambrel/Platform/FileSystem.h"
#include "korvane-runner/StatusItem/GenericIcon.h"

#include <algorithm>
#include <exception>
#include <optional>

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
Image squared(const Image& image) {
    const auto side = std::max(image.width, image.height);
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

std::vector<Image> inAllSizes(const Image& square) {
    Scaler scaler(square);
    std::vector<Image> sizes;
    for (auto side = statusSides.rbegin(); side != statusSides.rend(); ++side) {
        sizes.push_back(scaler.scaledTo(*side, *side));
    }
    std::ranges::reverse(sizes);
    return sizes;
}

} // namespace

StatusImage menuBarImage(const StatusIconFiles& files, bool isTemplate) noexcept {
    auto picture = readPicture(files.own);
    if (!picture) picture = readAppPicture(files.app);
    if (!picture) picture = genericIcon(statusSides.back(), isTemplate);
    if (picture->width != picture->height) picture = squared(*picture);
    return {inAllSizes(*picture), isTemplate};
}

} // namespace korvane::runner
