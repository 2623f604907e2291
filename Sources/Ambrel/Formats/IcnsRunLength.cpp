#include "Ambrel/Formats/IcnsRunLength.h"

#include <algorithm>

namespace ambrel::icns {

namespace {

constexpr std::size_t shortestRun = 3; // a run of two is no shorter than two bytes among others
constexpr std::size_t longestRun = 130;
constexpr std::size_t longestLiteral = 128;
constexpr std::size_t firstRunCode = 128;

/// How many bytes from `start` are equal, up to what one run can hold.
std::size_t runLength(Plane<const std::uint8_t> plane, std::size_t start) {
    const auto end = std::min(plane.count, start + longestRun);
    auto at = start + 1;
    while (at < end && plane[at] == plane[start]) ++at;
    return at - start;
}

/// How many bytes from `start` come before the next run that is worth its code.
std::size_t literalLength(Plane<const std::uint8_t> plane, std::size_t start) {
    const auto end = std::min(plane.count, start + longestLiteral);
    auto at = start;
    while (at < end && runLength(plane, at) < shortestRun) ++at;
    return at - start;
}

} // namespace

void appendRunLength(std::string& bytes, Plane<const std::uint8_t> plane) {
    std::size_t at = 0;
    while (at < plane.count) {
        const auto run = runLength(plane, at);
        if (run >= shortestRun) {
            bytes += static_cast<char>(run - shortestRun + firstRunCode);
            bytes += static_cast<char>(plane[at]);
            at += run;
            continue;
        }
        const auto literal = literalLength(plane, at);
        bytes += static_cast<char>(literal - 1);
        for (const auto end = at + literal; at < end; ++at) bytes += static_cast<char>(plane[at]);
    }
}

bool takeRunLength(std::string_view& bytes, Plane<std::uint8_t> plane) {
    std::size_t filled = 0;
    while (filled < plane.count) {
        if (bytes.empty()) return false;
        const std::size_t code = static_cast<unsigned char>(bytes.front());
        bytes.remove_prefix(1);
        const bool isRun = code >= firstRunCode;
        const auto length = isRun ? code - firstRunCode + shortestRun : code + 1;
        const auto needed = isRun ? 1 : length;
        if (bytes.size() < needed || plane.count - filled < length) return false;
        for (std::size_t i = 0; i < length; ++i) {
            plane[filled++] = static_cast<std::uint8_t>(bytes[isRun ? 0 : i]);
        }
        bytes.remove_prefix(needed);
    }
    return true;
}

} // namespace ambrel::icns
