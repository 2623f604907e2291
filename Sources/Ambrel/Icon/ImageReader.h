#pragma once

#include "Ambrel/Formats/Icns.h"

#include <optional>
#include <string_view>
#include <vector>

namespace ambrel {

/// The images in a file of any format that can be read, Apple and Windows icons included, in the
/// order of the file. Those that do not decode are left out; none for what is no image file.
/// Throws LibraryError when a library that decodes them is missing.
std::vector<Image> imagesIn(std::string_view file);

/// Decodes a picture of an Apple icon that is a PNG or a JPEG 2000.
std::optional<Image> decodePayload(icns::Payload payload, std::string_view bytes);

/// The widest of them, the first among equals; decodes no more of an Apple icon than it must.
std::optional<Image> widestImageIn(std::string_view file);

/// The smallest of them with at least `side` pixels in both directions, else the largest; decodes
/// no more of an Apple icon than it must.
std::optional<Image> sufficientImageIn(std::string_view file, std::uint32_t side);

} // namespace ambrel
