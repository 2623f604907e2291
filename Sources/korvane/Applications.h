#pragma once

#include "Ambrel/Application/AppBundle.h"
#include "korvane/Surroundings.h"

#include <string>

namespace korvane {

/// The application that `text` means: the path of a bundle, or the name or identifier of one that
/// the catalog lists. Throws Refusal when there is none, or several.
ambrel::AppBundle requireApplication(const std::string& text, const Surroundings& surroundings);

/// The file that the bare name `program` stands for by PATH, absolute; absent when there is none.
std::optional<ambrel::Path> findProgram(const std::string& program,
                                        const ambrel::Environment& environment);

} // namespace korvane
