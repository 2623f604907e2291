#include "Ambrel/Application/DeclaredIcon.h"

#include "Ambrel/Instance/BundleLayout.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/PropertyList.h"

namespace ambrel {

std::optional<Path> declaredIcon(const Path& app) {
    const BundleLayout bundle{app};
    const auto info = readPropertyList(bundle.infoPlist());
    if (!info) return std::nullopt;
    const auto entry = info->find("CFBundleIconFile");
    const auto* declared = entry == info->end() ? nullptr : entry->second.string();
    if (declared == nullptr) return std::nullopt;
    const auto name = declared->ends_with(".icns") ? *declared : *declared + ".icns";
    auto icon = paths::join(bundle.resources(), name);
    return fileSystem::exists(icon) ? std::optional(std::move(icon)) : std::nullopt;
}

} // namespace ambrel
