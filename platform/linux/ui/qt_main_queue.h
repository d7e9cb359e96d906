// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/queues/main_queue.h"

#include <QEvent>
#include <QObject>
#include <QPointer>

#include <deque>
#include <memory>
#include <mutex>

namespace zarn::linux_backend {

/// The main queue on Qt's event loop. Made on the main thread, after the application object.
class QtMainQueue final : public QObject, public MainQueue {
    Q_OBJECT

public:
    void post(std::function<void()> work) override;
    bool isMainThread() const override;
    bool waitWhilePainting(
        const std::function<bool()>& done, std::chrono::milliseconds limit) override;
    void wake() override;

    /// Runs `work` at once, or after the waits that are under way. Main thread only.
    void performAfterWaits(std::function<void()> work);
    bool isWaiting() const { return m_waits > 0; }
    /// The program ends: waits end at once from now on, and what the user did meanwhile is dropped.
    /// Main thread only.
    void stopWaiting();

    /// Called once a wait takes longer than 150 ms, so that there is a window to paint.
    std::function<void()> onLongWait;

private:
    struct HeldInput {
        QPointer<QObject> receiver;
        std::unique_ptr<QEvent> event;
    };

    bool eventFilter(QObject* receiver, QEvent* event) override;
    void beginWait();
    void endWait();
    void runPosted();

    std::mutex m_mutex;
    std::deque<std::function<void()>> m_work;
    int m_waits = 0;
    /// Esc or the closing of a window ends the waits that are under way.
    bool m_userStops = false;
    bool m_isEnding = false;
    std::deque<HeldInput> m_heldInput;
};

} // namespace zarn::linux_backend
