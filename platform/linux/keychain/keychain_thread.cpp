// SPDX-License-Identifier: MIT
#include "platform/linux/keychain/keychain_thread.h"

#include "platform/linux/files/module.h"
#include "platform/linux/keychain/keychain_module.h"
#include "platform/linux/keychain/wipe.h"

#include <utility>

#include <pthread.h>

namespace zarn::linux_backend {

/// One call on its way to the keychain's thread and back. Both sides own it: a caller that gave up
/// leaves it behind.
struct KeychainThread::Request {
    Work work;
    CallContext::Deadline deadline;
    bool isDone = false;
    /// Stopped once the caller has given up.
    std::stop_source stop;
    KeychainMatch match{keychain_status::interactionNotAllowed, std::nullopt};

    ~Request()
    {
        if (match.item)
            wipe(match.item->secret);
    }
};

KeychainThread::KeychainThread(
    MainQueue& mainQueue, OpenStore openStore, Limits limits, CallContext::Report report)
    : m_mainQueue(mainQueue)
    , m_openStore(std::move(openStore))
    , m_limits(limits)
    , m_call(std::move(report))
{
}

KeychainThread::~KeychainThread()
{
    {
        const std::lock_guard lock(m_mutex);
        m_stopping = true;
        m_changed.notify_all();
    }
    if (m_thread.joinable())
        m_thread.join();
}

void KeychainThread::preload()
{
    submit(nullptr);
}

void KeychainThread::submit(const std::shared_ptr<Request>& request)
{
    const std::lock_guard lock(m_mutex);
    m_requests.push_back(request);
    if (!m_thread.joinable())
        m_thread = std::thread([this] { serve(); });
    m_changed.notify_all();
}

void KeychainThread::serve()
{
    ::pthread_setname_np(::pthread_self(), "keychain");
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_stopping || !m_requests.empty(); });
        if (m_requests.empty())
            break;
        const auto request = std::move(m_requests.front());
        m_requests.pop_front();
        if (request && request->stop.stop_requested())
            continue;
        lock.unlock();
        if (!m_isOpened) {
            m_isOpened = true;
            m_store = m_openStore(m_call);
        }
        if (request)
            perform(*request);
        lock.lock();
    }
    lock.unlock();
    m_store.reset(); // on the thread that used it
}

void KeychainThread::perform(Request& request)
{
    m_call.begin(request.deadline, request.stop.get_token());
    auto match = request.work(*m_store);
    {
        const std::lock_guard lock(m_mutex);
        request.match = std::move(match);
        request.work = nullptr;
        request.isDone = true;
        m_changed.notify_all();
    }
    m_mainQueue.wake();
}

KeychainMatch KeychainThread::run(Work work)
{
    const auto begin = std::chrono::steady_clock::now();
    auto request = std::make_shared<Request>();
    request->work = std::move(work);
    request->deadline = begin + m_limits.store;
    submit(request);
    if (m_mainQueue.isMainThread()) {
        const auto isDone = [&] {
            const std::lock_guard lock(m_mutex);
            return request->isDone;
        };
        m_mainQueue.waitWhilePainting(isDone, m_limits.caller);
    } else {
        std::unique_lock lock(m_mutex);
        m_changed.wait_until(lock, begin + m_limits.caller, [&] { return request->isDone; });
    }
    const std::lock_guard lock(m_mutex);
    if (!request->isDone) {
        request->stop.request_stop();
        return {keychain_status::interactionNotAllowed, std::nullopt};
    }
    return std::exchange(request->match, {});
}

KeychainStatus KeychainThread::add(const KeychainItem& item)
{
    auto secret = std::make_shared<Wiped<Data>>(item.secret);
    return run([secret, item = KeychainItem{item.accessGroup, item.service, item.account, {}}](
                   auto& store) {
        auto whole = item;
        whole.secret = secret->get();
        const auto status = store.add(whole);
        wipe(whole.secret);
        return KeychainMatch{status, std::nullopt};
    }).status;
}

KeychainStatus KeychainThread::update(const KeychainQuery& query, const Data& secret)
{
    auto copy = std::make_shared<Wiped<Data>>(secret);
    return run([copy, query](auto& store) {
        return KeychainMatch{store.update(query, copy->get()), std::nullopt};
    }).status;
}

KeychainMatch KeychainThread::copyMatching(const KeychainQuery& query)
{
    return run([query](auto& store) { return store.copyMatching(query); });
}

std::optional<std::string> KeychainThread::messageText(KeychainStatus status) const
{
    return keychainMessageText(status);
}

KeychainThread::OpenStore moduleStore(KeychainOptions options)
{
    return [options = std::move(options)](CallContext& call) -> std::unique_ptr<KeychainStore> {
        const auto make = reinterpret_cast<decltype(&zarnMakeKeychainStore)>(
            moduleFunction(keychainModuleFile, keychainModuleFunction));
        return std::unique_ptr<KeychainStore>(make(&options, &call));
    };
}

} // namespace zarn::linux_backend
