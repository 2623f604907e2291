#include "korvane-runner/Desktop/Linux/PageSteps.h"

#include "korvane-runner/Desktop/Linux/PageLoads.h"

namespace korvane::runner {

namespace {

NavigationRequest requestOf(WebKitNavigationAction* action) {
    const auto* url = webkit_uri_request_get_uri(webkit_navigation_action_get_request(action));
    return {url ? url : "", webkit_navigation_action_is_user_gesture(action) != FALSE};
}

} // namespace

PageSteps::PageSteps(WebKitWebView* view, PageLoads& loads, WebWindowEvents& events)
    : loads_(loads),
      events_(events), handlers_{SignalHandler(view, "decide-policy", onDecidePolicy, this),
                                 SignalHandler(view, "create", onCreate, this)} {}

gboolean PageSteps::onDecidePolicy(WebKitWebView*, WebKitPolicyDecision* decision,
                                   WebKitPolicyDecisionType type, PageSteps* self) noexcept {
    switch (type) {
    case WEBKIT_POLICY_DECISION_TYPE_NAVIGATION_ACTION:
        return self->decide(WEBKIT_NAVIGATION_POLICY_DECISION(decision));
    case WEBKIT_POLICY_DECISION_TYPE_RESPONSE:
        return decide(WEBKIT_RESPONSE_POLICY_DECISION(decision));
    case WEBKIT_POLICY_DECISION_TYPE_NEW_WINDOW_ACTION:
        break; // onCreate is called
    }
    return FALSE;
}

gboolean PageSteps::decide(WebKitNavigationPolicyDecision* decision) {
    if (loads_.bringsOwnPage()) return FALSE;
    auto* action = webkit_navigation_policy_decision_get_navigation_action(decision);
    if (events_.navigationWanted(requestOf(action))) return FALSE;
    webkit_policy_decision_ignore(WEBKIT_POLICY_DECISION(decision));
    return TRUE;
}

// By itself the engine makes downloads of attachments alone, and nothing of what it cannot show.
gboolean PageSteps::decide(WebKitResponsePolicyDecision* decision) {
    auto* response = webkit_response_policy_decision_get_response(decision);
    const auto status = webkit_uri_response_get_status_code(response);
    const bool isEmpty = status == SOUP_STATUS_NO_CONTENT || status == SOUP_STATUS_RESET_CONTENT;
    if (isEmpty || webkit_response_policy_decision_is_mime_type_supported(decision)) return FALSE;
    webkit_policy_decision_download(WEBKIT_POLICY_DECISION(decision));
    return TRUE;
}

GtkWidget* PageSteps::onCreate(WebKitWebView*, WebKitNavigationAction* action,
                               PageSteps* self) noexcept {
    self->events_.newWindowWanted(requestOf(action));
    return nullptr;
}

} // namespace korvane::runner
