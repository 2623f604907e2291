#include "korvane-runner/Desktop/Linux/StatusNotifierArea.h"

#include "korvane-runner/Desktop/Linux/StatusNotifierItem.h"

namespace korvane::runner {

std::unique_ptr<StatusItem> StatusNotifierArea::show(StatusItemSetup setup) {
    return std::make_unique<StatusNotifierItem>(std::move(setup), bus_, loop_);
}

} // namespace korvane::runner
