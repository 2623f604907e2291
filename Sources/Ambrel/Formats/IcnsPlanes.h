#pragma once

#include "Ambrel/Formats/Icns.h"

namespace ambrel::icns {

/// What the data of a type that may hold it begins with, before the planes.
inline constexpr std::string_view argbStart = "ARGB";

struct DecodedPlanes {
    Image image;
    std::size_t unusedBytes = 0; ///< behind the last plane
};

/// Decodes a picture whose payload is argb or rgb. Absent when its planes are not whole.
std::optional<DecodedPlanes> decodePlanes(const Picture& picture);

} // namespace ambrel::icns
