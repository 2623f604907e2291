#include "Ambrel/Icon/ImageReader.h"

#include "Ambrel/Platform/Images.h"
#include "Support/Pictures.h"

#include <doctest/doctest.h>

#include <cstdio>
#include <memory>
#include <openjpeg.h>
#include <png.h>
#include <tiffio.h>
#include <webp/encode.h>
#include <webp/mux.h>

// Wants <cstdio> before it.
#include <jpeglib.h>

using namespace ambrel;
using namespace korvane::test;
using namespace std::string_literals;

namespace {

std::string number(std::uint64_t value, int bytes) {
    std::string text;
    for (int i = 0; i < bytes; ++i) text += static_cast<char>(i < 8 ? value >> (8 * i) : 0);
    return text;
}

std::string bigNumber(std::uint32_t value) {
    const auto little = number(value, 4);
    return {little.rbegin(), little.rend()};
}

/// Four quarters: red, green above blue, white.
Image quarters(std::uint32_t width, std::uint32_t height) {
    return picture(width, height, [=](auto x, auto y) {
        if (y < height / 2) return x < width / 2 ? red : green;
        return x < width / 2 ? blue : white;
    });
}

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

std::string png(const Image& image) {
    png_image writing{};
    writing.version = PNG_IMAGE_VERSION;
    writing.width = image.width;
    writing.height = image.height;
    writing.format = PNG_FORMAT_RGBA;
    png_alloc_size_t size = 0;
    REQUIRE(png_image_write_get_memory_size(writing, size, 0, image.pixels.data(), 0, nullptr));
    std::string file(size, '\0');
    REQUIRE(png_image_write_to_memory(&writing, file.data(), &size, 0, image.pixels.data(), 0,
                                      nullptr));
    file.resize(size);
    return file;
}

/// With an EXIF orientation where it is not 0.
std::string jpeg(std::uint32_t width, std::uint32_t height, int components, J_COLOR_SPACE space,
                 const std::vector<std::uint8_t>& samples, std::uint8_t orientation = 0) {
    jpeg_compress_struct writing{};
    jpeg_error_mgr errors{};
    writing.err = jpeg_std_error(&errors);
    jpeg_create_compress(&writing);
    unsigned char* bytes = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&writing, &bytes, &size);
    writing.image_width = width;
    writing.image_height = height;
    writing.input_components = components;
    writing.in_color_space = space;
    jpeg_set_defaults(&writing);
    jpeg_set_quality(&writing, 95, TRUE);
    jpeg_start_compress(&writing, TRUE);
    if (orientation != 0) {
        const auto exif = "Exif\0\0MM\0*\0\0\0\x08\0\x01\x01\x12\0\x03\0\0\0\x01\0"s +
                          static_cast<char>(orientation) + "\0\0\0\0\0\0"s;
        jpeg_write_marker(&writing, JPEG_APP0 + 1, reinterpret_cast<const JOCTET*>(exif.data()),
                          static_cast<unsigned>(exif.size()));
    }
    const auto stride = static_cast<std::size_t>(components) * width;
    while (writing.next_scanline < height) {
        auto* row = const_cast<JSAMPLE*>(samples.data() + writing.next_scanline * stride);
        jpeg_write_scanlines(&writing, &row, 1);
    }
    jpeg_finish_compress(&writing);
    jpeg_destroy_compress(&writing);
    std::string file(reinterpret_cast<char*>(bytes), size);
    std::free(bytes);
    return file;
}

std::string rgbJpeg(const Image& image, std::uint8_t orientation = 0) {
    std::vector<std::uint8_t> samples;
    for (std::size_t i = 0; i < image.pixels.size(); ++i) {
        if (i % 4 != 3) samples.push_back(image.pixels[i]);
    }
    return jpeg(image.width, image.height, 3, JCS_RGB, samples, orientation);
}

std::string webp(const Image& image) {
    std::uint8_t* bytes = nullptr;
    const auto size = WebPEncodeLosslessRGBA(image.pixels.data(), static_cast<int>(image.width),
                                             static_cast<int>(image.height),
                                             static_cast<int>(image.width * 4), &bytes);
    std::string file(reinterpret_cast<char*>(bytes), size);
    WebPFree(bytes);
    return file;
}

