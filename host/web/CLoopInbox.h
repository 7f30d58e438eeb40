// Hands items from any thread to a GLib main loop: Post() queues an item and makes sure one idle
// source on the loop's context will hand the whole queue to `drain`, on the loop's thread, in the
// order posted. Close() (the loop's thread, also the destructor) destroys a source not yet run
// and drops what is queued; nothing is taken afterwards. One burst of posts costs one wake-up.
#pragma once

#include <glib.h>

#include <deque>
#include <functional>
#include <mutex>
#include <utility>

namespace ircontrol::host {

template <typename Item>
class CLoopInbox {
public:
    using Drain = std::function<void(std::deque<Item> items)>;

    CLoopInbox(GMainContext* context, Drain drain) : context_(context), drain_(std::move(drain)) {}
    ~CLoopInbox() { Close(); }
    CLoopInbox(const CLoopInbox&) = delete;
    CLoopInbox& operator=(const CLoopInbox&) = delete;

    // false once closed; the item is then dropped.
    bool Post(Item item) {
        std::lock_guard<std::mutex> lock(mutex_);
        if (closed_) return false;
        items_.push_back(std::move(item));
        if (source_ != nullptr) return true;
        source_ = g_idle_source_new();
        g_source_set_callback(source_, onIdle, this, nullptr);
        g_source_attach(source_, context_);
        return true;
    }

    void Close() {
        std::deque<Item> dropped;  // released outside the lock
        std::lock_guard<std::mutex> lock(mutex_);
        closed_ = true;
        if (source_ != nullptr) {
            g_source_destroy(source_);
            g_source_unref(source_);
            source_ = nullptr;
        }
        dropped.swap(items_);
    }

private:
    static gboolean onIdle(gpointer self) {
        auto* inbox = static_cast<CLoopInbox*>(self);
        std::deque<Item> items;
        GSource* source = nullptr;
        {
            std::lock_guard<std::mutex> lock(inbox->mutex_);
            items.swap(inbox->items_);
            source = inbox->source_;
            inbox->source_ = nullptr;
        }
        // The loop holds its own reference while it dispatches; ours goes now.
        if (source != nullptr) g_source_unref(source);
        inbox->drain_(std::move(items));
        return G_SOURCE_REMOVE;
    }

    GMainContext* context_;
    Drain drain_;
    std::mutex mutex_;
    std::deque<Item> items_;
    GSource* source_ = nullptr;  // the idle source that will drain, while one is due
    bool closed_ = false;
};

}  // namespace ircontrol::host
