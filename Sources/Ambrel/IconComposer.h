#pragma once

#include "Ambrel/InstanceConfig.h"

#include <stdexcept>

namespace ambrel {

/// Draws a label onto an icon and writes a multi-size icon file.
struct IconComposer {
    IconComposer() = delete;

    struct ComposeError : std::runtime_error {
        using std::runtime_error::runtime_error;
        std::string description() const { return what(); }
    };

    /// TODO(port): labels are not drawn on any system yet. Always throws ComposeError and writes
    /// nothing, so that wrappers get the source image unlabelled.
    [[noreturn]] static void compose(const Path& source, const IconLabel& label,
                                     const Path& destination);
};

} // namespace ambrel
