#pragma once

#include "korvane-runner/Desktop/Linux/GObjects.h"

#include <optional>
#include <webkit/webkit.h>

namespace korvane::runner {

/// Checks what a person types, in the person's languages. It begins with the first key: the
/// dictionaries take a while to read and megabytes to keep, and many sites are only looked at.
class SpellChecking {
public:
    /// `view` must outlive it.
    SpellChecking(GtkWindow* window, WebKitWebView* view);
    SpellChecking(const SpellChecking&) = delete;
    SpellChecking& operator=(const SpellChecking&) = delete;
    ~SpellChecking() = default;

private:
    static gboolean onKey(GtkEventControllerKey* keys, guint value, guint code,
                          GdkModifierType modifiers, SpellChecking* self) noexcept;

    WebKitWebView* view_;
    std::optional<SignalHandler> firstKey_;
};

} // namespace korvane::runner
