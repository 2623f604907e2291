#include "Ambrel/Platform/Linux/ImageDecoders.h"

#include <algorithm>
#include <cstring>
#include <memory>

// Before the library's own header, whose functions it renames.
#include "LazyTiff.h"

#include <tiffio.h>

namespace ambrel::images {

namespace {

struct CloseTiff {
    void operator()(TIFF* tiff) const noexcept { TIFFClose(tiff); }
};
struct FreeOptions {
    void operator()(TIFFOpenOptions* options) const noexcept { TIFFOpenOptionsFree(options); }
};
using OwnedTiff = std::unique_ptr<TIFF, CloseTiff>;

/// Pictures beyond this number are not read.
constexpr int mostPictures = 64;
constexpr tmsize_t largestAllocation = 512 * 1024 * 1024;

struct Input {
    std::string_view bytes;
    std::uint64_t position = 0;
};

Input& inputOf(thandle_t handle) { return *static_cast<Input*>(handle); }

tmsize_t readInput(thandle_t handle, void* buffer, tmsize_t size) {
    auto& input = inputOf(handle);
    const auto start = std::min<std::uint64_t>(input.position, input.bytes.size());
    const auto count = std::min<std::uint64_t>(
        static_cast<std::uint64_t>(std::max<tmsize_t>(size, 0)), input.bytes.size() - start);
    std::memcpy(buffer, input.bytes.data() + start, count);
    input.position = start + count;
    return static_cast<tmsize_t>(count);
}

tmsize_t refuseToWrite(thandle_t, void*, tmsize_t) { return -1; }

toff_t seekInput(thandle_t handle, toff_t offset, int origin) {
    auto& input = inputOf(handle);
    if (origin == SEEK_CUR) offset += input.position;
    if (origin == SEEK_END) offset += input.bytes.size();
    return input.position = offset;
}

int closeInput(thandle_t) { return 0; }

toff_t sizeOfInput(thandle_t handle) { return inputOf(handle).bytes.size(); }

int mapInput(thandle_t, void**, toff_t*) { return 0; }
void unmapInput(thandle_t, void*, toff_t) {}

/// Reports are not for the terminal: a picture that does not decode is left out.
int ignoreReport(TIFF*, void*, const char*, const char*, va_list) { return 1; }

OwnedTiff openTiff(Input& input) {
    const std::unique_ptr<TIFFOpenOptions, FreeOptions> options(TIFFOpenOptionsAlloc());
    TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), largestAllocation);
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), ignoreReport, nullptr);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), ignoreReport, nullptr);
    return OwnedTiff(TIFFClientOpenExt("image", "rm", &input, readInput, refuseToWrite, seekInput,
                                       closeInput, sizeOfInput, mapInput, unmapInput,
                                       options.get()));
}

/// The library's pixels are premultiplied, red in the lowest byte.
Image straightImage(const std::vector<std::uint32_t>& raster, std::uint32_t width,
                    std::uint32_t height) {
    auto image = emptyImage(width, height);
    auto* to = image.pixels.data();
    for (const auto pixel : raster) {
        const auto alpha = pixel >> 24;
        for (int shift = 0; shift < 24; shift += 8) {
            const auto value = (pixel >> shift) & 0xFF;
            const auto straight = alpha == 0 ? 0 : (value * 255 + alpha / 2) / alpha;
            *to++ = static_cast<std::uint8_t>(std::min(straight, 255U));
        }
        *to++ = static_cast<std::uint8_t>(alpha);
    }
    return image;
}

std::optional<Image> readPicture(TIFF* tiff, std::size_t fileSize) {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    TIFFGetField(tiff, TIFFTAG_IMAGEWIDTH, &width);
    TIFFGetField(tiff, TIFFTAG_IMAGELENGTH, &height);
    if (!isPlausibleSize(width, height, fileSize)) return std::nullopt;
    std::vector<std::uint32_t> raster(std::size_t(width) * height);
    const bool complete =
        TIFFReadRGBAImageOriented(tiff, width, height, raster.data(), ORIENTATION_TOPLEFT, 1) != 0;
    return complete ? std::optional(straightImage(raster, width, height)) : std::nullopt;
}

} // namespace

std::vector<Image> decodeTiff(std::string_view file) {
    loadTiff();
    Input input{file};
    std::vector<Image> images;
    const auto tiff = openTiff(input);
    if (!tiff) return images;
    for (int i = 0; i < mostPictures; ++i) {
        auto image = readPicture(tiff.get(), file.size());
        if (image) images.push_back(std::move(*image));
        if (TIFFReadDirectory(tiff.get()) == 0) break;
    }
    return images;
}

} // namespace ambrel::images
