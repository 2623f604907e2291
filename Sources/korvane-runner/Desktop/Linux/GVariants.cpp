#include "korvane-runner/Desktop/Linux/GVariants.h"

namespace korvane::runner {

GVariant* textVariant(const std::string& text) {
    return g_variant_new_take_string(
        g_utf8_make_valid(text.data(), static_cast<gssize>(text.size())));
}

} // namespace korvane::runner
