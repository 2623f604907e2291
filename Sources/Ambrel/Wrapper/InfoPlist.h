#pragma once

#include "Ambrel/Instance/InstanceConfig.h"
#include "Ambrel/Platform/PropertyList.h"

namespace ambrel {

/// Whether the desktop shows a running wrapper among the applications.
enum class WrapperIcon { shown, hidden };

/// What a wrapper's Info.plist holds. `iconFile` is the icon's name as CFBundleIconFile has it,
/// absent for a wrapper without an icon. The configuration's overrides have the last word.
PropertyListDictionary infoPlistFor(const InstanceConfig& config,
                                    const std::optional<std::string>& iconFile,
                                    WrapperIcon wrapperIcon);

/// The property-list value of an override: a Boolean for true, yes, false and no in any case and
/// with blanks around them, a signed 64-bit integer for decimal digits with an optional sign, else
/// the text exactly as it was passed.
PropertyListValue coercedPlistValue(const std::string& text);

} // namespace ambrel
