#pragma once

#include "Ambrel/Base/Path.h"

#include <string>
#include <string_view>
#include <vector>

namespace korvane {

/// The types in `list`, separated by ";", that a desktop entry can name (Desktop Entry
/// Specification, MimeType): each once, in their order.
std::vector<std::string> mimeTypesIn(std::string_view list);

/// The types of files that the application at `app` names, for which an instance of it can be
/// offered; empty without any. Throws LibraryError where the system lacks what property lists are
/// read with.
std::vector<std::string> openedTypes(const ambrel::Path& app);

} // namespace korvane
