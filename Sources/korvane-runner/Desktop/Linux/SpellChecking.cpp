#include "korvane-runner/Desktop/Linux/SpellChecking.h"

namespace korvane::runner {

SpellChecking::SpellChecking(GtkWindow* window, WebKitWebView* view) : view_(view) {
    auto* keys = gtk_event_controller_key_new();
    gtk_event_controller_set_propagation_phase(keys, GTK_PHASE_CAPTURE);
    firstKey_.emplace(keys, "key-pressed", onKey, this);
    gtk_widget_add_controller(GTK_WIDGET(window), keys); // takes it over
}

gboolean SpellChecking::onKey(GtkEventControllerKey*, guint, guint, GdkModifierType,
                              SpellChecking* self) noexcept {
    self->firstKey_.reset();
    auto* context = webkit_web_view_get_context(self->view_);
    webkit_web_context_set_spell_checking_languages(context, g_get_language_names());
    webkit_web_context_set_spell_checking_enabled(context, TRUE);
    return FALSE; // the key is the page's
}

} // namespace korvane::runner
