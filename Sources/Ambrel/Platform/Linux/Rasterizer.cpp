#include "Ambrel/Platform/Images.h"

#include <algorithm>
#include <cmath>
#include <memory>

// Before the library's own header, whose functions it renames.
#include "LazyCairo.h"

#include <cairo.h>

namespace ambrel::images {

namespace {

struct DestroySurface {
    void operator()(cairo_surface_t* surface) const noexcept { cairo_surface_destroy(surface); }
};
struct DestroyContext {
    void operator()(cairo_t* context) const noexcept { cairo_destroy(context); }
};
using OwnedSurface = std::unique_ptr<cairo_surface_t, DestroySurface>;
using OwnedContext = std::unique_ptr<cairo_t, DestroyContext>;

/// Pixels that curves may be off; well below what antialiasing shows.
constexpr double curveTolerance = 0.02;

/// The whole pixels of the picture within `reach` of the outline, without a picture yet.
Coverage emptyCoverage(const Outline& outline, double reach, std::uint32_t width,
                       std::uint32_t height) {
    const auto box = outline.boundingBox();
    const auto limited = [](double value, std::uint32_t limit) {
        return static_cast<int>(std::clamp(value, 0.0, static_cast<double>(limit)));
    };
    const int left = limited(std::floor(box.min.x - reach), width);
    const int right = limited(std::ceil(box.max.x + reach), width);
    const int top = limited(std::floor(height - box.max.y - reach), height);
    const int bottom = limited(std::ceil(height - box.min.y + reach), height);
    return {left, top, right - left, bottom - top, {}};
}

void addPath(cairo_t* context, const Outline& outline) {
    for (const auto& [kind, p] : outline.segments()) {
        switch (kind) {
        case Outline::Kind::move:
            cairo_move_to(context, p[0].x, p[0].y);
            break;
        case Outline::Kind::line:
            cairo_line_to(context, p[0].x, p[0].y);
            break;
        case Outline::Kind::curve:
            cairo_curve_to(context, p[0].x, p[0].y, p[1].x, p[1].y, p[2].x, p[2].y);
            break;
        case Outline::Kind::close:
            cairo_close_path(context);
            break;
        }
    }
}

void takePixels(cairo_surface_t* surface, Coverage& coverage) {
    cairo_surface_flush(surface);
    const auto* from = cairo_image_surface_get_data(surface);
    const int stride = cairo_image_surface_get_stride(surface);
    for (int y = 0; from != nullptr && y < coverage.height; ++y, from += stride) {
        coverage.pixels.insert(coverage.pixels.end(), from, from + coverage.width);
    }
}

/// What `draw` paints with the outline as its context's path.
template <class Draw>
Coverage drawn(const Outline& outline, double reach, std::uint32_t width, std::uint32_t height,
               const Draw& draw) {
    loadCairo();
    auto coverage = emptyCoverage(outline, reach, width, height);
    if (coverage.isEmpty()) return {};
    const OwnedSurface surface(
        cairo_image_surface_create(CAIRO_FORMAT_A8, coverage.width, coverage.height));
    const OwnedContext context(cairo_create(surface.get()));
    cairo_translate(context.get(), -coverage.left, static_cast<double>(height) - coverage.top);
    cairo_scale(context.get(), 1, -1); // the outline's y grows upwards
    cairo_set_antialias(context.get(), CAIRO_ANTIALIAS_BEST);
    cairo_set_tolerance(context.get(), curveTolerance);
    addPath(context.get(), outline);
    draw(context.get());
    if (cairo_status(context.get()) != CAIRO_STATUS_SUCCESS) return {};
    takePixels(surface.get(), coverage);
    return coverage;
}

} // namespace

Coverage filledCoverage(const Outline& outline, std::uint32_t width, std::uint32_t height) {
    return drawn(outline, 0, width, height, [](cairo_t* context) {
        cairo_set_fill_rule(context, CAIRO_FILL_RULE_WINDING);
        cairo_fill(context);
    });
}

Coverage strokedCoverage(const Outline& outline, double penWidth, std::uint32_t width,
                         std::uint32_t height) {
    return drawn(outline, penWidth / 2, width, height, [&](cairo_t* context) {
        cairo_set_line_join(context, CAIRO_LINE_JOIN_ROUND);
        cairo_set_line_width(context, penWidth);
        cairo_stroke(context);
    });
}

} // namespace ambrel::images
