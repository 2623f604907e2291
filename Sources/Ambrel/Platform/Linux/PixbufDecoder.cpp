#include "Ambrel/Platform/Linux/ImageDecoders.h"

#include <algorithm>
#include <memory>

// Before the library's own header, whose functions it renames.
#include "LazyGdkPixbuf.h"

#include <gdk-pixbuf/gdk-pixbuf.h>

namespace ambrel::images {

namespace {

struct Unref {
    void operator()(void* object) const noexcept { g_object_unref(object); }
};
using OwnedLoader = std::unique_ptr<GdkPixbufLoader, Unref>;
using OwnedPixbuf = std::unique_ptr<GdkPixbuf, Unref>;

/// The side at which drawings without pixels of their own are drawn: that of the largest icon.
constexpr double drawingSide = 1024;

void fitDrawing(GdkPixbufLoader* loader, int width, int height) {
    const double factor = drawingSide / std::max({width, height, 1});
    const auto scaled = [&](int side) {
        constexpr double half = 0.5; // nothing here is negative: cutting off then rounds
        return std::max(1, static_cast<int>(side * factor + half));
    };
    gdk_pixbuf_loader_set_size(loader, scaled(width), scaled(height));
}

/// Called when the size is known and nothing is allocated yet; a size of zero ends the loading.
void prepareSize(GdkPixbufLoader* loader, int width, int height, gpointer fileSize) {
    auto* format = gdk_pixbuf_loader_get_format(loader);
    if (format != nullptr && gdk_pixbuf_format_is_scalable(format) != FALSE) {
        fitDrawing(loader, width, height);
        return;
    }
    const bool plausible =
        width > 0 && height > 0 &&
        isPlausibleSize(static_cast<std::uint64_t>(width), static_cast<std::uint64_t>(height),
                        *static_cast<const std::size_t*>(fileSize));
    if (!plausible) gdk_pixbuf_loader_set_size(loader, 0, 0);
}

std::optional<Image> imageOf(const GdkPixbuf* pixbuf) {
    const auto width = static_cast<std::uint32_t>(gdk_pixbuf_get_width(pixbuf));
    const auto height = static_cast<std::uint32_t>(gdk_pixbuf_get_height(pixbuf));
    const auto channels = static_cast<std::size_t>(gdk_pixbuf_get_n_channels(pixbuf));
    const auto stride = static_cast<std::size_t>(gdk_pixbuf_get_rowstride(pixbuf));
    const auto* pixels = gdk_pixbuf_read_pixels(pixbuf);
    if (pixels == nullptr || width == 0 || height == 0) return std::nullopt;
    auto image = emptyImage(width, height);
    auto* to = image.pixels.data();
    for (std::size_t y = 0; y < height; ++y) {
        const auto* from = pixels + y * stride;
        for (std::size_t x = 0; x < width; ++x, from += channels, to += 4) {
            std::copy_n(from, 3, to);
            to[3] = channels == 4 ? from[3] : 255;
        }
    }
    return image;
}

} // namespace

std::optional<Image> decodeWithPixbuf(std::string_view file) {
    loadGdkPixbuf();
    const OwnedLoader loader(gdk_pixbuf_loader_new());
    auto fileSize = file.size();
    g_signal_connect_data(loader.get(), "size-prepared", reinterpret_cast<GCallback>(prepareSize),
                          &fileSize, nullptr, GConnectFlags(0));
    const auto* bytes = reinterpret_cast<const guchar*>(file.data());
    const bool written = gdk_pixbuf_loader_write(loader.get(), bytes, file.size(), nullptr) != 0;
    // A loader wants to be closed whatever came before.
    const bool closed = gdk_pixbuf_loader_close(loader.get(), nullptr) != 0;
    auto* pixbuf = gdk_pixbuf_loader_get_pixbuf(loader.get()); // stays the loader's
    if (!written || !closed || pixbuf == nullptr) return std::nullopt;
    const OwnedPixbuf upright(gdk_pixbuf_apply_embedded_orientation(pixbuf));
    return upright ? imageOf(upright.get()) : std::nullopt;
}

} // namespace ambrel::images
