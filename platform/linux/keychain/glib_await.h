// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/keychain/keychain_store.h"

#include <gio/gio.h>

namespace zarn::linux_backend {

/// Owns a GLib thing, given the function that releases it.
template <auto release> struct GlibRelease {
    template <typename T> void operator()(T* thing) const { release(thing); }
};
template <typename T> using ObjectPtr = std::unique_ptr<T, GlibRelease<g_object_unref>>;
using VariantPtr = std::unique_ptr<GVariant, GlibRelease<g_variant_unref>>;
using ErrorPtr = std::unique_ptr<GError, GlibRelease<g_error_free>>;

/// Waits for asynchronous GLib calls on a context of its own, each up to a deadline. (The library's
/// synchronous calls wait up to 50 s for a service that is silent, and for ever for a prompt.)
/// One thread at a time.
class GlibAwait {
public:
    /// Starts a call; the last two arguments are its callback and that one's data.
    using Start = std::function<void(GCancellable*, GAsyncReadyCallback, gpointer)>;

    /// What is started or subscribed to meanwhile answers on this context.
    class Scope {
    public:
        explicit Scope(GlibAwait& await)
            : m_context(await.m_context)
        {
            g_main_context_push_thread_default(m_context);
        }
        ~Scope() { g_main_context_pop_thread_default(m_context); }
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;

    private:
        GMainContext* m_context;
    };

    GlibAwait();
    ~GlibAwait();
    GlibAwait(const GlibAwait&) = delete;
    GlibAwait& operator=(const GlibAwait&) = delete;

    /// The result to finish the call with. Null: the deadline came first and the call is cancelled.
    ObjectPtr<GAsyncResult> result(const Start& start, Deadline deadline);
    /// Handles what arrives until `done` answers true; false when the deadline came first.
    bool until(const std::function<bool()>& done, Deadline deadline);
    /// Handles what has arrived already.
    void poll();

private:
    GMainContext* m_context;
};

} // namespace zarn::linux_backend
