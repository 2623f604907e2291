#pragma once

#include <string>
#include <webkit/webkit.h>

namespace korvane::runner {

/// Has `text` run at the start of each document in the main frame, in the page's own world or,
/// where one is named, in that.
void addUserScript(WebKitUserContentManager* content, const std::string& text,
                   const char* world = nullptr);

} // namespace korvane::runner