std::string animatedWebP(const std::vector<Image>& frames) {
    const std::unique_ptr<WebPAnimEncoder, void (*)(WebPAnimEncoder*)> encoder(
        WebPAnimEncoderNew(static_cast<int>(frames[0].width), static_cast<int>(frames[0].height),
                           nullptr),
        WebPAnimEncoderDelete);
    WebPConfig config;
    WebPConfigInit(&config);
    config.lossless = 1;
    int time = 0;
    for (const auto& frame : frames) {
        WebPPicture picture;
        WebPPictureInit(&picture);
        picture.use_argb = 1;
        picture.width = static_cast<int>(frame.width);
        picture.height = static_cast<int>(frame.height);
        WebPPictureImportRGBA(&picture, frame.pixels.data(), static_cast<int>(frame.width * 4));
        REQUIRE(WebPAnimEncoderAdd(encoder.get(), &picture, time += 100, &config) != 0);
        WebPPictureFree(&picture);
    }
    REQUIRE(WebPAnimEncoderAdd(encoder.get(), nullptr, time + 100, nullptr) != 0);
    WebPData data;
    WebPDataInit(&data);
    REQUIRE(WebPAnimEncoderAssemble(encoder.get(), &data) != 0);
    std::string file(reinterpret_cast<const char*>(data.bytes), data.size);
    WebPDataClear(&data);
    return file;
}

