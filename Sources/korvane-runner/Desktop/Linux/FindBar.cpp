#include "korvane-runner/Desktop/Linux/FindBar.h"

#include <string>

namespace korvane::runner {

namespace {

constexpr guint mostCounted = 1000;

std::string countText(guint count) {
    if (count == 0) return "not found";
    if (count == 1) return "1 match";
    if (count >= mostCounted) return std::to_string(mostCounted) + " or more matches";
    return std::to_string(count) + " matches";
}

} // namespace

template <void (FindBar::*action)()>
gboolean FindBar::onKey(GtkWidget*, GVariant*, gpointer self) noexcept {
    (static_cast<FindBar*>(self)->*action)();
    return TRUE;
}

template <void (FindBar::*action)()> void FindBar::on(GObject*, FindBar* self) noexcept {
    (self->*action)();
}

FindBar::FindBar(GtkBox* box, WebKitWebView* view)
    : view_(view), find_(webkit_web_view_get_find_controller(view)),
      bar_(GTK_SEARCH_BAR(gtk_search_bar_new())), entry_(GTK_EDITABLE(gtk_search_entry_new())),
      outcome_(GTK_LABEL(gtk_label_new(nullptr))),
      previous_(makeButton("go-up-symbolic", "Previous match")),
      next_(makeButton("go-down-symbolic", "Next match")) {
    gtk_search_bar_set_show_close_button(bar_, TRUE);
    gtk_search_bar_set_child(bar_, makeContent());
    gtk_search_bar_connect_entry(bar_, entry_);
    gtk_box_prepend(box, GTK_WIDGET(bar_));
    addKeys();
    handlers_.emplace_back(entry_, "changed", on<&FindBar::search>, this);
    handlers_.emplace_back(entry_, "activate", on<&FindBar::next>, this);
    handlers_.emplace_back(entry_, "next-match", on<&FindBar::next>, this);
    handlers_.emplace_back(entry_, "previous-match", on<&FindBar::previous>, this);
    handlers_.emplace_back(next_, "clicked", on<&FindBar::next>, this);
    handlers_.emplace_back(previous_, "clicked", on<&FindBar::previous>, this);
    handlers_.emplace_back(bar_, "notify::search-mode-enabled", onModeChanged, this);
    handlers_.emplace_back(find_, "counted-matches", onCounted, this);
    handlers_.emplace_back(find_, "failed-to-find-text", on<&FindBar::sayNotFound>, this);
}

GtkWidget* FindBar::makeButton(const char* icon, const char* hint) {
    auto* button = gtk_button_new_from_icon_name(icon);
    gtk_widget_set_tooltip_text(button, hint);
    return button;
}

GtkWidget* FindBar::makeContent() {
    constexpr int spacing = 6;
    constexpr int characters = 30;
    auto* content = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, spacing);
    gtk_editable_set_width_chars(entry_, characters);
    for (auto* part : {GTK_WIDGET(entry_), previous_, next_, GTK_WIDGET(outcome_)})
        gtk_box_append(GTK_BOX(content), part);
    return content;
}

// An entry knows Enter, but not together with Shift.
void FindBar::addKeys() {
    auto* keys = gtk_shortcut_controller_new();
    gtk_event_controller_set_propagation_phase(keys, GTK_PHASE_CAPTURE);
    constexpr guint enters[] = {GDK_KEY_Return, GDK_KEY_KP_Enter};
    for (const auto key : enters)
        gtk_shortcut_controller_add_shortcut(
            GTK_SHORTCUT_CONTROLLER(keys),
            gtk_shortcut_new(gtk_keyval_trigger_new(key, GDK_SHIFT_MASK),
                             gtk_callback_action_new(onKey<&FindBar::previous>, this, nullptr)));
    gtk_widget_add_controller(GTK_WIDGET(entry_), keys);
}

void FindBar::open() {
    gtk_search_bar_set_search_mode(bar_, TRUE);
    gtk_widget_grab_focus(GTK_WIDGET(entry_));
    gtk_editable_select_region(entry_, 0, -1);
    search();
}

void FindBar::search() {
    gtk_label_set_text(outcome_, "");
    const auto* text = gtk_editable_get_text(entry_);
    if (*text == '\0') return webkit_find_controller_search_finish(find_);
    constexpr guint32 options =
        WEBKIT_FIND_OPTIONS_CASE_INSENSITIVE | WEBKIT_FIND_OPTIONS_WRAP_AROUND;
    // First: counting takes the marks away. What the search itself tells is the count at first, and
    // 1 from then on.
    webkit_find_controller_count_matches(find_, text, options, mostCounted);
    webkit_find_controller_search(find_, text, options, mostCounted);
}

void FindBar::next() { webkit_find_controller_search_next(find_); }

void FindBar::previous() { webkit_find_controller_search_previous(find_); }

// By Escape, by the button, by search_mode: what is found is not marked any more.
void FindBar::onModeChanged(GObject*, GParamSpec*, FindBar* self) noexcept {
    if (!gtk_search_bar_get_search_mode(self->bar_)) self->close();
}

void FindBar::close() {
    webkit_find_controller_search_finish(find_);
    gtk_widget_grab_focus(GTK_WIDGET(view_));
}

void FindBar::onCounted(WebKitFindController*, guint count, FindBar* self) noexcept {
    gtk_label_set_text(self->outcome_, countText(count).c_str());
}

void FindBar::sayNotFound() { gtk_label_set_text(outcome_, countText(0).c_str()); }

} // namespace korvane::runner
