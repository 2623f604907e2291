#pragma once

#include <glib-object.h>
#include <memory>
#include <utility>

namespace korvane::runner {

struct GObjectUnref {
    void operator()(gpointer object) const noexcept { g_object_unref(object); }
};
/// One reference; made from a pointer it takes over the caller's.
template <class T> using GObjectPtr = std::unique_ptr<T, GObjectUnref>;

/// A reference of one's own to what somebody else owns, or to what is floating.
template <class T> GObjectPtr<T> retained(T* object) {
    return GObjectPtr<T>(static_cast<T*>(g_object_ref_sink(object)));
}

struct GFree {
    void operator()(gpointer memory) const noexcept { g_free(memory); }
};
using GText = std::unique_ptr<char, GFree>;

/// A function that is called at a signal for as long as this lives. Its last argument is `data`.
class SignalHandler {
public:
    template <class Function>
    SignalHandler(gpointer object, const char* signal, Function* function, gpointer data)
        : object_(retained(static_cast<GObject*>(object))),
          id_(g_signal_connect(object, signal, G_CALLBACK(function), data)) {}
    SignalHandler(SignalHandler&& other) noexcept
        : object_(std::move(other.object_)), id_(other.id_) {}
    SignalHandler& operator=(SignalHandler&&) = delete;
    ~SignalHandler() {
        if (object_) g_signal_handler_disconnect(object_.get(), id_);
    }

private:
    GObjectPtr<GObject> object_;
    gulong id_;
};

} // namespace korvane::runner
