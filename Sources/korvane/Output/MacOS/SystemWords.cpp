#include "korvane/Output/SystemWords.h"

namespace korvane {

const SystemWords systemWords{.inDock = "in the Dock", .inStatusArea = "in the menu bar"};

} // namespace korvane
