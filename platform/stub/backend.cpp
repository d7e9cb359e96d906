// SPDX-License-Identifier: MIT
// The smallest backend that compiles: where a new one begins. It opens no window.
#include "platform/backend.h"

#include "platform/stub/stub_screen.h"
#include "platform/stub/stub_services.h"

#include <cstdlib>
#include <utility>

namespace zarn {

using namespace stub;

struct Backend::Adapters {
    ProductTexts texts;
    std::function<void()> displayLost;
    StubAlertRunner alertRunner;
    StubApplication application;
    StubBundle bundle;
    StubClock clock;
    StubConsole console;
    StubDateFormatter dateFormatter;
    StubNotificationCenter notificationCenter;
    StubFileManager fileManager;
    StubKeychain keychain;
    StubSerialQueues serialQueues;
    StubSettings settings;
    StubStoryboards storyboards;
    StubTextServices textServices;
    StubUrlSessions urlSessions;
    StubWindowList windowList;
    StubWorkspace workspace;
};

void Backend::prepareProcess() { }

std::span<const KeychainKind> Backend::keychainKinds()
{
    return {};
}

std::string Backend::versionLine()
{
    return "Zarn Actions on stubs\n";
}

int Backend::diagnose(const Options&)
{
    return EXIT_FAILURE;
}

ConnectionFacts Backend::probeConnection(const Url&)
{
    return {{}, UrlError{UrlErrorCode::Other, "not connected"}};
}

Backend::Start Backend::start(const Options&)
{
    return {std::unique_ptr<Backend>(new Backend(std::make_unique<Adapters>())), 0, ""};
}

Backend::Backend(std::unique_ptr<Adapters> adapters)
    : m_adapters(std::move(adapters))
{
}

Backend::~Backend() = default;

Services Backend::services()
{
    auto& all = *m_adapters;
    return {.alertRunner = all.alertRunner,
        .application = all.application,
        .bundle = all.bundle,
        .clock = all.clock,
        .console = all.console,
        .dateFormatter = all.dateFormatter,
        .notificationCenter = all.notificationCenter,
        .fileManager = all.fileManager,
        .keychain = all.keychain,
        .serialQueues = all.serialQueues,
        .settings = all.settings,
        .storyboards = all.storyboards,
        .textServices = all.textServices,
        .urlSessions = all.urlSessions,
        .windowList = all.windowList,
        .workspace = all.workspace};
}

const ProductTexts& Backend::productTexts() const
{
    return m_adapters->texts;
}

void Backend::setDisplayLost(std::function<void()> work)
{
    m_adapters->displayLost = std::move(work);
}

void Backend::announceEnding() { }

} // namespace zarn
