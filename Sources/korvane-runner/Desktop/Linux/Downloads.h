#pragma once

#include "korvane-runner/Desktop/Linux/GObjects.h"
#include "korvane-runner/Desktop/WebWindow.h"

#include <list>
#include <webkit/webkit.h>

namespace korvane::runner {

/// The files that pages hand out.
class Downloads {
public:
    /// Both must outlive it.
    Downloads(WebKitNetworkSession* session, WebWindowEvents& events);
    Downloads(const Downloads&) = delete;
    Downloads& operator=(const Downloads&) = delete;
    /// What is on its way is given up.
    ~Downloads();

private:
    struct Running;

    static void onStarted(WebKitNetworkSession* session, WebKitDownload* download,
                          Downloads* self) noexcept;

    void end(Running& running);

    WebWindowEvents& events_;
    std::list<Running> running_;
    SignalHandler handler_;
};

} // namespace korvane::runner
