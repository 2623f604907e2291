#include "korvane-runner/Desktop/Linux/PageLoads.h"

#include "korvane-runner/Desktop/Linux/CertificateFaults.h"

#include <cerrno>

namespace korvane::runner {

namespace {

bool isCancelled(const GError* error) {
    return g_error_matches(error, WEBKIT_NETWORK_ERROR, WEBKIT_NETWORK_ERROR_CANCELLED);
}

/// Errors that tell of a load which became something else: another load, a download.
bool isNoFailure(const GError* error) {
    return isCancelled(error) ||
           g_error_matches(error, WEBKIT_POLICY_ERROR,
                           WEBKIT_POLICY_ERROR_FRAME_LOAD_INTERRUPTED_BY_POLICY_CHANGE) ||
           g_error_matches(error, WEBKIT_MEDIA_ERROR, WEBKIT_MEDIA_ERROR_WILL_HANDLE_LOAD);
}

const char* orEmpty(const char* text) { return text ? text : ""; }

} // namespace

PageLoads::PageLoads(WebKitWebView* view, WebKitUserContentManager* content,
                     WebWindowEvents& events)
    : view_(view), events_(events),
      title_(content, [this](const std::string& title) { titleTold(title); }),
      handlers_{SignalHandler(view, "load-changed", onLoadChanged, this),
                SignalHandler(view, "load-failed", onLoadFailed, this),
                SignalHandler(view, "load-failed-with-tls-errors", onCertificateRefused, this),
                SignalHandler(view, "web-process-terminated", onProcessEnded, this),
                SignalHandler(view, "authenticate", onAuthenticate, this),
                SignalHandler(view, "notify::title", onTitleChanged, this)} {}

PageLoads::~PageLoads() { stopWaiting(); }

void PageLoads::load(const std::string& url) {
    question_.loadWanted();
    ask(url.c_str());
}

void PageLoads::ask(const char* url) {
    next_ = Page::ofTheSite;
    webkit_web_view_load_uri(view_, url);
}

void PageLoads::showPage(const std::string& html, const std::string& url) {
    question_.loadSettled();
    next_ = Page::own;
    webkit_web_view_load_alternate_html(view_, html.c_str(), url.c_str(), nullptr);
}

void PageLoads::reload(Cache cache) {
    question_.loadWanted();
    next_ = Page::ofTheSite;
    if (cache == Cache::passedOver)
        webkit_web_view_reload_bypass_cache(view_);
    else
        webkit_web_view_reload(view_);
}

void PageLoads::onLoadChanged(WebKitWebView*, WebKitLoadEvent event, PageLoads* self) noexcept {
    switch (event) {
    case WEBKIT_LOAD_STARTED:
        self->started();
        break;
    case WEBKIT_LOAD_REDIRECTED:
        self->waitForAnswer();
        break;
    case WEBKIT_LOAD_COMMITTED:
        self->stopWaiting();
        self->question_.loadSettled();
        self->shown_ = self->loading_;
        self->hasEnded_ = false;
        self->hasTitle_ = false;
        break;
    case WEBKIT_LOAD_FINISHED:
        self->stopWaiting();
        self->finished();
        break;
    }
}

void PageLoads::started() {
    loading_ = std::exchange(next_, Page::ofTheSite);
    hasFailed_ = false;
    question_.loadStarted();
    waitForAnswer();
}

void PageLoads::finished() {
    if (hasFailed_ || loading_ == Page::own) return;
    hasEnded_ = true;
    if (!hasTitle_) events_.loadFinished(orEmpty(webkit_web_view_get_title(view_)));
}

// A page that may run no scripts, ours among them, tells nothing. The engine comes to its title at
// some time; it has one for good.
void PageLoads::onTitleChanged(GObject*, GParamSpec*, PageLoads* self) noexcept {
    if (self->hasEnded_ && !self->hasTitle_) self->finished();
}

// Whatever the page may be about to load instead of itself by then.
void PageLoads::titleTold(const std::string& title) {
    hasTitle_ = true;
    if (shown_ != Page::own) events_.loadFinished(title);
}

void PageLoads::failed(LoadFailure::Kind kind, const char* url, std::string reason) {
    stopWaiting();
    hasFailed_ = true;
    events_.loadFailed({kind, orEmpty(url), std::move(reason)});
}

gboolean PageLoads::onLoadFailed(WebKitWebView*, WebKitLoadEvent, const char* url, GError* error,
                                 PageLoads* self) noexcept {
    self->hasFailed_ = true;
    using Cure = DroppedQuestion::Cure;
    const auto cure = isCancelled(error) ? self->question_.loadCancelled() : Cure::none;
    if (cure == Cure::repeat)
        self->ask(url);
    else if (cure == Cure::giveUp || !isNoFailure(error))
        self->failed(LoadFailure::Kind::notReached, url, error->message);
    return TRUE; // no page of the engine's own
}

gboolean PageLoads::onCertificateRefused(WebKitWebView*, const char* url, GTlsCertificate*,
                                         GTlsCertificateFlags faults, PageLoads* self) noexcept {
    self->failed(LoadFailure::Kind::notTrusted, url, certificateFaults(faults));
    return TRUE;
}

void PageLoads::onProcessEnded(WebKitWebView* view, WebKitWebProcessTerminationReason reason,
                               PageLoads* self) noexcept {
    if (reason == WEBKIT_WEB_PROCESS_TERMINATED_BY_API) return; // nobody here does that
    const auto* words =
        reason == WEBKIT_WEB_PROCESS_EXCEEDED_MEMORY_LIMIT ? g_strerror(ENOMEM) : "";
    self->failed(LoadFailure::Kind::crashed, webkit_web_view_get_uri(view), words);
}

// A person may take a minute and more to find a password.
gboolean PageLoads::onAuthenticate(WebKitWebView*, WebKitAuthenticationRequest*,
                                   PageLoads* self) noexcept {
    self->stopWaiting();
    self->question_.questionAsked();
    return FALSE; // the engine asks in a dialog of its own
}

void PageLoads::waitForAnswer() {
    constexpr guint seconds = 60;
    stopWaiting();
    timeout_ = g_timeout_add_seconds(seconds, onTimeout, this);
}

void PageLoads::stopWaiting() {
    if (timeout_ != 0) g_source_remove(std::exchange(timeout_, 0));
}

gboolean PageLoads::onTimeout(gpointer data) noexcept {
    auto* self = static_cast<PageLoads*>(data);
    self->timeout_ = 0;
    const std::string url = orEmpty(webkit_web_view_get_uri(self->view_));
    webkit_web_view_stop_loading(self->view_);
    self->failed(LoadFailure::Kind::notReached, url.c_str(), g_strerror(ETIMEDOUT));
    return G_SOURCE_REMOVE;
}

} // namespace korvane::runner
