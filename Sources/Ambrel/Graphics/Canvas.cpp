#include "Ambrel/Graphics/Canvas.h"

#include "Ambrel/Graphics/NearestByte.h"

#include <algorithm>
#include <array>

namespace ambrel {

namespace {

/// One pixel of straight colour under `color`, whose share of the pixel is `alpha`, above 0.
void paintPixel(std::uint8_t* pixel, const std::array<float, 3>& color, float alpha) {
    const bool isOpaque = pixel[3] == 255;
    const float total = isOpaque ? 1 : alpha + static_cast<float>(pixel[3]) * (1 - alpha) / 255;
    const float share = isOpaque ? alpha : alpha / total;
    for (std::size_t i = 0; i < color.size(); ++i) {
        const auto old = static_cast<float>(pixel[i]);
        pixel[i] = nearestByte(old + (color[i] - old) * share);
    }
    pixel[3] = nearestByte(255 * total);
}

} // namespace

void paint(Image& image, const Coverage& coverage, const Color& color) {
    const auto component = [](double value) { return static_cast<float>(value * 255); };
    const std::array<float, 3> bytes{component(color.red), component(color.green),
                                     component(color.blue)};
    const auto alphaOfOne = static_cast<float>(color.alpha / 255);
    const int firstX = std::max(0, -coverage.left);
    const int lastX = std::min(coverage.width, static_cast<int>(image.width) - coverage.left);
    const int firstY = std::max(0, -coverage.top);
    const int lastY = std::min(coverage.height, static_cast<int>(image.height) - coverage.top);
    for (int y = firstY; y < lastY; ++y) {
        const auto* covered = coverage.pixels.data() + std::ptrdiff_t(y) * coverage.width;
        auto* row = image.pixels.data() + std::ptrdiff_t(y + coverage.top) * image.width * 4;
        for (int x = firstX; x < lastX; ++x) {
            if (covered[x] == 0) continue;
            paintPixel(row + std::ptrdiff_t(x + coverage.left) * 4, bytes,
                       alphaOfOne * static_cast<float>(covered[x]));
        }
    }
}

} // namespace ambrel
