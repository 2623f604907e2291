#pragma once

#include "Ambrel/Graphics/Image.h"

#include <cstdint>
#include <glib.h>
#include <vector>

namespace korvane::runner {

/// The picture with all of its pixels in one grey and its alpha as it was.
ambrel::Image filledWithGrey(ambrel::Image image, std::uint8_t grey);

/// The pictures as an item tells them, a(iiay): width, height and the pixels in ARGB order, not
/// premultiplied. Floating.
GVariant* pixmapsVariant(const std::vector<ambrel::Image>& images);

} // namespace korvane::runner
