// SPDX-License-Identifier: MIT
#include "platform/linux/keychain/lazy_keychain.h"

#include "platform/linux/files/durable_file.h"
#include "platform/linux/files/module.h"
#include "platform/linux/keychain/keychain_module.h"
#include "platform/linux/keychain/wipe.h"

#include <pthread.h>

namespace zarn::linux_backend {

/// One call on its way to the keychain's thread and back. Both sides own it: a caller that was
/// answered in time leaves it behind.
struct LazyKeychain::Request {
    Work work;
    Deadline deadline;
    bool isDone = false;
    bool isGivenUp = false;
    KeychainMatch match{keychain_status::interactionNotAllowed, std::nullopt};

    ~Request()
    {
        if (match.item)
            wipe(match.item->secret);
    }
};

LazyKeychain::LazyKeychain(MainQueue& mainQueue, OpenStore openStore, Limits limits)
    : m_mainQueue(mainQueue)
    , m_openStore(std::move(openStore))
    , m_limits(limits)
{
}

LazyKeychain::~LazyKeychain()
{
    {
        const std::lock_guard lock(m_mutex);
        m_stopping = true;
        m_changed.notify_all();
    }
    if (m_thread.joinable())
        m_thread.join();
}

void LazyKeychain::preload()
{
    submit(nullptr);
}

void LazyKeychain::submit(const std::shared_ptr<Request>& request)
{
    const std::lock_guard lock(m_mutex);
    m_requests.push_back(request);
    if (!m_thread.joinable())
        m_thread = std::thread([this] { serve(); });
    m_changed.notify_all();
}

void LazyKeychain::serve()
{
    ::pthread_setname_np(::pthread_self(), "keychain");
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_stopping || !m_requests.empty(); });
        if (m_requests.empty())
            break;
        const auto request = std::move(m_requests.front());
        m_requests.pop_front();
        if (request && request->isGivenUp)
            continue;
        lock.unlock();
        if (!m_isOpened) {
            m_isOpened = true;
            m_store = m_openStore();
        }
        if (request)
            perform(*request);
        lock.lock();
    }
    lock.unlock();
    m_store.reset(); // on the thread that used it
}

void LazyKeychain::perform(Request& request)
{
    KeychainMatch match{keychain_status::notAvailable, std::nullopt};
    if (m_store)
        match = request.work(*m_store, request.deadline);
    {
        const std::lock_guard lock(m_mutex);
        request.match = std::move(match);
        request.work = nullptr;
        request.isDone = true;
        m_changed.notify_all();
    }
    m_mainQueue.wake();
}

KeychainMatch LazyKeychain::run(Work work)
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
        m_mainQueue.waitWhilePainting(isDone, m_limits.answer);
    } else {
        std::unique_lock lock(m_mutex);
        m_changed.wait_until(lock, begin + m_limits.answer, [&] { return request->isDone; });
    }
    const std::lock_guard lock(m_mutex);
    if (!request->isDone) {
        request->isGivenUp = true;
        return {keychain_status::interactionNotAllowed, std::nullopt};
    }
    return std::exchange(request->match, {});
}

KeychainStatus LazyKeychain::add(const KeychainItem& item)
{
    auto copy = std::make_shared<Wiped<Data>>(item.secret);
    return run([copy, item = KeychainItem{item.accessGroup, item.service, item.account, {}}](
                   KeychainStore& store, Deadline deadline) {
        auto whole = item;
        whole.secret = copy->get();
        const auto status = store.add(whole, deadline);
        wipe(whole.secret);
        return KeychainMatch{status, std::nullopt};
    }).status;
}

KeychainStatus LazyKeychain::update(const KeychainQuery& query, const Data& secret)
{
    auto copy = std::make_shared<Wiped<Data>>(secret);
    return run([copy, query](KeychainStore& store, Deadline deadline) {
        return KeychainMatch{store.update(query, copy->get(), deadline), std::nullopt};
    }).status;
}

KeychainMatch LazyKeychain::copyMatching(const KeychainQuery& query)
{
    return run([query](KeychainStore& store, Deadline deadline) {
        return store.copyMatching(query, deadline);
    });
}

std::optional<std::string> LazyKeychain::messageText(KeychainStatus status) const
{
    return keychainMessageText(status);
}

LazyKeychain::OpenStore moduleStore(KeychainOptions options)
{
    return [options = std::move(options)]() -> std::unique_ptr<KeychainStore> {
        const auto function = loadModuleFunction(keychainModuleFile, keychainModuleFunction);
        if (!function) {
            warn("keychain: " + function.error().message);
            return nullptr;
        }
        const auto make = reinterpret_cast<decltype(&zarnMakeKeychainStore)>(function.value());
        return std::unique_ptr<KeychainStore>(make(&options));
    };
}

} // namespace zarn::linux_backend
