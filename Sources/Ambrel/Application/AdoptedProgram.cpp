#include "Ambrel/Application/AdoptedProgram.h"

#include "Ambrel/Instance/BundleLayout.h"
#include "Ambrel/Platform/PropertyList.h"

namespace ambrel {

bool isStartedByBus(const Path& appURL) {
    const auto info = readPropertyList(BundleLayout{appURL}.infoPlist());
    if (!info) return false;
    const auto entry = info->find(adoptedProgramKey);
    const auto* program = entry == info->end() ? nullptr : entry->second.string();
    return program != nullptr && paths::lastComponent(*program) == busStarter;
}

} // namespace ambrel
