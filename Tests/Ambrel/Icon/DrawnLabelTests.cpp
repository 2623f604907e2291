#include "Composing.h"

#include <doctest/doctest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

using namespace ambrel;
using namespace korvane::test;
using Position = IconLabel::Position;

namespace {

/// In units of the font size: the letter I of Liberation Sans Bold is a bare rectangle.
constexpr double heightOfI = 1409.0 / 2048;
constexpr double widthOfI = 295.0 / 2048;

/// The images of the seven sizes with a red label on black: the red of a pixel is then the share of
/// it that the letters cover.
std::vector<Image> redOnBlack(const TempDir& tmp, const std::string& text, Position position) {
    return composed(tmp, filledPicture(1024, 1024, black), {text, "FF0000", position});
}

/// A rectangle as it was drawn, to parts of a pixel, y growing upwards.
Box drawnRectangle(const Image& image) {
    double area = 0;
    double momentX = 0;
    double momentY = 0;
    double widest = 0;
    for (std::uint32_t y = 0; y < image.height; ++y) {
        double row = 0;
        for (std::uint32_t x = 0; x < image.width; ++x) {
            const double share = pixelAt(image, x, y)[0] / 255.0;
            row += share;
            momentX += share * (x + 0.5);
            momentY += share * (image.height - y - 0.5);
        }
        area += row;
        widest = std::max(widest, row);
    }
    REQUIRE(area > 0);
    const Point center{momentX / area, momentY / area};
    const double height = area / widest;
    return {{center.x - widest / 2, center.y - height / 2},
            {center.x + widest / 2, center.y + height / 2}};
}

bool hasRedInColumn(const Image& image, std::uint32_t x) {
    for (std::uint32_t y = 0; y < image.height; ++y) {
        if (pixelAt(image, x, y)[0] > 0) return true;
    }
    return false;
}

/// What quantised pixels leave open: less than a twentieth of a pixel, and a part in 300.
doctest::Approx about(double value) { return doctest::Approx(value).epsilon(0.003).scale(15); }

} // namespace

TEST_CASE("a label of blanks only gives the same file as an empty one") {
    const TempDir tmp;
    const Fonts fonts(tmp);
    const auto source = writePicture(tmp, filledPicture(64, 64, green));

    IconComposer::compose(source, {"", "FF0000", Position::top}, tmp / "empty.icns");
    IconComposer::compose(source, {" \t  ", "FF0000", Position::top}, tmp / "blank.icns");

    CHECK(readFile(tmp / "blank.icns") == readFile(tmp / "empty.icns"));
}

TEST_CASE("the label is drawn in upper case by the rules of Unicode") {
    const TempDir tmp;
    const Fonts fonts(tmp);
    const auto source = writePicture(tmp, filledPicture(64, 64, green));
    const auto compose = [&](const std::string& text) {
        IconComposer::compose(source, {text, "FF0000", Position::center}, tmp / "out.icns");
        return readFile(tmp / "out.icns");
    };
    struct Case {
        std::string text;
        std::string drawn;
    };
    for (const auto& [text, drawn] : {Case{"a1", "A1"}, Case{"straße", "STRASSE"}, Case{"éa", "ÉA"},
                                      Case{"ﬁx", "FIX"}, Case{"ίσ", "ΊΣ"}}) {
        const auto& shown = text;
        CAPTURE(shown);
        CHECK(compose(text) == compose(drawn));
        CHECK(compose(text) != compose(""));
    }
    CHECK(compose("A1") != compose("A2"));
}

TEST_CASE("the label stands in the middle, 8 % above the bottom or below 92 %, at every size") {
    const TempDir tmp;
    const Fonts fonts(tmp);
    for (const auto position : {Position::bottom, Position::center, Position::top}) {
        for (const auto& image : redOnBlack(tmp, "i", position)) {
            const double size = image.width;
            CAPTURE(size);
            CAPTURE(std::string(rawValue(position)));

            const auto box = drawnRectangle(image);

            CHECK(box.midX() == about(0.5 * size));
            if (position == Position::bottom) CHECK(box.min.y == about(0.08 * size));
            if (position == Position::center) CHECK(box.midY() == about(0.5 * size));
            if (position == Position::top) CHECK(box.max.y == about(0.92 * size));
        }
    }
}

