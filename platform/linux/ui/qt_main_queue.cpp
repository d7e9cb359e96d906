// SPDX-License-Identifier: MIT
#include "platform/linux/ui/qt_main_queue.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QEventLoop>
#include <QKeyEvent>
#include <QShortcutEvent>
#include <QThread>
#include <QTimer>
#include <QWindow>

#include <utility>

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
    beginWait();
    bool isDone = done();
    bool isLong = false;
    while (!isDone && !m_userStops && !m_isEnding && Clock::now() - started < limit) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        isDone = done();
        if (!isDone && !isLong && onLongWait && Clock::now() - started > longWait) {
            isLong = true;
            onLongWait();
        }
    }
    endWait();
    return isDone;
}

void QtMainQueue::beginWait()
{
    if (m_waits++ == 0) {
        m_userStops = false;
        QCoreApplication::instance()->installEventFilter(this);
    }
}

void QtMainQueue::endWait()
{
    if (--m_waits > 0)
        return;
    QCoreApplication::instance()->removeEventFilter(this);
    for (auto& input : std::exchange(m_heldInput, {})) {
        if (input.receiver && !m_isEnding)
            QCoreApplication::postEvent(input.receiver, input.event.release());
    }
    // What was posted meanwhile found the queue held.
    QMetaObject::invokeMethod(
        this, [this] { runPosted(); }, Qt::QueuedConnection);
}

// Asking the event loop to leave user input alone would also keep Esc and the closing of a window
// from it. So it is taken from the windows here, and given back to them after the wait.
bool QtMainQueue::eventFilter(QObject* receiver, QEvent* event)
{
    switch (event->type()) {
    case QEvent::KeyPress:
        if (static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
            m_userStops = true;
            return true;
        }
        break;
    case QEvent::Close: {
        const auto* window = qobject_cast<QWindow*>(receiver);
        // Tooltips are closed, too. What is closed goes after the wait, like any other press.
        if (window && (window->type() == Qt::Window || window->type() == Qt::Dialog))
            m_userStops = true;
        return false;
    }
    case QEvent::Shortcut:
        if (static_cast<QShortcutEvent*>(event)->key() == QKeySequence(QKeySequence::Quit))
            m_userStops = true;
        break;
    case QEvent::KeyRelease:
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::Wheel:
    case QEvent::InputMethod:
    case QEvent::ContextMenu:
    case QEvent::TouchBegin:
    case QEvent::TouchEnd:
    case QEvent::TouchCancel:
    case QEvent::TabletPress:
    case QEvent::TabletRelease:
        break;
    case QEvent::MouseMove:
    case QEvent::TouchUpdate:
    case QEvent::TabletMove:
        return true;
    default:
        return false;
    }
    m_heldInput.push_back({receiver, std::unique_ptr<QEvent>(event->clone())});
    return true;
}

void QtMainQueue::performAfterWaits(std::function<void()> work)
{
    if (m_waits == 0)
        work();
    else
        post(std::move(work));
}

void QtMainQueue::stopWaiting()
{
    m_isEnding = true;
}

void QtMainQueue::wake()
{
    QMetaObject::invokeMethod(
        this, [] {}, Qt::QueuedConnection);
}

} // namespace zarn::linux_backend
