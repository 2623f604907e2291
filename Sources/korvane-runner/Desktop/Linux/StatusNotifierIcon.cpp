#include "korvane-runner/Desktop/Linux/StatusNotifierIcon.h"

#include "korvane-runner/Desktop/Linux/StatusPixels.h"

namespace korvane::runner {

namespace {

/// Pixels are shown as they are, and nobody tells whether the panel is light or dark.
GVariant* pixmapsOf(const StatusImage& image) {
    if (!image.isTemplate) return pixmapsVariant(image.sizes);
    constexpr std::uint8_t seenOnBoth = 0x80;
    std::vector<ambrel::Image> grey;
    for (const auto& each : image.sizes) grey.push_back(filledWithGrey(each, seenOnBoth));
    return pixmapsVariant(grey);
}

} // namespace

StatusNotifierIcon::StatusNotifierIcon(const std::string& id, const StatusImage& image)
    : pixmaps_(retained(pixmapsOf(image))) {
    SymbolicIconFolder::removeAbandoned();
    if (!image.isTemplate) return;
    const auto name = id + "-symbolic";
    folder_ = SymbolicIconFolder::tryMake(name, image.sizes);
    if (folder_) name_ = name;
}

} // namespace korvane::runner
