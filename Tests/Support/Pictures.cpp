#include "Support/Pictures.h"

#include <algorithm>
#include <cstdlib>

namespace korvane::test {

using ambrel::Image;

Image picture(std::uint32_t width, std::uint32_t height,
              const std::function<Pixel(std::uint32_t x, std::uint32_t y)>& pixelAt) {
    Image image{width, height, {}};
    for (std::uint32_t y = 0; y < height; ++y) {
        for (std::uint32_t x = 0; x < width; ++x) {
            const auto pixel = pixelAt(x, y);
            image.pixels.insert(image.pixels.end(), pixel.begin(), pixel.end());
        }
    }
    return image;
}

Image filledPicture(std::uint32_t width, std::uint32_t height, const Pixel& pixel) {
    return picture(width, height, [&](auto, auto) { return pixel; });
}

Pixel pixelAt(const Image& image, std::uint32_t x, std::uint32_t y) {
    Pixel pixel;
    std::copy_n(image.pixels.begin() + (std::ptrdiff_t(y) * image.width + x) * 4, 4, pixel.begin());
    return pixel;
}

bool isNear(const Pixel& left, const Pixel& right, int tolerance) {
    return std::equal(left.begin(), left.end(), right.begin(),
                      [&](int one, int other) { return std::abs(one - other) <= tolerance; });
}

namespace {

Path writeConfiguration(const TempDir& tmp, Fonts::Installed installed) {
    const bool none = installed == Fonts::Installed::none;
    const std::string folder =
        none ? std::string() : "<dir>" + std::string(KORVANE_TEST_FONTS) + "</dir>";
    return writeFile(tmp / "fonts.conf", "<?xml version=\"1.0\"?>\n"
                                         "<!DOCTYPE fontconfig SYSTEM \"fonts.dtd\">\n"
                                         "<fontconfig>" +
                                             folder + "<cachedir>" + (tmp / "font cache") +
                                             "</cachedir></fontconfig>\n");
}

} // namespace

Fonts::Fonts(const TempDir& tmp, Installed installed)
    : variable_("FONTCONFIG_FILE", writeConfiguration(tmp, installed)) {}

} // namespace korvane::test
