#include "Ambrel/Platform/Images.h"

#include "Ambrel/Platform/Linux/ImageDecoders.h"

namespace ambrel::images {

namespace {

using namespace std::string_view_literals;

std::vector<Image> listOf(std::optional<Image> image) {
    std::vector<Image> list;
    if (image) list.push_back(std::move(*image));
    return list;
}

bool isWebP(std::string_view file) {
    return file.starts_with("RIFF") &&
           file.substr(std::min<std::size_t>(8, file.size())).starts_with("WEBP");
}

/// Classic and big files in both byte orders.
bool isTiff(std::string_view file) {
    return file.starts_with("II*\0"sv) || file.starts_with("MM\0*"sv) ||
           file.starts_with("II+\0"sv) || file.starts_with("MM\0+"sv);
}

} // namespace

std::vector<Image> decode(std::string_view file) {
    if (file.starts_with("\x89PNG\r\n\x1A\n"sv)) return listOf(decodePng(file));
    if (isWebP(file)) return listOf(decodeWebP(file));
    if (isTiff(file)) return decodeTiff(file);
    const bool isJpeg2000 =
        file.starts_with("\0\0\0\x0CjP  "sv) || file.starts_with("\xFF\x4F\xFF\x51"sv);
    return listOf(isJpeg2000 ? decodeJpeg2000(file) : decodeWithPixbuf(file));
}

} // namespace ambrel::images
