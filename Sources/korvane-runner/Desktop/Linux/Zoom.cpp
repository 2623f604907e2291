#include "korvane-runner/Desktop/Linux/Zoom.h"

#include <algorithm>
#include <array>

namespace korvane::runner::zoom {

namespace {

// Those of other browsers.
constexpr std::array levels{0.3, 0.5,  0.67, 0.8, 0.9, normal, 1.1,
                            1.2, 1.33, 1.5,  1.7, 2.0, 2.4,    3.0};

} // namespace

double above(double level) {
    const auto* next = std::upper_bound(levels.begin(), levels.end(), level);
    return next == levels.end() ? levels.back() : *next;
}

double below(double level) {
    const auto* next = std::lower_bound(levels.begin(), levels.end(), level);
    return next == levels.begin() ? levels.front() : *(next - 1);
}

} // namespace korvane::runner::zoom
