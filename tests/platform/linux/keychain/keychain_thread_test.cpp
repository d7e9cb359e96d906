// SPDX-License-Identifier: MIT
#include "platform/linux/keychain/keychain_thread.h"

#include "tests/support/test_main_queue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <vector>

namespace zarn::linux_backend {
namespace {

using namespace std::chrono_literals;

/// A store that waits until it is let go, if the test says so.
class SlowStore final : public KeychainStore {
public:
    struct Control {
        std::atomic<int> opened{0};
        std::atomic<int> adds{0};
        std::atomic<int> copies{0};
        std::promise<void> release;
        std::shared_future<void> released = release.get_future().share();
        std::atomic<bool> waits{false};
        std::thread::id thread;
        std::thread::id endedOn;
    };

    explicit SlowStore(Control& control)
        : m_control(control)
    {
        ++m_control.opened;
        m_control.thread = std::this_thread::get_id();
    }
    ~SlowStore() override { m_control.endedOn = std::this_thread::get_id(); }
    SlowStore(const SlowStore&) = delete;
    SlowStore& operator=(const SlowStore&) = delete;

    KeychainStatus add(const KeychainItem& item) override
    {
        EXPECT_EQ(item.secret, (Data{'p', 'w'}));
        ++m_control.adds;
        return keychain_status::duplicateItem;
    }
    KeychainStatus update(const KeychainQuery&, const Data& secret) override
    {
        EXPECT_EQ(secret, (Data{'n', 'e', 'w'}));
        return keychain_status::success;
    }
    KeychainMatch copyMatching(const KeychainQuery& query) override
    {
        if (m_control.waits)
            m_control.released.wait();
        ++m_control.copies;
        return {keychain_status::success,
            KeychainItem{query.accessGroup, query.service, "admin", {'s'}}};
    }
    KeychainStatus erase(const KeychainQuery&) override { return keychain_status::itemNotFound; }
    KeychainListing list() override { return {}; }

private:
    Control& m_control;
};

class KeychainThreadTest : public testing::Test {
protected:
    KeychainThread::OpenStore opener()
    {
        return [this](CallContext&) { return std::make_unique<SlowStore>(control); };
    }
    static constexpr KeychainThread::Limits shortLimits{5s, {150ms}, {150ms}, 50ms, 9s};
    const KeychainQuery query{"group", "service", std::nullopt, true};

