// SPDX-License-Identifier: MIT
#include "platform/linux/keychain/glib_await.h"

#include <algorithm>

namespace zarn::linux_backend {

namespace {

using namespace std::chrono_literals;

/// Shared with the callback, which may come long after the wait has been given up.
struct Pending {
    ObjectPtr<GAsyncResult> result;
    bool isGivenUp = false;
};

void ready(GObject*, GAsyncResult* result, gpointer data)
{
    std::unique_ptr<Pending> pending(static_cast<Pending*>(data));
    if (pending->isGivenUp)
        return;
    pending->result.reset(static_cast<GAsyncResult*>(g_object_ref(result)));
    static_cast<void>(pending.release());
}

gboolean wakeUp(gpointer)
{
    return G_SOURCE_CONTINUE;
}

} // namespace

GlibAwait::GlibAwait(const CallContext& call)
    : m_call(call)
    , m_context(g_main_context_new())
{
}

GlibAwait::~GlibAwait()
{
    g_main_context_unref(m_context);
}

void GlibAwait::iterate(const std::function<bool()>& isFinished, std::chrono::milliseconds limit)
{
    const Scope scope(*this);
    // The timer only ends the iteration that would otherwise wait forever.
    GSource* const timer = g_timeout_source_new(static_cast<guint>(std::max(limit, 1ms).count()));
    g_source_set_callback(timer, wakeUp, nullptr, nullptr);
    g_source_attach(timer, m_context);
    while (!isFinished())
        g_main_context_iteration(m_context, TRUE);
    g_source_destroy(timer);
    g_source_unref(timer);
}

bool GlibAwait::until(const std::function<bool()>& done)
{
    const std::stop_callback wake(m_call.stopToken(), [this] { g_main_context_wakeup(m_context); });
    bool isDone = false;
    iterate([&] { return (isDone = done()) || m_call.isOver(); }, m_call.timeLeft());
    return isDone;
}

void GlibAwait::poll()
{
    const Scope scope(*this);
    while (g_main_context_iteration(m_context, FALSE)) { }
}

ObjectPtr<GAsyncResult> GlibAwait::result(const Start& start)
{
    auto pending = std::make_unique<Pending>();
    const ObjectPtr<GCancellable> cancellable(g_cancellable_new());
    {
        const Scope scope(*this);
        start(cancellable.get(), &ready, pending.get());
    }
    const auto arrived = [&] { return pending->result != nullptr; };
    if (until(arrived))
        return std::move(pending->result);
    g_cancellable_cancel(cancellable.get());
    // A cancelled call usually ends at once, and then nothing is left behind.
    const auto giveUp = std::chrono::steady_clock::now() + 50ms;
    iterate([&] { return arrived() || std::chrono::steady_clock::now() >= giveUp; }, 50ms);
    if (!arrived()) {
        pending->isGivenUp = true;
        static_cast<void>(pending.release());
    }
    return nullptr;
}

} // namespace zarn::linux_backend
