#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// The run-length coding of the planes of an icon file: a byte n up to 127 is followed by n + 1
/// bytes as they are, one from 128 on by a byte that stands n - 125 times.
namespace ambrel::icns {

/// Every `stride`th byte of a picture in memory: one colour of its pixels.
template <class Byte> struct Plane {
    Byte* first = nullptr;
    std::size_t count = 0;
    std::size_t stride = 1;

    Byte& operator[](std::size_t index) const { return first[index * stride]; }
};

/// Adds the coded plane to `bytes`.
void appendRunLength(std::string& bytes, Plane<const std::uint8_t> plane);

/// Decodes exactly `plane.count` bytes from the start of `bytes` and removes what was used. False
/// when the bytes end early or a run goes beyond the plane; the plane may then be half filled.
bool takeRunLength(std::string_view& bytes, Plane<std::uint8_t> plane);

/// Whether this many bytes could decode to `planes` planes of `count` bytes each.
constexpr bool couldHoldPlanes(std::size_t size, std::size_t planes, std::size_t count) {
    constexpr std::size_t longestRun = 130;
    return size >= planes * 2 * ((count + longestRun - 1) / longestRun);
}

} // namespace ambrel::icns
