#pragma once

#include "Ambrel/Application/AppBundle.h"

namespace korvane {

/// Whether `app` names types of files that it opens, which an instance of it can then be offered
/// for. Throws LibraryError where the system lacks what property lists are read with.
bool namesOpenedTypes(const ambrel::AppBundle& app);

} // namespace korvane
