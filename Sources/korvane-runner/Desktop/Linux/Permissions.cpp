#include "korvane-runner/Desktop/Linux/Permissions.h"

#include <string_view>

namespace korvane::runner {

namespace {

struct OriginUnref {
    void operator()(WebKitSecurityOrigin* origin) const noexcept {
        webkit_security_origin_unref(origin);
    }
};
using Origin = std::unique_ptr<WebKitSecurityOrigin, OriginUnref>;

Origin originOf(const std::string& url) {
    return Origin(webkit_security_origin_new_for_uri(url.c_str()));
}

GText textOf(WebKitSecurityOrigin* origin) {
    return GText(webkit_security_origin_to_string(origin));
}

/// As a person reads it: names of hosts are in their own script.
std::string readable(WebKitSecurityOrigin* origin) {
    const auto text = textOf(origin);
    if (!text) return {};
    const GText shown(webkit_uri_for_display(text.get()));
    return shown ? shown.get() : text.get();
}

/// What the person is asked for; absent for what is decided without.
std::optional<Permission> permissionFor(WebKitPermissionRequest* request) {
    if (WEBKIT_IS_GEOLOCATION_PERMISSION_REQUEST(request)) return Permission::location;
    if (!WEBKIT_IS_USER_MEDIA_PERMISSION_REQUEST(request)) return std::nullopt;
    auto* media = WEBKIT_USER_MEDIA_PERMISSION_REQUEST(request);
    const bool camera = webkit_user_media_permission_is_for_video_device(media) != FALSE;
    const bool microphone = webkit_user_media_permission_is_for_audio_device(media) != FALSE;
    if (camera && microphone) return Permission::cameraAndMicrophone;
    if (camera) return Permission::camera;
    if (microphone) return Permission::microphone;
    return std::nullopt;
}

/// What needs no question: the pointer is let go by Escape, and what of the screen is shown to a
/// page the desktop lets the person choose.
bool isHarmless(WebKitPermissionRequest* request) {
    if (WEBKIT_IS_POINTER_LOCK_PERMISSION_REQUEST(request)) return true;
    return WEBKIT_IS_USER_MEDIA_PERMISSION_REQUEST(request) &&
           webkit_user_media_permission_is_for_display_device(
               WEBKIT_USER_MEDIA_PERMISSION_REQUEST(request));
}

} // namespace

Permissions::Permissions(WebKitWebView* view, WebWindowEvents& events)
    : events_(events), handlers_{SignalHandler(view, "load-changed", onLoadChanged, this),
                                 SignalHandler(view, "permission-request", onRequest, this),
                                 SignalHandler(view, "query-permission-state", onQuery, this)} {}

// The page that one sees answers for its frames: a request does not tell its own origin. The view's
// address is that of the next page as soon as the window loads it, which a page can cause, and so
// could ask in the name of a site that takes long to answer.
void Permissions::onLoadChanged(WebKitWebView* view, WebKitLoadEvent event,
                                Permissions* self) noexcept {
    if (event != WEBKIT_LOAD_COMMITTED) return;
    const auto* url = webkit_web_view_get_uri(view);
    self->shown_ = url ? url : "";
}

gboolean Permissions::onRequest(WebKitWebView*, WebKitPermissionRequest* request,
                                Permissions* self) noexcept {
    if (isHarmless(request)) {
        webkit_permission_request_allow(request);
        return TRUE;
    }
    const auto permission = permissionFor(request);
    // The engine denies it: reading the clipboard without a paste, the engine's own notifications,
    // names of devices, storage of other sites, keys of copy protection.
    if (!permission) return FALSE;
    const std::shared_ptr<WebKitPermissionRequest> kept = retained(request);
    self->events_.permissionWanted(*permission, readable(originOf(self->shown_).get()),
                                   [kept](bool isAllowed) {
                                       if (isAllowed)
                                           webkit_permission_request_allow(kept.get());
                                       else
                                           webkit_permission_request_deny(kept.get());
                                   });
    return TRUE;
}

// Of notifications a page is told the same in every way; everything else is asked when it comes up.
gboolean Permissions::onQuery(WebKitWebView*, WebKitPermissionStateQuery* query,
                              Permissions* self) noexcept {
    if (std::string_view(webkit_permission_state_query_get_name(query)) != "notifications")
        return FALSE;
    const auto asking = textOf(webkit_permission_state_query_get_security_origin(query));
    const auto shown = textOf(originOf(self->shown_).get());
    const bool isSame = asking && shown && std::string_view(asking.get()) == shown.get();
    webkit_permission_state_query_finish(query, isSame ? WEBKIT_PERMISSION_STATE_GRANTED
                                                       : WEBKIT_PERMISSION_STATE_DENIED);
    return TRUE;
}

} // namespace korvane::runner
