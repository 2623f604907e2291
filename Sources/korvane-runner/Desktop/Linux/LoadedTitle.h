#pragma once

#include "korvane-runner/Desktop/Linux/GObjects.h"

#include <functional>
#include <string>
#include <webkit/webkit.h>

namespace korvane::runner {

/// Tells the title that the page of the main frame has when it has been loaded, empty or not, also
/// when one goes back to it. A script of our own says it, in a world of its own that the page can
/// neither reach nor change: asking for the title would count as something that the person did.
class LoadedTitle {
public:
    using Told = std::function<void(const std::string& title)>;

    /// To be made before anything is loaded. `content` must outlive it.
    LoadedTitle(WebKitUserContentManager* content, Told told);
    LoadedTitle(const LoadedTitle&) = delete;
    LoadedTitle& operator=(const LoadedTitle&) = delete;
    ~LoadedTitle() = default;

private:
    static void onMessage(WebKitUserContentManager* content, JSCValue* title,
                          LoadedTitle* self) noexcept;

    Told told_;
    SignalHandler handler_;
};

} // namespace korvane::runner
