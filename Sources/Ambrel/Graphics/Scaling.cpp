#include "Ambrel/Graphics/Scaling.h"

#include "Ambrel/Graphics/NearestByte.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <span>

namespace ambrel {

namespace {

constexpr std::size_t channels = 4;

/// The four components of a pixel as one value of the processor.
using Bytes4 [[gnu::vector_size(4)]] = std::uint8_t;
using Floats4 [[gnu::vector_size(16)]] = float;

template <class Vector, class Component> Vector loaded(const Component* from) {
    Vector vector;
    std::memcpy(&vector, from, sizeof vector);
    return vector;
}

/// The pixels of a line that make one pixel of the scaled line.
struct Taps {
    std::size_t first = 0;
    std::vector<float> weights;
};

/// The mean of the part of the line that pixel `index` covers.
Taps areaTaps(std::size_t index, std::size_t from, std::size_t to) {
    // In units of 1/to of a source pixel everything is whole.
    const std::size_t start = index * from;
    const std::size_t end = start + from;
    Taps taps{start / to, {}};
    for (std::size_t pixel = taps.first; pixel * to < end; ++pixel) {
        const auto covered = std::min(end, (pixel + 1) * to) - std::max(start, pixel * to);
        taps.weights.push_back(static_cast<float>(covered) / static_cast<float>(from));
    }
    return taps;
}

/// The weights of the four pixels around a point that lies `t` after the second of them
/// (Catmull and Rom's cubic).
std::array<double, 4> cubicWeights(double t) {
    const double t2 = t * t;
    const double t3 = t2 * t;
    return {(-t3 + 2 * t2 - t) / 2, (3 * t3 - 5 * t2 + 2) / 2, (-3 * t3 + 4 * t2 + t) / 2,
            (t3 - t2) / 2};
}

/// Smooth interpolation; beyond its ends the line goes on with its last pixel.
Taps interpolationTaps(std::size_t index, std::size_t from, std::size_t to) {
    const double center =
        (static_cast<double>(index) + 0.5) * static_cast<double>(from) / static_cast<double>(to) -
        0.5;
    const double before = std::floor(center);
    const auto last = static_cast<std::ptrdiff_t>(from) - 1;
    const auto pixelAt = [&](std::ptrdiff_t i) {
        return std::clamp<std::ptrdiff_t>(static_cast<std::ptrdiff_t>(before) - 1 + i, 0, last);
    };
    const auto weights = cubicWeights(center - before);
    Taps taps{static_cast<std::size_t>(pixelAt(0)), {}};
    taps.weights.resize(static_cast<std::size_t>(pixelAt(3) - pixelAt(0)) + 1);
    for (std::ptrdiff_t i = 0; i < 4; ++i) {
        taps.weights[static_cast<std::size_t>(pixelAt(i)) - taps.first] +=
            static_cast<float>(weights[static_cast<std::size_t>(i)]);
    }
    return taps;
}

std::vector<Taps> tapsOf(std::size_t from, std::size_t to) {
    std::vector<Taps> all;
    all.reserve(to);
    for (std::size_t i = 0; i < to; ++i) {
        all.push_back(from >= to ? areaTaps(i, from, to) : interpolationTaps(i, from, to));
    }
    return all;
}

/// Adds `weight` times the premultiplied pixels of a row of straight ones.
void addRow(std::span<float> sum, const std::uint8_t* row, float weight) {
    const float share = weight / 255;
    for (std::size_t i = 0; i < sum.size(); i += channels) {
        auto pixel = __builtin_convertvector(loaded<Bytes4>(row + i), Floats4);
        const float alpha = pixel[3] * share;
        pixel[3] = 255;
        const Floats4 total = loaded<Floats4>(&sum[i]) + alpha * pixel;
        std::memcpy(&sum[i], &total, sizeof total);
    }
}

/// The same for a row that is premultiplied already.
void addRow(std::span<float> sum, const float* row, float weight) {
    for (std::size_t i = 0; i < sum.size(); ++i) sum[i] += weight * row[i];
}

void scaleRow(const float* from, const std::vector<Taps>& taps, float* to) {
    for (const auto& [first, weights] : taps) {
        Floats4 sum{};
        const float* pixel = from + first * channels;
        for (const float weight : weights) {
            sum += weight * loaded<Floats4>(pixel);
            pixel += channels;
        }
        std::memcpy(to, &sum, sizeof sum);
        to += channels;
    }
}

/// Each row of the result is made at once from the rows that it covers, so that a large picture
/// needs no second copy.
template <class Component>
Scaler::Pixels scaled(const Component* pixels, std::uint32_t fromWidth, std::uint32_t fromHeight,
                      std::uint32_t width, std::uint32_t height) {
    const auto columns = tapsOf(fromWidth, width);
    const std::size_t length = fromWidth * channels;
    std::vector<float> covered(length);
    Scaler::Pixels result{width, height, std::vector<float>(width * height * channels)};
    float* to = result.values.data();
    for (const auto& [first, weights] : tapsOf(fromHeight, height)) {
        std::fill(covered.begin(), covered.end(), 0.0F);
        const Component* row = pixels + first * length;
        for (const float weight : weights) {
            addRow(covered, row, weight);
            row += length;
        }
        scaleRow(covered.data(), columns, to);
        to += width * channels;
    }
    return result;
}

Image straightImage(const Scaler::Pixels& pixels) {
    Image image{pixels.width, pixels.height, std::vector<std::uint8_t>(pixels.values.size())};
    const float* from = pixels.values.data();
    auto* to = image.pixels.data();
    const auto* end = to + image.pixels.size();
    for (; to != end; to += channels, from += channels) {
        to[3] = nearestByte(from[3]);
        if (to[3] == 0) continue;
        const float share = 255 / from[3];
        for (std::size_t i = 0; i < 3; ++i) to[i] = nearestByte(from[i] * share);
    }
    return image;
}

Image withoutHiddenColors(Image image) {
    for (std::size_t i = 0; i < image.pixels.size(); i += channels) {
        if (image.pixels[i + 3] == 0) std::fill_n(image.pixels.begin() + std::ptrdiff_t(i), 3, 0);
    }
    return image;
}

} // namespace

bool Scaler::canReduceFurther(std::uint32_t width, std::uint32_t height) const noexcept {
    return reduced_.width != 0 && reduced_.width % width == 0 && reduced_.height % height == 0;
}

Image Scaler::scaledTo(std::uint32_t width, std::uint32_t height) {
    if (width == source_.width && height == source_.height) return withoutHiddenColors(source_);
    if (canReduceFurther(width, height)) {
        reduced_ = scaled(reduced_.values.data(), reduced_.width, reduced_.height, width, height);
        return straightImage(reduced_);
    }
    auto result = scaled(source_.pixels.data(), source_.width, source_.height, width, height);
    auto image = straightImage(result);
    if (width <= source_.width && height <= source_.height) reduced_ = std::move(result);
    return image;
}

} // namespace ambrel
