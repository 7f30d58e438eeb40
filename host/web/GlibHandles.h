// Owning handles for the GLib and GObject resources of the web server: each is released once,
// by its own free function, when the handle goes. Plain RAII, no thread rules of their own.
#pragma once

#include <glib-object.h>
#include <glib.h>

#include <memory>

namespace ircontrol::host {

struct GObjectUnref {
    void operator()(gpointer object) const { if (object != nullptr) g_object_unref(object); }
};
struct GMainLoopUnref {
    void operator()(GMainLoop* loop) const { if (loop != nullptr) g_main_loop_unref(loop); }
};
struct GMainContextUnref {
    void operator()(GMainContext* context) const { if (context != nullptr) g_main_context_unref(context); }
};
struct GFree {
    void operator()(gpointer memory) const { g_free(memory); }
};
struct GBytesUnref {
    void operator()(GBytes* bytes) const { if (bytes != nullptr) g_bytes_unref(bytes); }
};
struct GErrorFree {
    void operator()(GError* error) const { if (error != nullptr) g_error_free(error); }
};

template <typename T>
using GObjectPtr = std::unique_ptr<T, GObjectUnref>;
using GMainLoopPtr = std::unique_ptr<GMainLoop, GMainLoopUnref>;
using GMainContextPtr = std::unique_ptr<GMainContext, GMainContextUnref>;
using GCharPtr = std::unique_ptr<gchar, GFree>;
using GErrorPtr = std::unique_ptr<GError, GErrorFree>;
using GBytesPtr = std::unique_ptr<GBytes, GBytesUnref>;

// A new reference to `object`, owned by the handle.
template <typename T>
GObjectPtr<T> Ref(T* object) {
    return GObjectPtr<T>(static_cast<T*>(g_object_ref(object)));
}

}  // namespace ircontrol::host
