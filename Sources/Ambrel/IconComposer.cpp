#include "Ambrel/IconComposer.h"

namespace ambrel {

void IconComposer::compose(const Path& source, const IconLabel&, const Path&) {
    throw ComposeError("Labels cannot be drawn yet: " + source);
}

} // namespace ambrel
