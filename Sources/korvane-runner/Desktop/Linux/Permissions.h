#pragma once

#include "korvane-runner/Desktop/Linux/GObjects.h"
#include "korvane-runner/Desktop/WebWindow.h"

#include <array>
#include <string>
#include <webkit/webkit.h>

namespace korvane::runner {

/// What pages ask to be allowed.
class Permissions {
public:
    /// Both must outlive it.
    Permissions(WebKitWebView* view, WebWindowEvents& events);
    Permissions(const Permissions&) = delete;
    Permissions& operator=(const Permissions&) = delete;
    ~Permissions() = default;

private:
    static void onLoadChanged(WebKitWebView* view, WebKitLoadEvent event,
                              Permissions* self) noexcept;
    static gboolean onRequest(WebKitWebView* view, WebKitPermissionRequest* request,
                              Permissions* self) noexcept;
    static gboolean onQuery(WebKitWebView* view, WebKitPermissionStateQuery* query,
                            Permissions* self) noexcept;

    WebWindowEvents& events_;
    std::string shown_; ///< the address of the page that asks, and not of one that is on its way
    std::array<SignalHandler, 3> handlers_;
};

} // namespace korvane::runner
