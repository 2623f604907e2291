#pragma once

#include "korvane-runner/Desktop/Linux/GObjects.h"
#include "korvane-runner/Desktop/WebWindow.h"

#include <webkit/webkit.h>

namespace korvane::runner {

/// The engine's view of pages and what it needs, as `setup` wants it.
class PageView {
public:
    explicit PageView(const WebWindowSetup& setup);

    WebKitWebView* view() const { return view_.get(); }
    WebKitNetworkSession* session() const { return session_.get(); }
    WebKitUserContentManager* content() const { return content_.get(); }

private:
    GObjectPtr<WebKitNetworkSession> session_;
    GObjectPtr<WebKitUserContentManager> content_;
    GObjectPtr<WebKitWebView> view_;
};

} // namespace korvane::runner