    SlowStore::Control control;
    TestMainQueue mainQueue;
};

TEST_F(KeychainThreadTest, NothingIsOpenedBeforeTheFirstCall)
{
    const KeychainThread keychain(mainQueue, opener());
    EXPECT_EQ(control.opened, 0);
}

TEST_F(KeychainThreadTest, CallsReachOneStoreOnAThreadOfItsOwn)
{
    {
        KeychainThread keychain(mainQueue, opener());
        EXPECT_EQ(keychain.add({"group", "service", "admin", {'p', 'w'}}),
            keychain_status::duplicateItem);
        EXPECT_EQ(keychain.update(query, {'n', 'e', 'w'}), keychain_status::success);
        const auto match = keychain.copyMatching(query);
        ASSERT_TRUE(match.item);
        EXPECT_EQ(match.item->secret, Data{'s'});
    }
    EXPECT_EQ(control.opened, 1);
    EXPECT_NE(control.thread, std::this_thread::get_id());
    EXPECT_EQ(control.endedOn, control.thread);
}

TEST_F(KeychainThreadTest, PreloadingOpensTheStoreInTheBackground)
{
    KeychainThread keychain(mainQueue, opener());
    keychain.preload();
    keychain.preload();
    EXPECT_EQ(keychain.copyMatching(query).status, keychain_status::success);
    EXPECT_EQ(control.opened, 1);
}

TEST_F(KeychainThreadTest, SlowStoreIsGivenUpWithinTheLimitOnTheMainThread)
{
    KeychainThread keychain(mainQueue, opener(), shortLimits);
    control.waits = true;
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(keychain.copyMatching(query).status, keychain_status::interactionNotAllowed);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 5s);
    control.release.set_value();
}

TEST_F(KeychainThreadTest, SlowStoreIsGivenUpWithinTheLimitOnAnotherThread)
{
    KeychainThread keychain(mainQueue, opener(), shortLimits);
    control.waits = true;
    std::thread([&] {
        EXPECT_EQ(keychain.copyMatching(query).status, keychain_status::interactionNotAllowed);
    }).join();
    control.release.set_value();
}

TEST_F(KeychainThreadTest, CallThatWasGivenUpWhileItWaitedIsNeverMade)
{
    KeychainThread keychain(mainQueue, opener(), shortLimits);
    control.waits = true;
    std::thread first([&] { keychain.copyMatching(query); });
    // The second call cannot start before the first one has ended, which is not before `release`.
    while (control.opened == 0)
        std::this_thread::yield();
    first.join();
    EXPECT_EQ(keychain.add({"group", "service", "admin", {'p', 'w'}}),
        keychain_status::interactionNotAllowed);
    control.release.set_value();
    control.waits = false;
    EXPECT_EQ(keychain.copyMatching(query).status, keychain_status::success);
    EXPECT_EQ(control.adds, 0);
}

TEST_F(KeychainThreadTest, TheMainThreadPaintsWhileItWaits)
{
    class CountingMainQueue final : public MainQueue {
    public:
        void post(std::function<void()> work) override { queue.post(std::move(work)); }
        bool isMainThread() const override { return queue.isMainThread(); }
        bool waitWhilePainting(
            const std::function<bool()>& done, std::chrono::milliseconds limit) override
        {
            return queue.waitWhilePainting(
                [&] {
                    if (++painted == 5)
                        release();
                    return done();
                },
                limit);
        }
        void wake() override { queue.wake(); }
        TestMainQueue queue;
        int painted = 0;
        std::function<void()> release;
    };
    CountingMainQueue counting;
    counting.release = [this] { control.release.set_value(); };
    KeychainThread keychain(counting, opener());
    control.waits = true;
    EXPECT_EQ(keychain.copyMatching(query).status, keychain_status::success);
    EXPECT_GE(counting.painted, 5);
}

TEST_F(KeychainThreadTest, AcceptedCallsAreMadeBeforeTheKeychainEnds)
{
    auto keychain = std::make_unique<KeychainThread>(mainQueue, opener());
    std::thread caller(
        [&] { EXPECT_EQ(keychain->copyMatching(query).status, keychain_status::success); });
    caller.join();
    keychain.reset();
    EXPECT_EQ(control.copies, 1);
}

/// A store whose calls wait for the user, until the test answers the prompt.
class PromptingStore final : public KeychainStore {
public:
    struct Control {
        std::atomic<int> waits{0};
        std::atomic<int> answers{0};
        std::atomic<int> stopped{0};
        std::vector<std::string> added;
    };

    PromptingStore(Control& control, CallContext& call)
        : m_control(control)
        , m_call(call)
    {
    }
    KeychainStatus add(const KeychainItem& item) override
    {
        const auto status = wait();
        if (status == keychain_status::success)
            m_control.added.push_back(item.account);
        return status;
    }
    KeychainStatus update(const KeychainQuery&, const Data&) override { return silence(); }
    KeychainMatch copyMatching(const KeychainQuery&) override { return {wait(), std::nullopt}; }
    KeychainStatus erase(const KeychainQuery&) override { return wait(); }
    KeychainListing list() override { return {}; }

private:
    KeychainStatus wait()
    {
        {
            const CallContext::PromptWait waiting(m_call, CallContext::Clock::now());
            ++m_control.waits;
            while (m_control.answers == 0 && !m_call.isOver())
                std::this_thread::yield();
        }
        m_control.stopped += m_call.stopToken().stop_requested() ? 1 : 0;
        return m_control.answers > 0 && !m_call.isOver() ? keychain_status::success
                                                         : keychain_status::interactionNotAllowed;
    }
    KeychainStatus silence()
    {
        while (!m_call.isOver())
            std::this_thread::yield();
        return keychain_status::interactionNotAllowed;
    }

