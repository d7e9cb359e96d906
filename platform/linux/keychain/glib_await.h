// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/keychain/call_context.h"

#include <gio/gio.h>

#include <memory>

namespace zarn::linux_backend {

/// Owns a GLib object, given the function that releases it.
template <auto release> struct GlibRelease {
    template <typename T> void operator()(T* thing) const { release(thing); }
};
template <typename T> using ObjectPtr = std::unique_ptr<T, GlibRelease<g_object_unref>>;
using VariantPtr = std::unique_ptr<GVariant, GlibRelease<g_variant_unref>>;
using ErrorPtr = std::unique_ptr<GError, GlibRelease<g_error_free>>;

/// Waits for asynchronous GLib calls on a main context of its own, each until the call of the
/// `context` is over. (The library's synchronous calls wait up to 50 s for a service that is
/// silent, and forever for a prompt.) One thread at a time.
class GlibAwait {
public:
    /// Starts a call; the last two arguments are its callback and the callback's data.
    using Start = std::function<void(GCancellable*, GAsyncReadyCallback, gpointer)>;

    /// What is started or subscribed to while a Scope lives is handled by this object's waits.
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

    explicit GlibAwait(const CallContext& call);
    ~GlibAwait();
    GlibAwait(const GlibAwait&) = delete;
    GlibAwait& operator=(const GlibAwait&) = delete;

    /// The result to finish the call with. Null when time ran out; the call is cancelled then.
    ObjectPtr<GAsyncResult> result(const Start& start);
    /// Handles what arrives until `done` returns true; false when time ran out.
    bool until(const std::function<bool()>& done);
    /// Handles what has arrived already.
    void poll();

private:
    void iterate(const std::function<bool()>& isFinished, std::chrono::milliseconds limit);

    const CallContext& m_call;
    GMainContext* m_context;
};

} // namespace zarn::linux_backend
