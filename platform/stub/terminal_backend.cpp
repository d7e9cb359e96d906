// SPDX-License-Identifier: MIT
// The smallest backend of a terminal that compiles. It keeps nothing.
#include "platform/terminal_backend.h"

#include "platform/stub/stub_services.h"
#include "platform/stub/stub_terminal.h"

namespace zarn {

using namespace stub;

struct TerminalBackend::Adapters {
    StubBundle bundle;
    StubClock clock;
    StubDateFormatter dateFormatter;
    StubFileManager fileManager;
    StubInstanceLock instanceLock;
    StubKeychain keychain;
    StubRunLoop runLoop;
    StubSerialQueues serialQueues;
    StubSettings settings;
    StubTerminal terminal;
    StubTextServices textServices;
    StubUrlSessions urlSessions;
};

void TerminalBackend::prepareProcess() { }

std::span<const KeychainKind> TerminalBackend::keychainKinds()
{
    return {};
}

std::string TerminalBackend::versionText()
{
    return "on stubs";
}

TerminalBackend::TerminalBackend(const std::string&)
    : m_adapters(std::make_unique<Adapters>())
{
}

TerminalBackend::~TerminalBackend() = default;

bool TerminalBackend::hasHome() const
{
    return true;
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
    return {};
}

void TerminalBackend::announceEnding() { }

void TerminalBackend::expectServer() { }

void TerminalBackend::endBySignal() { }

} // namespace zarn
