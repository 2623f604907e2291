#pragma once

#include "Ambrel/Graphics/Image.h"

#include <vector>

namespace korvane {

/// The images side by side, as they look on a light and, below that, on a dark background. The
/// first image stands at the left at its own size, the others in a block beside it; for images
/// from large to small.
ambrel::Image contactSheet(const std::vector<ambrel::Image>& images);

} // namespace korvane
