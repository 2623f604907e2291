#include "korvane-runner/Desktop/Linux/StatusNotifierArea.h"

namespace korvane::runner {

std::unique_ptr<StatusItem> StatusNotifierArea::show(StatusItemSetup) {
    return std::make_unique<StatusItem>();
}

} // namespace korvane::runner
