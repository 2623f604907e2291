#include "korvane/Output/SystemWords.h"

namespace korvane {

const SystemWords systemWords{.inDock = "in docks and panels", .inStatusArea = "in the panel"};

} // namespace korvane
