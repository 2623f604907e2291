#pragma once

#include "Ambrel/Graphics/Outline.h"
#include "Ambrel/Instance/InstanceConfig.h"

#include <functional>
#include <optional>

namespace ambrel {

/// Where and how large a label's text stands on a square icon. Pixels; the origin is the icon's
/// lower left corner and y grows upwards.
struct LabelLayout {
    double fontSize = 0;
    Point shift;             ///< from the text's own origin to its place on the icon
    double outlineWidth = 0; ///< of the pen that follows the letters: half of it lies outside
    double shadowDrop = 0;   ///< by which the shadow lies lower than the letters
    double shadowBlur = 0;   ///< length of the blur: twice the deviation of its Gauss curve
};

/// The box of the text's shapes at a font size, relative to the text's own origin.
using BoxAtFontSize = std::function<Box(double fontSize)>;

/// Lays a text out on an icon of `size` pixels: shrunk once where it is wider than the icon allows,
/// never enlarged. Absent when the text has no shapes that could be drawn.
std::optional<LabelLayout> layOutLabel(const BoxAtFontSize& boxAt, IconLabel::Position position,
                                       double size);

} // namespace ambrel
