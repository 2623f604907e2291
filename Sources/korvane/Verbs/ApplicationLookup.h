#pragma once

#include "Ambrel/Application/AppBundle.h"
#include "korvane/Output/Surroundings.h"

#include <string>

namespace korvane {

/// The application that `text` means: the path of a bundle, or the name or identifier of one that
/// the catalog lists. Throws Refusal when there is none, or several.
ambrel::AppBundle requireApplication(const std::string& text, const Surroundings& surroundings);

} // namespace korvane
