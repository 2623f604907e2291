#pragma once

#include "korvane-runner/Desktop/Linux/GObjects.h"
#include "korvane-runner/Desktop/WebWindow.h"

#include <array>
#include <webkit/webkit.h>

namespace korvane::runner {

class PageLoads;

/// The steps that a page takes to other addresses and to windows of their own, and what becomes of
/// the answers.
class PageSteps {
public:
    /// All must outlive it.
    PageSteps(WebKitWebView* view, PageLoads& loads, WebWindowEvents& events);
    PageSteps(const PageSteps&) = delete;
    PageSteps& operator=(const PageSteps&) = delete;
    ~PageSteps() = default;

private:
    static gboolean onDecidePolicy(WebKitWebView* view, WebKitPolicyDecision* decision,
                                   WebKitPolicyDecisionType type, PageSteps* self) noexcept;
    static GtkWidget* onCreate(WebKitWebView* view, WebKitNavigationAction* action,
                               PageSteps* self) noexcept;

    gboolean decide(WebKitNavigationPolicyDecision* decision);
    static gboolean decide(WebKitResponsePolicyDecision* decision);

    PageLoads& loads_;
    WebWindowEvents& events_;
    std::array<SignalHandler, 2> handlers_;
};

} // namespace korvane::runner