    Control& m_control;
    CallContext& m_call;
};

class KeychainPromptTest : public testing::Test {
protected:
    static constexpr std::chrono::milliseconds silence{150};

    /// `onMain` and `other` limit how long calls wait for the user.
    std::unique_ptr<KeychainThread> make(
        std::chrono::milliseconds onMain, std::chrono::milliseconds other)
    {
        return std::make_unique<KeychainThread>(
            mainQueue,
            [this](CallContext& call) { return std::make_unique<PromptingStore>(control, call); },
            KeychainThread::Limits{5s, {silence, onMain}, {silence, other}, 50ms, 300ms});
    }
    static std::future<KeychainStatus> add(KeychainThread& keychain, const std::string& account)
    {
        return std::async(std::launch::async, [&keychain, account] {
            return keychain.add({"group", "service", account, {'p', 'w'}});
        });
    }
    /// The answer of a call that does not come back while the prompt is open.
    static void expectNoAnswer(std::future<KeychainStatus>& call)
    {
        EXPECT_EQ(call.wait_for(4 * silence), std::future_status::timeout);
    }
    void waitForWaits(int count) const
    {
        while (control.waits < count)
            std::this_thread::yield();
    }

    const KeychainQuery query{"group", "service", std::nullopt, true};
    PromptingStore::Control control;
    TestMainQueue mainQueue;
};

TEST_F(KeychainPromptTest, WritesWaitInTheirOrderAsLongAsThePromptIsOpen)
{
    const auto keychain = make(1h, 1h);
    auto first = add(*keychain, "first");
    waitForWaits(1);
    EXPECT_TRUE(keychain->isWaitingForUser());
    auto second = add(*keychain, "second");
    expectNoAnswer(first);
    expectNoAnswer(second);
    ++control.answers;
    EXPECT_EQ(first.get(), keychain_status::success);
    EXPECT_EQ(second.get(), keychain_status::success);
    EXPECT_EQ(control.added, (std::vector<std::string>{"first", "second"}));
    EXPECT_FALSE(keychain->isWaitingForUser());
}

TEST_F(KeychainPromptTest, AWriteWaitsNoLongerThanItsOwnLimit)
{
    const auto keychain = make(1h, 500ms);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(add(*keychain, "first").get(), keychain_status::interactionNotAllowed);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 500ms);
    EXPECT_TRUE(control.added.empty());
}

TEST_F(KeychainPromptTest, ALookUpOnTheMainThreadWaitsNoLongerThanItsOwnLimit)
{
    const auto keychain = make(500ms, 1h);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(keychain->copyMatching(query).status, keychain_status::interactionNotAllowed);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 500ms);
}

TEST_F(KeychainPromptTest, ALookUpBehindAWriteThatWaitsIsGivenUpAndTheWriteIsNot)
{
    const auto keychain = make(300ms, 1h);
    auto write = add(*keychain, "first");
    waitForWaits(1);
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(keychain->copyMatching(query).status, keychain_status::interactionNotAllowed);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, 300ms);
    ++control.answers;
    EXPECT_EQ(write.get(), keychain_status::success);
    EXPECT_EQ(control.waits, 1) << "the look-up that was given up is never made";
}

TEST_F(KeychainPromptTest, TheUserStopsTheWaitOfALookUp)
{
    const auto keychain = make(1h, 1h);
    std::thread user([this] {
        waitForWaits(1);
        mainQueue.stopWaiting();
    });
    EXPECT_EQ(keychain->copyMatching(query).status, keychain_status::interactionNotAllowed);
    user.join();
    while (control.stopped == 0)
        std::this_thread::yield();
    EXPECT_FALSE(keychain->isWaitingForUser());
}