TEST_CASE("a short label has a font size of 0.24 of the icon, at every size") {
    const TempDir tmp;
    const Fonts fonts(tmp);
    for (const auto& image : redOnBlack(tmp, "i", Position::center)) {
        const double size = image.width;
        CAPTURE(size);

        const auto box = drawnRectangle(image);

        CHECK(box.height() == about(0.24 * size * heightOfI));
        CHECK(box.width() == about(0.24 * size * widthOfI));
    }
}

TEST_CASE("a label of 32 characters is shrunk to 86 % of the width, at every size") {
    const TempDir tmp;
    const Fonts fonts(tmp);
    for (const auto& image : redOnBlack(tmp, std::string(32, 'i'), Position::bottom)) {
        const double size = image.width;
        CAPTURE(size);
        const auto first = static_cast<std::uint32_t>(std::floor(0.07 * size));
        const auto last = static_cast<std::uint32_t>(std::ceil(0.93 * size)) - 1;

        for (std::uint32_t x = 0; x < image.width; ++x) {
            if (x < first || x > last) CHECK_FALSE(hasRedInColumn(image, x));
        }
        CHECK(hasRedInColumn(image, first));
        CHECK(hasRedInColumn(image, last));
    }
}

TEST_CASE("a label of two characters keeps its font size") {
    const TempDir tmp;
    const Fonts fonts(tmp);
    const auto image = redOnBlack(tmp, "ii", Position::bottom).front();

    double share = 0;
    for (std::size_t i = 0; i < image.pixels.size(); i += 4) share += image.pixels[i] / 255.0;

    const double fontSize = 0.24 * 1024;
    CHECK(share == about(2 * heightOfI * widthOfI * fontSize * fontSize));
}

TEST_CASE("the letters have a dark outline of 0.09 of the font size outside their shape") {
    const TempDir tmp;
    const Fonts fonts(tmp);
    const auto images =
        composed(tmp, filledPicture(1024, 1024, green), {"i", "FF0000", Position::center});
    for (const auto& image : images) {
        if (image.width < 128) break; // less than three pixels: measured as an area elsewhere
        const double fontSize = 0.24 * image.width;
        CAPTURE(image.width);

        // Along the row through the middle: neither red nor green is outline.
        double dark = 0;
        for (std::uint32_t x = 0; x < image.width; ++x) {
            const auto pixel = pixelAt(image, x, image.height / 2);
            if (pixel[0] < 128 && pixel[1] < 85) ++dark;
        }

        CHECK(std::abs(dark - 2 * 0.09 * fontSize) <= 1.01);
    }
    // Nine tenths black over green, with the shadow below it.
    const auto outline = pixelAt(images.front(), 512 - 30, 512);
    CHECK(outline[0] == 0);
    CHECK(outline[1] <= 26);
    CHECK(outline[1] >= 14);
    CHECK(pixelAt(images.front(), 512, 512) == red);
}

TEST_CASE("the pen of the outline is 0.18 of the font size wide and has round joins") {
    const TempDir tmp;
    const Fonts fonts(tmp);
    const auto font = images::BoldSansFont::nearest("I");
    REQUIRE(font.has_value());
    for (const auto size : IconComposer::outputSizes) {
        CAPTURE(size);
        const double fontSize = 0.24 * size;
        const double pen = 0.18 * fontSize;
        const double width = widthOfI * fontSize;
        const double height = heightOfI * fontSize;
        const auto path =
            IconComposer::textPath("I", *font, fontSize).movedBy({0.3 * size, 0.3 * size});

        const auto stroke = images::strokedCoverage(path, pen, size, size);

        double area = 0;
        for (const auto pixel : stroke.pixels) area += pixel / 255.0;
        const double hole = std::max(0.0, width - pen) * (height - pen);
        const double corners = (4 - std::numbers::pi) * pen * pen / 4;
        const double expected = (width + pen) * (height + pen) - corners - hole;
        CHECK(area == doctest::Approx(expected).epsilon(0.015));
    }
}

TEST_CASE("the shadow is a Gauss curve below the outline, of half the blur's length") {
    const TempDir tmp;
    const Fonts fonts(tmp);
    const double size = 1024;
    const auto image =
        composed(tmp, filledPicture(1024, 1024, white), {"i", "FF0000", Position::center}).front();

    const double edge = size / 2 + (heightOfI / 2 + 0.09) * 0.24 * size + 0.004 * size;
    const double sigma = 0.012 * size / 2;
    // The outline itself ends some four pixels above the edge of its shadow.
    for (int distance = -3; distance <= 12; distance += 3) {
        const auto y =
            static_cast<std::uint32_t>(edge) + static_cast<std::uint32_t>(distance + 4) - 4;
        const double below = (y + 0.5 - edge) / sigma;
        const double share = 0.5 * std::erfc(below / std::numbers::sqrt2);
        CAPTURE(distance);
        CHECK(pixelAt(image, 512, y)[1] ==
              doctest::Approx(255 * (1 - 0.5 * 0.9 * share)).epsilon(0.01));
    }
}

