#pragma once

#include "korvane-runner/Desktop/Linux/GVariants.h"
#include "korvane-runner/Desktop/Linux/SymbolicIconFolder.h"
#include "korvane-runner/Desktop/StatusArea.h"

#include <memory>
#include <string>

namespace korvane::runner {

/// The icon of an item, in all the ways in which panels take one.
class StatusNotifierIcon {
public:
    /// `id` is the item's.
    StatusNotifierIcon(const std::string& id, const StatusImage& image);

    /// The name under which it lies in themeFolder(); empty where there is none.
    const std::string& name() const noexcept { return name_; }
    std::string themeFolder() const { return folder_ ? folder_->path() : std::string(); }
    /// For panels that do not find it there: IconPixmap, a(iiay).
    GVariant* pixmaps() const noexcept { return pixmaps_.get(); }

private:
    std::unique_ptr<SymbolicIconFolder> folder_;
    std::string name_;
    GVariantPtr pixmaps_;
};

} // namespace korvane::runner
