#include "Manager/Rules/HiddenIcon.h"

#include "Ambrel/Instance/BundleLayout.h"
#include "Ambrel/Platform/PropertyList.h"

namespace korvane {

bool isHidden(const ambrel::InstanceRecord& record) {
    constexpr const char* key = "LSUIElement";
    if (record.config.infoPlistOverrides.contains(key)) return false;
    const auto info = ambrel::readPropertyList(ambrel::BundleLayout{record.bundleURL}.infoPlist());
    if (!info) return false;
    const auto found = info->find(key);
    return found != info->end() && found->second.exactBoolean().value_or(false);
}

} // namespace korvane
