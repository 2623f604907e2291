#include "korvane-runner/Desktop/Linux/Downloads.h"

#include <array>
#include <cerrno>
#include <glib/gstdio.h>
#include <vector>

namespace korvane::runner {

namespace {

/// Whether the connection ended before all was there, which is no failure for the engine. The
/// length of what is packed on its way says nothing.
bool isCutShort(WebKitDownload* download) {
    auto* response = webkit_download_get_response(download);
    if (!response) return false;
    auto* headers = webkit_uri_response_get_http_headers(response);
    if (headers && soup_message_headers_get_one(headers, "Content-Encoding")) return false;
    return webkit_download_get_received_data_length(download) <
           webkit_uri_response_get_content_length(response);
}

} // namespace

struct Downloads::Running {
    Running(WebKitDownload* started, Downloads& downloads)
        : download(retained(started)),
          owner(downloads), handlers{SignalHandler(started, "decide-destination",
                                                   onDecideDestination, this),
                                     SignalHandler(started, "failed", onFailed, this),
                                     SignalHandler(started, "finished", onFinished, this)} {}
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;
    ~Running() = default;

    static gboolean onDecideDestination(WebKitDownload* download, const char* suggested,
                                        Running* self) noexcept;
    static void onFailed(WebKitDownload* download, GError* error, Running* self) noexcept;
    static void onFinished(WebKitDownload* download, Running* self) noexcept;

    GObjectPtr<WebKitDownload> download;
    Downloads& owner;
    Download outcome;
    bool hasNoPlace = false; ///< whoever said so needs no telling
    std::array<SignalHandler, 3> handlers;
};

Downloads::Downloads(WebKitNetworkSession* session, WebWindowEvents& events)
    : events_(events), handler_(session, "download-started", onStarted, this) {}

Downloads::~Downloads() {
    std::vector<GObjectPtr<WebKitDownload>> open;
    for (auto& running : running_) open.push_back(std::move(running.download));
    running_.clear(); // first: nobody is told any more
    for (const auto& download : open) webkit_download_cancel(download.get());
}

void Downloads::onStarted(WebKitNetworkSession*, WebKitDownload* download,
                          Downloads* self) noexcept {
    self->running_.emplace_back(download, *self);
}

gboolean Downloads::Running::onDecideDestination(WebKitDownload* download, const char* suggested,
                                                 Running* self) noexcept {
    self->outcome.place = self->owner.events_.placeForDownload(suggested ? suggested : "");
    self->hasNoPlace = self->outcome.place.empty();
    if (self->hasNoPlace)
        webkit_download_cancel(download);
    else
        webkit_download_set_destination(download, self->outcome.place.c_str());
    return TRUE;
}

void Downloads::Running::onFailed(WebKitDownload*, GError* error, Running* self) noexcept {
    self->outcome.failure = error->message;
    self->outcome.wasCancelled = g_error_matches(error, WEBKIT_DOWNLOAD_ERROR,
                                                 WEBKIT_DOWNLOAD_ERROR_CANCELLED_BY_USER) != FALSE;
}

// Comes after a failure as well.
void Downloads::Running::onFinished(WebKitDownload* download, Running* self) noexcept {
    auto& outcome = self->outcome;
    if (outcome.failure.empty() && isCutShort(download)) {
        outcome.failure = g_strerror(ECONNRESET);
        g_unlink(outcome.place.c_str()); // as the engine does with what it knows to be incomplete
    }
    self->owner.end(*self);
}

void Downloads::end(Running& running) {
    const auto outcome = running.outcome;
    const auto isToBeTold = !running.hasNoPlace;
    running_.remove_if([&](const Running& other) { return &other == &running; });
    if (isToBeTold) events_.downloadEnded(outcome);
}

} // namespace korvane::runner