TEST_F(KeychainPromptTest, TheObserverHearsOfTheWaitWhileTheMainThreadWaits)
{
    const auto keychain = make(1h, 1h);
    std::vector<bool> heard;
    keychain->setWaitObserver([&](bool isWaiting) {
        EXPECT_TRUE(mainQueue.isMainThread());
        heard.push_back(isWaiting);
        if (isWaiting)
            ++control.answers;
    });
    EXPECT_EQ(keychain->copyMatching(query).status, keychain_status::success);
    EXPECT_EQ(heard, (std::vector<bool>{true, false}));
    mainQueue.runPosted();
    EXPECT_EQ(heard.size(), 2U) << "each change is reported once";
}

TEST_F(KeychainPromptTest, TheObserverHearsOfTheWaitOfAWriteOnTheMainThread)
{
    const auto keychain = make(1h, 1h);
    std::vector<bool> heard;
    keychain->setWaitObserver([&](bool isWaiting) {
        EXPECT_TRUE(mainQueue.isMainThread());
        heard.push_back(isWaiting);
    });
    auto write = add(*keychain, "first");
    EXPECT_TRUE(mainQueue.runUntil([&] { return heard == std::vector<bool>{true}; }));
    ++control.answers;
    EXPECT_TRUE(mainQueue.runUntil([&] { return heard == std::vector<bool>{true, false}; }));
    EXPECT_EQ(write.get(), keychain_status::success);
}

TEST_F(KeychainPromptTest, OnceTheProgramEndsAllSilentCallsTogetherHaveOneLimit)
{
    // A silent call takes 150 ms; all that are made within the 300 ms are given up by their end.
    const auto keychain = make(1h, 1h);
    keychain->announceEnding();
    const auto begin = std::chrono::steady_clock::now();
    std::async(std::launch::async, [&] {
        for (int i = 0; i < 100; ++i)
            EXPECT_EQ(keychain->update(query, {'x'}), keychain_status::interactionNotAllowed);
    }).get();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 100 * silence / 4);
}

TEST_F(KeychainPromptTest, ThePromptIsWaitedForWhenTheProgramEnds)
{
    const auto keychain = make(1h, 1h);
    keychain->announceEnding();
    auto write = add(*keychain, "first");
    expectNoAnswer(write);
    ++control.answers;
    EXPECT_EQ(write.get(), keychain_status::success);
}

TEST(KeychainTexts, AreTheProductsOwn)
{
    EXPECT_EQ(keychainMessageText(-128), "The user refused access to the keychain");
    EXPECT_EQ(keychainMessageText(-25291), "No keychain is available");
    EXPECT_EQ(keychainMessageText(-25292), "The keychain cannot be changed");
    EXPECT_EQ(keychainMessageText(-25295), "The keychain file cannot be opened with its key");
    EXPECT_EQ(keychainMessageText(-25299), "The item already exists in the keychain");
    EXPECT_EQ(keychainMessageText(-25300), "The item could not be found in the keychain");
    EXPECT_EQ(keychainMessageText(-25307), "There is no default keychain");
    EXPECT_EQ(keychainMessageText(-36), "The keychain could not be read or written");
    EXPECT_EQ(keychainMessageText(-25308), "The keyring is locked or does not answer");
    EXPECT_EQ(keychainMessageText(0), "No error");
    EXPECT_EQ(keychainMessageText(-1), std::nullopt);
}

TEST(KeychainChoice, KnowsTheTwoNamesOfTheCommandLine)
{
    EXPECT_EQ(keychainChoice("secret-service"), KeychainChoice::SecretService);
    EXPECT_EQ(keychainChoice("file"), KeychainChoice::File);
    EXPECT_EQ(keychainChoice("automatic"), std::nullopt);
    EXPECT_EQ(keychainChoice(""), std::nullopt);
}

} // namespace
} // namespace zarn::linux_backend
