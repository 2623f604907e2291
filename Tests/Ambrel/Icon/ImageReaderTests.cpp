#include "Ambrel/Icon/ImageReader.h"

#include "Ambrel/Platform/Images.h"
#include "PictureFiles.h"

#include <doctest/doctest.h>

#include <array>
#include <png.h>

using namespace ambrel;
using namespace korvane::test;
using namespace std::string_literals;

namespace {

/// The quarters of an image: upper left, upper right, lower left, lower right.
std::array<Pixel, 4> quartersOf(const Image& image) {
    const auto at = [&](std::uint32_t x, std::uint32_t y) {
        return pixelAt(image, image.width * x / 4, image.height * y / 4);
    };
    return {at(1, 1), at(3, 1), at(1, 3), at(3, 3)};
}

void checkQuarters(const Image& image, const std::array<Pixel, 4>& expected, int tolerance) {
    const auto found = quartersOf(image);
    for (std::size_t i = 0; i < found.size(); ++i) {
        CAPTURE(i);
        CAPTURE(int(found[i][0]));
        CAPTURE(int(found[i][1]));
        CAPTURE(int(found[i][2]));
        CHECK(isNear(found[i], expected[i], tolerance));
    }
}

constexpr std::array<Pixel, 4> plainQuarters{red, green, blue, white};

} // namespace

TEST_CASE("pictures of every usual format are read with their pixels") {
    const TempDir tmp;
    const auto image = quarters(24, 16);
    struct Case {
        std::string format;
        std::string file;
        int tolerance;
    };
    const Case cases[] = {
        {"PNG", png(image), 0},
        {"WebP", webp(image), 0},
        {"TIFF, deflate", tiffFile(tmp, {image}), 0},
        {"TIFF, LZW", tiffFile(tmp, {image}, COMPRESSION_LZW), 0},
        {"TIFF, not compressed", tiffFile(tmp, {image}, COMPRESSION_NONE), 0},
        {"JPEG 2000", jpeg2000(tmp, image), 0},
        {"BMP", bmp(image), 0},
        {"ICO with a bitmap", ico({iconBitmap(image)}), 0},
        {"ICO with a PNG", ico({{24, 16, png(image)}}), 0},
        {"GIF", gif(image), 0},
        {"JPEG", rgbJpeg(image), 12},
    };
    for (const auto& [format, file, tolerance] : cases) {
        const auto& shown = format;
        CAPTURE(shown);

        const auto images = imagesIn(file);

        REQUIRE(images.size() == 1);
        CHECK(images[0].width == 24);
        CHECK(images[0].height == 16);
        checkQuarters(images[0], plainQuarters, tolerance);
        if (tolerance == 0) CHECK(images[0] == image);
    }
}

TEST_CASE("transparency is read as it is") {
    const TempDir tmp;
    const auto image = filledPicture(8, 8, {200, 100, 50, 128});
    CHECK(imagesIn(png(image)).at(0) == image);
    CHECK(imagesIn(webp(image)).at(0) == image);
    CHECK(imagesIn(jpeg2000(tmp, image)).at(0) == image);
    CHECK(imagesIn(ico({iconBitmap(image)})).at(0) == image);
    // The library that reads it premultiplies, which costs a step.
    CHECK(isNear(pixelAt(imagesIn(tiffFile(tmp, {image})).at(0), 3, 3), {200, 100, 50, 128}, 2));
}

TEST_CASE("a drawing without pixels of its own is drawn as large as an icon gets") {
    const auto images = imagesIn(svg);

    REQUIRE(images.size() == 1);
    CHECK(images[0].width == 1024);
    CHECK(images[0].height == 512);
    checkQuarters(images[0], plainQuarters, 0);
}

TEST_CASE("a JPEG is turned upright by its EXIF orientation") {
    struct Case {
        std::uint8_t orientation;
        std::array<Pixel, 4> upright;
    };
    // Where the first row and column of the file belong (EXIF 2.32, tag 274).
    const Case cases[] = {
        {1, {red, green, blue, white}}, {2, {green, red, white, blue}},
        {3, {white, blue, green, red}}, {4, {blue, white, red, green}},
        {5, {red, blue, green, white}}, {6, {blue, red, white, green}},
        {7, {white, green, blue, red}}, {8, {green, white, red, blue}},
    };
    for (const auto& [orientation, upright] : cases) {
        const int shown = orientation;
        CAPTURE(shown);

        const auto images = imagesIn(rgbJpeg(quarters(48, 32), orientation));

        REQUIRE(images.size() == 1);
        CHECK(images[0].width == (orientation < 5 ? 48 : 32));
        checkQuarters(images[0], upright, 12);
    }
}

