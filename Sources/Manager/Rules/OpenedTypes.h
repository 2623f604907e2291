#pragma once

#include "Ambrel/Application/AppBundle.h"

#include <string>
#include <string_view>
#include <vector>

namespace korvane {

/// The types in `list`, separated by ";", that a desktop entry can name (Desktop Entry
/// Specification, MimeType): each once, in their order.
std::vector<std::string> mimeTypesIn(std::string_view list);

/// The types of files and addresses that the application at `app` names as what it opens, which an
/// instance of it can be offered for. Throws LibraryError where the system lacks what property
/// lists are read with.
std::vector<std::string> openedTypes(const ambrel::Path& app);

/// Whether `app` can be offered as a web browser: it opens web pages or their addresses, or names
/// no types at all and has the engine of one, as applications have that were adopted before types
/// were kept. Throws as openedTypes() does.
bool canBrowse(const ambrel::AppBundle& app);

} // namespace korvane
