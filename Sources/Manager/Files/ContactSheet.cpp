#include "Manager/Files/ContactSheet.h"

#include <algorithm>
#include <array>

namespace korvane {

using ambrel::Image;

namespace {

constexpr std::uint32_t gap = 32;

struct Background {
    std::array<std::uint8_t, 3> color;
};
constexpr Background light{{0xF5, 0xF5, 0xF7}};
constexpr Background dark{{0x1E, 0x1E, 0x20}};

struct Place {
    std::uint32_t x = 0;
    std::uint32_t y = 0;
};

/// Where the images stand on one background, and how large that gets.
struct Arrangement {
    std::vector<Place> places;
    std::uint32_t width = gap;
    std::uint32_t height = gap;

    void put(const Image& image, Place place) {
        places.push_back(place);
        width = std::max(width, place.x + image.width + gap);
        height = std::max(height, place.y + image.height + gap);
    }
};

/// The first at the left, the second at the top beside it, all others in a row below that one that
/// stands on the first one's lower edge.
Arrangement arrange(const std::vector<Image>& images) {
    Arrangement arrangement;
    Place next{gap, gap};
    for (std::size_t i = 0; i < images.size(); ++i) {
        const auto& image = images[i];
        const auto bottom = std::max(gap + images.front().height, next.y + image.height);
        arrangement.put(image, {next.x, i < 2 ? next.y : bottom - image.height});
        if (i == 1) {
            next.y += image.height + gap;
        } else {
            next.x += image.width + gap;
        }
    }
    return arrangement;
}

void fill(Image& sheet, std::uint32_t fromRow, std::uint32_t toRow, const Background& background) {
    for (std::size_t y = fromRow; y < toRow; ++y) {
        auto* pixel = sheet.pixels.data() + y * sheet.width * 4;
        for (std::size_t x = 0; x < sheet.width; ++x, pixel += 4) {
            std::copy(background.color.begin(), background.color.end(), pixel);
            pixel[3] = 255;
        }
    }
}

/// Draws straight pixels over opaque ones.
void drawOver(Image& sheet, const Image& image, Place place) {
    for (std::size_t y = 0; y < image.height; ++y) {
        const auto* from = image.pixels.data() + y * image.width * 4;
        auto* to = sheet.pixels.data() + ((y + place.y) * sheet.width + place.x) * 4;
        for (std::size_t i = 0; i < std::size_t(image.width) * 4; ++i) {
            const unsigned alpha = from[i | 3];
            if (i % 4 == 3) continue;
            to[i] =
                static_cast<std::uint8_t>((from[i] * alpha + to[i] * (255 - alpha) + 127) / 255);
        }
    }
}

} // namespace

Image contactSheet(const std::vector<Image>& images) {
    const auto arrangement = arrange(images);
    Image sheet{arrangement.width, 2 * arrangement.height, {}};
    sheet.pixels.resize(std::size_t(sheet.width) * sheet.height * 4);
    fill(sheet, 0, arrangement.height, light);
    fill(sheet, arrangement.height, sheet.height, dark);
    for (std::size_t i = 0; i < images.size(); ++i) {
        const auto place = arrangement.places[i];
        drawOver(sheet, images[i], place);
        drawOver(sheet, images[i], {place.x, place.y + arrangement.height});
    }
    return sheet;
}

} // namespace korvane
