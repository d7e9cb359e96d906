// SPDX-License-Identifier: MIT
#include "platform/linux/keychain/keychain_thread.h"

#include "base/wipe.h"
#include "platform/linux/files/module.h"
#include "platform/linux/keychain/keychain_module.h"

#include <algorithm>
#include <utility>

#include <pthread.h>

namespace zarn::linux_backend {

using std::chrono::milliseconds;

/// One call on its way to the keychain's thread and back. Both sides own it: a caller that gave up
/// leaves it behind.
struct KeychainThread::Request {
    Work work;
    CallContext::Limits limits;
    Moment begin;
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
    , m_call(std::move(report), [this](bool isWaiting) { promptWaitChanged(isWaiting); })
{
}

KeychainThread::~KeychainThread()
{
    {
        const std::lock_guard lock(m_mutex);
        m_end.request_stop();
        m_changed.notify_all();
    }
    if (m_thread.joinable())
        m_thread.join();
}

void KeychainThread::preload()
{
    submit(nullptr);
}

void KeychainThread::announceEnding()
{
    const std::lock_guard lock(m_mutex);
    m_endingSince = now();
}

KeychainThread::Moment KeychainThread::now() const
{
    const auto time = Clock::now();
    const auto open = m_promptSince ? time - *m_promptSince : Clock::duration(0);
    return {time, m_promptTime + std::chrono::duration_cast<milliseconds>(open)};
}

CallContext::Limits KeychainThread::left(const Request& request) const
{
    const auto moment = now();
    const auto silenceSince = [&](const Moment& begin) {
        return std::chrono::duration_cast<milliseconds>(moment.time - begin.time)
            - (moment.promptTime - begin.promptTime);
    };
    auto limits = request.limits;
    limits.silence -= silenceSince(request.begin);
    limits.prompt -= moment.promptTime - request.begin.promptTime;
    if (m_endingSince)
        limits.silence = std::min(limits.silence, m_limits.ending - silenceSince(*m_endingSince));
    return limits;
}

milliseconds KeychainThread::timeLeft(const Request& request) const
{
    const auto limits = left(request);
    return (m_promptSince ? limits.prompt : limits.silence) + m_limits.grace;
}

void KeychainThread::submit(const std::shared_ptr<Request>& request)
{
    const std::lock_guard lock(m_mutex);
    if (request)
        request->begin = now();
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
        m_changed.wait(lock, [this] { return m_end.stop_requested() || !m_requests.empty(); });
        if (m_requests.empty())
            break;
        const auto request = std::move(m_requests.front());
        m_requests.pop_front();
        if (request && request->stop.stop_requested())
            continue;
        lock.unlock();
        if (!m_isOpened) {
            m_isOpened = true;
            m_call.begin({m_limits.open}, m_end.get_token());
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
    {
        const std::lock_guard lock(m_mutex);
        m_call.begin(left(request), request.stop.get_token());
    }
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

void KeychainThread::promptWaitChanged(bool isWaiting)
{
    {
        const std::lock_guard lock(m_mutex);
        m_promptTime = now().promptTime;
        m_promptSince = isWaiting ? std::optional(Clock::now()) : std::nullopt;
        m_changed.notify_all();
    }
    // A main thread that waits for the keychain holds back what is posted, and looks by itself.
    m_mainQueue.post([this] { reportPromptWait(); });
    m_mainQueue.wake();
}

void KeychainThread::reportPromptWait()
{
    const bool isWaiting = isWaitingForUser();
    if (std::exchange(m_reportedWait, isWaiting) != isWaiting && m_waitObserver)
        m_waitObserver(isWaiting);
}

bool KeychainThread::isWaitingForUser() const
{
    const std::lock_guard lock(m_mutex);
    return m_promptSince.has_value();
}

void KeychainThread::setWaitObserver(WaitObserver observer)
{
    m_waitObserver = std::move(observer);
}

void KeychainThread::wait(const Request& request)
{
    if (m_mainQueue.isMainThread()) {
        const auto isFinished = [&] {
            reportPromptWait();
            const std::lock_guard lock(m_mutex);
            return request.isDone || timeLeft(request) <= milliseconds(0);
        };
        m_mainQueue.waitWhilePainting(
            isFinished, request.limits.silence + request.limits.prompt + m_limits.grace);
        reportPromptWait();
        return;
    }
    std::unique_lock lock(m_mutex);
    while (!request.isDone && timeLeft(request) > milliseconds(0))
        m_changed.wait_for(lock, timeLeft(request));
}

KeychainMatch KeychainThread::run(Work work)
{
    auto request = std::make_shared<Request>();
    request->work = std::move(work);
    request->limits = m_mainQueue.isMainThread() ? m_limits.main : m_limits.other;
    submit(request);
    wait(*request);
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
