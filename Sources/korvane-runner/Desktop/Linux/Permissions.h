#pragma once

#include "korvane-runner/Desktop/Linux/GObjects.h"
#include "korvane-runner/Desktop/WebWindow.h"

#include <array>
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
    static gboolean onRequest(WebKitWebView* view, WebKitPermissionRequest* request,
                              Permissions* self) noexcept;
    static gboolean onQuery(WebKitWebView* view, WebKitPermissionStateQuery* query,
                            Permissions* self) noexcept;

    WebWindowEvents& events_;
    std::array<SignalHandler, 2> handlers_;
};

} // namespace korvane::runner
