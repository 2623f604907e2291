#pragma once

#include "Ambrel/Graphics/Image.h"

#include <string>
#include <string_view>

/// Icon files and the pictures in them, made without the code under test.
namespace korvane::test {

/// A picture in which every pixel says where it is; opaque in one corner, almost clear in another.
ambrel::Image samplePicture(std::uint32_t width, std::uint32_t height);
inline ambrel::Image samplePicture(std::uint32_t side) { return samplePicture(side, side); }

std::string bigEndian(std::uint32_t number);

/// A PNG without compression.
std::string pngOf(const ambrel::Image& image);
/// The header of a PNG that claims a size, and the beginning of data that never comes.
std::string pngClaiming(std::uint32_t width, std::uint32_t height);
/// A JPEG 2000 up to the first marker of its codestream: its size, without pixels.
std::string jpeg2000Claiming(std::uint32_t width, std::uint32_t height);
/// The same without the boxes around it.
std::string codestreamClaiming(std::uint32_t width, std::uint32_t height);

/// Colours of a picture, coded without any run, one plane after another: places of "RGBA".
std::string planesOf(const ambrel::Image& image, std::string_view colors);
/// The alpha bytes of a picture.
std::string maskOf(const ambrel::Image& image);

/// Writes icon files element by element, ill-formed ones too.
class IcnsBuilder {
public:
    IcnsBuilder& element(std::string_view type, std::string_view payload);
    /// Bytes as they are, for what is no element.
    IcnsBuilder& raw(std::string_view bytes);
    std::string file() const;

private:
    std::string elements_;
};

} // namespace korvane::test
