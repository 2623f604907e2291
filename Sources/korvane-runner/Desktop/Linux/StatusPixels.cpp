#include "korvane-runner/Desktop/Linux/StatusPixels.h"

namespace korvane::runner {

namespace {

constexpr std::size_t bytesOfPixel = 4;

std::vector<std::uint8_t> alphaFirst(const std::vector<std::uint8_t>& pixels) {
    std::vector<std::uint8_t> result;
    result.reserve(pixels.size());
    for (std::size_t i = 0; i + bytesOfPixel <= pixels.size(); i += bytesOfPixel) {
        result.insert(result.end(), {pixels[i + 3], pixels[i], pixels[i + 1], pixels[i + 2]});
    }
    return result;
}

} // namespace

ambrel::Image filledWithGrey(ambrel::Image image, std::uint8_t grey) {
    for (std::size_t i = 0; i < image.pixels.size(); ++i) {
        const bool isAlpha = i % bytesOfPixel == bytesOfPixel - 1;
        if (!isAlpha) image.pixels[i] = grey;
    }
    return image;
}

GVariant* pixmapsVariant(const std::vector<ambrel::Image>& images) {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE("a(iiay)"));
    for (const auto& image : images) {
        const auto pixels = alphaFirst(image.pixels);
        g_variant_builder_add(
            &builder, "(ii@ay)", static_cast<gint32>(image.width),
            static_cast<gint32>(image.height),
            g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, pixels.data(), pixels.size(), 1));
    }
    return g_variant_builder_end(&builder);
}

} // namespace korvane::runner
