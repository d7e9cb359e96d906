// SPDX-License-Identifier: MIT
#include "platform/linux/keychain/glib_await.h"

#include <algorithm>

namespace zarn::linux_backend {

namespace {

using namespace std::chrono_literals;

/// Shared with the callback, which may come long after the wait has been given up.
struct Pending {
    ObjectPtr<GAsyncResult> result;
    bool givenUp = false;
};

void ready(GObject*, GAsyncResult* result, gpointer data)
{
    std::unique_ptr<Pending> pending(static_cast<Pending*>(data));
    if (pending->givenUp)
        return;
    pending->result.reset(static_cast<GAsyncResult*>(g_object_ref(result)));
    static_cast<void>(pending.release());
}

gboolean wakeUp(gpointer)
{
    return G_SOURCE_CONTINUE;
}

} // namespace

GlibAwait::GlibAwait()
    : m_context(g_main_context_new())
{
}

GlibAwait::~GlibAwait()
{
    g_main_context_unref(m_context);
}

bool GlibAwait::until(const std::function<bool()>& done, Deadline deadline)
{
    const Scope scope(*this);
    const auto left
        = std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    // The source only ends the iteration that would otherwise wait for ever.
    GSource* const timer = g_timeout_source_new(static_cast<guint>(std::max(left, 1ms).count()));
    g_source_set_callback(timer, wakeUp, nullptr, nullptr);
    g_source_attach(timer, m_context);
    bool isDone = done();
    while (!isDone && std::chrono::steady_clock::now() < deadline) {
        g_main_context_iteration(m_context, TRUE);
        isDone = done();
    }
    g_source_destroy(timer);
    g_source_unref(timer);
    return isDone;
}

void GlibAwait::poll()
{
    const Scope scope(*this);
    while (g_main_context_iteration(m_context, FALSE)) { }
}

ObjectPtr<GAsyncResult> GlibAwait::result(const Start& start, Deadline deadline)
{
    auto pending = std::make_unique<Pending>();
    const ObjectPtr<GCancellable> cancellable(g_cancellable_new());
    {
        const Scope scope(*this);
        start(cancellable.get(), &ready, pending.get());
    }
    const auto arrived = [&] { return pending->result != nullptr; };
    if (!until(arrived, deadline)) {
        g_cancellable_cancel(cancellable.get());
        // A cancelled call usually answers at once, and then nothing is left behind.
        until(arrived, std::chrono::steady_clock::now() + 50ms);
        if (!arrived()) {
            pending->givenUp = true;
            static_cast<void>(pending.release());
        }
        return nullptr;
    }
    return std::move(pending->result);
}

} // namespace zarn::linux_backend
