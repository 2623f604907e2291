#include "Ambrel/Graphics/Canvas.h"
#include "Ambrel/Graphics/NearestByte.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace ambrel {

namespace {

/// Weights from the middle outwards. Each is the curve's area over one pixel, so that a curve much
/// narrower than a pixel is right too.
std::vector<float> gaussWeights(double sigma) {
    const auto reach = static_cast<std::size_t>(std::ceil(4 * sigma));
    const double scale = 1 / (sigma * std::sqrt(2.0));
    std::vector<double> weights;
    double sum = 0;
    for (std::size_t i = 0; i <= reach; ++i) {
        const auto distance = static_cast<double>(i);
        weights.push_back(std::erf((distance + 0.5) * scale) - std::erf((distance - 0.5) * scale));
        sum += i == 0 ? weights[i] : 2 * weights[i];
    }
    std::vector<float> result;
    for (const double weight : weights) result.push_back(static_cast<float>(weight / sum));
    return result;
}

/// So many floats are blurred at once: what the processor's registers hold.
constexpr std::size_t block = 4;
using Floats [[gnu::vector_size(block * sizeof(float))]] = float;

Floats loaded(const float* from) {
    Floats values;
    std::memcpy(&values, from, sizeof values);
    return values;
}

/// The floats of a rectangle with `reach` empty rows and columns around it, and as much again
/// before and behind: what is read beyond a row's end is then the empty border of the next one.
struct Plane {
    std::size_t width;
    std::size_t guard; ///< floats before the first row
    std::vector<float> values;

    Plane(const Coverage& coverage, std::size_t reach)
        : width(static_cast<std::size_t>(coverage.width) + 2 * reach), guard(reach * width) {
        const auto height = static_cast<std::size_t>(coverage.height) + 2 * reach;
        values.resize(width * height + 2 * guard + block);
        const auto* from = coverage.pixels.data();
        for (int y = 0; y < coverage.height; ++y, from += coverage.width) {
            const auto start = guard + (static_cast<std::size_t>(y) + reach) * width + reach;
            std::copy_n(from, coverage.width, values.begin() + static_cast<std::ptrdiff_t>(start));
        }
    }
    std::size_t end() const { return values.size() - guard - block; }
};

/// Blurs in one direction: neighbours are `step` floats apart.
void blur(Plane& plane, const std::vector<float>& weights, std::size_t step) {
    std::vector<float> result(plane.values.size());
    for (auto i = plane.guard; i < plane.end(); i += block) {
        const float* from = plane.values.data() + i;
        auto sum = weights[0] * loaded(from);
        for (std::size_t tap = 1; tap < weights.size(); ++tap) {
            sum += weights[tap] * (loaded(from - tap * step) + loaded(from + tap * step));
        }
        std::memcpy(&result[i], &sum, sizeof sum);
    }
    std::fill(result.begin() + static_cast<std::ptrdiff_t>(plane.end()), result.end(), 0.0F);
    plane.values = std::move(result);
}

} // namespace

Coverage blurred(const Coverage& coverage, double sigma) {
    if (coverage.isEmpty() || sigma <= 0) return coverage;
    const auto weights = gaussWeights(sigma);
    const auto reach = weights.size() - 1;
    Plane plane(coverage, reach);
    blur(plane, weights, 1);
    blur(plane, weights, plane.width);

    const int border = static_cast<int>(reach);
    Coverage result{coverage.left - border,
                    coverage.top - border,
                    coverage.width + 2 * border,
                    coverage.height + 2 * border,
                    {}};
    result.pixels.resize(plane.end() - plane.guard);
    std::transform(plane.values.begin() + static_cast<std::ptrdiff_t>(plane.guard),
                   plane.values.begin() + static_cast<std::ptrdiff_t>(plane.end()),
                   result.pixels.begin(), nearestByte);
    return result;
}

} // namespace ambrel
