#include "Ambrel/Instance/OwnNames.h"

#include "Ambrel/Base/TextParts.h"

namespace ambrel {

bool wantsOwnNames(const InstanceConfig& config) {
    return config.kind == ShortcutKind::app &&
           valueOf(config.infoPlistOverrides, sharedBusKey) != "true" &&
           !config.environment.contains(busAddressVariable);
}

} // namespace ambrel
