#include "Ambrel/Platform/Linux/ImageDecoders.h"

// Before the library's own header, whose functions it renames.
#include "LazyPng.h"

#include <png.h>

namespace ambrel::images {

namespace {

/// The library's reading of one picture, ended with its scope.
struct Reading {
    png_image image{};

    Reading() { image.version = PNG_IMAGE_VERSION; }
    Reading(const Reading&) = delete;
    Reading& operator=(const Reading&) = delete;
    ~Reading() { png_image_free(&image); }
};

} // namespace

std::optional<Image> decodePng(std::string_view file) {
    loadPng();
    Reading reading;
    auto& png = reading.image;
    if (png_image_begin_read_from_memory(&png, file.data(), file.size()) == 0) return std::nullopt;
    if (!isPlausibleSize(png.width, png.height, file.size())) return std::nullopt;
    png.format = PNG_FORMAT_RGBA;
    // Without this, 16-bit pictures that name no colour space would count as linear light.
    png.flags |= PNG_IMAGE_FLAG_16BIT_sRGB;
    auto image = emptyImage(png.width, png.height);
    const bool complete =
        png_image_finish_read(&png, nullptr, image.pixels.data(), 0, nullptr) != 0;
    return complete ? std::optional(std::move(image)) : std::nullopt;
}

} // namespace ambrel::images
