#include "korvane-runner/StatusItem/GenericIcon.h"

#include "Ambrel/Graphics/Canvas.h"

#include <algorithm>

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

    bool holds(double x, double y) const {
        const auto beyond = [this](double at, double from, double to) {
            return std::max({from + radius - at, at - (to - radius), 0.0});
        };
        const double across = beyond(x, left, right);
        const double down = beyond(y, top, bottom);
        return across * across + down * down <= radius * radius;
    }
};

/// How much of each pixel a shape covers, by a grid of points in it.
template <class Shape> Coverage coverageOf(std::uint32_t side, const Shape& holds) {
    constexpr int grid = 4;
    const int length = static_cast<int>(side);
    Coverage coverage{.width = length, .height = length, .pixels = {}};
    const auto pointsIn = [&](int left, int top) {
        int count = 0;
        for (int row = 0; row < grid; ++row) {
            for (int column = 0; column < grid; ++column) {
                count += holds(left + (column + 0.5) / grid, top + (row + 0.5) / grid) ? 1 : 0;
            }
        }
        return count;
    };
    for (int y = 0; y < length; ++y) {
        for (int x = 0; x < length; ++x) {
            coverage.pixels.push_back(
                static_cast<std::uint8_t>(pointsIn(x, y) * 255 / (grid * grid)));
        }
    }
    return coverage;
}

} // namespace

Image genericIcon(std::uint32_t side, bool isTemplate) {
    const double unit = side / 22.0;
    const RoundBox frame{2 * unit, 3 * unit, 20 * unit, 19 * unit, 3 * unit};
    const RoundBox body{3.5 * unit, 7.5 * unit, 18.5 * unit, 17.5 * unit, 1.5 * unit};
    const auto inFrame = [&](double x, double y) { return frame.holds(x, y); };
    const auto inBody = [&](double x, double y) { return body.holds(x, y); };
    const auto between = [&](double x, double y) { return inFrame(x, y) && !inBody(x, y); };
    Image image{side, side, std::vector<std::uint8_t>(std::size_t{side} * side * 4)};
    if (isTemplate) {
        paint(image, coverageOf(side, between), frameColor);
    } else {
        paint(image, coverageOf(side, inFrame), frameColor);
        paint(image, coverageOf(side, inBody), bodyColor);
    }
    return image;
}

} // namespace korvane::runner
