#pragma once

#include "korvane-runner/Desktop/Linux/GObjects.h"
#include "korvane-runner/Desktop/WebWindow.h"

#include <webkit/webkit.h>

namespace korvane::runner {

class PageLoads;

/// The script that runs in each page, and the messages that come back.
class PageMessages {
public:
    /// To be made before anything is loaded. All but `setup` must outlive it.
    PageMessages(WebKitUserContentManager* content, const WebWindowSetup& setup,
                 const PageLoads& loads, WebWindowEvents& events);
    PageMessages(const PageMessages&) = delete;
    PageMessages& operator=(const PageMessages&) = delete;
    ~PageMessages() = default;

private:
    static void onMessage(WebKitUserContentManager* content, JSCValue* message,
                          PageMessages* self) noexcept;

    const PageLoads& loads_;
    WebWindowEvents& events_;
    SignalHandler handler_;
};

} // namespace korvane::runner
