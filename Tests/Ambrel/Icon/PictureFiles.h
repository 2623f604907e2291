#pragma once

#include "Support/Pictures.h"

#include <cstdint>
#include <cstdio>
#include <string>
#include <tiffio.h>
#include <vector>

// Wants <cstdio> before it.
#include <jpeglib.h>

/// Files of every usual format with a picture in them, without the code under test.
namespace korvane::test {

/// The last bytes of a number first, as in files of Windows; those above the eighth are 0.
std::string number(std::uint64_t value, int bytes);
/// Four bytes, the first of the number first.
std::string bigNumber(std::uint32_t value);

/// Four quarters: red, green above blue, white.
ambrel::Image quarters(std::uint32_t width, std::uint32_t height);

std::string png(const ambrel::Image& image);
/// With an EXIF orientation where it is not 0.
std::string jpeg(std::uint32_t width, std::uint32_t height, int components, J_COLOR_SPACE space,
                 const std::vector<std::uint8_t>& samples, std::uint8_t orientation = 0);
std::string rgbJpeg(const ambrel::Image& image, std::uint8_t orientation = 0);
std::string webp(const ambrel::Image& image);
std::string animatedWebP(const std::vector<ambrel::Image>& frames);
/// One page an image, with alpha that is not premultiplied.
std::string tiffFile(const TempDir& tmp, const std::vector<ambrel::Image>& pages,
                     std::uint16_t compression = COMPRESSION_ADOBE_DEFLATE);
std::string jpeg2000(const TempDir& tmp, const ambrel::Image& image);

/// Rows from bottom to top, blue first, as in a bitmap of Windows with 32 bits a pixel.
std::string bitmapRows(const ambrel::Image& image);
std::string bitmapHeader(std::uint32_t width, std::uint32_t height);
std::string bmp(const ambrel::Image& image);

struct IconPicture {
    std::uint32_t width;
    std::uint32_t height;
    std::string bytes;
};

/// As in an icon of Windows: twice the height, and a mask of one bit a pixel behind the rows.
IconPicture iconBitmap(const ambrel::Image& image);
std::string ico(const std::vector<IconPicture>& pictures);

/// Of the colours of quarters() only.
std::string gif(const ambrel::Image& image);

/// Quarters of 20 by 10.
inline const std::string svg = R"(<svg xmlns="http://www.w3.org/2000/svg" width="20" height="10">
<rect width="10" height="5" fill="#f00"/><rect x="10" width="10" height="5" fill="#0f0"/>
<rect y="5" width="10" height="5" fill="#00f"/><rect x="10" y="5" width="10" height="5" fill="#fff"/>
</svg>)";

} // namespace korvane::test
