#include "korvane-runner/Desktop/Linux/GioDesktop.h"

#include "korvane-runner/Desktop/Linux/Toolkit.h"

namespace korvane::runner {

std::unique_ptr<Desktop> Desktop::open() {
    openGio();
    return std::make_unique<GioDesktop>();
}

} // namespace korvane::runner
