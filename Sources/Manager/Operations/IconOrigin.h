#pragma once

#include "Ambrel/Instance/InstanceRegistry.h"
#include "Manager/Base/Notice.h"

#include <optional>

namespace korvane {

/// What the icon of a bundle is made of that takes the place of another one.
struct IconSource {
    std::optional<ambrel::Path> picture; ///< the old bundle's icon; absent: the application's own
    bool isDrawn = false;                ///< it has its label already, and is taken as it stands
};

/// Finds out whether the icon of `record` is its application's own or a picture that was chosen,
/// and what a bundle with the label `wanted` can be made of. Draws in the folder `scratch`. Throws
/// Refusal unusableIcon, with Remedy::chooseIcon, where a chosen picture has another label drawn on
/// it than `wanted`: what it was made of is not kept. Also LibraryError.
IconSource iconSourceOf(const ambrel::InstanceRecord& record,
                        const std::optional<ambrel::IconLabel>& wanted,
                        const ambrel::Path& scratch);

/// Why the label of the instance cannot be seen, labelWithoutIcon or labelNotDrawn; absent where it
/// can, or where there is none.
std::optional<Notice> labelObstacle(const ambrel::InstanceRecord& made);

/// `label`, or none where there is nothing to draw.
std::optional<ambrel::IconLabel> visibleLabel(std::optional<ambrel::IconLabel> label);

} // namespace korvane
