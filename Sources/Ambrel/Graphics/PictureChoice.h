#pragma once

#include <algorithm>
#include <cstdint>

namespace ambrel {

/// Whether `picture` is to be taken rather than `than` where `side` pixels in both directions are
/// wanted: the smallest that has as many, else the largest. For whatever has a width and a height.
template <class Picture>
bool suitsBetter(const Picture& picture, const Picture& than, std::uint32_t side) noexcept {
    const auto length = std::min(picture.width, picture.height);
    const auto otherLength = std::min(than.width, than.height);
    const bool isEnough = length >= side;
    if (isEnough != (otherLength >= side)) return isEnough;
    return isEnough ? length < otherLength : length > otherLength;
}

} // namespace ambrel
