#pragma once

#include "korvane/Verbs/CreateRequest.h"

namespace korvane {

/// Makes the instance, prints its bundle's path as the result, and says what will not work as the
/// user may expect. Throws before anything is touched, or leaves things as they were.
void makeInstance(const CreateOptions& options, const Surroundings& surroundings);

} // namespace korvane
