#pragma once

#include "Ambrel/Graphics/Canvas.h"
#include "Ambrel/Graphics/Image.h"
#include "Ambrel/Graphics/Outline.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// Image files, letters and shapes, by the system's libraries. Every function throws LibraryError
/// when a library that it needs is missing.
namespace ambrel::images {

/// The images in a file of a format that the system knows, in their order; those that do not decode
/// are left out. PNG, JPEG (CMYK too, turned upright by its EXIF orientation), WebP, GIF, TIFF,
/// BMP, a Windows icon with one picture, JPEG 2000, SVG (drawn as large as an icon gets), and
/// whatever else the system has a decoder for; not the Apple icon file. An animation gives its
/// first image. A claim of far more pixels than the file can hold costs nothing.
std::vector<Image> decode(std::string_view file);
/// Absent when the bytes are no such picture or do not decode.
std::optional<Image> decodePng(std::string_view file);
std::optional<Image> decodeJpeg2000(std::string_view file);

/// The image as a PNG file, without loss.
std::string encodePng(const Image& image);

/// How much of each pixel the inside of `outline` covers, on a picture of `width` by `height`
/// pixels. The outline's origin is the picture's lower left corner, y grows upwards. What lies
/// outside the picture is left out.
Coverage filledCoverage(const Outline& outline, std::uint32_t width, std::uint32_t height);
/// The same for a pen of width `penWidth` that follows the outline, with round joins.
Coverage strokedCoverage(const Outline& outline, double penWidth, std::uint32_t width,
                         std::uint32_t height);

/// Helvetica Bold, or the bold sans-serif font of the system that is nearest to it.
class BoldSansFont {
public:
    /// The font that has the most of the characters of `text`, and is the nearest among those.
    /// Absent when the system has no font with outlines.
    static std::optional<BoldSansFont> nearest(std::string_view text);

    /// The shapes of `text` on one line that starts at the origin; characters that the font lacks
    /// take their place but have no shape.
    Outline outline(std::string_view text, double fontSize) const;

private:
    struct Storage;
    explicit BoldSansFont(std::shared_ptr<const Storage> storage) : storage_(std::move(storage)) {}

    std::shared_ptr<const Storage> storage_;
};

} // namespace ambrel::images
