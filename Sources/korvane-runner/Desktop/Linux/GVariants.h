#pragma once

#include <glib.h>
#include <memory>
#include <string>

namespace korvane::runner {

struct GVariantUnref {
    void operator()(GVariant* value) const noexcept { g_variant_unref(value); }
};
/// One reference; made from a pointer it takes over the caller's.
using GVariantPtr = std::unique_ptr<GVariant, GVariantUnref>;

/// A reference of one's own to `value`, the first one where it is floating.
inline GVariantPtr retained(GVariant* value) { return GVariantPtr(g_variant_ref_sink(value)); }

/// A text for the bus, which ends the connection of whoever sends what is not UTF-8. Floating.
GVariant* textVariant(const std::string& text);

} // namespace korvane::runner
