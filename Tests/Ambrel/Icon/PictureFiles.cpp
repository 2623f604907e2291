#include "PictureFiles.h"

#include <doctest/doctest.h>

#include <array>
#include <cstdlib>
#include <memory>
#include <openjpeg.h>
#include <png.h>
#include <webp/encode.h>
#include <webp/mux.h>

using namespace ambrel;
using namespace std::string_literals;

namespace korvane::test {

std::string number(std::uint64_t value, int bytes) {
    std::string text;
    for (int i = 0; i < bytes; ++i) text += static_cast<char>(i < 8 ? value >> (8 * i) : 0);
    return text;
}

std::string bigNumber(std::uint32_t value) {
    const auto little = number(value, 4);
    return {little.rbegin(), little.rend()};
}

Image quarters(std::uint32_t width, std::uint32_t height) {
    return picture(width, height, [=](auto x, auto y) {
        if (y < height / 2) return x < width / 2 ? red : green;
        return x < width / 2 ? blue : white;
    });
}

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

std::string jpeg(std::uint32_t width, std::uint32_t height, int components, J_COLOR_SPACE space,
                 const std::vector<std::uint8_t>& samples, std::uint8_t orientation) {
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

std::string rgbJpeg(const Image& image, std::uint8_t orientation) {
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

std::string tiffFile(const TempDir& tmp, const std::vector<Image>& pages,
                     std::uint16_t compression) {
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

} // namespace korvane::test
