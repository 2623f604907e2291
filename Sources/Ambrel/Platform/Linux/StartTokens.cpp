#include "Ambrel/Platform/StartTokens.h"

namespace ambrel {

void eraseStartTokens(Environment& environment) {
    environment.erase("DESKTOP_STARTUP_ID");
    environment.erase("XDG_ACTIVATION_TOKEN");
}

} // namespace ambrel
