#include "korvane-runner/Desktop/Linux/PageSteps.h"

#include "korvane-runner/Desktop/Linux/PageLoads.h"

namespace korvane::runner {

namespace {

std::string urlOf(WebKitNavigationAction* action) {
    const auto* url = webkit_uri_request_get_uri(webkit_navigation_action_get_request(action));
    return url ? url : "";
}

} // namespace

PageSteps::PageSteps(WebKitWebView* view, PageLoads& loads, WebWindowEvents& events)
    : loads_(loads),
      events_(events), handlers_{SignalHandler(view, "decide-policy", onDecidePolicy, this),
                                 SignalHandler(view, "create", onCreate, this)} {}

bool PageSteps::isAllowed(WebKitNavigationAction* action) {
    const bool fromClick = webkit_navigation_action_is_user_gesture(action) != FALSE;
    return events_.navigationWanted({urlOf(action), fromClick});
}

gboolean PageSteps::onDecidePolicy(WebKitWebView*, WebKitPolicyDecision* decision,
                                   WebKitPolicyDecisionType type, PageSteps* self) noexcept {
    // The engine makes a download of an answer that it cannot show or that is an attachment.
    if (type != WEBKIT_POLICY_DECISION_TYPE_NAVIGATION_ACTION) return FALSE;
    if (self->loads_.bringsOwnPage()) return FALSE;
    auto* action = webkit_navigation_policy_decision_get_navigation_action(
        WEBKIT_NAVIGATION_POLICY_DECISION(decision));
    if (self->isAllowed(action)) return FALSE;
    webkit_policy_decision_ignore(decision);
    return TRUE;
}

GtkWidget* PageSteps::onCreate(WebKitWebView*, WebKitNavigationAction* action,
                               PageSteps* self) noexcept {
    self->events_.newWindowWanted(urlOf(action));
    return nullptr;
}

} // namespace korvane::runner
