#include "Ambrel/Instance/InstanceConfig.h"
#include "Ambrel/Platform/Text.h"

namespace ambrel {

bool IconLabel::isVisible() const { return !text::trimmingWhitespace(text).empty(); }

} // namespace ambrel
