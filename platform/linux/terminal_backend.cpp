// SPDX-License-Identifier: MIT
#include "platform/terminal_backend.h"

#include "platform/instance_lock.h"
#include "platform/linux/files/paths.h"
#include "platform/linux/files/posix_services.h"
#include "platform/linux/files/posix_terminal.h"
#include "platform/linux/files/process_guard.h"
#include "platform/linux/files/single_instance.h"
#include "platform/linux/http/lazy_url_sessions.h"
#include "platform/linux/keychain/keychain_thread.h"
#include "platform/linux/queues/poll_run_loop.h"
#include "platform/linux/queues/thread_serial_queue.h"
#include "platform/linux/settings/compiled_bundle.h"
#include "platform/linux/settings/plist_settings.h"
#include "platform/linux/text/icu_text.h"
#include "zarn/product_constants.h"

#include <csignal>
#include <thread>

namespace zarn {

using namespace linux_backend;

namespace {

constexpr std::chrono::seconds lockPatience{10};

/// The lock that a window holds while it is open.
class WindowLock final : public InstanceLock {
public:
    explicit WindowLock(std::string path)
        : m_path(std::move(path))
    {
    }

    Outcome take() override
    {
        switch (m_instance.claimForCommand(m_path, lockPatience)) {
        case SingleInstance::Outcome::First:
            return Outcome::Taken;
        case SingleInstance::Outcome::WindowOpen:
            return Outcome::WindowOpen;
        case SingleInstance::Outcome::Busy:
            return Outcome::Busy;
        default:
            return Outcome::Failed;
        }
    }
    void release() override { m_instance.release(); }

private:
    std::string m_path;
    SingleInstance m_instance;
};

KeychainOptions optionsOf(const std::string& keychain)
{
    return keychainOptions(keychainChoice(keychain).value_or(KeychainChoice::Automatic));
}

} // namespace

struct TerminalBackend::Adapters {
    explicit Adapters(const std::string& keychainName)
        : keychain(runLoop, moduleStore(optionsOf(keychainName)), KeychainThread::Limits{},
            [this](const std::string& line) { terminal.writeErrorLine("zarn-profile: " + line); })
    {
    }

    Paths paths = Paths::fromEnvironment();
    PollRunLoop runLoop;
    PosixTerminal terminal{[this](int descriptor) { return runLoop.waitForInput(descriptor); }};
    WindowLock instanceLock{paths.config + "/zarn-actions.running"};
    CompiledBundle bundle;
    SystemClock clock;
    IcuDateFormatter dateFormatter;
    IcuTextServices textServices;
    ThreadSerialQueues serialQueues;
    PosixFileManager fileManager{paths.home};
    PlistSettings settings{paths.config, {}, nullptr};
    KeychainThread keychain;
    LazyUrlSessions urlSessions{runLoop};
    std::thread preloading;
};

void TerminalBackend::prepareProcess()
{
    hardenProcess();
    forbidTracing();
    // A window that starts may take this process for one that can be raised.
    std::signal(SIGUSR1, SIG_IGN);
}

std::span<const KeychainKind> TerminalBackend::keychainKinds()
{
    return linux_backend::keychainKinds;
}

std::string TerminalBackend::versionText()
{
    return std::string(product::shortVersion) + " (" + product::buildNumber + ")";
}

TerminalBackend::TerminalBackend(const std::string& keychain)
    : m_adapters(std::make_unique<Adapters>(keychain))
{
}

TerminalBackend::~TerminalBackend()
{
    if (m_adapters->preloading.joinable())
        m_adapters->preloading.join();
}

bool TerminalBackend::hasHome() const
{
    return !m_adapters->paths.home.empty() && !m_adapters->paths.config.empty();
}

TerminalServices TerminalBackend::services()
{
    auto& all = *m_adapters;
    return {.bundle = all.bundle,
        .clock = all.clock,
        .dateFormatter = all.dateFormatter,
        .fileManager = all.fileManager,
        .instanceLock = all.instanceLock,
        .keychain = all.keychain,
        .runLoop = all.runLoop,
        .serialQueues = all.serialQueues,
        .settings = all.settings,
        .terminal = all.terminal,
        .textServices = all.textServices,
        .urlSessions = all.urlSessions};
}

ProductTexts TerminalBackend::productTexts() const
{
    return compiledProductTexts();
}

// The libraries for HTTP and for the keychain take longest to load: one does while the other works.
void TerminalBackend::expectServer()
{
    m_adapters->preloading
        = std::thread([&sessions = m_adapters->urlSessions] { sessions.preload(); });
}

void TerminalBackend::announceEnding()
{
    m_adapters->keychain.announceEnding();
}

void TerminalBackend::endBySignal()
{
    std::raise(PollRunLoop::signalNumber());
}

} // namespace zarn