/// One page an image, with alpha that is not premultiplied.
std::string tiffFile(const TempDir& tmp, const std::vector<Image>& pages,
                     std::uint16_t compression = COMPRESSION_ADOBE_DEFLATE) {
    const auto path = tmp / "written.tiff";
    TIFF* writing = TIFFOpen(path.c_str(), "w");
    REQUIRE(writing != nullptr);
    const std::uint16_t extra = EXTRASAMPLE_UNASSALPHA;
    for (const auto& page : pages) {
        TIFFSetField(writing, TIFFTAG_IMAGEWIDTH, page.width);
        TIFFSetField(writing, TIFFTAG_IMAGELENGTH, page.height);
        TIFFSetField(writing, TIFFTAG_SAMPLESPERPIXEL, 4);
        TIFFSetField(writing, TIFFTAG_BITSPERSAMPLE, 8);
        TIFFSetField(writing, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
        TIFFSetField(writing, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
        TIFFSetField(writing, TIFFTAG_COMPRESSION, compression);
        TIFFSetField(writing, TIFFTAG_EXTRASAMPLES, 1, &extra);
        for (std::uint32_t y = 0; y < page.height; ++y) {
            auto row = std::vector<std::uint8_t>(
                page.pixels.begin() + std::ptrdiff_t(y) * page.width * 4,
                page.pixels.begin() + std::ptrdiff_t(y + 1) * page.width * 4);
            TIFFWriteScanline(writing, row.data(), y, 0);
        }
        TIFFWriteDirectory(writing);
    }
    TIFFClose(writing);
    return readFile(path);
}

std::string jpeg2000(const TempDir& tmp, const Image& image) {
    std::array<opj_image_cmptparm_t, 4> components{};
    for (auto& component : components) {
        component.dx = component.dy = 1;
        component.w = image.width;
        component.h = image.height;
        component.prec = 8;
    }
    auto* writing = opj_image_create(4, components.data(), OPJ_CLRSPC_SRGB);
    writing->x1 = image.width;
    writing->y1 = image.height;
    for (std::size_t i = 0; i < image.pixels.size(); ++i) {
        writing->comps[i % 4].data[i / 4] = image.pixels[i];
    }
    opj_cparameters_t parameters;
    opj_set_default_encoder_parameters(&parameters);
    parameters.tcp_numlayers = 1;
    parameters.cp_disto_alloc = 1; // with a rate of 0: no loss
    parameters.numresolution = 3;
    auto* codec = opj_create_compress(OPJ_CODEC_JP2);
    REQUIRE(opj_setup_encoder(codec, &parameters, writing));
    const auto path = tmp / "written.jp2";
    auto* stream = opj_stream_create_default_file_stream(path.c_str(), OPJ_FALSE);
    REQUIRE(opj_start_compress(codec, writing, stream));
    REQUIRE(opj_encode(codec, stream));
    REQUIRE(opj_end_compress(codec, stream));
    opj_stream_destroy(stream);
    opj_destroy_codec(codec);
    opj_image_destroy(writing);
    return readFile(path);
}

/// Rows from bottom to top, blue first, as in a bitmap of Windows with 32 bits a pixel.
std::string bitmapRows(const Image& image) {
    std::string rows;
    for (std::uint32_t y = image.height; y > 0; --y) {
        for (std::uint32_t x = 0; x < image.width; ++x) {
            const auto pixel = pixelAt(image, x, y - 1);
            for (const auto i : {2U, 1U, 0U, 3U}) rows += static_cast<char>(pixel[i]);
        }
    }
    return rows;
}

std::string bitmapHeader(std::uint32_t width, std::uint32_t height) {
    return number(40, 4) + number(width, 4) + number(height, 4) + number(1, 2) + number(32, 2) +
           number(0, 24);
}

std::string bmp(const Image& image) {
    const auto rows = bitmapRows(image);
    return "BM" + number(54 + rows.size(), 4) + number(0, 4) + number(54, 4) +
           bitmapHeader(image.width, image.height) + rows;
}

struct IconPicture {
    std::uint32_t width;
    std::uint32_t height;
    std::string bytes;
};

/// As in an icon of Windows: twice the height, and a mask of one bit a pixel behind the rows.
IconPicture iconBitmap(const Image& image) {
    const auto mask = std::string(std::size_t((image.width + 31) / 32) * 4 * image.height, '\0');
    return {image.width, image.height,
            bitmapHeader(image.width, 2 * image.height) + bitmapRows(image) + mask};
}

std::string ico(const std::vector<IconPicture>& pictures) {
    auto file = number(0, 2) + number(1, 2) + number(pictures.size(), 2);
    auto offset = file.size() + 16 * pictures.size();
    for (const auto& [width, height, bytes] : pictures) {
        file += number(width, 1) + number(height, 1) + number(0, 2) + number(1, 2) + number(32, 2) +
                number(bytes.size(), 4) + number(offset, 4);
        offset += bytes.size();
    }
    for (const auto& picture : pictures) file += picture.bytes;
    return file;
}

/// Codes of three bits for four colours, with a clear code before each pixel so that they stay so.
std::string gif(const Image& image) {
    std::vector<int> codes;
    for (std::uint32_t y = 0; y < image.height; ++y) {
        for (std::uint32_t x = 0; x < image.width; ++x) {
            const auto pixel = pixelAt(image, x, y);
            codes.push_back(4);
            codes.push_back(pixel == red ? 0 : pixel == green ? 1 : pixel == blue ? 2 : 3);
        }
    }
    codes.push_back(5);
    std::string data;
    unsigned bits = 0;
    int count = 0;
    for (const int code : codes) {
        bits |= static_cast<unsigned>(code) << count;
        for (count += 3; count >= 8; count -= 8, bits >>= 8) data += static_cast<char>(bits);
    }
    data += static_cast<char>(bits);
    auto file = "GIF89a" + number(image.width, 2) + number(image.height, 2) + "\x91\0\0"s +
                "\xFF\0\0\0\xFF\0\0\0\xFF\xFF\xFF\xFF"s + "," + number(0, 4) +
                number(image.width, 2) + number(image.height, 2) + "\0\x02"s;
    for (std::size_t i = 0; i < data.size(); i += 255) {
        const auto part = data.substr(i, 255);
        file += static_cast<char>(part.size()) + part;
    }
    return file + "\0;"s;
}

const std::string svg = R"(<svg xmlns="http://www.w3.org/2000/svg" width="20" height="10">
<rect width="10" height="5" fill="#f00"/><rect x="10" width="10" height="5" fill="#0f0"/>
<rect y="5" width="10" height="5" fill="#00f"/><rect x="10" y="5" width="10" height="5" fill="#fff"/>
</svg>)";

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

TEST_CASE("a picture of a Windows icon that lies outside the file is skipped") {
    auto file = ico(
        {{48, 48, png(filledPicture(48, 48, red))}, {16, 16, png(filledPicture(16, 16, blue))}});
    file.replace(6 + 12, 4, number(0xFFFFFF00, 4));

    const auto images = imagesIn(file);

    REQUIRE(images.size() == 1);
    CHECK(images[0] == filledPicture(16, 16, blue));
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
