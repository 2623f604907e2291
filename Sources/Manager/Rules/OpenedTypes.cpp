#include "Manager/Rules/OpenedTypes.h"

#include "Ambrel/Instance/BundleLayout.h"
#include "Ambrel/Platform/PropertyList.h"
#include "Manager/Rules/InfoPlistKeys.h"

namespace korvane {

bool namesOpenedTypes(const ambrel::AppBundle& app) {
    const auto info = ambrel::readPropertyList(ambrel::BundleLayout{app.url}.infoPlist());
    if (!info) return false;
    const auto found = info->find(adoptedMimeTypesKey);
    const auto* const types = found == info->end() ? nullptr : found->second.string();
    return types != nullptr && types->find('/') != std::string::npos;
}

} // namespace korvane
