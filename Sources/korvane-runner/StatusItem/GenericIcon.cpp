#include "korvane-runner/StatusItem/GenericIcon.h"

#include "Ambrel/Graphics/Canvas.h"
#include "Ambrel/Graphics/NearestByte.h"

#include <algorithm>
#include <cmath>

namespace korvane::runner {

namespace {

using namespace ambrel;

constexpr Color frameColor{0.16, 0.32, 0.56, 1};
constexpr Color bodyColor{0.97, 0.98, 1, 1};

/// A rectangle with round corners; all in pixels, y downwards.
struct RoundBox {
    double left;
    double top;
    double right;
    double bottom;
    double radius;

    /// How far a point lies outside; negative inside.
    double distance(double x, double y) const {
        const double fromMiddleX = std::abs(x - (left + right) / 2) - ((right - left) / 2 - radius);
        const double fromMiddleY = std::abs(y - (top + bottom) / 2) - ((bottom - top) / 2 - radius);
        const double outside = std::hypot(std::max(fromMiddleX, 0.0), std::max(fromMiddleY, 0.0));
        return outside + std::min(std::max(fromMiddleX, fromMiddleY), 0.0) - radius;
    }
};

/// How much of each pixel a shape covers, by how far the pixel's middle lies outside.
template <class Distance> Coverage coverageOf(std::uint32_t side, const Distance& distance) {
    const int length = static_cast<int>(side);
    Coverage coverage{.width = length, .height = length, .pixels = {}};
    for (int y = 0; y < length; ++y) {
        for (int x = 0; x < length; ++x) {
            const double covered = std::clamp(0.5 - distance(x + 0.5, y + 0.5), 0.0, 1.0);
            coverage.pixels.push_back(nearestByte(static_cast<float>(covered * 255)));
        }
    }
    return coverage;
}

} // namespace

Image genericIcon(std::uint32_t side, bool isTemplate) {
    const double unit = side / 22.0;
    const RoundBox frame{2 * unit, 3 * unit, 20 * unit, 19 * unit, 3 * unit};
    const RoundBox body{3.5 * unit, 7.5 * unit, 18.5 * unit, 17.5 * unit, 1.5 * unit};
    const auto outside = [&](double x, double y) { return frame.distance(x, y); };
    const auto inside = [&](double x, double y) { return body.distance(x, y); };
    const auto around = [&](double x, double y) { return std::max(outside(x, y), -inside(x, y)); };
    Image image{side, side, std::vector<std::uint8_t>(std::size_t{side} * side * 4)};
    if (isTemplate) {
        paint(image, coverageOf(side, around), frameColor);
    } else {
        paint(image, coverageOf(side, outside), frameColor);
        paint(image, coverageOf(side, inside), bodyColor);
    }
    return image;
}

} // namespace korvane::runner
