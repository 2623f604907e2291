#include "Ambrel/Formats/Icns.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace ambrel::icns {

namespace {

using enum Payload;

constexpr std::array onlyRgb{rgb};
constexpr std::array onlyArgb{argb};
constexpr std::array onlyPng{png};
constexpr std::array compressed{png, jpeg2000};
constexpr std::array onlyMask{mask};
constexpr std::span<const Payload> nothing;

constexpr TypeCode noMask;
constexpr std::string_view notRunLength = "only run-length colours with a mask show in this type";
constexpr std::string_view notAlpha = "only \"ARGB\" data shows in this type";
constexpr std::string_view scrambled =
    "only run-length colours show in this type, others are scrambled";
constexpr std::string_view notCompressed = "only PNG or JPEG 2000 shows in this type";
constexpr std::string_view notPng = "only PNG shows in this type";
constexpr std::string_view unreliable = "no data of this type shows on every system";
constexpr std::string_view notMask = "the data of this type is a mask";
constexpr std::string_view sidebar = "this type is for the sidebar of a file list";
constexpr std::string_view old = "this type is of systems that are no longer in use";
constexpr std::string_view appearance = "it holds a whole icon file for another appearance";
constexpr std::string_view noPicture = "it holds no picture";

// What shows in a bundle was measured on systems of 2022 to 2025; it is stricter than what shows
// for a file of its own.
constexpr auto types = std::to_array<TypeInfo>({
    {"is32", 16, rgb, "s8mk", onlyRgb, notRunLength},
    {"il32", 32, rgb, "l8mk", onlyRgb, notRunLength},
    {"ih32", 48, rgb, "h8mk", onlyRgb, notRunLength},
    {"it32", 128, rgb, "t8mk", onlyRgb, notRunLength},
    {"s8mk", 16, mask, noMask, onlyMask, notMask},
    {"l8mk", 32, mask, noMask, onlyMask, notMask},
    {"h8mk", 48, mask, noMask, onlyMask, notMask},
    {"t8mk", 128, mask, noMask, onlyMask, notMask},
    {"ic04", 16, unknown, noMask, onlyArgb, notAlpha},
    {"ic05", 32, unknown, noMask, onlyArgb, notAlpha},
    {"icp4", 16, rgb, "s8mk", onlyRgb, scrambled},
    {"icp5", 32, rgb, "l8mk", onlyRgb, scrambled},
    {"icp6", 48, unknown, noMask, nothing, unreliable},
    {"ic07", 128, unknown, noMask, compressed, notCompressed},
    {"ic08", 256, unknown, noMask, compressed, notCompressed},
    {"ic09", 512, unknown, noMask, compressed, notCompressed},
    {"ic10", 1024, unknown, noMask, compressed, notCompressed},
    {"ic11", 32, unknown, noMask, onlyPng, notPng},
    {"ic12", 64, unknown, noMask, onlyPng, notPng},
    {"ic13", 256, unknown, noMask, onlyPng, notPng},
    {"ic14", 512, unknown, noMask, onlyPng, notPng},
    {"icsb", 18, unknown, noMask, nothing, sidebar},
    {"icsB", 36, unknown, noMask, nothing, sidebar},
    {"sb24", 24, unknown, noMask, nothing, sidebar},
    {"SB24", 48, unknown, noMask, nothing, sidebar},
    {"ICON", 32, oldColors, noMask, nothing, old},
    {"ICN#", 32, oldColors, noMask, nothing, old},
    {"icl4", 32, oldColors, noMask, nothing, old},
    {"icl8", 32, oldColors, noMask, nothing, old},
    {"ics#", 16, oldColors, noMask, nothing, old},
    {"ics4", 16, oldColors, noMask, nothing, old},
    {"ics8", 16, oldColors, noMask, nothing, old},
    {"ich#", 48, oldColors, noMask, nothing, old},
    {"ich4", 48, oldColors, noMask, nothing, old},
    {"ich8", 48, oldColors, noMask, nothing, old},
    {"TOC ", 0, information, noMask, nothing, noPicture},
    {"icnV", 0, information, noMask, nothing, noPicture},
    {"info", 0, information, noMask, nothing, noPicture},
    {"name", 0, information, noMask, nothing, noPicture},
    {"slct", 0, nested, noMask, nothing, appearance},
    {"sbtp", 0, nested, noMask, nothing, appearance},
    {TypeCode(0xFDD92FA8), 0, nested, noMask, nothing, appearance},
});

bool isPrintable(std::uint32_t byte) { return byte >= 0x20 && byte < 0x7F; }

} // namespace

std::string TypeCode::name() const {
    std::string letters;
    for (const int shift : {24, 16, 8, 0}) {
        const auto byte = (number >> shift) & 0xFF;
        if (isPrintable(byte)) letters += static_cast<char>(byte);
    }
    if (letters.size() == 4) return letters;
    std::array<char, sizeof "0x00000000"> digits{};
    std::snprintf(digits.data(), digits.size(), "0x%08X", static_cast<unsigned>(number));
    return digits.data();
}

const TypeInfo* findType(TypeCode type) noexcept {
    const auto* found = std::ranges::find(types, type, &TypeInfo::type);
    return found == types.end() ? nullptr : found;
}

std::span<const TypeInfo> allTypes() noexcept { return types; }

} // namespace ambrel::icns