TEST_CASE("a JPEG for print comes out in its colours") {
    // The library marks these as Adobe's, whose components are stored inverted.
    struct Case {
        Pixel inverted; ///< cyan, magenta, yellow, black
        Pixel expected;
    };
    for (const auto& [inverted, expected] :
         {Case{{255, 0, 0, 255}, red}, Case{{0, 255, 0, 255}, green}, Case{{0, 0, 255, 255}, blue},
          Case{{255, 255, 255, 255}, white}, Case{{255, 255, 255, 0}, black},
          Case{{255, 255, 255, 128}, {128, 128, 128, 255}}}) {
        std::vector<std::uint8_t> samples;
        for (int i = 0; i < 16 * 16; ++i) {
            samples.insert(samples.end(), inverted.begin(), inverted.end());
        }
        for (const auto space : {JCS_CMYK}) {
            const auto images = imagesIn(jpeg(16, 16, 4, space, samples));
            REQUIRE(images.size() == 1);
            CHECK(isNear(pixelAt(images[0], 8, 8), expected, 4));
        }
    }
}

TEST_CASE("every picture of a Windows icon is read, and the widest is used") {
    const auto file = ico({iconBitmap(filledPicture(16, 16, red)),
                           {64, 64, png(filledPicture(64, 64, green))},
                           iconBitmap(filledPicture(32, 32, blue)),
                           {64, 64, png(filledPicture(64, 64, white))}});

    const auto images = imagesIn(file);

    REQUIRE(images.size() == 4);
    CHECK(images[0] == filledPicture(16, 16, red));
    CHECK(images[1] == filledPicture(64, 64, green));
    CHECK(images[2] == filledPicture(32, 32, blue));
    CHECK(widestImageIn(file) == filledPicture(64, 64, green));
}

TEST_CASE("every page of a TIFF is read and of equal widths the first wins") {
    const TempDir tmp;
    const auto file = tiffFile(
        tmp, {filledPicture(8, 8, red), filledPicture(16, 8, green), filledPicture(16, 4, blue)});

    CHECK(imagesIn(file).size() == 3);
    CHECK(widestImageIn(file) == filledPicture(16, 8, green));
}

TEST_CASE("an animation gives its first image") {
    const auto file = animatedWebP({quarters(20, 20), filledPicture(20, 20, black)});

    const auto images = imagesIn(file);

    REQUIRE(images.size() == 1);
    CHECK(images[0] == quarters(20, 20));
}

TEST_CASE("a PNG with 16 bits a component counts as sRGB where it names no colour space") {
    // 16 bits a component, RGB, one pixel; compressed without compression.
    const auto row = "\0\x80\x00\x40\x00\xFF\xFF"s;
    const auto pixels = filledPicture(4, 4, {128, 64, 255, 255});
    auto file = png(pixels);
    REQUIRE(imagesIn(file).at(0) == pixels);

    std::string data = "\x78\x01\x01"s + number(row.size(), 2) + number(~row.size(), 2) + row;
    std::uint32_t a = 1;
    std::uint32_t b = 0;
    for (const char byte : row) {
        a = (a + static_cast<unsigned char>(byte)) % 65521;
        b = (b + a) % 65521;
    }
    data += bigNumber(b << 16 | a);
    const auto chunk = [](const std::string& type, const std::string& content) {
        std::uint32_t crc = 0xFFFFFFFF;
        for (const char byte : type + content) {
            crc ^= static_cast<unsigned char>(byte);
            for (int i = 0; i < 8; ++i) crc = crc >> 1 ^ (crc & 1 ? 0xEDB88320 : 0);
        }
        return bigNumber(static_cast<std::uint32_t>(content.size())) + type + content +
               bigNumber(~crc);
    };
    file = "\x89PNG\r\n\x1A\n" + chunk("IHDR", bigNumber(1) + bigNumber(1) + "\x10\x02\0\0\0"s) +
           chunk("IDAT", data) + chunk("IEND", "");

    const auto images = imagesIn(file);

    REQUIRE(images.size() == 1);
    CHECK(pixelAt(images[0], 0, 0) == Pixel{128, 64, 255, 255});
}

TEST_CASE("a PNG that is written is read back by another reader without loss") {
    const auto noise = picture(97, 61, [](auto x, auto y) {
        const auto mixed = (x * 2654435761U) ^ (y * 40503U) ^ (x * y);
        return Pixel{static_cast<std::uint8_t>(mixed), static_cast<std::uint8_t>(x + y),
                     static_cast<std::uint8_t>(y * 4), static_cast<std::uint8_t>(mixed >> 24)};
    });
    for (const auto& image :
         {noise, quarters(1, 1), quarters(300, 2), filledPicture(2, 300, clear)}) {
        const auto file = images::encodePng(image);

        png_image reading{};
        reading.version = PNG_IMAGE_VERSION;
        REQUIRE(png_image_begin_read_from_memory(&reading, file.data(), file.size()));
        reading.format = PNG_FORMAT_RGBA;
        Image read{reading.width, reading.height, {}};
        read.pixels.resize(PNG_IMAGE_SIZE(reading));
        REQUIRE(png_image_finish_read(&reading, nullptr, read.pixels.data(), 0, nullptr));
        CHECK(read == image);
    }
}
