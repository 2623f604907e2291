#include "korvane-runner/Desktop/Linux/PageView.h"

#include "Ambrel/Base/Path.h"

namespace korvane::runner {

namespace {

GObjectPtr<WebKitNetworkSession> makeSession(const WebWindowSetup& setup) {
    if (setup.data.empty() || setup.cache.empty())
        return GObjectPtr<WebKitNetworkSession>(webkit_network_session_new_ephemeral());
    GObjectPtr<WebKitNetworkSession> session(
        webkit_network_session_new(setup.data.c_str(), setup.cache.c_str()));
    webkit_cookie_manager_set_persistent_storage(
        webkit_network_session_get_cookie_manager(session.get()),
        ambrel::paths::join(setup.data, "cookies.sqlite").c_str(),
        WEBKIT_COOKIE_PERSISTENT_STORAGE_SQLITE);
    // The person's keyring would hand what one instance keeps to all the others.
    webkit_network_session_set_persistent_credential_storage_enabled(session.get(), FALSE);
    return session;
}

GObjectPtr<WebKitSettings> makeSettings() {
    return GObjectPtr<WebKitSettings>(webkit_settings_new_with_settings(
        "enable-back-forward-navigation-gestures", TRUE,
        "javascript-can-open-windows-automatically", TRUE, "enable-webrtc", TRUE, nullptr));
}

GObjectPtr<WebKitWebView> makeView(WebKitNetworkSession* session,
                                   WebKitUserContentManager* content) {
    const auto settings = makeSettings();
    return retained(WEBKIT_WEB_VIEW(g_object_new(
        WEBKIT_TYPE_WEB_VIEW, "network-session", session, "user-content-manager", content,
        "settings", settings.get(), "hexpand", TRUE, "vexpand", TRUE, nullptr)));
}

} // namespace

PageView::PageView(const WebWindowSetup& setup)
    : session_(makeSession(setup)), content_(webkit_user_content_manager_new()),
      view_(makeView(session_.get(), content_.get())) {}

} // namespace korvane::runner
