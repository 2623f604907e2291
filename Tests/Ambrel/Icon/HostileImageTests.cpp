#include "Ambrel/Icon/ImageReader.h"

#include "PictureFiles.h"

#include <doctest/doctest.h>

using namespace ambrel;
using namespace korvane::test;
using namespace std::string_literals;

TEST_CASE("a picture of a Windows icon that lies outside the file is skipped") {
    auto file = ico(
        {{48, 48, png(filledPicture(48, 48, red))}, {16, 16, png(filledPicture(16, 16, blue))}});
    file.replace(6 + 12, 4, number(0xFFFFFF00, 4));

    const auto images = imagesIn(file);

    REQUIRE(images.size() == 1);
    CHECK(images[0] == filledPicture(16, 16, blue));
}

TEST_CASE("files that are cut short at any place never crash, and most give no image") {
    const TempDir tmp;
    const auto image = quarters(24, 16);
    for (const auto& file :
         {png(image), webp(image), tiffFile(tmp, {image}), jpeg2000(tmp, image), bmp(image),
          gif(image), rgbJpeg(image, 6), svg, ico({iconBitmap(image), {24, 16, png(image)}}),
          animatedWebP({image, filledPicture(24, 16, black)})}) {
        CAPTURE(file.substr(0, 12));
        CHECK(imagesIn(file.substr(0, 20)).empty());
        for (std::size_t size = 0; size < file.size(); size += 1 + file.size() / 64) {
            for (const auto& one : imagesIn(file.substr(0, size))) CHECK_FALSE(one.isEmpty());
        }
    }
}

TEST_CASE("claims of a gigabyte in a small file are refused before anything is allocated") {
    const TempDir tmp;
    const auto image = quarters(24, 16);
    constexpr std::uint32_t huge = 32000;
    const auto claimingPng = [&] {
        auto file = png(image);
        return file.replace(16, 8, bigNumber(huge) + bigNumber(huge));
    }();
    const auto claimingGif = [&] {
        auto file = gif(image);
        file.replace(6, 4, number(huge, 2) + number(huge, 2));
        return file.replace(13 + 12 + 5, 4, number(huge, 2) + number(huge, 2));
    }();
    const auto claimingBmp = [&] {
        auto file = bmp(image);
        return file.replace(18, 8, number(huge, 4) + number(huge, 4));
    }();
    const auto claimingIcon = ico({{0, 0, bitmapHeader(huge, 2 * huge) + bitmapRows(image)}});
    const auto claimingJpeg = [&] {
        auto file = rgbJpeg(image);
        const auto frame = file.find("\xFF\xC0");
        REQUIRE(frame != std::string::npos);
        return file.replace(frame + 5, 4, "\x7D\x00\x7D\x00"s);
    }();
    const auto claimingTiff = [&] {
        auto file = tiffFile(tmp, {image}, COMPRESSION_NONE);
        for (const auto tag : {TIFFTAG_IMAGEWIDTH, TIFFTAG_IMAGELENGTH}) {
            const auto entry = file.find(number(static_cast<std::uint64_t>(tag), 2) +
                                         number(TIFF_SHORT, 2) + number(1, 4));
            REQUIRE(entry != std::string::npos);
            file.replace(entry + 8, 2, number(huge, 2));
        }
        return file;
    }();
    for (const auto& file :
         {claimingPng, claimingGif, claimingBmp, claimingIcon, claimingJpeg, claimingTiff}) {
        CAPTURE(file.substr(0, 4));
        CHECK(imagesIn(file).empty());
    }
}
