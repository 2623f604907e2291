#pragma once

#include "korvane-runner/Desktop/DroppedQuestion.h"
#include "korvane-runner/Desktop/Linux/GObjects.h"
#include "korvane-runner/Desktop/Linux/LoadedTitle.h"
#include "korvane-runner/Desktop/WebWindow.h"

#include <array>
#include <webkit/webkit.h>

namespace korvane::runner {

/// What a view loads, and what becomes of it.
class PageLoads {
public:
    enum class Cache { used, passedOver };

    /// To be made before anything is loaded. All must outlive it.
    PageLoads(WebKitWebView* view, WebKitUserContentManager* content, WebWindowEvents& events);
    PageLoads(const PageLoads&) = delete;
    PageLoads& operator=(const PageLoads&) = delete;
    ~PageLoads();

    void load(const std::string& url);
    /// A page of the window's own, which stands for `url`.
    void showPage(const std::string& html, const std::string& url);
    void reload(Cache cache);

    /// Whether a page of the window's own is on its way.
    bool bringsOwnPage() const { return next_ == Page::own; }
    /// Whether a page of the window's own is what one sees.
    bool showsOwnPage() const { return shown_ == Page::own; }

private:
    enum class Page { ofTheSite, own };

    static void onLoadChanged(WebKitWebView* view, WebKitLoadEvent event, PageLoads* self) noexcept;
    static gboolean onLoadFailed(WebKitWebView* view, WebKitLoadEvent event, const char* url,
                                 GError* error, PageLoads* self) noexcept;
    static gboolean onCertificateRefused(WebKitWebView* view, const char* url,
                                         GTlsCertificate* certificate, GTlsCertificateFlags faults,
                                         PageLoads* self) noexcept;
    static void onProcessEnded(WebKitWebView* view, WebKitWebProcessTerminationReason reason,
                               PageLoads* self) noexcept;
    static gboolean onAuthenticate(WebKitWebView* view, WebKitAuthenticationRequest* request,
                                   PageLoads* self) noexcept;
    static gboolean onTimeout(gpointer self) noexcept;
    static void onTitleChanged(GObject* view, GParamSpec* property, PageLoads* self) noexcept;

    void ask(const char* url);
    void started();
    void finished();
    void titleTold(const std::string& title);
    void failed(LoadFailure::Kind kind, const char* url, std::string reason);
    void waitForAnswer();
    void stopWaiting();

    WebKitWebView* view_;
    WebWindowEvents& events_;
    Page next_ = Page::ofTheSite;
    Page loading_ = Page::ofTheSite;
    Page shown_ = Page::ofTheSite;
    bool hasFailed_ = false;
    DroppedQuestion question_;
    guint timeout_ = 0;
    bool hasEnded_ = false; ///< the load of the page that one sees
    bool hasTitle_ = false; ///< that page has told it
    LoadedTitle title_;
    std::array<SignalHandler, 6> handlers_;
};

} // namespace korvane::runner
