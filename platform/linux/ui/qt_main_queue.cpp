// SPDX-License-Identifier: MIT
#include "platform/linux/ui/qt_main_queue.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QEventLoop>
#include <QThread>
#include <QTimer>

namespace zarn::linux_backend {

namespace {
constexpr std::chrono::milliseconds longWait{150};
}

void QtMainQueue::post(std::function<void()> work)
{
    {
        const std::lock_guard lock(m_mutex);
        m_work.push_back(std::move(work));
    }
    QMetaObject::invokeMethod(
        this, [this] { runPosted(); }, Qt::QueuedConnection);
}

bool QtMainQueue::isMainThread() const
{
    return QThread::currentThread() == thread();
}

void QtMainQueue::runPosted()
{
    while (m_waits == 0) {
        std::function<void()> work;
        {
            const std::lock_guard lock(m_mutex);
            if (m_work.empty())
                return;
            work = std::move(m_work.front());
            m_work.pop_front();
        }
        work();
    }
}

bool QtMainQueue::waitWhilePainting(
    const std::function<bool()>& done, std::chrono::milliseconds limit)
{
    using Clock = std::chrono::steady_clock;
    const auto started = Clock::now();
    QTimer tick;
    tick.start(std::chrono::milliseconds(20));
    ++m_waits;
    bool isDone = done();
    bool told = false;
    while (!isDone && Clock::now() - started < limit) {
        QCoreApplication::processEvents(
            QEventLoop::ExcludeUserInputEvents | QEventLoop::WaitForMoreEvents);
        isDone = done();
        if (!isDone && !told && onLongWait && Clock::now() - started > longWait) {
            told = true;
            onLongWait();
        }
    }
    --m_waits;
    // What was posted meanwhile found the queue held.
    QMetaObject::invokeMethod(
        this, [this] { runPosted(); }, Qt::QueuedConnection);
    return isDone;
}

void QtMainQueue::performAfterWaits(std::function<void()> work)
{
    if (m_waits == 0)
        work();
    else
        post(std::move(work));
}

void QtMainQueue::wake()
{
    QMetaObject::invokeMethod(
        this, [] {}, Qt::QueuedConnection);
}

} // namespace zarn::linux_backend
