#include "Ambrel/Platform/Linux/ImageDecoders.h"

#include <algorithm>
#include <memory>

// Before the libraries' own headers, whose functions they rename.
#include "LazyWebP.h"
#include "LazyWebPDemux.h"

#include <webp/decode.h>
#include <webp/demux.h>

namespace ambrel::images {

namespace {

const std::uint8_t* dataOf(std::string_view bytes) {
    return reinterpret_cast<const std::uint8_t*>(bytes.data());
}

struct DeleteAnimation {
    void operator()(WebPAnimDecoder* d) const noexcept { WebPAnimDecoderDelete(d); }
};

std::optional<Image> decodeStill(std::string_view file, Image image) {
    const auto* decoded =
        WebPDecodeRGBAInto(dataOf(file), file.size(), image.pixels.data(), image.pixels.size(),
                           static_cast<int>(image.width * 4));
    return decoded != nullptr ? std::optional(std::move(image)) : std::nullopt;
}

std::optional<Image> decodeFirstFrame(std::string_view file, Image image) {
    loadWebPDemux();
    const WebPData data{dataOf(file), file.size()};
    const std::unique_ptr<WebPAnimDecoder, DeleteAnimation> decoder(
        WebPAnimDecoderNew(&data, nullptr));
    WebPAnimInfo info{};
    const bool known = decoder && WebPAnimDecoderGetInfo(decoder.get(), &info) != 0 &&
                       info.canvas_width == image.width && info.canvas_height == image.height;
    std::uint8_t* pixels = nullptr;
    int time = 0;
    if (!known || WebPAnimDecoderGetNext(decoder.get(), &pixels, &time) == 0) return std::nullopt;
    std::copy_n(pixels, image.pixels.size(), image.pixels.data());
    return image;
}

} // namespace

std::optional<Image> decodeWebP(std::string_view file) {
    loadWebP();
    WebPBitstreamFeatures features;
    if (WebPGetFeatures(dataOf(file), file.size(), &features) != VP8_STATUS_OK) return std::nullopt;
    const auto width = static_cast<std::uint32_t>(std::max(features.width, 0));
    const auto height = static_cast<std::uint32_t>(std::max(features.height, 0));
    if (!isPlausibleSize(width, height, file.size())) return std::nullopt;
    auto image = emptyImage(width, height);
    return features.has_animation != 0 ? decodeFirstFrame(file, std::move(image))
                                       : decodeStill(file, std::move(image));
}

} // namespace ambrel::images
