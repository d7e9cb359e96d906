// SPDX-License-Identifier: MIT
#include "platform/linux/keychain/keychain_thread.h"

#include "tests/support/test_main_queue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>

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
    static constexpr KeychainThread::Limits shortLimits{150ms, 200ms};
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
    EXPECT_EQ(keychainMessageText(-25308), std::nullopt);
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
