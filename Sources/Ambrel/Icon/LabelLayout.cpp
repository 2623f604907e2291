#include "Ambrel/Icon/LabelLayout.h"

namespace ambrel {

namespace {

// Fractions of the icon's side.
constexpr double startFontSize = 0.24;
constexpr double widestText = 0.86;
constexpr double bottomMargin = 0.08;
constexpr double topEdge = 0.92;
constexpr double shadowDrop = 0.004;
constexpr double shadowBlur = 0.012;
// Fraction of the font size.
constexpr double outlineWidth = 0.18;

double verticalShift(const Box& box, IconLabel::Position position, double size) {
    switch (position) {
    case IconLabel::Position::bottom:
        return bottomMargin * size - box.min.y;
    case IconLabel::Position::center:
        return 0.5 * size - box.midY();
    case IconLabel::Position::top:
        break;
    }
    return topEdge * size - box.height() - box.min.y;
}

} // namespace

std::optional<LabelLayout> layOutLabel(const BoxAtFontSize& boxAt, IconLabel::Position position,
                                       double size) {
    LabelLayout layout;
    layout.fontSize = startFontSize * size;
    auto box = boxAt(layout.fontSize);
    if (box.width() > widestText * size) {
        layout.fontSize *= widestText * size / box.width();
        box = boxAt(layout.fontSize);
    }
    if (box.width() <= 0 || box.height() <= 0) return std::nullopt;
    layout.shift = {0.5 * size - box.midX(), verticalShift(box, position, size)};
    layout.outlineWidth = outlineWidth * layout.fontSize;
    layout.shadowDrop = shadowDrop * size;
    layout.shadowBlur = shadowBlur * size;
    return layout;
}

} // namespace ambrel