TEST_CASE("the colour is six hexadecimal digits and white for anything else") {
    struct Case {
        std::string text;
        Color color;
    };
    const Color pureRed{1, 0, 0, 1};
    const Color pureWhite{1, 1, 1, 1};
    const Case table[] = {
        {"ff0000", pureRed},
        {"#ff0000", pureRed},
        {"FF0000", pureRed},
        {"#Ff0000", pureRed},
        {"  ff0000\t", pureRed},
        {" #ff0000 ", pureRed},
        {"123456", {0x12 / 255.0, 0x34 / 255.0, 0x56 / 255.0, 1}},
        {"000000", {0, 0, 0, 1}},
        {"+12345", {0x01 / 255.0, 0x23 / 255.0, 0x45 / 255.0, 1}},
        {"-00001", pureWhite}, // minus one has all bits set
        {"-10000", {1, 0, 0, 1}},
        {"f00", pureWhite},
        {"ff0000ff", pureWhite},
        {"gggggg", pureWhite},
        {"", pureWhite},
        {"#", pureWhite},
        {"##f0000", pureWhite},
        {"##ff000", pureWhite},
        {"ff0000\n", pureWhite},
        {"ff 000", pureWhite},
        {"0x1234", pureWhite},
        {"+-1234", pureWhite},
        {"ff000", pureWhite},
        {"äöü", pureWhite},
    };
    for (const auto& [text, color] : table) {
        const auto& shown = text;
        CAPTURE(shown);
        CHECK((IconComposer::color(text) == color));
    }
}

TEST_CASE("a label has the colour that it is given") {
    const TempDir tmp;
    const Fonts fonts(tmp);
    const auto images =
        composed(tmp, filledPicture(64, 64, black), {"i", " #3366cc", Position::center});

    CHECK(pixelAt(images.front(), 512, 512) == Pixel{0x33, 0x66, 0xCC, 255});
}

TEST_CASE("a label on nothing is drawn with its own colours") {
    const TempDir tmp;
    const Fonts fonts(tmp);

    const auto image =
        composed(tmp, filledPicture(64, 64, clear), {"i", "FF0000", Position::center}).front();

    CHECK(pixelAt(image, 512, 512) == red);
    CHECK(pixelAt(image, 5, 5) == clear);
    const auto outline = pixelAt(image, 512 - 30, 512);
    CHECK(outline[0] == 0);
    CHECK(outline[3] > 229); // nine tenths, and the shadow
}

TEST_CASE("characters that the font lacks are left out of the label") {
    const TempDir tmp;
    const Fonts fonts(tmp);
    const auto plain = composed(tmp, filledPicture(64, 64, black), {"", "", Position::top});

    CHECK(composed(tmp, filledPicture(64, 64, black), {"\U0001F680", "", Position::top}) == plain);
    CHECK(composed(tmp, filledPicture(64, 64, black), {"漢字", "", Position::top}) == plain);
    CHECK(redOnBlack(tmp, "\U0001F680i", Position::top) == redOnBlack(tmp, "i", Position::top));
}

TEST_CASE("given no font at all, the icon comes out without its label") {
    const TempDir tmp;
    const Fonts fonts(tmp, Fonts::Installed::none);
    const auto source = filledPicture(64, 64, green);

    CHECK_FALSE(images::BoldSansFont::nearest("Work").has_value());
    const auto images = composed(tmp, source, {"Work", "FF0000", Position::center});

    CHECK(images == composed(tmp, source, {"", "", Position::center}));
    CHECK(images.size() == 7);
}

TEST_CASE("texts from right to left and of several scripts are laid out as they are read") {
    const TempDir tmp;
    const Fonts fonts(tmp);
    const auto font = images::BoldSansFont::nearest("אב");
    REQUIRE(font.has_value());
    const auto startOf = [&](const std::string& text) {
        return font->outline(text, 100).segments().front().points[0];
    };

    // Alef comes first and so stands at the right: what is drawn first is bet.
    CHECK(startOf("אב") == startOf("ב"));
    CHECK(startOf("AB") == startOf("A"));
    // The number keeps its direction inside.
    CHECK(startOf("א12") == startOf("1"));
}
