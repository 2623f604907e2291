#pragma once

#include "Ambrel/Graphics/Image.h"

#include <cstdint>
#include <vector>

namespace ambrel {

/// An sRGB colour; components from 0 to 1, not premultiplied.
struct Color {
    double red = 0;
    double green = 0;
    double blue = 0;
    double alpha = 1;
    bool operator==(const Color&) const = default;
};

/// How much of each pixel in a rectangle a shape covers, from 0 to 255. Outside it covers nothing.
/// Rows from top to bottom; the position is relative to a picture's upper left corner.
struct Coverage {
    int left = 0;
    int top = 0;
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> pixels;

    bool isEmpty() const noexcept { return width <= 0 || height <= 0; }
};

/// `coverage` blurred by a Gauss curve of standard deviation `sigma` pixels, in a rectangle that is
/// larger by the reach of the blur.
Coverage blurred(const Coverage& coverage, double sigma);

/// Paints `color` over `image` where `coverage` says. What lies outside the image is left out.
void paint(Image& image, const Coverage& coverage, const Color& color);

} // namespace ambrel
